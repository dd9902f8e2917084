#include "editing/frmMain.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modStartup.h"
#include "core/numbers.h"
#include "core/seams.h"
#include "core/twips.h"
#include "editing/CAudioPlayer.h"
#include "editing/ToneMeasures.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTSliderB2.h"
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
#include <QMessageBox>
#include <QStandardPaths>
#include <QTimer>

namespace {
const QString kSelectPrompt = QStringLiteral("Select a sound file or rip a CD...");
const QString kLoadingWords = QStringLiteral("Loading. Please wait (");
const QString kPreparingWords = QStringLiteral("Preparing ringtone (");

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
        text("lblSongLength", tw(48, 158, 50, 16), 9),
        caption("Tone", tw(100, 158, 30, 16)),
        text("lblToneLength", tw(132, 158, 44, 16), 9),
        caption("Size", tw(178, 158, 26, 16)),
        text("lblToneSize", tw(206, 158, 42, 16), 9),
        caption("At", tw(250, 158, 18, 16)),
        text("lblCurrentPosition", tw(270, 158, 52, 16), 9),
        spot("imgZoom", tw(324, 158, 36, 16), LabelKind::Link, "Zoom"),
        spot("lblVolumeDown", tw(364, 158, 10, 16), LabelKind::HotSpot, "\u2013"),
        spot("lblVolumeUp", tw(426, 158, 12, 16), LabelKind::HotSpot, "+"),
        spot("cmdSignOut", tw(300, 34, 66, 18), LabelKind::Link, "Sign out"),
        spot("lblSettings", tw(16, 214, 40, 10)),
        spot("lblAbout", tw(60, 214, 40, 10)),
        spot("lblLastURL", tw(104, 214, 40, 10)),
        text("lblStartRecording", tw(300, 132, 64, 14), 8, false, Qt::AlignCenter),
        text("lblStopRecording", tw(370, 132, 64, 14), 8, false, Qt::AlignCenter),
    };
    SkinWindowDesc record = mainFace(true);
    record.labels = face.labels;
    mRecordFace = skin::PaintFace(skin::LaidOut(record));
    Build(face);
    mNormalFace = skin::PaintFace(skin::LaidOut(face));

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
    NCTSliderB21->setGeometry(tw(376, 158, 46, 16));

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
        label("lblSoundFile")->setWordWrap(false);
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
        mobjRecordAudioPlayer = std::make_unique<CAudioPlayer>();
        connect(mobjRecordAudioPlayer.get(), &CAudioPlayer::Timer, this, &frmMain::mobjRecordAudioPlayer_Timer);

        connect(AudioEditor21, &AudioEditor2::OnEditorProgress, this, &frmMain::AudioEditor21_OnEditorProgress);
        connect(AudioEditor21, &AudioEditor2::OnEditorSelectionChanged, this,
                &frmMain::AudioEditor21_OnEditorSelectionChanged);
        connect(AudioEditor21, &AudioEditor2::OnEditorPositionChanged, this,
                &frmMain::AudioEditor21_OnEditorPositionChanged);
        connect(AudioEditor21, &AudioEditor2::OnEditorPositionSet, this,
                &frmMain::AudioEditor21_OnEditorPositionChanged);
        connect(AudioEditor21, &AudioEditor2::OnEditorMouseMove, this, &frmMain::ResetButtonPictures);
        connect(NCTSliderB21, &NCTSliderB2::OnVolumeSliderMoved, AudioEditor21, &AudioEditor2::SetVolume);
        connect(tmrVolume, &QTimer::timeout, this, &frmMain::tmrVolume_Timer);
        tmrVolume->start();

        connect(Button(QStringLiteral("cmdOpen")), &CPictureButton::Released, this, &frmMain::cmdOpen_Released);
        connect(Button(QStringLiteral("cmdTrim")), &CPictureButton::Released, this, &frmMain::cmdTrim_Released);
        connect(Button(QStringLiteral("cmdReset")), &CPictureButton::Released, this, &frmMain::cmdReset_Released);
        connect(Button(QStringLiteral("cmdPlay")), &CPictureButton::Released, this, &frmMain::cmdPlay_Released);
        connect(Button(QStringLiteral("cmdStop")), &CPictureButton::Released, this, &frmMain::cmdStop_Released);
        connect(Button(QStringLiteral("cmdSend")), &CPictureButton::Released, this, &frmMain::cmdSend_Released);
        connect(Button(QStringLiteral("cmdMyMusic")), &CPictureButton::Released, this,
                [this] { notThereYet(QStringLiteral("The My Music library")); });
        connect(Button(QStringLiteral("cmdRip")), &CPictureButton::Released, this,
                [this] { notThereYet(QStringLiteral("Ripping from a CD")); });
        connect(Button(QStringLiteral("cmdRecord")), &CPictureButton::Released, this,
                [this] { notThereYet(QStringLiteral("Recording from the sound card")); });
        connect(hotSpot("lblFreeQuills"), &CClickLabel::Click, this,
                [this] { notThereYet(QStringLiteral("Referring friends for free quills")); });
        connect(hotSpot("lblClose"), &CClickLabel::Click, this, &frmMain::CloseWanted);
        connect(hotSpot("cmdSignOut"), &CClickLabel::Click, this, &frmMain::SignOutWanted);
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

