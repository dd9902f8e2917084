#include "core/modStartup.h"

#include "core/StartupParts.h"
#include "core/frmIntro.h"
#include "core/frmTitle.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "delivery/CQueueManager.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>
#include <memory>

StartupParts& startupParts()
{
    static StartupParts parts;
    return parts;
}

namespace {
QString setting(const char* key)
{
    return GetAppSetting(QString::fromLatin1(key), kSettings);
}

QWidget* loadMainWindow()
{
    return seams().mainWindow ? seams().mainWindow() : nullptr;
}

LoginResult login()
{
    const auto& part = startupParts().login;
    return part ? part(QString()) : LoginResult{};
}

PendingSignUp confirmPendingSignUp()
{
    const auto& part = startupParts().confirmPendingSignUp;
    return part ? part() : PendingSignUp::ValuesFailed;
}

void writeEmptyLibrary()
{
    QFile library(gstrMyMusicPath);
    if (library.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        library.write(kEmptyLibrary.toUtf8() + '\n');
}

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
}  // namespace

void InitApplication()
{
    QApplication::setApplicationName(QString::fromLatin1(kAppName));
    gstrMyMusicPath = ProgramFolderPath(QStringLiteral("MyMusic.xml"));
    // A cache folder that cannot be made is the one start-up failure left uncaught.
    QDir().mkpath(ProgramFolderPath(QStringLiteral("servercache")));
    // From here on failures pass: a missing folder sweeps nothing.
    sweepFolder(GetTempFolder() + QStringLiteral("qtrecordings"));
}

bool AnotherInstanceRuns()
{
    static std::unique_ptr<QLockFile> lock;
    if (lock && lock->isLocked())
        return false;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    QDir().mkpath(folder);
    lock = std::make_unique<QLockFile>(QDir(folder).filePath(QStringLiteral("quillotone.lock")));
    // Only a lock whose program has died is stale and taken over, however old it is.
    lock->setStaleLockTime(0);
    return !lock->tryLock(0);
}

void EnsureMusicLibrary()
{
    if (QFile::exists(gstrMyMusicPath))
        return;
    auto ask = MessageWindow(QStringLiteral("frmConfirmSearch"));
    ask->Load();
    ask->Show(true);
    const auto& search = startupParts().searchForMusic;
    if (ask->Tag != QLatin1String("Q") && search) {
        search();
    } else {
        if (ask->Tag != QLatin1String("Q"))
            CDialog().Display(QStringLiteral("Searching your disks for music is not available in this version "
                                             "of Quillotone yet. Your library starts empty for now."),
                              true, nullptr);
        writeEmptyLibrary();
    }
    ask->Unload();
}

void SubMain()
{
    if (setting("UseTunnel") == QLatin1String("1"))
        gbUseTunnel = true;
    InitApplication();
    // After the set-up, so that a second start sweeps the first one's scratch recordings.
    if (AnotherInstanceRuns())
        EndProgramNow(0);
    InitMachineKey();

    if (setting("t1nuc").isEmpty()) {
        if (setting("DID") != QLatin1String("1")) {
            gbSignUpActive = true;
            IntroWindow().Show(false);
            return;
        }
    } else {
        switch (confirmPendingSignUp()) {
        case PendingSignUp::Confirmed:
            break;
        case PendingSignUp::GivenUp:
            EndProgramNow(0);
        case PendingSignUp::ValuesFailed:
            return;
        }
    }

    QWidget* main = loadMainWindow();
    if (main)
        main->show();
    TitleWindow().show();

    const LoginResult result = login();
    if (result.LoggedIn) {
        SetFormEnabled(main, false);
        SetMousePointer(vbDefault);
        EnsureMusicLibrary();
        SetFormEnabled(main, true);
        // A tone still pending from an earlier run: reopen the helper.
        if (CQueueManager().IsDataFilePending() && setting("UseTunnel") == QLatin1String("1"))
            OpenInBrowser(setting("QuillAssistURL"));
    }
    if (!result.LoggedIn && !result.DoSignup)
        EndProgramNow(0);
}
