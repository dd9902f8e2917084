#include "editing/frmMain.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modStartup.h"
#include "core/numbers.h"
#include "core/twips.h"
#include "cd/frmRipCD.h"
#include "cd/modCDChecking.h"
#include "editing/CAudioRecorder.h"
#include "editing/EditorActions.h"
#include "editing/MainFace.h"
#include "editing/SoundFileDrop.h"
#include "editing/ToneMeasures.h"
#include "editing/frmAbout.h"
#include "editing/frmConfiguration.h"
#include "editing/frmZoomEdit.h"
#include "library/CAudioPlayer.h"
#include "library/frmMyMusic2.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTSliderB2.h"
#include "service/CFreeQuills.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStandardPaths>

namespace {
const QString kSelectPrompt = QStringLiteral("Select a sound file or rip a CD...");

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

void frmMain::onRelease(const char* button, const std::function<void()>& handler)
{
    CPictureButton* b = Button(QString::fromLatin1(button));
    connect(b, &CPictureButton::Released, this, [b, handler] {
        b->ShowRest();
        handler();
    });
}

void frmMain::buildControls()
{
    const SkinWindowDesc record = MainFace(true);
    mRecordFace = skin::PaintFace(skin::LaidOut(record));
    mNormalFace = skin::PaintFace(skin::LaidOut(MainFace(false)));
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
    holder->setGeometry(mainface::EditorHolder());
    mobjTone = new CToneEditor(this, {holder, holder->rect(), mainface::Slider(), QPoint(60, 2655)});
    AudioEditor21 = mobjTone->AudioEditor21;
    NCTSliderB21 = mobjTone->NCTSliderB21;
    label("lblVolumeMark")->setPixmap(VolumeMark(label("lblVolumeMark")->size()));

    ampbarLeft = new NCTAmpBar2(this);
    ampbarLeft->setObjectName(QStringLiteral("ampbarLeft"));
    ampbarRight = new NCTAmpBar2(this);
    ampbarRight->setObjectName(QStringLiteral("ampbarRight"));
    const int barWidth = TwipsToPixelsX(265 * 15);
    ampbarLeft->setGeometry(TwipsToPixelsX(285), TwipsToPixelsY(2100), barWidth, TwipsToPixelsY(180));
    ampbarRight->setGeometry(TwipsToPixelsX(285), TwipsToPixelsY(2450), barWidth, TwipsToPixelsY(180));

    // Covers the controls while the login window stands over the main window.
    auto* backdrop = new QWidget(this);
    backdrop->setObjectName(QStringLiteral("picLoginBackground"));
    backdrop->setAutoFillBackground(true);
    QPalette fill = backdrop->palette();
    fill.setColor(QPalette::Window, skin::FieldColour());
    backdrop->setPalette(fill);
    backdrop->hide();
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
        label("lblSoundFile")->setGeometry(mainface::SoundFile(gbUseTunnel));

        for (const char* name : {"lblClose", "lblMinimize"})
            label(name)->clear();
        // Sign out stands on the title band, in the band's own white.
        QPalette onBand = label("cmdSignOut")->palette();
        onBand.setColor(QPalette::WindowText, Qt::white);
        label("cmdSignOut")->setPalette(onBand);

        mobjRecord = std::make_unique<CAudioRecorder>();
        connect(mobjRecord.get(), &CAudioRecorder::Timer, this, &frmMain::mobjRecord_Timer);
        mobjRecordAudioPlayer = std::make_unique<CAudioPlayer>();

        connect(mobjTone, &CToneEditor::StatusText, this, [this](const QString& text) {
            SetStatusText(text);
            label("lblSoundFile")->setEnabled(true);
        });
        connect(AudioEditor21, &AudioEditor2::OnEditorMouseMove, this, &frmMain::ResetButtonPictures);
        // Record mode owns the transport buttons; the editor's keys follow them.
        const auto play = [this] {
            if (!mbRecordMode)
                mobjTone->Play();
        };
        new EditorActions(AudioEditor21, play, [this] { cmdStop_Released(); }, this);
        new SoundFileDrop(this, [this](const QString& path) {
            if (!mobjTone->mbBusy)
                openSoundFile(path);
        });

        connect(Button(QStringLiteral("cmdOpen")), &CPictureButton::Released, this, &frmMain::cmdOpen_Released);
        onRelease("cmdTrim", [this] {
            if (!mbRecordMode)
                mobjTone->Trim();
        });
        onRelease("cmdReset", [this] { mobjTone->Reset(); });
        onRelease("cmdPlay", play);
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
    label("lblSongLength")->setGeometry(mainface::SongLength(rec));
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
    // No sound stays behind the empty measures: Open cancelled in record mode ends in Empty.
    mobjTone->Forget();
    mobjTone->mstrCurrentFile.clear();
    SetStatusText(kSelectPrompt);
    QLabel* status = label("lblSoundFile");
    status->setEnabled(true);
    SetControlTag(status, QString());
}

bool frmMain::LoadSoundFile(const QString& path, const QString& caption, CToneEditor::Source source)
{
    if (!mobjTone->LoadFile(path, source)) {
        SetStatusText(kSelectPrompt);
        return false;
    }
    SetStatusText(caption.isEmpty() ? QFileInfo(path).fileName() : caption);
    SetControlTag(label("lblSoundFile"), path);
    return true;
}

void frmMain::LeaveRecordMode()
{
    if (!mbRecordMode)
        return;
    StopRecordingNow(true);  // the take is thrown away
    SetMousePointer(vbDefault);
    mbRecordMode = false;
    ApplyWindowMode();
}

void frmMain::cmdRip_Released()
{
    try {
        LeaveRecordMode();
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
            if (!path.isEmpty())
                LoadSoundFile(path, rip->SelectedTrackText());
        }
        SetFormEnabled(this, true);
        HideCCDBWait();
        SetMousePointer(vbDefault);
    } catch (const CError& e) {
        show();
        MsgBox(e.Description());
        SetFormEnabled(this, true);
    }
}


