#include "support/TestGround.h"

#include "core/MainWindow.h"
#include "core/globals.h"
#include "core/seams.h"

#include <QDir>
#include <QSettings>

TestGround::TestGround()
{
    Q_ASSERT(mDir.isValid());
    QDir(root()).mkpath(QStringLiteral("program"));
    QDir(root()).mkpath(QStringLiteral("temp"));
    QDir(root()).mkpath(QStringLiteral("settings"));
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, root() + QStringLiteral("/settings"));

    Seams& s = seams();
    s = DefaultSeams();
    const QString program = programFolder();
    const QString temp = tempFolder();
    s.programFolder = [program] { return program; };
    s.tempFolder = [temp] { return temp; };
    s.openUrl = [this](const QString& url) {
        openedUrls << url;
        return true;
    };
    s.endNow = [this](int code) { endCodes << code; };
    // A test that wants to see the quit's process sweep sets its own.
    s.killProcess = [](const QString&) { return false; };
    SetMainWindow({});
    ResetGlobals();
}

TestGround::~TestGround()
{
    seams() = DefaultSeams();
    seams().endNow = [](int) {};  // a stray end after the test must not take the runner down
    seams().killProcess = [](const QString&) { return false; };
    SetMainWindow({});
    ResetGlobals();
}

QString TestGround::programFolder() const
{
    return root() + QStringLiteral("/program");
}

QString TestGround::tempFolder() const
{
    return root() + QStringLiteral("/temp");
}
