#include "core/seams.h"

#include "core/modKillProcess.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QStandardPaths>
#include <QUrl>
#include <cstdlib>

Seams DefaultSeams()
{
    Seams s;
    s.programFolder = [] { return QCoreApplication::applicationDirPath(); };
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
    // data folder; the program trusts that one certificate besides the
    // system's authorities.
    s.serviceCertificateFile = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                               QStringLiteral("/quillotone-service/service.crt");
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
