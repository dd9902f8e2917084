#include "core/MainWindow.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modKillProcess.h"
#include "core/modStartup.h"
#include "core/seams.h"
#include "service/frmLogin.h"
#include "library/LibraryFile.h"
#include "shell/SubMain.h"
#include "shell/frmIntro.h"
#include "shell/frmTitle.h"
#include "shell/modShutdown.h"
#include "skin/CPictureButton.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/MusicGround.h"
#include "support/QuietOffscreen.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QtTest/qtestspontaneevent.h>
#include <memory>

namespace {
const char kChildRoot[] = "QUILLOTONE_CHILD_ROOT";
// Outlives the instance lock taken in it, which is released at the very end.
QTemporaryDir runtime;

QString readFile(const QString& path)
{
    return QString::fromUtf8(ReadFile(path));
}

// Runs a routine that may end the program; true if it did.
template <class Routine>
bool ends(Routine&& routine)
{
    try {
        routine();
    } catch (const ProgramEnded&) {
        return true;
    }
    return false;
}

bool visible(const QString& name)
{
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->objectName() == name && w->isVisible())
            return true;
    }
    return false;
}

// The child's side of the second-start test: the program's own start on the
// child's ground, with the real end of the program.
int runSubMainInChild(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QString root = qEnvironmentVariable(kChildRoot);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, root + "/settings");
    seams().programFolder = [root] { return root + "/program"; };
    seams().tempFolder = [root] { return root + "/temp"; };
    SubMain();
    DropStartupWindows();
    return 3;  // Sub Main went past the instance test
}
}  // namespace

class tst_Startup : public QObject {
    Q_OBJECT
    std::unique_ptr<MusicGround> ground;
    std::unique_ptr<QWidget> main;  // stands in for frmMain
    int mainLoads = 0;
    QStringList loginCalls;
    LoginResult loginAnswer;

    void useMainWindow()
    {
        SetMainWindow([this] {
            if (!main) {
                ++mainLoads;
                main = std::make_unique<QWidget>();
                main->setObjectName("frmMain");
                main->setGeometry(100, 100, 640, 480);
            }
            return main.get();
        });
    }

private slots:
    void initTestCase()
    {
        QuietOffscreenPlugin();
        // The instance lock lives in the user's runtime folder; ours is private to the test.
        QVERIFY(runtime.isValid());
        qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
        QVERIFY(!AnotherInstanceRuns());
    }

    void init()
    {
        ground = std::make_unique<MusicGround>();
        mainLoads = 0;
        loginCalls.clear();
        loginAnswer = {};
        startRoads() = {};
        startRoads().login = [this](const QString& text) {
            loginCalls << text;
            return loginAnswer;
        };
        useMainWindow();
    }

    void cleanup()
    {
        DropStartupWindows();
        main.reset();
        startRoads() = DefaultStartRoads();
        ground.reset();
    }

    void subMain_roads_data()
    {
        QTest::addColumn<QString>("t1nuc");
        QTest::addColumn<QString>("did");
        QTest::addColumn<QString>("road");  // intro, main
        QTest::addRow("fresh user") << "" << "" << "intro";
        QTest::addRow("DID -1 is not done") << "" << "-1" << "intro";
        QTest::addRow("DID 1") << "" << "1" << "main";
        QTest::addRow("pending sign-up skips the intro") << "123456" << "" << "main";
    }
    void subMain_roads()
    {
        QFETCH(QString, t1nuc);
        QFETCH(QString, did);
        QFETCH(QString, road);
        if (!t1nuc.isEmpty())
            SaveAppSetting("t1nuc", t1nuc, kSettings);
        if (!did.isEmpty())
            SaveAppSetting("DID", did, kSettings);
        int confirmations = 0;
        startRoads().confirmPendingSignUp = [&] {
            ++confirmations;
            return PendingSignUpOutcome::Confirmed;
        };
        loginAnswer = {false, true};  // the login window chose sign-up: Sub Main returns

        QVERIFY(!ends([] { SubMain(); }));
        // The machine key is made on every road past the instance test.
        QVERIFY(!GetAppSetting("DefaultProc", kSettings).isEmpty());
        QCOMPARE(confirmations, t1nuc.isEmpty() ? 0 : 1);
        if (road == "intro") {
            QVERIFY(visible("frmIntro"));
            QCOMPARE(mainLoads, 0);
            QVERIFY(!visible("frmTitle"));
            QVERIFY(loginCalls.isEmpty());
            QVERIFY(gbSignUpActive);
        } else {
            QVERIFY(!visible("frmIntro"));
            QVERIFY(main && main->isVisible());
            QVERIFY(visible("frmTitle"));
            QCOMPARE(loginCalls, QStringList{QString()});
            QVERIFY(!gbSignUpActive);
        }
    }

