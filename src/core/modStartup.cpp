#include "core/modStartup.h"

#include "core/globals.h"
#include "core/modCommon.h"
#include "core/seams.h"

#include <QApplication>
#include <QDir>
#include <QFile>

namespace {
// Deletes every file of the folder, read-only ones too.
void sweepFolder(const QString& path)
{
    QDir folder(path);
    const QFileInfoList files = folder.entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo& file : files) {
        QFile f(file.absoluteFilePath());
        f.setPermissions(f.permissions() | QFileDevice::WriteOwner);
        f.remove();
    }
}

// The bundled service on this computer, unless the settings name another one
// and the certificate it is to be checked against.
void UseServiceSettings()
{
    const QString url = GetAppSetting(QStringLiteral("ServiceURL"), kSettings);
    if (!url.isEmpty())
        seams().serviceBaseUrl = url.endsWith(QLatin1Char('/')) ? url : url + QLatin1Char('/');
    const QString certificate = GetAppSetting(QStringLiteral("ServiceCertificate"), kSettings);
    if (!certificate.isEmpty())
        seams().serviceCertificateFile = certificate;
}
}  // namespace

void InitApplication()
{
    QApplication::setApplicationName(QString::fromLatin1(kAppName));
    UseServiceSettings();
    gstrMyMusicPath = ProgramFolderPath(QStringLiteral("MyMusic.xml"));
    // A cache folder that cannot be made is the one start-up failure left uncaught.
    QDir().mkpath(ProgramFolderPath(QStringLiteral("servercache")));
    // From here on failures pass: a missing folder sweeps nothing.
    sweepFolder(GetTempFolder() + QStringLiteral("qtrecordings"));
}
