#include "editing/frmMain.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modStartup.h"
#include "core/numbers.h"
#include "core/seams.h"
#include "core/twips.h"
#include "cd/frmRipCD.h"
#include "cd/modCDChecking.h"
#include "editing/CAudioRecorder.h"
#include "editing/EditorActions.h"
#include "editing/SoundFileDrop.h"
#include "editing/ToneView.h"
#include "editing/frmAbout.h"
#include "editing/frmConfiguration.h"
#include "editing/frmZoomEdit.h"
#include "editing/ToneMeasures.h"
#include "library/CAudioPlayer.h"
#include "library/frmMyMusic2.h"
#include "platform/AudioDecoder.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTSliderB2.h"
#include "service/CFreeQuills.h"
#include "skin/CClickLabel.h"
#include "skin/CDialog.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QMessageBox>
#include <QPainter>
#include <QPainterPath>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTimer>

namespace {
const QString kSelectPrompt = QStringLiteral("Select a sound file or rip a CD...");
const QString kLoadingWords = QStringLiteral("Loading. Please wait (");
const QString kPreparingWords = QStringLiteral("Preparing ringtone (");

// "Music files (*.mp3, *.wav, *.wma)" -> *.mp3 *.wav *.wma; "*.*" is every file.
QStringList filterPatterns(const QString& filter)
{
    const qsizetype open = filter.lastIndexOf(QLatin1Char('('));
    const qsizetype close = filter.lastIndexOf(QLatin1Char(')'));
    QStringList patterns = filter.mid(open + 1, close - open - 1)
                               .split(QRegularExpression(QStringLiteral("[,; ]+")), Qt::SkipEmptyParts);
    for (QString& p : patterns) {
        if (p == QLatin1String("*.*"))
            p = QStringLiteral("*");
    }
    return patterns;
}

// The artwork is laid out in twips: 15 to the pixel at 96 DPI.
QRect tw(int x, int y, int w, int h)
{
    return QRect(TwipsToPixelsX(x * 15.0), TwipsToPixelsY(y * 15.0), TwipsToPixelsX(w * 15.0),
                 TwipsToPixelsY(h * 15.0));
}

SkinButton button(const char* name, const char* caption, QRect rect, ButtonLook look = ButtonLook::Secondary)
{
    return {QString::fromLatin1(name), QString::fromUtf8(caption), look, rect};
}

SkinLabel text(const char* name, QRect rect, double points = 9, bool bold = false, int align = Qt::AlignLeft | Qt::AlignVCenter)
{
    return {QString::fromLatin1(name), rect, LabelKind::Text, {}, points, bold, align};
}

// A fixed word in front of a measure; its name ends in "Caption".
SkinLabel caption(const char* words, QRect rect)
{
    return {QString::fromUtf8(words) + QStringLiteral("Caption"), rect, LabelKind::Text, QString::fromUtf8(words), 8, false, Qt::AlignLeft | Qt::AlignVCenter};
}

SkinLabel spot(const char* name, QRect rect, LabelKind kind = LabelKind::HotSpot, const char* caption = "")
{
    return {QString::fromLatin1(name), rect, kind, QString::fromUtf8(caption), 9, true,
            Qt::AlignLeft | Qt::AlignVCenter};
}

// A thin rule at the left, then a loudspeaker with one sound wave, in the wording's colour.
QPixmap volumeMark(QSize size)
{
    QPixmap mark(size);
    mark.fill(Qt::transparent);
    QPainter p(&mark);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor ink = skin::TextColour();
    p.setPen(QPen(QColor(ink.red(), ink.green(), ink.blue(), 80), 1));
    p.drawLine(QPointF(0.5, 2), QPointF(0.5, size.height() - 2));
    const double mid = size.height() / 2.0, x = size.width() - 16.5;
    QPainterPath speaker;
    speaker.moveTo(x, mid - 2.5);
    speaker.lineTo(x + 3, mid - 2.5);
    speaker.lineTo(x + 7, mid - 6);
    speaker.lineTo(x + 7, mid + 6);
    speaker.lineTo(x + 3, mid + 2.5);
    speaker.lineTo(x, mid + 2.5);
    speaker.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawPath(speaker);
    p.setPen(QPen(ink, 1.3));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(x + 5, mid - 4, 6, 8), -50 * 16, 100 * 16);
    p.drawArc(QRectF(x + 6, mid - 7, 10, 14), -50 * 16, 100 * 16);
    return mark;
}

