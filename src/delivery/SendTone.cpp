// The send pipeline: from the press of Send to the tone on its way. It runs
// inside the main window as one long routine on the interface thread, with
// the window disabled and a notice telling the user what goes on.
#include "cd/CDManager.h"
#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modStartup.h"
#include "core/seams.h"
#include "delivery/CQueueManager.h"
#include "delivery/ToneFormats.h"
#include "delivery/ToneUpload.h"
#include "delivery/frmUploadingTone.h"
#include "editing/frmMain.h"
#include "platform/AudioEditor2.h"
#include "service/CHTTPCall.h"
#include "skin/CDialog.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QThread>

namespace {
constexpr int kUploadPasses = 6;
const QString kSent = QStringLiteral("Message Sent! Thanks for Quillo Tonin!");
const QString kReady = QStringLiteral("Ready.");

bool tunnelSetting()
{
    return GetAppSetting(QStringLiteral("UseTunnel"), kSettings) == QLatin1String("1");
}

void openHelper()
{
    OpenInBrowser(GetAppSetting(QStringLiteral("QuillAssistURL"), kSettings));
}

// Deletes a file, read-only or not.
void forceDelete(const QString& path)
{
    QFile file(path);
    file.setPermissions(file.permissions() | QFileDevice::WriteOwner);
    if (!file.remove())
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("SendTone"));
}

void moveFile(const QString& from, const QString& to)
{
    if (!QFileInfo::exists(from))
        throw CError(ErrNo::FileNotFound, QStringLiteral("File not found"), QStringLiteral("SendTone"));
    if (QFileInfo::exists(to))
        throw CError(58, QStringLiteral("File already exists"), QStringLiteral("SendTone"));
    if (!QFile::rename(from, to))
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("SendTone"));
}
}  // namespace

void frmMain::SendTone()
{
    CDialog dialog;
    QLabel* status = label("lblSoundFile");
    try {
        // Preparation.
        SetFormEnabled(this, false);
        SetMousePointer(vbDefault);
        const QString savedCaption = status->text();

        if (mstrCurrentFile.isEmpty()) {
            ShowMessageWindow(QStringLiteral("frmNoToneSelected"));
            SetFormEnabled(this, true);
            return;
        }

        int32_t length = 0;
        if (mbTrimmed) {
            const int32_t viewStart = AudioEditor21->ViewStart();
            const int32_t viewEnd = AudioEditor21->ViewEnd();
            length = viewEnd - viewStart;
            AudioEditor21->SetShowSelection(true);
            AudioEditor21->SetPlayPosition(viewStart);
            AudioEditor21->SetSelectionStart(viewStart);
            AudioEditor21->SetSelectionEnd(viewEnd);
        } else {
            length = AudioEditor21->SelectionEnd() - AudioEditor21->SelectionStart();
            if (length == 0) {
                ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
                SetFormEnabled(this, true);
                return;
            }
        }

        if (!QFileInfo::exists(mstrCurrentFile)) {
            show();
            dialog.Display(QStringLiteral("Open a music file or select one from 'My Music'"), true, this);
            SetFormEnabled(this, true);
            return;
        }

        if (gbUseTunnel) {
            CQueueManager queue;
            if (queue.IsDataFilePending()) {
                bool deletedPending = false;
                if (tunnelSetting())
                    openHelper();
                if (ShowMessageWindow(QStringLiteral("frmTonePending")) == QLatin1String("Q") &&
                    ShowMessageWindow(QStringLiteral("frmConfirmDeleteTone")) != QLatin1String("Q")) {
                    queue.DeleteQueuedTone();
                    deletedPending = true;
                    SetFormEnabled(this, true);
                }
                // A new tone follows a pending one only once the user deleted it.
                if (!deletedPending) {
                    SetFormEnabled(this, true);
                    return;
                }
            }
        }

        dialog.Display(QStringLiteral("Quillo Tone is preparing your ringtone. This will only take a few moments..."),
                       false, this);
        SetControlTag(status, status->text());

        const QString previewFile = PreviewFilePath();
        if (QFileInfo::exists(previewFile))
            forceDelete(previewFile);
        mintLoadStage = 2;
        // A trimmed sound cut to nothing is saved whole.
        AudioEditor21->SaveToFile(previewFile, length != 0, AudioEditor2::FormatMp3);

        dialog.Update(QStringLiteral("Quillo Tone is nearly there..."));
        QCoreApplication::processEvents();

        const ToneFormat& format = ToneFormatFor(QString(gstrPreferredFormat));
        QString source = previewFile;
        QString convertedFile = ConvertedFilePath(format);
        if (QFileInfo::exists(convertedFile))
            QFile::remove(convertedFile);
        int32_t number = format.preferredFormat;
        TheCDManager()->ConvertAudio(source, convertedFile, number);

        InitApplication();
        const QString toneFile = ToneFilePath(seams().now(), format.extension);
        moveFile(convertedFile, toneFile);

        bool goOn = true;
        CheckToneSize(toneFile, goOn);
        if (!goOn) {
            SetStatusText(kReady);
            dialog.HideForm();
            SetFormEnabled(this, true);
            mbBusy = false;
            return;
        }
        dialog.HideForm();

        const QString consent = ShowMessageWindow(gintFreeQuills < 1 ? QStringLiteral("frmCharged") : QStringLiteral("frmAboutToUseFreeQuill"));
        if (consent == QLatin1String("Q")) {
            SetStatusText(savedCaption);
            SetFormEnabled(this, true);
            mbBusy = false;
            return;
        }

        dialog.Display(QStringLiteral("\nContacting the Quillo Tone server. Please be patient..."), false, this);
        if (gbUseTunnel)
            sendByTunnel(dialog, format.contentType, toneFile);
        else
            sendDirect(dialog, format.contentType, toneFile);

        SetStatusText(kReady);
        SetFormEnabled(this, true);
        mbBusy = false;
    } catch (const CError& e) {
        // No line numbers are kept, so the line the message names is 0.
        show();
        MsgBox(QStringLiteral("Send: ") + e.Description() + QStringLiteral(" 0"));
        SetFormEnabled(this, true);
    }
}

