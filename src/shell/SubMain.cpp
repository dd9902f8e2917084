#include "shell/SubMain.h"

#include "core/CError.h"
#include "core/MainWindow.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/modStartup.h"
#include "core/seams.h"
#include "delivery/CQueueManager.h"
#include "editing/frmMain.h"
#include "service/CLoginManager.h"
#include "service/CSignUpManager.h"
#include "shell/frmIntro.h"
#include "shell/frmTitle.h"
#include "shell/modShutdown.h"
#include "library/LibraryFile.h"
#include "library/frmSearching4Music.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QPointer>
#include <QStandardPaths>
#include <memory>

namespace {
QString setting(const char* key)
{
    return GetAppSetting(QString::fromLatin1(key), kSettings);
}

// The login window over the main window: the backdrop and the quill count
// follow the login, and a wish to sign up trades the main window for the intro.
LoginResult logIn(const QString& DefaultNumber)
{
    CLoginManager manager;
    QWidget* main = MainWindow();
    if (auto* form = qobject_cast<frmMain*>(main)) {
        QObject::connect(&manager, &CLoginManager::BackdropWanted, form, &frmMain::ShowLoginBackdrop);
        QObject::connect(&manager, &CLoginManager::BackdropDone, form, &frmMain::HideLoginBackdrop);
        QObject::connect(&manager, &CLoginManager::FreeQuillsRead, form, &frmMain::RefreshFreeQuillCount);
    }
    QObject::connect(&manager, &CLoginManager::SignUpChosen, [] {
        if (QWidget* window = MainWindow()) {
            if (auto* skinned = qobject_cast<CSkinWindow*>(window))
                skinned->Unload();
            else
                window->hide();
        }
        frmIntro& intro = IntroWindow();
        intro.Load();
        intro.Show(false);
    });
    manager.Login(DefaultNumber);
    return {manager.LoggedIn(), manager.DoSignup()};
}

// The program's one sign-up road, made on first use. Its first login is the
// start's own, and a new customer lands on the main window.
QPointer<CSignUpManager> gSignUpRoad;

CSignUpManager& signUpRoad()
{
    if (!gSignUpRoad) {
        gSignUpRoad = new CSignUpManager([](const QString& number) { return startRoads().login(number).LoggedIn; });
        QObject::connect(gSignUpRoad, &CSignUpManager::SignedUp, gSignUpRoad, [] {
            if (QWidget* main = MainWindow())
                main->show();
        });
    }
    return *gSignUpRoad;
}

PendingSignUpOutcome confirmPendingSignUp()
{
    const auto& road = startRoads().confirmPendingSignUp;
    return road ? road() : PendingSignUpOutcome::Unusable;
}

}  // namespace

StartRoads DefaultStartRoads()
{
    StartRoads roads;
    roads.login = logIn;
    roads.searchForMusic = [] {
        frmSearching4Music search;
        search.Show(true);
        search.Unload();
    };
    roads.showPhoneCheck = [] { signUpRoad().ShowPhoneCheck(); };
    roads.confirmPendingSignUp = ConfirmPendingSignUp;
    return roads;
}

void DropSignUpRoad()
{
    delete gSignUpRoad;
}

StartRoads& startRoads()
{
    static StartRoads live = DefaultStartRoads();
    return live;
}

void UseMainForm()
{
    SetMainWindow([] {
        static QPointer<frmMain> wired;
        frmMain& form = MainForm();
        if (wired != &form) {
            wired = &form;
            QObject::connect(&form, &frmMain::CloseWanted, &form, [&form] { QuitFromMainWindow(&form); });
            QObject::connect(&form, &frmMain::SignOutWanted, &form, [] { SignOutAndLeave(); });
            QObject::connect(&form, &frmMain::MinimiseWanted, &form, [&form] { MinimiseToTaskbar(&form); });
        }
        form.Load();
        return static_cast<QWidget*>(&form);
    });
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
    if (ShowMessageWindow(QStringLiteral("frmConfirmSearch")) == QLatin1String("Q"))
        WriteLibraryLine(gstrMyMusicPath, kDeclinedEmptyLibrary);
    else if (startRoads().searchForMusic)
        startRoads().searchForMusic();
}

void SubMain()
{
    if (setting("UseTunnel") == QLatin1String("1"))
        gbUseTunnel = true;
    try {
        InitApplication();
    } catch (const CError& e) {
        // The one start-up error that is not passed over: it is shown, and the program ends.
        MsgBox(e.Description(), QMessageBox::Critical);
        EndProgramNow(1);
    }
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
        case PendingSignUpOutcome::Confirmed:
            break;
        case PendingSignUpOutcome::GivenUp:
            EndProgramNow(0);
        case PendingSignUpOutcome::Unusable:
            return;
        }
    }

    QWidget* main = MainWindow();
    if (main)
        main->show();
    TitleWindow().show();

    const LoginResult result = startRoads().login(QString());
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