// Both faces share the frame; record mode swaps the editor for the level bars.
SkinWindowDesc mainFace(bool recordMode)
{
    SkinWindowDesc d;
    d.name = QStringLiteral("frmMain");
    d.size = QSize(TwipsToPixelsX(6780), TwipsToPixelsY(3380));
    d.closeMark = true;
    d.minimizeMark = true;
    d.bodyRect = tw(0, 0, 1, 1);  // no painted wording: the labels carry it
    d.buttons = {
        button("cmdOpen", "Open", tw(14, 178, 46, 34)),
        button("cmdMyMusic", "Music", tw(60, 178, 50, 34)),
        button("cmdRip", "CD", tw(110, 178, 38, 34)),
        button("cmdRecord", "Rec", tw(148, 178, 42, 34)),
        button("cmdTrim", "Trim", tw(190, 178, 44, 34)),
        button("cmdReset", "Reset", tw(234, 178, 48, 34)),
        button("cmdPlay", "Play", tw(282, 178, 44, 34)),
        button("cmdStop", "Stop", tw(326, 178, 44, 34)),
        button("cmdSend", "Send", tw(370, 178, 68, 34), ButtonLook::Primary),
    };
    if (recordMode) {
        d.heading = QStringLiteral("Record a sound");
        d.body = QStringLiteral("Press Start, then play your sound into the microphone or line in. Press Stop when it is done.");
        d.bodyRect = tw(16, 76, 276, 60);
        d.buttons << button("imgStartRecording", "Start", tw(300, 96, 64, 34), ButtonLook::Primary)
                  << button("imgStopRecording", "Stop", tw(370, 96, 64, 34));
    }
    return d;
}
}  // namespace

frmMain::frmMain()
    : CSkinWindow(QStringLiteral("frmMain"), Qt::Window)
{
    SetDraggable(true);
}

frmMain::~frmMain() = default;

QLabel* frmMain::label(const char* name) const
{
    return findChild<QLabel*>(QString::fromLatin1(name));
}

CClickLabel* frmMain::hotSpot(const char* name) const
{
    return findChild<CClickLabel*>(QString::fromLatin1(name));
}

void frmMain::buildControls()
{
    SkinWindowDesc face = mainFace(false);
    face.labels = {
        text("lblSoundFile", tw(16, 80, 210, 16), 9.5, true),
        text("lblUsingTunnel", tw(226, 80, 80, 16), 8),
        spot("lblFreeQuills", tw(310, 80, 96, 16), LabelKind::Link, "Free quills:"),
        text("lblFreeQuillCount", tw(406, 80, 30, 16), 9.5, true),
        caption("Song", tw(16, 158, 30, 16)),
        text("lblSongLength", tw(49, 158, 52, 16), 9),
        caption("Tone", tw(104, 158, 30, 16)),
        text("lblToneLength", tw(137, 158, 44, 16), 9),
        caption("Size", tw(184, 158, 26, 16)),
        text("lblToneSize", tw(212, 158, 38, 16), 9),
        caption("At", tw(254, 158, 15, 16)),
        text("lblCurrentPosition", tw(271, 158, 49, 16), 9),
        spot("imgZoom", tw(322, 158, 35, 16), LabelKind::Link, "Zoom"),
        // The volume stands apart from the zoom link, behind a rule and its speaker mark.
        text("lblVolumeMark", tw(358, 158, 20, 16)),
        spot("lblVolumeDown", tw(379, 158, 8, 16), LabelKind::HotSpot, "\u2013"),
        spot("lblVolumeUp", tw(428, 158, 11, 16), LabelKind::HotSpot, "+"),
        spot("cmdSignOut", tw(300, 34, 66, 18), LabelKind::Link, "Sign out"),
        spot("lblSettings", tw(16, 214, 40, 10)),
        spot("lblAbout", tw(60, 214, 40, 10)),
        spot("lblLastURL", tw(104, 214, 40, 10)),
        {QStringLiteral("lblStartRecording"), tw(300, 132, 64, 14), LabelKind::Link, QStringLiteral("record"), 8,
         false, Qt::AlignCenter},
        {QStringLiteral("lblStopRecording"), tw(370, 132, 64, 14), LabelKind::Link, QStringLiteral("end take"), 8,
         false, Qt::AlignCenter},
    };
    SkinWindowDesc record = mainFace(true);
    record.labels = face.labels;
    mRecordFace = skin::PaintFace(skin::LaidOut(record));
    mNormalFace = skin::PaintFace(skin::LaidOut(face));
    Build(record);  // the record buttons too; ApplyWindowMode shows the face of the mode

    // The two background pictures, kept as the controls that hold them.
    auto* normal = new QLabel(this);
    normal->setObjectName(QStringLiteral("picNormalMode"));
    normal->setPixmap(QPixmap::fromImage(mNormalFace));
    normal->hide();
    auto* recordPicture = new QLabel(this);
    recordPicture->setObjectName(QStringLiteral("picRecordMode"));
    recordPicture->setPixmap(QPixmap::fromImage(mRecordFace));
    recordPicture->hide();

    auto* holder = new QWidget(this);
    holder->setObjectName(QStringLiteral("picEditorHolder"));
    holder->setGeometry(tw(16, 98, 420, 56));
    AudioEditor21 = new AudioEditor2(holder);
    AudioEditor21->setObjectName(QStringLiteral("AudioEditor21"));
    AudioEditor21->setGeometry(holder->rect());

    NCTSliderB21 = new NCTSliderB2(this);
    NCTSliderB21->setObjectName(QStringLiteral("NCTSliderB21"));
    NCTSliderB21->setGeometry(tw(387, 158, 40, 16));  // its least width
    label("lblVolumeMark")->setPixmap(volumeMark(label("lblVolumeMark")->size()));

    ampbarLeft = new NCTAmpBar2(this);
    ampbarLeft->setObjectName(QStringLiteral("ampbarLeft"));
    ampbarRight = new NCTAmpBar2(this);
    ampbarRight->setObjectName(QStringLiteral("ampbarRight"));
    const int barWidth = TwipsToPixelsX(265 * 15);
    ampbarLeft->setGeometry(TwipsToPixelsX(285), TwipsToPixelsY(2100), barWidth, TwipsToPixelsY(180));
    ampbarRight->setGeometry(TwipsToPixelsX(285), TwipsToPixelsY(2450), barWidth, TwipsToPixelsY(180));

    auto* loading = new QLabel(this);
    loading->setObjectName(QStringLiteral("imgLoading"));
    loading->setGeometry(TwipsToPixelsX(60), TwipsToPixelsY(2655), TwipsToPixelsX(1800), TwipsToPixelsY(240));
    loading->setText(QStringLiteral("\u231B Loading\u2026"));
    loading->setFont(skin::Font(8.5, true));

    // Covers the controls while the login window stands over the main window.
    auto* backdrop = new QWidget(this);
    backdrop->setObjectName(QStringLiteral("picLoginBackground"));
    backdrop->setAutoFillBackground(true);
    QPalette fill = backdrop->palette();
    fill.setColor(QPalette::Window, skin::FieldColour());
    backdrop->setPalette(fill);
    backdrop->hide();

    tmrVolume = new QTimer(this);
    tmrVolume->setObjectName(QStringLiteral("tmrVolume"));
    tmrVolume->setInterval(100);
}

