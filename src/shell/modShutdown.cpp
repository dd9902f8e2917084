#include "shell/modShutdown.h"

#include "core/modCommon.h"
#include "core/modKillProcess.h"
#include "core/seams.h"
#include "delivery/CQueueManager.h"
#include "skin/frmMessage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QXmlStreamWriter>

bool ConfirmExit()
{
    return ShowMessageWindow(QStringLiteral("frmConfirmExit")) != QLatin1String("Q");
}

QString QuitBalloonPath()
{
    return ProgramFolderPath(QStringLiteral("bin/balloonmsg.xml"));
}

void WriteQuitBalloon()
{
    if (!CQueueManager().IsDataFilePending())
        return;
    if (GetAppSetting(QStringLiteral("UseTunnel"), kSettings) == QLatin1String("1"))
        OpenInBrowser(GetAppSetting(QStringLiteral("QuillAssistURL"), kSettings));

    // The reader of this file expects the declaration and the one element on one line.
    QByteArray element;
    QXmlStreamWriter xml(&element);
    xml.writeEmptyElement(QStringLiteral("Message"));
    xml.writeAttribute(QStringLiteral("Text"),
                       QStringLiteral("You have quit Quillo Tone but you still have a tone waiting - don't forget to "
                                      "retrieve your tone on your phone! Make sure you keep your computer running "
                                      "until you have retrieved your tone."));
    xml.writeAttribute(QStringLiteral("Title"), QStringLiteral("Quillo Tone"));
    xml.writeAttribute(QStringLiteral("BalloonIcon"), QStringLiteral("PB_IMAGE_GREENSHIELD"));
    xml.writeAttribute(QStringLiteral("Width"), QStringLiteral("5000"));
    xml.writeEndDocument();

    const QString path = QuitBalloonPath();
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(QByteArrayLiteral("<?xml version=\"1.0\"?>") + element.trimmed() + '\n');
}

void QuitFromMainWindow(QWidget* frmMain)
{
    if (!ConfirmExit())
        return;
    WriteQuitBalloon();
    if (frmMain)
        frmMain->hide();
    WriteLog(QStringLiteral("Shutting down Quillo Tone"));
    // This normally ends the run on the spot, with every other copy of the program.
    seams().killProcess(kProgramFileName);
    QThread::msleep(500);
    if (frmMain)
        frmMain->close();
    EndProgramNow(0);
}

void SignOutAndLeave()
{
    if (ConfirmExit())
        EndProgramNow(0);
}
