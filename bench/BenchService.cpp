#include "BenchService.h"

#include <QCoreApplication>
#include <QDir>

QString BuiltProgram(const QString& name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../bin/") + name);
}

BenchService::BenchService(const QString& account)
{
    mProcess.start(BuiltProgram(QStringLiteral("quillotone-service")),
                   {QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"), QStringLiteral("--data"), mData.path(),
                    QStringLiteral("--demo-account"), account});
    if (!mProcess.waitForStarted(10000))
        return;
    // The first line says where it listens.
    while (!mProcess.canReadLine() && mProcess.waitForReadyRead(30000)) {
    }
    const QString line = QString::fromUtf8(mProcess.readLine());
    const qsizetype at = line.indexOf(QStringLiteral("https://"));
    if (at >= 0)
        mBase = line.mid(at).trimmed();
}

BenchService::~BenchService()
{
    mProcess.terminate();
    mProcess.waitForFinished(10000);
}