void frmMain::Form_Load()
{
    try {
        WriteLog(QStringLiteral("Started Quillo Tone"));
        InitApplication();
        buildControls();  // sets the window to its face, 6780 by 3380 twips

        gbUseTunnel = GetAppSetting(QStringLiteral("UseTunnel"), kSettings) == QLatin1String("1");
        label("lblUsingTunnel")->setText(QStringLiteral("Using tunnel"));
        label("lblUsingTunnel")->setVisible(gbUseTunnel);
        // The status is one line up to the free quills, or up to the tunnel
        // label when that shows: wrapped, its second line would be cut off.
        for (const char* name : {"lblSoundFile", "lblSongLength", "lblToneLength", "lblToneSize", "lblCurrentPosition"})
            label(name)->setWordWrap(false);
        label("lblSoundFile")->setGeometry(tw(16, 80, gbUseTunnel ? 210 : 290, 16));

        label("imgLoading")->hide();
        AudioEditor21->SetAppearance(EditorAppearance{});
        for (const char* name : {"lblClose", "lblMinimize"})
            label(name)->clear();
        // Sign out stands on the title band, in the band's own white.
        QPalette onBand = label("cmdSignOut")->palette();
        onBand.setColor(QPalette::WindowText, Qt::white);
        label("cmdSignOut")->setPalette(onBand);

        NCTSliderB21->SetValue(32000);
        AudioEditor21->SetVolume(NCTSliderB21->Value());
        mobjRecord = std::make_unique<CAudioRecorder>();
        connect(mobjRecord.get(), &CAudioRecorder::Timer, this, &frmMain::mobjRecord_Timer);
        mobjRecordAudioPlayer = std::make_unique<CAudioPlayer>();

        connect(AudioEditor21, &AudioEditor2::OnEditorProgress, this, &frmMain::AudioEditor21_OnEditorProgress);
        connect(AudioEditor21, &AudioEditor2::OnEditorSelectionChanged, this, [this] { view().SelectionChanged(); });
        connect(AudioEditor21, &AudioEditor2::OnEditorPositionChanged, this, [this] { view().PositionChanged(); });
        connect(AudioEditor21, &AudioEditor2::OnEditorPositionSet, this, [this] { view().PositionChanged(); });
        connect(AudioEditor21, &AudioEditor2::OnEditorMouseMove, this, &frmMain::ResetButtonPictures);
        connect(NCTSliderB21, &NCTSliderB2::OnVolumeSliderMoved, AudioEditor21, &AudioEditor2::SetVolume);
        connect(tmrVolume, &QTimer::timeout, this, [this] { StepVolume(NCTSliderB21, mintVolumeDirection); });
        tmrVolume->start();
        new EditorActions(AudioEditor21, [this] { cmdPlay_Released(); }, [this] { cmdStop_Released(); }, this);
        new SoundFileDrop(this, [this](const QString& path) {
            if (!mbBusy)
                openSoundFile(path);
        });

        connect(Button(QStringLiteral("cmdOpen")), &CPictureButton::Released, this, &frmMain::cmdOpen_Released);
        connect(Button(QStringLiteral("cmdTrim")), &CPictureButton::Released, this, &frmMain::cmdTrim_Released);
        connect(Button(QStringLiteral("cmdReset")), &CPictureButton::Released, this, &frmMain::cmdReset_Released);
        connect(Button(QStringLiteral("cmdPlay")), &CPictureButton::Released, this, &frmMain::cmdPlay_Released);
        connect(Button(QStringLiteral("cmdStop")), &CPictureButton::Released, this, &frmMain::cmdStop_Released);
        connect(Button(QStringLiteral("cmdSend")), &CPictureButton::Released, this, &frmMain::cmdSend_Released);
        connect(Button(QStringLiteral("cmdMyMusic")), &CPictureButton::Released, this, &frmMain::cmdMyMusic_Released);
        connect(Button(QStringLiteral("cmdRip")), &CPictureButton::Released, this, &frmMain::cmdRip_Released);
        connect(Button(QStringLiteral("cmdRecord")), &CPictureButton::Released, this, &frmMain::cmdRecord_Released);
        // Start and its label are the second press of Rec.
        connect(Button(QStringLiteral("imgStartRecording")), &CPictureButton::Released, this,
                &frmMain::cmdRecord_Released);
        connect(hotSpot("lblStartRecording"), &CClickLabel::Click, this, &frmMain::cmdRecord_Released);
        connect(Button(QStringLiteral("imgStopRecording")), &CPictureButton::Released, this,
                [this] { StopRecordingNow(false); });
        connect(hotSpot("lblStopRecording"), &CClickLabel::Click, this, [this] { StopRecordingNow(false); });
        connect(hotSpot("imgZoom"), &CClickLabel::Click, this, &frmMain::imgZoom_Click);
        connect(hotSpot("lblSettings"), &CClickLabel::DblClick, this, &frmMain::lblSettings_DblClick);
        connect(hotSpot("lblAbout"), &CClickLabel::DblClick, this, &frmMain::lblAbout_DblClick);
        connect(hotSpot("lblFreeQuills"), &CClickLabel::Click, this, [this] {
            CFreeQuills().Start();
            show();
        });
        connect(hotSpot("lblClose"), &CClickLabel::Click, this, &frmMain::CloseWanted);
        // A button acts on release, wherever the mouse went after the press.
        connect(hotSpot("cmdSignOut"), &CClickLabel::MouseUp, this, [this](Qt::MouseButton button) {
            if (button == Qt::LeftButton)
                emit SignOutWanted();
        });
        connect(hotSpot("lblMinimize"), &CClickLabel::Click, this, &frmMain::MinimiseWanted);
        connect(hotSpot("lblLastURL"), &CClickLabel::DblClick, this, &frmMain::lblLastURL_DblClick);
        connect(hotSpot("lblVolumeUp"), &CClickLabel::MouseDown, this, [this] { mintVolumeDirection = 1; });
        connect(hotSpot("lblVolumeDown"), &CClickLabel::MouseDown, this, [this] { mintVolumeDirection = -1; });
        for (const char* name : {"lblVolumeUp", "lblVolumeDown"})
            connect(hotSpot(name), &CClickLabel::MouseUp, this, [this] { mintVolumeDirection = 0; });

        RefreshFreeQuillCount();
        ClearToneDisplay();
        ApplyWindowMode();

        SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
        CenterOnScreen(this);
    } catch (const CError& e) {
        MsgBox(QStringLiteral("Error: ") + e.Description(), QMessageBox::Warning);
    }
}