    void subMain_leftLoginWithoutSignUpEnds()
    {
        SaveAppSetting("DID", "1", kSettings);
        loginAnswer = {false, false};
        QVERIFY(ends([] { SubMain(); }));
        QCOMPARE(ground->endCodes, QList<int>{0});
    }

    void subMain_loggedIn_data()
    {
        QTest::addColumn<QString>("useTunnel");
        QTest::addColumn<QString>("currentTone");
        QTest::addColumn<QStringList>("opened");
        QTest::addRow("nothing pending") << "1" << "" << QStringList();
        QTest::addRow("pending, direct road") << "" << "AB12" << QStringList();
        QTest::addRow("pending on the tunnel") << "1" << "AB12" << QStringList{"https://helper.example/q"};
    }
    void subMain_loggedIn()
    {
        QFETCH(QString, useTunnel);
        QFETCH(QString, currentTone);
        SaveAppSetting("DID", "1", kSettings);
        SaveAppSetting("UseTunnel", useTunnel, kSettings);
        SaveAppSetting("QuillAssistURL", "https://helper.example/q", kSettings);
        SaveAppSetting("CurrentTone", currentTone, kToneData);
        loginAnswer = {true, false};
        DialogAnswerer answerer;
        answerer.answer("frmConfirmSearch", "imgCancel");

        QVERIFY(!ends([] { SubMain(); }));
        QVERIFY2(answerer.finishedCleanly(), qPrintable(answerer.problems()));
        QCOMPARE(gbUseTunnel, useTunnel == "1");
        QCOMPARE(readFile(gstrMyMusicPath), kDeclinedEmptyLibrary + "\n");
        QTEST(ground->openedUrls, "opened");
        // The window is usable again after the library question.
        QVERIFY(main->isVisible());
        QCOMPARE(MousePointer(), int(vbDefault));
    }