void frmMain::openSoundFile(const QString& path)
{
    LeaveRecordMode();
    LoadSoundFile(path);
    mobjTone->mbBusy = false;
}

void frmMain::cmdOpen_Released()
{
    LeaveRecordMode();
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
    mobjTone->mbBusy = false;
}

void frmMain::cmdMyMusic_Released()
{
    QLabel* status = label("lblSoundFile");
    try {
        LeaveRecordMode();
        SetControlTag(status, status->text());
        SetStatusText(QStringLiteral("Loading 'My Music'...."));
        mobjTone->Stop();
        SetMousePointer(vbHourglass);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();

        auto myMusic = std::make_unique<frmMyMusic2>();
        myMusic->Load();
        SetMousePointer(vbDefault);
        SetStatusText(ControlTag(status));
        myMusic->Show(true);
        mobjTone->mbBusy = true;
        const QString chosen = myMusic->Tag;
        if (!chosen.isEmpty() && chosen != QLatin1String("Q"))
            LoadSoundFile(chosen);
        // Unloaded whole, its controls at once: nothing of it is left to take the focus.
        myMusic.reset();
        mobjTone->mbBusy = false;
        SetFormEnabled(this, true);
        show();
    } catch (const CError& e) {
        if (e.Description().toLower() == kFormatNotSupported.toLower()) {
            ShowMessageWindow(QStringLiteral("frmInvalidFileFormat"));
        } else {
            MsgBox(e.Description());
        }
    }
}

void frmMain::cmdStop_Released()
{
    if (mbRecordMode) {
        StopRecordingNow(false);
        return;
    }
    Button(QStringLiteral("cmdStop"))->ShowRest();
    mobjTone->Stop();
}

void frmMain::cmdSend_Released()
{
    Button(QStringLiteral("cmdSend"))->ShowRest();
    mobjTone->Stop();
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
    if (mobjTone->mbTrimmed && ShowMessageWindow(QStringLiteral("frmRecordDuringAudio")) == QLatin1String("Q"))
        return;
    mobjTone->Stop();
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
    // A second Start during a take does nothing.
    if (!mbRecordMode || mbRecording)
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
    SetMousePointer(vbHourglass);
    ErrObject playerStopped;
    ResumeNext(playerStopped, [this] { mobjRecordAudioPlayer->StopPlaying(); });
    if (playerStopped.Stands())
        MsgBox(playerStopped.Description);
    mbRecording = false;
    if (!mobjRecord->Recording()) {
        SetMousePointer(vbDefault);
        return;
    }
    ErrObject stopped;
    ResumeNext(stopped, [this] { mobjRecord->StopRecording(); });
    if (stopped.Stands())
        MsgBox(stopped.Description);
    mbRecordMode = false;
    ApplyWindowMode();
    // A take that could not be kept is gone: its one message is enough.
    if (!bDiscard && !stopped.Stands()) {
        LoadSoundFile(mobjRecord->CurrentRecordingPath(), QString(), CToneEditor::Source::Take);
        SetMousePointer(vbDefault);
    }
}

void frmMain::imgZoom_Click()
{
    // A failed load leaves its path but no sound: nothing to zoom on.
    if (mobjTone->mstrCurrentFile.isEmpty() || !mobjTone->HasSound()) {
        ShowMessageWindow(QStringLiteral("frmNoToneSelected"));
    } else {
        mobjTone->Stop();
        frmZoomEdit zoom;
        zoom.Load();
        zoom.NCTSliderB21->SetValue(NCTSliderB21->Value());
        zoom.SetFile(mobjTone->mstrCurrentFile);
        zoom.Label(QStringLiteral("lblSongLength"))->setText(label("lblSongLength")->text());
        PrepareDialog(&zoom);
        zoom.Show(true);
        // Only the selection comes back, over the full view; mbTrimmed stays as it was.
        if (zoom.Tag == QLatin1String("OK")) {
            mobjTone->TakeMarks(zoom.mobjTone->Marks(), zoom.Label(QStringLiteral("lblToneLength"))->text(),
                                zoom.Label(QStringLiteral("lblToneSize"))->text());
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

QString frmMain::CurrentFile() const
{
    return mobjTone->HasSound() ? mobjTone->mstrCurrentFile : QString();
}

QString frmMain::StatusText() const
{
    return label("lblSoundFile")->text();
}

void frmMain::ShowSent(const QString& text)
{
    QLabel* status = label("lblSoundFile");
    QFont font = status->font();
    font.setBold(false);
    status->setFont(font);
    SetStatusText(text);
}

void frmMain::SetBusy(bool busy)
{
    SetFormEnabled(this, !busy);
    if (!busy)
        mobjTone->mbBusy = false;
}

void frmMain::SoundGone()
{
    mobjTone->Forget();
    SetStatusText(kSelectPrompt);
}

void frmMain::KeepLastReply(const QString& reply)
{
    SetControlTag(hotSpot("lblLastURL"), reply);
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