void frmMain::RefreshFreeQuillCount()
{
    label("lblFreeQuillCount")->setText(QString::number(gintFreeQuills));
}

void frmMain::ShowLoginBackdrop(int width, int height)
{
    auto* backdrop = findChild<QWidget*>(QStringLiteral("picLoginBackground"));
    backdrop->setGeometry((this->width() - width) / 2, (this->height() - height) / 2, width, height);
    backdrop->show();
}

void frmMain::HideLoginBackdrop(bool parkAside)
{
    auto* backdrop = findChild<QWidget*>(QStringLiteral("picLoginBackground"));
    if (parkAside)
        backdrop->move(TwipsToPixelsX(15000), backdrop->y());
    backdrop->hide();
}

void frmMain::SendTone()
{
    ::SendTone(*this);
}

void frmMain::SetStatusText(const QString& text)
{
    QLabel* status = label("lblSoundFile");
    // A name too long for the line loses its middle, not its extension.
    status->setText(status->fontMetrics().elidedText(text, Qt::ElideMiddle, status->width()));
    // The tool tip drops a three-letter extension: "song.mp3" reads "song".
    QString tip = text;
    if (tip.size() >= 4 && tip[tip.size() - 4] == QLatin1Char('.'))
        tip.chop(4);
    status->setToolTip(tip);
}

