#include "delivery/SendTone.h"

#include "cd/CDManager.h"
#include "core/CError.h"
#include "core/MainWindow.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modStartup.h"
#include "core/seams.h"
#include "delivery/CQueueManager.h"
#include "delivery/ToneFormats.h"
#include "delivery/ToneSizeLimit.h"
#include "delivery/ToneUpload.h"
#include "delivery/frmUploadingTone.h"
#include "service/CHTTPCall.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"
#include "wire/Pages.h"

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
    host.ShowSent(kSent);
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
    frmUploadingTone& uploading = UploadingToneWindow(MainWindow());
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
            host.KeepLastReply(reply);
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
    // The notices stand over the main window, which a failure brings back to view.
    QWidget* window = MainWindow();
    try {
        // Preparation.
        host.SetBusy(true);
        SetMousePointer(vbDefault);
        const QString savedCaption = host.StatusText();

        if (host.CurrentFile().isEmpty()) {
            ShowMessageWindow(QStringLiteral("frmNoToneSelected"));
            host.SetBusy(false);
            return;
        }

        const ToneMarks part = host.MarkedPart();
        if (!host.Trimmed() && part.Length() == 0) {
            ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
            host.SetBusy(false);
            return;
        }

        if (!QFileInfo::exists(host.CurrentFile())) {
            if (window)
                window->show();
            dialog.Display(QStringLiteral("Open a music file or select one from 'My Music'"), true, window);
            host.SoundGone();
            host.SetBusy(false);
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
                    host.SetBusy(false);
                }
                // A new tone follows a pending one only once the user deleted it.
                if (!deletedPending) {
                    host.SetBusy(false);
                    return;
                }
            }
        }

        dialog.Display(QStringLiteral("Quillo Tone is preparing your ringtone. This will only take a few moments..."),
                       false, window);

        const QString previewFile = PreviewFilePath();
        if (QFileInfo::exists(previewFile))
            forceDelete(previewFile);
        // A trimmed sound cut to nothing is saved whole.
        host.WriteCut(previewFile, part.Length() != 0);

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
            host.SetStatusText(kReady);
            dialog.HideForm();
            host.SetBusy(false);
            return;
        }
        dialog.HideForm();

        const QString consent = ShowMessageWindow(gintFreeQuills < 1 ? QStringLiteral("frmCharged")
                                                                      : QStringLiteral("frmAboutToUseFreeQuill"));
        if (consent == QLatin1String("Q")) {
            host.SetStatusText(savedCaption);
            host.SetBusy(false);
            return;
        }

        dialog.Display(QStringLiteral("\nContacting the Quillo Tone server. Please be patient..."), false, window);
        if (gbUseTunnel)
            sendByTunnel(host, dialog, format.contentType, toneFile);
        else
            sendDirect(host, dialog, format.contentType, toneFile);

        host.SetStatusText(kReady);
        host.SetBusy(false);
    } catch (const CError& e) {
        // No line numbers are kept, so the line the message names is 0.
        if (window)
            window->show();
        MsgBox(QStringLiteral("Send: ") + e.Description() + QStringLiteral(" 0"));
        host.SetBusy(false);
    }
}
