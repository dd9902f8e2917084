#pragma once
// The program's look, drawn in code since there is no artwork: one palette,
// one face for every window (a rounded card with a title band and a round
// badge standing out of its top edge), and the three pictures of each button.
// Everything outside the face is the key blue, so it becomes a hole.
#include "skin/SkinDescription.h"

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QPixmap>

namespace skin {

enum class ButtonState { Rest, Over, Clicked };

// The program's face: a rounded friendly one where installed, else the
// desktop's own sans serif.
QFont Font(double pointSize, bool bold = false);

QColor TextColour();     // wording on the body
QColor HeadingColour();  // headings and links
QColor FieldColour();    // background of text boxes

// Fills in every rectangle the description left empty.
SkinWindowDesc LaidOut(SkinWindowDesc desc);

// The whole face of a laid-out window, with the rest look of its buttons.
QImage PaintFace(const SkinWindowDesc& desc);

// One picture of a button, the size of its rectangle.
QPixmap PaintButton(const SkinButton& button, ButtonState state);

// The busy picture shown over a window's buttons while it talks to the service.
QPixmap PaintTalkingToServer(QSize size);

// Where the painted close and minimise marks stand on a face of this width.
QRect CloseMarkRect(int width);
QRect MinimizeMarkRect(int width);

// The program's badge, for the taskbar entry and the desktop's menus.
QImage AppIconImage(int size);
QIcon AppIcon();

}  // namespace skin