void frmMain::ResetButtonPictures()
{
    ::ResetButtonPictures(this);
}

void frmMain::ApplyWindowMode()
{
    const bool rec = mbRecordMode;
    SetFace(rec ? mRecordFace : mNormalFace);
    for (const char* name : {"lblSoundFile", "lblToneSize", "lblCurrentPosition", "lblToneLength", "imgZoom"})
        label(name)->setVisible(!rec);
    for (const char* name : {"SongCaption", "ToneCaption", "SizeCaption", "AtCaption"})
        label(name)->setVisible(!rec);
    // The take's running time stands under the record buttons.
    label("lblSongLength")->setGeometry(rec ? tw(300, 142, 134, 14) : tw(49, 158, 52, 16));
    label("lblSongLength")->setAlignment(rec ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter);
    ampbarLeft->setVisible(rec);
    ampbarRight->setVisible(rec);
    AudioEditor21->setVisible(!rec);
    findChild<QWidget*>(QStringLiteral("picEditorHolder"))->setVisible(!rec);
    for (const char* name : {"imgStartRecording", "imgStopRecording"}) {
        if (QWidget* b = findChild<QWidget*>(QString::fromLatin1(name)))
            b->setVisible(rec);
    }
    for (const char* name : {"lblStartRecording", "lblStopRecording"})
        label(name)->setVisible(rec);
    if (rec)
        label("lblSongLength")->setText(kSongLengthEmpty);
}

void frmMain::ClearToneDisplay()
{
    SetStatusText(kSelectPrompt);
    QLabel* status = label("lblSoundFile");
    status->setEnabled(true);
    SetControlTag(status, QString());
    mstrCurrentFile.clear();
    label("lblSongLength")->setText(kSongLengthEmpty);
    label("lblToneLength")->setText(kToneLengthCleared);
    label("lblToneSize")->setText(kToneSizeCleared);
}

void frmMain::LoadSoundFile(const QString& path)
{
    QLabel* status = label("lblSoundFile");
    try {
        mbBusy = true;
        SetFormEnabled(this, false);
        label("imgLoading")->show();
        QCoreApplication::processEvents();

        mintLoadStage = 1;
        SetStatusText(QStringLiteral("Loading. Please wait (0% complete)"));
        status->setEnabled(true);
        QCoreApplication::processEvents();

        LoadIntoEditor(path);

        if (ControlTag(label("lblToneLength")) != QLatin1String("err")) {
            const QFileInfo file(path);
            SetStatusText(file.fileName());
            SetControlTag(status, path);
            mstrCurrentFile = path;
            msngFileLength = static_cast<float>(file.size());
            msngTrimOffset = 0;
        } else {
            forgetSound();
        }
    } catch (const CError& e) {
        if (e.Description() == kFormatNotSupported) {
            SetFormEnabled(this, true);
            CDialog().Display(QStringLiteral("You selected a non-music file. Please try again."), true, this);
            forgetSound();
        }
    }
    SetFormEnabled(this, true);
    mbBusy = false;
    label("imgLoading")->hide();
}

