#pragma once
// The editing steps the main window and the zoom window share, each over its
// own editor, labels and flags: the measures shown for a selection and a
// play position, Trim's test and view, Reset, and the volume hot spots.
#include <QRect>
#include <QString>
#include <cstdint>
#include <functional>

class AudioEditor2;
class NCTSliderB2;
class QLabel;
class QWidget;

struct ToneView {
    AudioEditor2* editor;
    QLabel* toneLength;
    QLabel* toneSize;
    QLabel* position;
    float& trimOffset;
    bool& resetting;
    bool& trimmed;

    // OnEditorSelectionChanged: length and size of the selection, then the position.
    void SelectionChanged() const;
    // OnEditorPositionChanged and OnEditorPositionSet.
    void PositionChanged() const;
    // Trim's test: false, after frmToneNotTrimmed, when nothing is marked.
    bool SelectionMarked() const;
    // Trim proper: the view closes on the selection, times count from its start.
    void TrimToSelection() const;
    // Reset; stop is the window's own Stop handler. Errors are ignored.
    void Reset(const std::function<void()>& stop) const;
};

// One tick of a volume timer: the slider moves 3000 in the held direction.
void StepVolume(NCTSliderB2* slider, int16_t direction);
// A rectangle of the artwork, drawn at 96 DPI, on this screen.
QRect ArtworkRect(int x, int y, int width, int height);