void frmMain::sendByTunnel(CDialog& dialog, const QString& contentType, const QString& toneFile)
{
    CQueueManager().SaveData(contentType, toneFile, gstrMobileNumber, gstrPassword);
    // The record keeps only the tone's name; the file goes now, in this order.
    forceDelete(toneFile);
    openHelper();
    dialog.HideForm();
    ShowMessageWindow(QStringLiteral("frmSent"));
    QFont font = label("lblSoundFile")->font();
    font.setBold(false);
    label("lblSoundFile")->setFont(font);
    SetStatusText(kSent);
    if (!mstrCurrentFile.contains(QStringLiteral("qtrecordings"), Qt::CaseInsensitive))
        reportSong();
    if (gintFreeQuills > 0)
        --gintFreeQuills;
    RefreshFreeQuillCount();
}

void frmMain::sendDirect(CDialog& dialog, const QString& contentType, const QString& toneFile)
{
    dialog.HideForm();
    frmUploadingTone& uploading = UploadingToneWindow(this);
    uploading.Show(false);
    QCoreApplication::processEvents();
    QThread::msleep(10);
    QCoreApplication::processEvents();

    const QString record = CQueueManager().SaveData(contentType, toneFile, gstrMobileNumber, gstrPassword);
    const QString body = BuildUploadBody(record, FileToHexString(toneFile));

    // Every reply with fewer than three fields counts as delivered, the empty
    // one of a failed request too; only a refusal of three or more is retried.
    CHTTPCall http;
    const QString url = seams().serviceBaseUrl + QStringLiteral("SendT2.asp");
    int16_t attempts = 0;
    for (;;) {
        const QString reply = http.SendHTTP(url, false, body, QString(), kServiceTimeOut);
        if (UploadReplyEndsLoop(reply)) {
            SetControlTag(findChild<QObject*>(QStringLiteral("lblLastURL")), reply);
            break;
        }
        if (++attempts >= kUploadPasses)
            break;
    }
    uploading.Hide();

    if (attempts >= kUploadPasses) {
        CDialog failure;
        failure.Display(QStringLiteral("Error talking to Quillo Tone. Please try again in a few moments."), true, nullptr);
        failure.HideForm();
        return;
    }
    forceDelete(toneFile);
    if (tunnelSetting())
        openHelper();
    ShowMessageWindow(QStringLiteral("frmSent"));
    QFont font = label("lblSoundFile")->font();
    font.setBold(false);
    label("lblSoundFile")->setFont(font);
    SetStatusText(kSent);
    // A WMA song is not reported on this road, unlike the tunnel's.
    if (!mstrCurrentFile.right(3).toLower().endsWith(QLatin1String("wma")) &&
        !mstrCurrentFile.contains(QStringLiteral("qtrecordings"), Qt::CaseInsensitive))
        reportSong();
    if (gintFreeQuills > 0)
        --gintFreeQuills;
    RefreshFreeQuillCount();
}

void frmMain::reportSong()
{
    QString report = BuildSongReport(mstrCurrentFile);
    CHTTPCall().GetPage(ptPostSongData, report, true, kServiceTimeOut);
}