void frmMain::cmdRip_Released()
{
    try {
        SetFormEnabled(this, false);
        if (!CDInDrive()) {
            SetMousePointer(vbDefault);
            ShowMessageWindow(QStringLiteral("frmInsertCD"));
        } else {
            auto rip = std::make_unique<frmRipCD>();
            rip->Load();
            SetMousePointer(vbDefault);
            rip->Show(true);
            const QString path = rip->Tag;
            if (!path.isEmpty()) {
                SetFormEnabled(this, false);
                SetFormEnabled(this, true);
                SetMousePointer(vbDefault);
                QLabel* status = label("lblSoundFile");
                status->setEnabled(true);
                mintLoadStage = 1;
                label("imgLoading")->show();
                SetStatusText(QStringLiteral("Loading. Please wait (0% complete)"));
                QCoreApplication::processEvents();
                LoadIntoEditor(path);
                SetStatusText(rip->SelectedTrackText());
                SetControlTag(status, path);
                mstrCurrentFile = path;
                label("imgLoading")->hide();
                mbRecordMode = false;
                ApplyWindowMode();
            }
        }
        SetFormEnabled(this, true);
        HideCCDBWait();
        label("imgLoading")->hide();
        SetMousePointer(vbDefault);
    } catch (const CError& e) {
        label("imgLoading")->hide();
        show();
        MsgBox(e.Description());
        SetFormEnabled(this, true);
    }
}

void frmMain::forgetSound()
{
    // The user is told that no file is chosen: nothing of the last one may
    // stay to be played or sent. The path itself stays, as it always has.
    AudioEditor21->Clear();
    mbTrimmed = false;
    msngTrimOffset = 0;
    SetStatusText(kSelectPrompt);
    label("lblSongLength")->setText(kSongLengthEmpty);
    label("lblToneLength")->setText(kToneLengthCleared);
    label("lblToneSize")->setText(kToneSizeCleared);
    label("lblCurrentPosition")->setText(kPositionEmpty);
}

void frmMain::LoadIntoEditor(const QString& path)
{
    if (path.isEmpty())
        return;
    // The window's own state, not its controls': a load inside a busy phase
    // therefore ends with every control enabled again.
    const bool wasEnabled = isEnabled();
    QLabel* toneLength = label("lblToneLength");
    try {
        SetFormEnabled(this, false);
        label("lblSoundFile")->setEnabled(true);
        mbBusy = true;

        AudioEditor21->OpenFile(path);

        const float seconds = MillisecondsToSeconds(AudioEditor21->SamplesToMilliseconds(AudioEditor21->TotalSamples()));
        const QString length = LengthCaption(seconds);
        label("lblSongLength")->setText(length);
        toneLength->setText(length);
        SetControlTag(toneLength, length);

        // Nothing of the last sound's trim and selection is left standing.
        msngTrimOffset = 0;
        mbTrimmed = false;
        label("lblToneSize")->setText(kToneSizeCleared);
        label("lblCurrentPosition")->setText(kPositionEmpty);
        AudioEditor21->SetShowSelection(false);
        AudioEditor21->SetPlayPosition(0);
        msngFileLength = static_cast<float>(QFileInfo(path).size());
        SetFormEnabled(this, wasEnabled);
        mbBusy = false;
    } catch (const CError& e) {
        SetMousePointer(vbDefault);
        if (e.Description() == kFileEmptyOrDamaged) {
            // Telling of other formats would mislead: this one may be an MP3 of no use.
            CDialog().Display(QStringLiteral("This file is empty or damaged: there is no sound in it to open. "
                                             "Please choose another file."),
                              true, this);
        } else {
            ShowMessageWindow(QStringLiteral("frmInvalidFileFormat"));
        }
        SetControlTag(toneLength, QStringLiteral("err"));
        mbBusy = false;
        SetFormEnabled(this, wasEnabled);
    }
}

void frmMain::AudioEditor21_OnEditorProgress(int percent)
{
    mbBusy = true;
    if (mintLoadStage == 1 || mintLoadStage == 2) {
        SetStatusText((mintLoadStage == 1 ? kLoadingWords : kPreparingWords) + QString::number(percent) +
                      QStringLiteral("% complete)"));
        QCoreApplication::processEvents();
    }
}

ToneView frmMain::view()
{
    return {AudioEditor21, label("lblToneLength"), label("lblToneSize"), label("lblCurrentPosition"),
            msngTrimOffset, mbResetting, mbTrimmed};
}

// Open and a dropped file first leave record mode; a take under way is thrown away.
void frmMain::leaveRecordMode()
{
    mbRecordMode = false;
    ApplyWindowMode();
    if (mbRecording) {
        // The take is thrown away: it stays in the scratch folder until the next start.
        SetMousePointer(vbHourglass);
        mbRecording = false;
        ErrObject ignored;
        ResumeNext(ignored, [this] { mobjRecord->StopRecording(); });
        SetMousePointer(vbDefault);
        ApplyWindowMode();
    }
}

void frmMain::openSoundFile(const QString& path)
{
    leaveRecordMode();
    LoadSoundFile(path);
    mbBusy = false;
}

