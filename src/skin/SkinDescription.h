#pragma once
// A window of the program is described, not painted by hand: its size, its
// wording and the places of its controls. The skin paints the face and the
// button pictures from this, and the window base makes the controls. Lengths
// are in pixels of the artwork (the pictures are raster images); a rectangle
// left empty is placed by the skin.
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

enum class ButtonLook {
    Primary,    // the proposed course: warm, filled
    Secondary,  // the way out: light, outlined
    Round,      // a small round mark such as a close cross
};

struct SkinButton {
    QString name;     // objectName of the picture button, e.g. "imgOK"
    QString caption;  // painted into the face
    ButtonLook look = ButtonLook::Primary;
    QRect rect;       // empty: laid out in the button row at the foot
};

// A button that stands at its own place on a window's artwork.
inline SkinButton PlacedButton(const char* name, const char* caption, QRect rect,
                               ButtonLook look = ButtonLook::Secondary)
{
    return {QString::fromLatin1(name), QString::fromUtf8(caption), look, rect};
}

enum class LabelKind {
    Text,     // run-time wording, lets the mouse through to the body
    HotSpot,  // transparent, takes clicks (lblClose, lblMinimize, lblSettings)
    Link,     // transparent click label with the hand pointer
};

struct SkinLabel {
    QString name;
    QRect rect;
    LabelKind kind = LabelKind::Text;
    QString text;
    double pointSize = 10;
    bool bold = false;
    int alignment = 0x0084;  // Qt::AlignHCenter | Qt::AlignTop
};

struct SkinTextBox {
    QString name;
    QRect rect;
    bool multiLine = false;
    bool readOnly = false;
    bool digitsOnly = false;  // a number: everything but digits and Backspace is swallowed
};

// Painted wording: a heading and a body, placed in the body of the face.
struct SkinWindowDesc {
    QString name;
    QSize size{400, 230};
    QString heading;
    QString body;
    QList<SkinButton> buttons;
    QList<SkinLabel> labels;
    QList<SkinTextBox> textBoxes;
    QStringList steps;          // a numbered row of short steps at the foot of the wording
    bool closeMark = false;     // paints a close cross and makes lblClose over it
    bool minimizeMark = false;  // paints a minimise bar and makes lblMinimize over it
    QRect bodyRect;             // where the wording goes; empty: the skin's default
    bool talkingToServer = false;  // a hidden imgTalkingToServer over the button row, for the busy state
};
