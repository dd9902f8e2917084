#pragma once
// The main window's face: its size, buttons and labels in normal and in
// record mode, and where the parts that are no skin controls stand. Both
// modes share the frame; record mode swaps the editor for the level bars.
#include "skin/SkinDescription.h"

#include <QPixmap>
#include <QRect>

// A rectangle of the artwork, drawn at 96 DPI, on this screen.
QRect ArtworkRect(int x, int y, int width, int height);

SkinWindowDesc MainFace(bool recordMode);
// A thin rule at the left, then a loudspeaker with one sound wave, in the wording's colour.
QPixmap VolumeMark(QSize size);

namespace mainface {
inline QRect EditorHolder() { return ArtworkRect(16, 98, 420, 56); }
inline QRect Slider() { return ArtworkRect(387, 158, 40, 16); }  // its least width
inline QRect SoundFile(bool beforeTunnelLabel) { return ArtworkRect(16, 80, beforeTunnelLabel ? 210 : 290, 16); }
// The song length stands in its row, or in record mode as the take's time under the record buttons.
inline QRect SongLength(bool recordMode)
{
    return recordMode ? ArtworkRect(300, 142, 134, 14) : ArtworkRect(49, 158, 52, 16);
}
}  // namespace mainface