void frmMain::notThereYet(const QString& what)
{
    CDialog().Display(what + QStringLiteral(" is not available in this version of Quillotone yet."), true, this);
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
    status->setText(text);
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
    label("lblSongLength")->setGeometry(rec ? tw(300, 136, 134, 16) : tw(48, 158, 50, 16));
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
            SetStatusText(kSelectPrompt);
        }
    } catch (const CError& e) {
        if (e.Description() == kFormatNotSupported) {
            SetFormEnabled(this, true);
            CDialog().Display(QStringLiteral("You selected a non-music file. Please try again."), true, this);
            SetStatusText(kSelectPrompt);
        }
    }
    SetFormEnabled(this, true);
    mbBusy = false;
    label("imgLoading")->hide();
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

        AudioEditor21->SetShowSelection(false);
        AudioEditor21->SetPlayPosition(0);
        msngFileLength = static_cast<float>(QFileInfo(path).size());
        mbTrimmed = false;
        SetFormEnabled(this, wasEnabled);
        mbBusy = false;
    } catch (const CError&) {
        SetMousePointer(vbDefault);
        ShowMessageWindow(QStringLiteral("frmInvalidFileFormat"));
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

void frmMain::AudioEditor21_OnEditorSelectionChanged()
{
    const int32_t length = AudioEditor21->SelectionEnd() - AudioEditor21->SelectionStart();
    const float seconds = MillisecondsToSeconds(AudioEditor21->SamplesToMilliseconds(length));
    if (seconds == 0)
        return;
    label("lblToneLength")->setText(LengthCaption(seconds));
    label("lblToneSize")->setText(ToneSizeCaption(seconds));
    AudioEditor21_OnEditorPositionChanged();
}

void frmMain::AudioEditor21_OnEditorPositionChanged()
{
    // By this order of steps the milliseconds of a thousandth of the
    // position are the position in seconds.
    const int32_t seconds = AudioEditor21->SamplesToMilliseconds(RoundToEven(AudioEditor21->PlayPosition() / 1000.0));
    label("lblCurrentPosition")->setText(mbResetting ? kPositionEmpty : PositionCaption(seconds, msngTrimOffset));
}

void frmMain::cmdOpen_Released()
{
    mbRecordMode = false;
    ApplyWindowMode();
    // A take under way would be stopped and thrown away here, once recording exists.

    // A music folder that does not exist would be offered as a file name.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    if (!QFileInfo(folder).isDir())
        folder = QDir::homePath();
    QFileDialog dialog(this, QStringLiteral("Open"), folder,
                       QStringLiteral("Music files (*.mp3 *.wav *.wma *.MP3 *.WAV *.WMA);;All files (*)"));
    dialog.setObjectName(QStringLiteral("CommonDialog1"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty())
        LoadSoundFile(dialog.selectedFiles().first());
    mbBusy = false;
}

void frmMain::cmdTrim_Released()
{
    Button(QStringLiteral("cmdTrim"))->ShowRest();
    if (mbRecordMode)
        return;
    const int32_t start = AudioEditor21->SelectionStart();
    const int32_t end = AudioEditor21->SelectionEnd();
    if ((start == 0 && end == 0) || start == end) {
        ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
        return;
    }
    msngTrimOffset = static_cast<float>(AudioEditor21->SamplesToMilliseconds(RoundToEven(start / 1000.0)));
    AudioEditor21->ZoomToRange(start, end);
    AudioEditor21_OnEditorPositionChanged();
    mbTrimmed = true;
}

void frmMain::cmdReset_Released()
{
    Button(QStringLiteral("cmdReset"))->ShowRest();
    if (mstrCurrentFile.isEmpty())
        return;
    ErrObject ignored;
    ResumeNext(ignored, [&] { mbResetting = true; });
    ResumeNext(ignored, [&] { AudioEditor21->ZoomFull(); });
    ResumeNext(ignored, [&] {
        label("lblToneLength")->setText(kToneLengthReset);
        label("lblToneSize")->setText(kToneSizeReset);
    });
    ResumeNext(ignored, [&] {
        AudioEditor21->SetSelectionStart(0);
        AudioEditor21->SetSelectionEnd(0);
        AudioEditor21->SetPlayPosition(0);
    });
    ResumeNext(ignored, [&] { cmdStop_Released(); });
    msngTrimOffset = 0;
    mbResetting = false;
    mbTrimmed = false;
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
    if (mbRecordMode)
        return;  // stops the take, once recording exists
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

void frmMain::tmrVolume_Timer()
{
    if (mintVolumeDirection != 0)
        NCTSliderB21->SetValue(NCTSliderB21->Value() + 3000 * mintVolumeDirection);
}

void frmMain::mobjRecordAudioPlayer_Timer(double SecondsElapsed)
{
    const QString shown = PositionCaption(RoundToEven(SecondsElapsed), 0);
    label("lblCurrentPosition")->setText(shown);
    label("lblSongLength")->setText(shown);
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