    void ensureMusicLibrary_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QStringList>("library");  // the Path of each Folder after
        QTest::addRow("accepted: the search writes the library") << false << "imgOK" << QStringList{"Album"};
        QTest::addRow("library already there") << true << "" << QStringList{"/kept"};
    }
    void ensureMusicLibrary()
    {
        QFETCH(bool, exists);
        QFETCH(QString, answer);
        InitApplication();
        ground->songs({"Album/a.mp3"});
        if (exists)
            QVERIFY(WriteFile(gstrMyMusicPath, "<Quillotone><Folder Path=\"/kept\"/></Quillotone>"));
        startRoads().searchForMusic = DefaultStartRoads().searchForMusic;
        DialogAnswerer answerer;
        if (!answer.isEmpty())
            answerer.answer("frmConfirmSearch", answer);
        if (answer == "imgOK")
            answerer.answer("frmSearching4Music", [](QWidget*) {});  // it ends by itself

        EnsureMusicLibrary();
        QVERIFY2(answerer.finishedCleanly(), qPrintable(answerer.problems()));
        QTEST(ground->libraryPaths().replaceInStrings(ground->music() + "/", ""), "library");
        // Once written, the question is not asked again.
        DialogAnswerer again;
        EnsureMusicLibrary();
        QVERIFY(again.unexpected.isEmpty());
    }

    void initApplication_isSafeToRepeat()
    {
        const QString recordings = ground->tempFolder() + "/qtrecordings";
        QVERIFY(WriteFile(recordings + "/take1.wav", "RIFF"));
        QVERIFY(WriteFile(recordings + "/take2.wav", "RIFF"));
        QFile::setPermissions(recordings + "/take2.wav", QFileDevice::ReadOwner);
        QVERIFY(WriteFile(ground->programFolder() + "/servercache/20240101.amr", "#!AMR"));

        InitApplication();
        QVERIFY(QDir(recordings).isEmpty());
        // Ripped files and the cache are never swept.
        QVERIFY(QFile::exists(ground->programFolder() + "/servercache/20240101.amr"));
        QDir(recordings).removeRecursively();
        InitApplication();  // a missing folder sweeps nothing
        QVERIFY(QDir(ground->programFolder() + "/servercache").exists());
    }

    void subMain_cacheFolderThatCannotBeMadeEnds()
    {
        // A file where the folder should be: not even root can make it.
        QVERIFY(WriteFile(ground->programFolder() + "/servercache", "in the way"));
        DialogAnswerer answerer;
        answerer.answer("MsgBox", "OK");
        QVERIFY(ends([] { SubMain(); }));
        QVERIFY2(answerer.finishedCleanly(), qPrintable(answerer.problems()));
        QVERIFY(answerer.seen.first().text.contains("servercache"));
        QCOMPARE(ground->endCodes, QList<int>{1});
        QCOMPARE(mainLoads, 0);
    }

    // The second start runs in a child process, where the program really ends.
    void secondStart_sweepsThenEndsSilently_data()
    {
        QTest::addColumn<bool>("firstRuns");
        QTest::addRow("first still running") << true;
        QTest::addRow("no other instance") << false;
    }
    void secondStart_sweepsThenEndsSilently()
    {
        QFETCH(bool, firstRuns);
        QTemporaryDir childRuntime;
        // This test process holds the lock of the runtime folder in the first row.
        const QString runtimeFolder = firstRuns ? runtime.path() : childRuntime.path();
        QVERIFY(WriteFile(ground->tempFolder() + "/qtrecordings/take.wav", "RIFF"));
        if (firstRuns) {
            // A first run of long standing still counts: its lock is not stale by age.
            QFile lock(runtime.filePath("quillotone.lock"));
            QVERIFY(lock.open(QIODevice::ReadWrite));
            QVERIFY(lock.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime));
        }

        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(kChildRoot, ground->root());
        env.insert("XDG_RUNTIME_DIR", runtimeFolder);
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), {"-child"});
        QVERIFY(child.waitForFinished(60000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), firstRuns ? 0 : 3);
        QVERIFY(QDir(ground->tempFolder() + "/qtrecordings").isEmpty());
        // It stopped before the machine key: nothing of the second start is stored.
        QCOMPARE(GetAppSetting("DefaultProc", kSettings).isEmpty(), firstRuns);
        if (firstRuns)
            QCOMPARE(child.readAllStandardOutput() + child.readAllStandardError(), QByteArray());
    }

    void writeQuitBalloon_data()
    {
        QTest::addColumn<QString>("currentTone");
        QTest::addColumn<QString>("useTunnel");
        QTest::addColumn<bool>("written");
        QTest::addColumn<QStringList>("opened");
        QTest::addRow("pending, tunnel") << "AB12" << "1" << true << QStringList{"https://helper.example/q"};
        QTest::addRow("nothing pending") << "" << "1" << false << QStringList();
    }
    void writeQuitBalloon()
    {
        QFETCH(QString, currentTone);
        QFETCH(QString, useTunnel);
        QFETCH(bool, written);
        SaveAppSetting("CurrentTone", currentTone, kToneData);
        SaveAppSetting("UseTunnel", useTunnel, kSettings);
        SaveAppSetting("QuillAssistURL", "https://helper.example/q", kSettings);
        const QString path = ground->programFolder() + "/bin/balloonmsg.xml";
        QVERIFY(WriteFile(path, "older file"));

        WriteQuitBalloon();
        QTEST(ground->openedUrls, "opened");
        const QString expected =
            "<?xml version=\"1.0\"?><Message Text=\"You have quit Quillo Tone but you still have a tone waiting - "
            "don't forget to retrieve your tone on your phone! Make sure you keep your computer running until you "
            "have retrieved your tone.\" Title=\"Quillo Tone\" BalloonIcon=\"PB_IMAGE_GREENSHIELD\" "
            "Width=\"5000\"/>\n";
        QCOMPARE(readFile(path), written ? expected : QString("older file"));
    }

    // The ways of ending that pass through frmConfirmExit.
    void quitPaths_data()
    {
        QTest::addColumn<QString>("path");    // lblClose, cmdSignOut, intro
        QTest::addColumn<QString>("answer");  // imgOK: leave, imgCancel: stay
        QTest::addColumn<bool>("ended");
        QTest::addColumn<bool>("balloon");
        QTest::addColumn<QStringList>("killed");
        QTest::addRow("lblClose, leave") << "lblClose" << "imgOK" << true << true << QStringList{"quillotone"};
        QTest::addRow("lblClose, stay") << "lblClose" << "imgCancel" << false << false << QStringList();
        QTest::addRow("sign out, leave") << "cmdSignOut" << "imgOK" << true << false << QStringList();
        QTest::addRow("sign out, stay") << "cmdSignOut" << "imgCancel" << false << false << QStringList();
        QTest::addRow("intro close, leave") << "intro" << "imgOK" << true << false << QStringList();
        QTest::addRow("intro close, stay") << "intro" << "imgCancel" << false << false << QStringList();
    }
    void quitPaths()
    {
        QFETCH(QString, path);
        QFETCH(QString, answer);
        QFETCH(bool, ended);
        SaveAppSetting("CurrentTone", "AB12", kToneData);  // a tone is pending
        SaveAppSetting("Logging", "1", kSettings);
        QStringList kills;
        seams().killProcess = [&](const QString& name) {
            kills << name;
            return true;  // this process survives: the routine's last steps run
        };
        QWidget* frmMain = MainWindow();
        frmMain->show();
        DialogAnswerer answerer;
        answerer.answer("frmConfirmExit", answer);

        bool didEnd = false;
        if (path == "lblClose") {
            didEnd = ends([&] { QuitFromMainWindow(frmMain); });
        } else if (path == "cmdSignOut") {
            didEnd = ends([] { SignOutAndLeave(); });
        } else {
            frmIntro& intro = IntroWindow();
            intro.Show(false);
            didEnd = ends([&] { QTest::mouseClick(intro.Button("imgClose"), Qt::LeftButton); });
            if (!ended)
                QVERIFY(intro.isVisible());
        }
        QVERIFY(answerer.allAnswered());
        QCOMPARE(didEnd, ended);
        QCOMPARE(ground->endCodes, ended ? QList<int>{0} : QList<int>());
        QTEST(QFile::exists(QuitBalloonPath()), "balloon");
        QTEST(kills, "killed");
        QCOMPARE(readFile(LogFilePath()).contains(": Shutting down Quillo Tone"), path == "lblClose" && ended);
        if (path == "lblClose")
            QCOMPARE(frmMain->isVisible(), !ended);
    }

    void intro_signIn_data()
    {
        QTest::addColumn<bool>("loggedIn");
        QTest::addRow("logged in") << true;
        QTest::addRow("login left") << false;
    }
    void intro_signIn()
    {
        QFETCH(bool, loggedIn);
        loginAnswer = {loggedIn, false};
        gbSignUpActive = true;
        frmIntro& intro = IntroWindow();
        intro.Show(false);
        QTest::mouseClick(intro.Button("imgSignIn"), Qt::LeftButton);

        QCOMPARE(loginCalls, QStringList{QString()});
        QCOMPARE(mainLoads, 1);
        QCOMPARE(main->isVisible(), loggedIn);
        QCOMPARE(intro.isVisible(), !loggedIn);
        QCOMPARE(intro.IsLoaded(), !loggedIn);
        QCOMPARE(GetAppSetting("DID", kSettings), loggedIn ? QString("1") : QString());
        QVERIFY(!visible("frmTitle"));
        QVERIFY(gbSignUpActive);
        if (!loggedIn) {
            QVERIFY(intro.Button("imgSignIn")->isEnabled());
            return;
        }
        // With no title window on this road, a minimise leaves the main
        // window an entry of its own to come back by.
        MinimiseToTaskbar(main.get());
        QVERIFY(main->isVisible() && main->isMinimized());
        main->setWindowState(Qt::WindowNoState);  // restored from the taskbar
        QVERIFY(main->isVisible() && !main->isMinimized());
    }

    // The real login road: a wish to sign up trades the main window for the
    // intro (a sign-in on it is walked in tst_signup).
    void login_signUpTradesTheMainWindowForTheIntro()
    {
        startRoads() = DefaultStartRoads();
        QWidget* frmMain = MainWindow();
        frmMain->show();
        DialogAnswerer signup;
        signup.answer("frmLogin", [](QWidget* w) {
            QTest::mouseClick(static_cast<frmLogin*>(w)->lblSignUp2, Qt::LeftButton);
        });
        const LoginResult result = startRoads().login(QString());
        QVERIFY(signup.allAnswered());
        QVERIFY(result.DoSignup && !result.LoggedIn);
        QVERIFY(gbSignUpActive);
        QVERIFY(!frmMain->isVisible());
        QVERIFY(IntroWindow().isVisible());
    }

    void title_followsTheMainWindow_data()
    {
        QTest::addColumn<bool>("signUp");
        QTest::addColumn<bool>("search");
        QTest::addRow("alone") << false << false;
        QTest::addRow("sign-up active") << true << false;
        QTest::addRow("search running") << false << true;
    }
    void title_followsTheMainWindow()
    {
        QFETCH(bool, signUp);
        QFETCH(bool, search);
        QWidget* frmMain = MainWindow();
        frmMain->show();
        frmTitle& title = TitleWindow();
        title.show();
        gbSignUpActive = signUp;
        gbSearchRunning = search;
        const bool follows = !signUp && !search;

        MinimiseToTaskbar(frmMain);
        QVERIFY(!frmMain->isVisible());
        QVERIFY(title.windowState() & Qt::WindowMinimized);
        title.setWindowState(Qt::WindowNoState);  // restored from the taskbar
        QCOMPARE(frmMain->isVisible(), follows);

        frmMain->show();
        title.setWindowState(Qt::WindowMinimized);
        QCOMPARE(frmMain->isVisible(), !follows);
        title.setWindowState(Qt::WindowMaximized);
        QCOMPARE(frmMain->isVisible(), !follows);
    }

    void title_closeFromTheTaskbarEnds_data()
    {
        QTest::addColumn<bool>("fromDesktop");
        QTest::addRow("taskbar close") << true;
        QTest::addRow("program's own unload") << false;
    }
    void title_closeFromTheTaskbarEnds()
    {
        QFETCH(bool, fromDesktop);
        frmTitle& title = TitleWindow();
        title.show();
        QCloseEvent close;
        close.setAccepted(false);
        const bool ended = ends([&] {
            if (fromDesktop) {
                QSpontaneKeyEvent::setSpontaneous(&close);
                QCoreApplication::instance()->notify(&title, &close);
            }
            else
                title.close();
        });
        QCOMPARE(ended, fromDesktop);
        QCOMPARE(ground->endCodes, fromDesktop ? QList<int>{0} : QList<int>());
    }

    // KillProcess walks /proc: a child of ours, running a copy of a small
    // program under a name of our choosing, is what it finds.
    void killProcess_matchesTheTailOfTheProgramPath_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("matches");
        QTest::addRow("other case") << "qtkillprobe" << true;
        QTest::addRow("a tail of the name") << "KILLPROBE" << true;
        QTest::addRow("not a tail") << "qtkill" << false;
        QTest::addRow("longer than the name") << "xqtkillprobe" << false;
    }
    void killProcess_matchesTheTailOfTheProgramPath()
    {
        QFETCH(QString, name);
        QFETCH(bool, matches);
        const QString probe = ground->root() + "/QtKillProbe";
        QVERIFY(QFile::copy("/bin/sleep", probe));
        QVERIFY(QFile::setPermissions(probe, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        QProcess child;
        child.start(probe, {"60"});
        QVERIFY(child.waitForStarted());

        QCOMPARE(KillProcess(name), matches);
        QCOMPARE(child.waitForFinished(matches ? 10000 : 200), matches);
        if (matches) {
            QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        } else {
            child.kill();
            child.waitForFinished();
        }
    }
};

int main(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "-child") == 0)
        return runSubMainInChild(argc, argv);
    QApplication app(argc, argv);
    tst_Startup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_startup.moc"
