#include "delivery/SendTone.h"

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
#include "platform/AudioEditor2.h"
#include "service/CHTTPCall.h"
#include "skin/CDialog.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"
#include "wire/Pages.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
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
        throw CError(ErrNo::FileAlreadyExists, QStringLiteral("File already exists"), QStringLiteral("SendTone"));
    if (!QFile::rename(from, to))
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("SendTone"));
}

void reportSong(SendToneHost& host)
{
    // The service takes a report only with the customer's number and password.
    QString report = BuildSongReport(host.CurrentFile()) + QLatin1Char('&') + BuildAccountQuery();
    CHTTPCall().GetPage(ptPostSongData, report, true, kServiceTimeOut);
}

// What both roads do once the tone is on its way.
void sent(SendToneHost& host, bool report)
{
    ShowMessageWindow(QStringLiteral("frmSent"));
    QLabel* status = host.SoundFileLabel();
    QFont font = status->font();
    font.setBold(false);
    status->setFont(font);
    host.SetStatusText(kSent);
    if (report)
        reportSong(host);
    if (gintFreeQuills > 0)
        --gintFreeQuills;
    host.RefreshFreeQuillCount();
}

void sendByTunnel(SendToneHost& host, CDialog& dialog, const QString& contentType, const QString& toneFile)
{
    CQueueManager().SaveData(contentType, toneFile, gstrMobileNumber, gstrPassword);
    // The record keeps only the tone's name; the file goes now, in this order.
    forceDelete(toneFile);
    openHelper();
    dialog.HideForm();
    sent(host, !host.CurrentFile().contains(QStringLiteral("qtrecordings"), Qt::CaseInsensitive));
}

void sendDirect(SendToneHost& host, CDialog& dialog, const QString& contentType, const QString& toneFile)
{
    dialog.HideForm();
    frmUploadingTone& uploading = UploadingToneWindow(host.HostWindow());
    uploading.Show(false);
    QCoreApplication::processEvents();
    QThread::msleep(10);
    QCoreApplication::processEvents();

    const QString record = CQueueManager().SaveData(contentType, toneFile, gstrMobileNumber, gstrPassword);
    const QString body = BuildUploadBody(record, FileToHexString(toneFile));

    // Every reply with fewer than three fields counts as delivered, the empty
    // one of a failed request too; only a refusal of three or more is retried.
    CHTTPCall http;
    const QString url = seams().serviceBaseUrl + QLatin1String(wire::kToneUpload);
    int16_t attempts = 0;
    for (;;) {
        const QString reply = http.SendHTTP(url, false, body, QString(), kServiceTimeOut);
        if (UploadReplyEndsLoop(reply)) {
            SetControlTag(host.LastUrlLabel(), reply);
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
    // A WMA song is not reported on this road, unlike the tunnel's.
    const QString song = host.CurrentFile();
    sent(host, !song.right(3).toLower().endsWith(QLatin1String("wma")) &&
                   !song.contains(QStringLiteral("qtrecordings"), Qt::CaseInsensitive));
}
}  // namespace

void SendTone(SendToneHost& host)
{
    CDialog dialog;
    QWidget* window = host.HostWindow();
    AudioEditor2* editor = host.HostEditor();
    QLabel* status = host.SoundFileLabel();
    try {
        // Preparation.
        SetFormEnabled(window, false);
        SetMousePointer(vbDefault);
        const QString savedCaption = status->text();

        // A file that failed to open leaves its path behind but no sound to cut.
        if (host.CurrentFile().isEmpty() || editor->TotalSamples() == 0) {
            ShowMessageWindow(QStringLiteral("frmNoToneSelected"));
            SetFormEnabled(window, true);
            return;
        }

        int32_t length = 0;
        if (host.Trimmed()) {
            const int32_t viewStart = editor->ViewStart();
            const int32_t viewEnd = editor->ViewEnd();
            length = viewEnd - viewStart;
            editor->SetShowSelection(true);
            editor->SetPlayPosition(viewStart);
            editor->SetSelectionStart(viewStart);
            editor->SetSelectionEnd(viewEnd);
        } else {
            length = editor->SelectionEnd() - editor->SelectionStart();
            if (length == 0) {
                ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
                SetFormEnabled(window, true);
                return;
            }
        }

        if (!QFileInfo::exists(host.CurrentFile())) {
            window->show();
            dialog.Display(QStringLiteral("Open a music file or select one from 'My Music'"), true, window);
            SetFormEnabled(window, true);
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
                    SetFormEnabled(window, true);
                }
                // A new tone follows a pending one only once the user deleted it.
                if (!deletedPending) {
                    SetFormEnabled(window, true);
                    return;
                }
            }
        }

        dialog.Display(QStringLiteral("Quillo Tone is preparing your ringtone. This will only take a few moments..."),
                       false, window);
        SetControlTag(status, status->text());

        const QString previewFile = PreviewFilePath();
        if (QFileInfo::exists(previewFile))
            forceDelete(previewFile);
        host.SetLoadStage(2);
        // A trimmed sound cut to nothing is saved whole.
        editor->SaveToFile(previewFile, length != 0, AudioEditor2::FormatMp3);

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
        host.CheckToneSize(toneFile, goOn);
        if (!goOn) {
            host.SetStatusText(kReady);
            dialog.HideForm();
            SetFormEnabled(window, true);
            host.ClearBusy();
            return;
        }
        dialog.HideForm();

        const QString consent = ShowMessageWindow(gintFreeQuills < 1 ? QStringLiteral("frmCharged")
                                                                      : QStringLiteral("frmAboutToUseFreeQuill"));
        if (consent == QLatin1String("Q")) {
            host.SetStatusText(savedCaption);
            SetFormEnabled(window, true);
            host.ClearBusy();
            return;
        }

        dialog.Display(QStringLiteral("\nContacting the Quillo Tone server. Please be patient..."), false, window);
        if (gbUseTunnel)
            sendByTunnel(host, dialog, format.contentType, toneFile);
        else
            sendDirect(host, dialog, format.contentType, toneFile);

        host.SetStatusText(kReady);
        SetFormEnabled(window, true);
        host.ClearBusy();
    } catch (const CError& e) {
        // No line numbers are kept, so the line the message names is 0.
        window->show();
        MsgBox(QStringLiteral("Send: ") + e.Description() + QStringLiteral(" 0"));
        SetFormEnabled(window, true);
    }
}