void frmMain::cmdOpen_Released()
{
    leaveRecordMode();
    // A music folder that does not exist would be offered as a file name.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    if (!QFileInfo(folder).isDir())
        folder = QDir::homePath();
    QFileDialog dialog(this, QStringLiteral("Open"), folder);
    dialog.setObjectName(QStringLiteral("CommonDialog1"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters(
        {QStringLiteral("Music files (*.mp3, *.wav, *.wma)"), QStringLiteral("All files (*.*)"), AllAudioFilter()});
    // The dialog reads patterns parted by blanks only, and "*.*" would pass
    // over a name without a dot: its file list takes the patterns from us.
    // That list matches names in any case.
    if (auto* files = dialog.findChild<QFileSystemModel*>()) {
        const auto follow = [files](const QString& filter) { files->setNameFilters(filterPatterns(filter)); };
        connect(&dialog, &QFileDialog::filterSelected, files, follow);
        follow(dialog.selectedNameFilter());
    }
    if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty())
        LoadSoundFile(dialog.selectedFiles().first());
    mbBusy = false;
}

void frmMain::cmdMyMusic_Released()
{
    QLabel* status = label("lblSoundFile");
    try {
        if (mbRecordMode)
            StopRecordingNow(true);  // the take is thrown away
        SetControlTag(status, status->text());
        SetStatusText(QStringLiteral("Loading 'My Music'...."));
        AudioEditor21->Stop();
        mbPlaying = false;
        SetMousePointer(vbHourglass);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        if (mbRecordMode) {
            mbRecordMode = false;
            ApplyWindowMode();
        }

        auto myMusic = std::make_unique<frmMyMusic2>();
        myMusic->Load();
        SetMousePointer(vbDefault);
        SetStatusText(ControlTag(status));
        myMusic->Show(true);
        mbBusy = true;
        const QString chosen = myMusic->Tag;
        if (!chosen.isEmpty() && chosen != QLatin1String("Q")) {
            SetFormEnabled(this, false);
            mintLoadStage = 1;
            label("imgLoading")->show();
            SetStatusText(QStringLiteral("Loading. Please wait (0% complete)"));
            status->setEnabled(true);
            QCoreApplication::processEvents();
            LoadIntoEditor(chosen);
            // The editor's failure has been shown; the old words stay as they were.
            if (ControlTag(label("lblToneLength")) != QLatin1String("err")) {
                SetStatusText(QFileInfo(chosen).fileName());
                SetControlTag(status, chosen);
                mstrCurrentFile = chosen;
            } else {
                SetStatusText(kSelectPrompt);
            }
            label("imgLoading")->hide();
        }
        // Unloaded whole, its controls at once: nothing of it is left to take the focus.
        myMusic.reset();
        mbBusy = false;
        SetFormEnabled(this, true);
        show();
    } catch (const CError& e) {
        label("imgLoading")->hide();
        if (e.Description().toLower() == kFormatNotSupported.toLower()) {
            ShowMessageWindow(QStringLiteral("frmInvalidFileFormat"));
        } else {
            MsgBox(e.Description());
        }
    }
}

void frmMain::cmdTrim_Released()
{
    Button(QStringLiteral("cmdTrim"))->ShowRest();
    if (mbRecordMode || !view().SelectionMarked())
        return;
    // A tone that came from a take: normal mode must hold from here on.
    if (mobjRecord->RecordingExists()) {
        mbRecordMode = false;
        ApplyWindowMode();
    }
    view().TrimToSelection();
}

void frmMain::cmdReset_Released()
{
    Button(QStringLiteral("cmdReset"))->ShowRest();
    if (mstrCurrentFile.isEmpty())
        return;
    view().Reset([this] { cmdStop_Released(); });
}

void frmMain::cmdPlay_Released()
{
    Button(QStringLiteral("cmdPlay"))->ShowRest();
    if (mbRecordMode)
        return;
    AudioEditor21->PreparePlay();
    AudioEditor21->Play(1);
    mbPlaying = true;
}

void frmMain::cmdStop_Released()
{
    if (mbRecordMode) {
        StopRecordingNow(false);
        return;
    }
    Button(QStringLiteral("cmdStop"))->ShowRest();
    AudioEditor21->Stop();
    mbPlaying = false;
}

void frmMain::cmdSend_Released()
{
    Button(QStringLiteral("cmdSend"))->ShowRest();
    AudioEditor21->Stop();
    mbPlaying = false;
    SendTone();
}

void frmMain::lblLastURL_DblClick()
{
    const QString url = ControlTag(hotSpot("lblLastURL"));
    QApplication::clipboard()->setText(url);
    QMessageBox ask(QMessageBox::Question, QString(), QStringLiteral("Execute ") + url + QStringLiteral("?"),
                    QMessageBox::Yes | QMessageBox::No, this);
    ask.setObjectName(QStringLiteral("MsgBox"));
    if (ask.exec() == QMessageBox::Yes)
        OpenInBrowser(url);
}

void frmMain::mobjRecord_Timer(double SecondsElapsed)
{
    const QString shown = PositionCaption(RoundToEven(SecondsElapsed), 0);
    label("lblCurrentPosition")->setText(shown);
    label("lblSongLength")->setText(shown);
}

void frmMain::cmdRecord_Released()
{
    if (mbTrimmed && ShowMessageWindow(QStringLiteral("frmRecordDuringAudio")) == QLatin1String("Q"))
        return;
    AudioEditor21->Stop();
    mbPlaying = false;
    if (mbRecordMode) {
        StartRecordingNow();
        return;
    }
    Button(QStringLiteral("cmdRecord"))->ShowRest();
    ClearToneDisplay();
    mbRecordMode = true;
    ApplyWindowMode();
}

void frmMain::StartRecordingNow()
{
    if (!mbRecordMode)
        return;
    Button(QStringLiteral("imgStartRecording"))->ShowClicked();
    ShowMessageWindow(QStringLiteral("frmStartRecording"));
    mstrRecordingPath = GetTempFolder() + QStringLiteral("qt.wav");
    mobjRecord->StartRecording(mstrRecordingPath, ampbarLeft, ampbarRight);
    mbRecording = true;
}

void frmMain::StopRecordingNow(bool bDiscard)
{
    if (!mbRecording)
        return;
    // Every failure is shown and the next step runs all the same.
    auto step = [](const std::function<void()>& statement) {
        ErrObject err;
        ResumeNext(err, statement);
        if (err.Stands())
            MsgBox(err.Description);
    };
    SetMousePointer(vbHourglass);
    step([this] { mobjRecordAudioPlayer->StopPlaying(); });
    mbRecording = false;
    if (!mobjRecord->Recording()) {
        SetMousePointer(vbDefault);
        return;
    }
    step([this] { mobjRecord->StopRecording(); });
    mbRecordMode = false;
    ApplyWindowMode();
    if (!bDiscard) {
        LoadSoundFile(mobjRecord->CurrentRecordingPath());
        SetMousePointer(vbDefault);
    }
}

void frmMain::imgZoom_Click()
{
    if (mstrCurrentFile.isEmpty()) {
        ShowMessageWindow(QStringLiteral("frmNoToneSelected"));
    } else {
        AudioEditor21->Stop();
        frmZoomEdit zoom;
        zoom.Load();
        zoom.NCTSliderB21->SetValue(NCTSliderB21->Value());
        zoom.SetFile(mstrCurrentFile);
        zoom.Label(QStringLiteral("lblSongLength"))->setText(label("lblSongLength")->text());
        PrepareDialog(&zoom);
        zoom.Show(true);
        // Only the selection comes back, over the full view; mbTrimmed stays as it was.
        if (zoom.Tag == QLatin1String("OK")) {
            AudioEditor21->ZoomFull();
            AudioEditor21->SetShowSelection(true);
            AudioEditor21->SetSelectionStart(zoom.AudioEditor21->SelectionStart());
            AudioEditor21->SetSelectionEnd(zoom.AudioEditor21->SelectionEnd());
            label("lblToneLength")->setText(zoom.Label(QStringLiteral("lblToneLength"))->text());
            label("lblToneSize")->setText(zoom.Label(QStringLiteral("lblToneSize"))->text());
        }
        zoom.Unload();
    }
    SetFormEnabled(this, true);
}

void frmMain::lblSettings_DblClick()
{
    frmConfiguration settings;
    settings.Load();
    settings.Show(true);
    settings.Unload();
}

void frmMain::lblAbout_DblClick()
{
    frmAbout about;
    about.Load();
    about.Show(true);
    about.Unload();
}

void frmMain::CheckToneSize(const QString& path, bool& result)
{
    const auto limit = MaxToneSizeLimit(GetAppSetting(QStringLiteral("MaxToneSize"), kSettings));
    const qint64 size = QFileInfo(path).size();
    result = true;
    if (!limit || size <= *limit)
        return;
    const QString answer = ShowMessageWindow(QStringLiteral("frmToneTooBig"), [size](frmMessage& window) {
        SetControlTag(window.Label(QStringLiteral("lblTooBig")), QString::number(size));
    });
    result = answer != QLatin1String("Q");
}

namespace {
std::unique_ptr<frmMain>& instance()
{
    static std::unique_ptr<frmMain> form;
    return form;
}
}  // namespace

frmMain& MainForm()
{
    if (!instance())
        instance() = std::make_unique<frmMain>();
    return *instance();
}

void DropMainForm()
{
    instance().reset();
}
