#include "editing/frmZoomEdit.h"

#include "core/modCommon.h"
#include "core/twips.h"
#include "editing/CToneEditor.h"
#include "editing/EditorActions.h"
#include "editing/MainFace.h"
#include "platform/AudioEditor2.h"
#include "skin/CPictureButton.h"
#include "skin/frmMessage.h"

#include <QLabel>
#include <QTimer>

namespace {
SkinLabel text(const char* name, QRect rect, const char* words = "", LabelKind kind = LabelKind::Text)
{
    return {QString::fromLatin1(name), rect, kind, QString::fromUtf8(words), 9, kind != LabelKind::Text,
            Qt::AlignLeft | Qt::AlignVCenter};
}

SkinWindowDesc zoomFace()
{
    SkinWindowDesc d;
    d.name = QStringLiteral("frmZoomEdit");
    d.size = QSize(TwipsToPixelsX(9600), TwipsToPixelsY(4800));
    d.bodyRect = ArtworkRect(0, 0, 1, 1);  // the labels carry the wording
    d.buttons = {
        PlacedButton("cmdOpen", "Open", ArtworkRect(16, 262, 50, 34)),
        PlacedButton("cmdTrim", "Trim", ArtworkRect(70, 262, 50, 34)),
        PlacedButton("cmdReset", "Reset", ArtworkRect(124, 262, 54, 34)),
        PlacedButton("cmdPlay", "Play", ArtworkRect(182, 262, 50, 34)),
        PlacedButton("cmdStop", "Stop", ArtworkRect(236, 262, 50, 34)),
        PlacedButton("cmdCancel", "Cancel", ArtworkRect(450, 262, 70, 34)),
        PlacedButton("cmdOK", "OK", ArtworkRect(526, 262, 80, 34), ButtonLook::Primary),
    };
    d.labels = {
        text("SongCaption", ArtworkRect(16, 236, 36, 16), "Song"),
        text("lblSongLength", ArtworkRect(54, 236, 60, 16)),
        text("ToneCaption", ArtworkRect(120, 236, 36, 16), "Tone"),
        text("lblToneLength", ArtworkRect(158, 236, 56, 16)),
        text("SizeCaption", ArtworkRect(220, 236, 30, 16), "Size"),
        text("lblToneSize", ArtworkRect(252, 236, 50, 16)),
        text("AtCaption", ArtworkRect(308, 236, 20, 16), "At"),
        text("lblCurrentPosition", ArtworkRect(330, 236, 60, 16)),
        text("lblVolumeDown", ArtworkRect(470, 236, 12, 16), "\u2013", LabelKind::HotSpot),
        text("lblVolumeUp", ArtworkRect(592, 236, 14, 16), "+", LabelKind::HotSpot),
    };
    return d;
}
}  // namespace

frmZoomEdit::frmZoomEdit()
    : CSkinWindow(QStringLiteral("frmZoomEdit"))
{
}

void frmZoomEdit::Form_Load()
{
    Build(zoomFace());
    mobjTone = new CToneEditor(this, {this, ArtworkRect(16, 60, 590, 170), ArtworkRect(484, 236, 106, 16), QPoint(75, 2085)});
    AudioEditor21 = mobjTone->AudioEditor21;
    NCTSliderB21 = mobjTone->NCTSliderB21;
    Label(QStringLiteral("imgLoading"))->show();
    connect(AudioEditor21, &AudioEditor2::OnEditorMouseMove, this, &frmZoomEdit::AudioEditor21_OnEditorMouseMove);
    new EditorActions(AudioEditor21, [this] { mobjTone->Play(); }, [this] { mobjTone->Stop(); }, this);

    onReady("cmdOK", [this] { cmdOK_Released(); });
    onReady("cmdCancel", [this] { Hide(); });
    onReady("cmdTrim", [this] { mobjTone->Trim(); });
    onReady("cmdReset", [this] { mobjTone->Reset(); });
    onReady("cmdPlay", [this] { mobjTone->Play(); });
    onReady("cmdStop", [this] { mobjTone->Stop(); });
    onReady("cmdOpen", [] {});

    // The blocking open waits until the window stands on the screen.
    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(250);
    connect(Timer1, &QTimer::timeout, this, &frmZoomEdit::Timer1_Timer);
    Timer1->start();
}

void frmZoomEdit::onReady(const char* button, const std::function<void()>& handler)
{
    CPictureButton* b = Button(QString::fromLatin1(button));
    connect(b, &CPictureButton::Released, this, [this, b, handler] {
        if (!mbReady)
            return;
        b->ShowRest();
        handler();
    });
}

void frmZoomEdit::Timer1_Timer()
{
    Timer1->stop();
    // The file may have gone since the main window opened it (a take that a
    // send swept away): the load has said so, and there is nothing to edit.
    if (!mobjTone->LoadFile(mstrFile, CToneEditor::Source::Chosen)) {
        Hide();
        return;
    }
    mbReady = true;
}

void frmZoomEdit::cmdOK_Released()
{
    if (mobjTone->Marks().Length() == 0) {
        ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
        return;
    }
    Tag = QStringLiteral("OK");
    Hide();
}

void frmZoomEdit::AudioEditor21_OnEditorMouseMove()
{
    if (mbReady)
        ResetButtonPictures(this);
}
