#include "core/seams.h"

#include "core/modKillProcess.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>
#include <cstdlib>

Seams DefaultSeams()
{
    Seams s;
    // The program's own files stand beside it when it may write there (a build
    // or a home-made install), else in the user's data folder (an install
    // under /usr).
    s.programFolder = [] {
        const QString own = QCoreApplication::applicationDirPath();
        if (QFileInfo(own).isWritable())
            return own;
        const QString data =
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Quillotone");
        QDir().mkpath(data);
        return data;
    };
    s.tempFolder = [] { return QDir::tempPath(); };
    s.openUrl = [](const QString& target) {
        const QUrl url = QUrl::fromUserInput(target, QDir::currentPath(), QUrl::AssumeLocalFile);
        return url.isValid() && QDesktopServices::openUrl(url);
    };
    s.now = [] { return QDateTime::currentDateTime(); };
    s.endNow = [](int code) { std::_Exit(code); };
    s.killProcess = KillProcess;
    s.serviceBaseUrl = QStringLiteral("https://127.0.0.1:8443/");
    // The bundled service makes its own certificate on first start, in its
    // data folder: the user's own when both run for one user, else the system
    // service's. The program trusts that one certificate besides the system's
    // authorities.
    s.serviceCertificateFile = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                               QStringLiteral("/quillotone-service/service.crt");
    if (!QFileInfo::exists(s.serviceCertificateFile))
        s.serviceCertificateFile = QStringLiteral("/var/lib/quillotone-service/service.crt");
    return s;
}

Seams& seams()
{
    static Seams live = DefaultSeams();
    return live;
}

QString ProgramFolderPath(const QString& name)
{
    return QDir(seams().programFolder()).filePath(name);
}

void EndProgramNow(int code)
{
    seams().endNow(code);
    throw ProgramEnded{code};
}
