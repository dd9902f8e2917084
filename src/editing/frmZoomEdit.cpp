#include "editing/frmZoomEdit.h"

#include "core/CError.h"
#include "core/modCommon.h"
#include "core/twips.h"
#include "editing/EditorActions.h"
#include "editing/ToneMeasures.h"
#include "editing/ToneView.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTSliderB2.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QLabel>
#include <QTimer>

namespace {
SkinButton button(const char* name, const char* caption, QRect rect, ButtonLook look = ButtonLook::Secondary)
{
    return {QString::fromLatin1(name), QString::fromUtf8(caption), look, rect};
}

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
        button("cmdOpen", "Open", ArtworkRect(16, 262, 50, 34)),
        button("cmdTrim", "Trim", ArtworkRect(70, 262, 50, 34)),
        button("cmdReset", "Reset", ArtworkRect(124, 262, 54, 34)),
        button("cmdPlay", "Play", ArtworkRect(182, 262, 50, 34)),
        button("cmdStop", "Stop", ArtworkRect(236, 262, 50, 34)),
        button("cmdCancel", "Cancel", ArtworkRect(450, 262, 70, 34)),
        button("cmdOK", "OK", ArtworkRect(526, 262, 80, 34), ButtonLook::Primary),
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

ToneView frmZoomEdit::view()
{
    return {AudioEditor21, Label(QStringLiteral("lblToneLength")), Label(QStringLiteral("lblToneSize")),
            Label(QStringLiteral("lblCurrentPosition")), msngTrimOffset, mbResetting, mbTrimmed};
}

void frmZoomEdit::Form_Load()
{
    Build(zoomFace());
    Label(QStringLiteral("lblSongLength"))->setText(kSongLengthEmpty);
    Label(QStringLiteral("lblToneLength"))->setText(kToneLengthCleared);
    Label(QStringLiteral("lblToneSize"))->setText(kToneSizeCleared);
    Label(QStringLiteral("lblCurrentPosition"))->setText(kPositionEmpty);

    AudioEditor21 = new AudioEditor2(this);
    AudioEditor21->setObjectName(QStringLiteral("AudioEditor21"));
    AudioEditor21->setGeometry(ArtworkRect(16, 60, 590, 170));
    AudioEditor21->SetAppearance(EditorAppearance{});
    NCTSliderB21 = new NCTSliderB2(this);
    NCTSliderB21->setObjectName(QStringLiteral("NCTSliderB21"));
    NCTSliderB21->setGeometry(ArtworkRect(484, 236, 106, 16));

    auto* loading = new QLabel(this);
    loading->setObjectName(QStringLiteral("imgLoading"));
    loading->setGeometry(TwipsToPixelsX(75), TwipsToPixelsY(2085), TwipsToPixelsX(1800), TwipsToPixelsY(240));
    loading->setText(QStringLiteral("\u231B Loading\u2026"));
    loading->setFont(skin::Font(8.5, true));
    loading->show();

    connect(AudioEditor21, &AudioEditor2::OnEditorSelectionChanged, this, [this] { view().SelectionChanged(); });
    connect(AudioEditor21, &AudioEditor2::OnEditorPositionChanged, this, [this] { view().PositionChanged(); });
    connect(AudioEditor21, &AudioEditor2::OnEditorPositionSet, this, [this] { view().PositionChanged(); });
    connect(AudioEditor21, &AudioEditor2::OnEditorMouseMove, this, &frmZoomEdit::AudioEditor21_OnEditorMouseMove);
    connect(NCTSliderB21, &NCTSliderB2::OnVolumeSliderMoved, AudioEditor21, &AudioEditor2::SetVolume);
    new EditorActions(AudioEditor21, [this] { cmdPlay_Released(); }, [this] { cmdStop_Released(); }, this);

    onReady("cmdOK", &frmZoomEdit::cmdOK_Released);
    onReady("cmdCancel", &frmZoomEdit::cmdCancel_Released);
    onReady("cmdTrim", &frmZoomEdit::cmdTrim_Released);
    onReady("cmdReset", &frmZoomEdit::cmdReset_Released);
    onReady("cmdPlay", &frmZoomEdit::cmdPlay_Released);
    onReady("cmdStop", &frmZoomEdit::cmdStop_Released);
    onReady("cmdOpen", &frmZoomEdit::cmdOpen_Released);
    auto* up = findChild<CClickLabel*>(QStringLiteral("lblVolumeUp"));
    auto* down = findChild<CClickLabel*>(QStringLiteral("lblVolumeDown"));
    connect(up, &CClickLabel::MouseDown, this, [this] { mintVolumeDirection = 1; });
    connect(down, &CClickLabel::MouseDown, this, [this] { mintVolumeDirection = -1; });
    for (CClickLabel* spot : {up, down})
        connect(spot, &CClickLabel::MouseUp, this, [this] { mintVolumeDirection = 0; });

    tmrVolume = new QTimer(this);
    tmrVolume->setObjectName(QStringLiteral("tmrVolume"));
    tmrVolume->setInterval(100);
    connect(tmrVolume, &QTimer::timeout, this, [this] { StepVolume(NCTSliderB21, mintVolumeDirection); });
    tmrVolume->start();

    // The blocking open waits until the window stands on the screen.
    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(250);
    connect(Timer1, &QTimer::timeout, this, &frmZoomEdit::Timer1_Timer);
    Timer1->start();
}

void frmZoomEdit::onReady(const char* button, void (frmZoomEdit::*handler)())
{
    connect(Button(QString::fromLatin1(button)), &CPictureButton::Released, this, [this, handler] {
        if (mbReady)
            (this->*handler)();
    });
}

void frmZoomEdit::Timer1_Timer()
{
    Timer1->stop();
    // The main window opened this file a moment ago. Should it be gone now,
    // the window still becomes ready, so that Cancel leads out.
    ErrObject ignored;
    ResumeNext(ignored, [this] { AudioEditor21->OpenFile(mstrFile); });
    mbReady = true;
    Label(QStringLiteral("imgLoading"))->hide();
}

void frmZoomEdit::cmdOK_Released()
{
    if (!mbTrimmed && AudioEditor21->SelectionEnd() - AudioEditor21->SelectionStart() == 0) {
        ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
        return;
    }
    Tag = QStringLiteral("OK");
    Hide();
}

void frmZoomEdit::cmdCancel_Released()
{
    Hide();
}

void frmZoomEdit::cmdTrim_Released()
{
    Button(QStringLiteral("cmdTrim"))->ShowRest();
    if (view().SelectionMarked())
        view().TrimToSelection();
}

void frmZoomEdit::cmdReset_Released()
{
    Button(QStringLiteral("cmdReset"))->ShowRest();
    if (mstrFile.isEmpty())
        return;
    view().Reset([this] { cmdStop_Released(); });
}

void frmZoomEdit::cmdPlay_Released()
{
    Button(QStringLiteral("cmdPlay"))->ShowRest();
    AudioEditor21->PreparePlay();
    AudioEditor21->Play(1);
    mbPlaying = true;
}

void frmZoomEdit::cmdStop_Released()
{
    Button(QStringLiteral("cmdStop"))->ShowRest();
    AudioEditor21->Stop();
    mbPlaying = false;
}

void frmZoomEdit::cmdOpen_Released()
{
    Button(QStringLiteral("cmdOpen"))->ShowRest();
}

void frmZoomEdit::AudioEditor21_OnEditorMouseMove()
{
    if (mbReady)
        ResetButtonPictures(this);
}
