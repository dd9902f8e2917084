// CLoginManager and CAnnouncements against our real service over TLS, and the
// reading of every kind of login reply, malformed ones included.
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "service/CAnnouncements.h"
#include "service/CLoginManager.h"
#include "skin/CPictureButton.h"
#include "service/frmLogin.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <memory>

namespace {
const QString kDemo = ServiceFixture::kDemoMobile;
const QString kDemoPassword = ServiceFixture::kDemoPassword;

DialogAnswerer::Step SignIn(const QString& number, const QString& password)
{
    return [number, password](QWidget* w) {
        auto* window = static_cast<frmLogin*>(w);
        window->txtMobileNumber->setText(number);
        window->txtPassword->setText(password);
        QTest::mouseClick(window->imgSignIn, Qt::LeftButton);
    };
}

QStringList LogLines()
{
    return QString::fromLatin1(ReadFile(LogFilePath())).split('\n', Qt::SkipEmptyParts);
}

int Requests(const QString& page)
{
    return static_cast<int>(LogLines().filter(": URL: ").filter(page).size());
}
}  // namespace

// A login wired to the stand-in main window as the shell wires it to frmMain.
class StandInLogin : public CLoginManager {
public:
    explicit StandInLogin(QWidget* main)
    {
        auto* backdrop = main->findChild<QWidget*>("picLoginBackground");
        auto* count = main->findChild<QLabel*>("lblFreeQuillCount");
        connect(this, &CLoginManager::BackdropWanted, backdrop, &QWidget::show);
        connect(this, &CLoginManager::BackdropDone, backdrop, &QWidget::hide);
        connect(this, &CLoginManager::FreeQuillsRead, count, [count] { count->setText(QString::number(gintFreeQuills)); });
    }
};

class tst_Login : public QObject {
    Q_OBJECT
    std::unique_ptr<ServiceFixture> service;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<QWidget> mainWindow;

private slots:
    void initTestCase()
    {
        service = std::make_unique<ServiceFixture>();
        QVERIFY(service->running());
    }
    void cleanupTestCase() { service.reset(); }
    void init()
    {
        ground = std::make_unique<TestGround>();
        service->aimSeams();
        gstrMachineKey = "0123456789ABCDEF";
        SaveAppSetting("Logging", "1", kSettings);
        // A stand-in main window with the two controls login touches.
        mainWindow = std::make_unique<QWidget>();
        mainWindow->resize(800, 600);
        auto* count = new QLabel("-", mainWindow.get());
        count->setObjectName("lblFreeQuillCount");
        auto* backdrop = new QWidget(mainWindow.get());
        backdrop->setObjectName("picLoginBackground");
        backdrop->hide();
    }
    void cleanup()
    {
        mainWindow.reset();
        ground.reset();
    }

    void readLoginReply_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<bool>("loggedIn");
        QTest::addColumn<QString>("customerId");
        QTest::addColumn<int>("freeQuills");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("charge");
        // Before each: quills 9, id "", charge "old", format "".
        QTest::addRow("eleven fields") << "1,42,Kim,Lee,1,101,1,3,2,MP3,It costs A$2." << true << "42" << 3 << "3"
                                       << "MP3" << "It costs A$2.";
        QTest::addRow("verdict alone") << "1" << true << "" << 9 << "-" << "AMR Narrowband" << "old";
        QTest::addRow("refused") << "0" << false << "" << 9 << "-" << "AMR Narrowband" << "old";
        QTest::addRow("quills over 16 bits") << "1,42,a,b,c,d,e,40000,f,WAV,x" << true << "42" << 9 << "-" << "WAV"
                                             << "x";
        QTest::addRow("id over 16 bits") << "1,32768,a,b,c,d,e,2,f,WAV,x" << true << "" << 2 << "2" << "WAV" << "x";
        QTest::addRow("id loses its zeros") << "1,0042,a,b,c,d,e,2,f,,x" << true << "42" << 2 << "2"
                                            << "AMR Narrowband" << "x";
        QTest::addRow("quills rounded, half to even") << "1,1,a,b,c,d,e,2.5" << true << "1" << 2 << "2"
                                                      << "AMR Narrowband" << "old";
        QTest::addRow("quills not a number") << "1,1,a,b,c,d,e,lots,f,MP3,y" << true << "1" << 9 << "-" << "MP3"
                                             << "y";
        QTest::addRow("binary junk") << QString::fromLatin1("\x01\xff\x00,\x7f", 5) << false << "" << 9 << "-"
                                     << "AMR Narrowband" << "old";
        QTest::addRow("huge field") << "1,7,a,b,c,d,e,1,f,MP3," + QString(200000, 'z') << true << "7" << 1 << "1"
                                    << "MP3" << QString(200000, 'z');
    }
    void readLoginReply()
    {
        QFETCH(QString, reply);
        gintFreeQuills = 9;
        gstrChargeText = "old";
        StandInLogin manager(mainWindow.get());
        manager.ReadLoginReply(reply);
        QTEST(manager.LoggedIn(), "loggedIn");
        QTEST(gstrCustomerID, "customerId");
        QTEST(int(gintFreeQuills), "freeQuills");
        QTEST(mainWindow->findChild<QLabel*>("lblFreeQuillCount")->text(), "label");
        QTEST(gstrPreferredFormat, "format");
        QTEST(gstrChargeText, "charge");
    }

    void loginFillsTheSessionAndShowsTheNews()
    {
        auto script = std::make_unique<DialogAnswerer>();
        script->answer("frmLogin", SignIn(kDemo, kDemoPassword))
            .answer("frmAnnouncements", "imgOK");
        StandInLogin manager(mainWindow.get());
        manager.Login({});
        QVERIFY2(script->finishedCleanly(), qPrintable(script->problems()));
        QVERIFY(script->seen[1].text.contains("This is the demo account"));
        QVERIFY(script->seen[1].text.contains("free quills to try.\n"));
        script.reset();
        QVERIFY(manager.LoggedIn());
        QVERIFY(!manager.Cancelled() && !manager.DoSignup());
        QCOMPARE(gstrCustomerID, QString("1"));
        QCOMPARE(gstrMobileNumber, kDemo);
        QCOMPARE(Decrypt(gstrPassword, gstrMachineKey), kDemoPassword);
        QVERIFY(gstrPassword != kDemoPassword);
        QCOMPARE(mainWindow->findChild<QLabel*>("lblFreeQuillCount")->text(), QString("5"));
        QCOMPARE(GetAppSetting("LastPhoneNumber", kSettings), kDemo);
        QVERIFY(!mainWindow->findChild<QWidget*>("picLoginBackground")->isVisible());
    }

    // A sign-in that fails leaves the window up after its message; only a
    // refusal by the service is counted, and the number tried remembered.
    // The sixth refusal in a row ends the program.
    void failedSignIn_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("service");  // "", "unreachable" or "untrusted"
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("refusals");
        QTest::addRow("refused five times") << "0499999998" << "wrong" << "" << "Invalid login. Please try again." << 5;
        QTest::addRow("refused six times") << "0499999997" << "wrong" << "" << "Invalid login. Please try again." << 6;
        QTest::addRow("no number") << "   " << "x" << "" << "Please enter your mobile number and password." << 0;
        QTest::addRow("no password") << kDemo << "" << "" << "Please enter your mobile number and password." << 0;
        QTest::addRow("service unreachable") << kDemo << kDemoPassword << "unreachable" << "cannot be reached" << 0;
        // A service that is not the trusted one is never sent the password.
        QTest::addRow("certificate not trusted")
            << kDemo << kDemoPassword << "untrusted" << "could not prove its identity" << 0;
    }
    void failedSignIn()
    {
        QFETCH(QString, number);
        QFETCH(QString, password);
        QFETCH(QString, service);
        QFETCH(QString, message);
        QFETCH(int, refusals);
        if (service == "unreachable")
            seams().serviceBaseUrl = ServiceFixture::unreachableUrl();
        if (service == "untrusted")
            seams().serviceCertificateFile = ground->tempFolder() + "/nobody.crt";
        DialogAnswerer script;
        for (int i = 0; i < qMax(refusals, 1); ++i)
            script.answer("frmLogin", SignIn(number, password)).answer("frmGenericOKDialog", "Enter");
        const bool ended = refusals == 6;
        if (!ended)
            script.answer("frmLogin", "imgCancel");
        StandInLogin manager(mainWindow.get());
        manager.Login({});
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QVERIFY2(script.seen[1].text.contains(message), qPrintable(script.seen[1].text));
        QVERIFY(!manager.LoggedIn());
        QCOMPARE(manager.Cancelled(), !ended);
        QCOMPARE(manager.FailedAttempts(), int16_t(refusals));
        QCOMPARE(Requests("Login.asp"), refusals);
        QCOMPARE(GetAppSetting("LastPhoneNumber", kSettings), refusals ? number : QString());
        // The announcement check ran with the number refused.
        QCOMPARE(Requests("AnnouncementRead.asp?MobileNumber=" + number + "&Password=" + password), refusals);
        QCOMPARE(ground->endCodes.size(), ended ? 1 : 0);
    }

    void originGoesOutAsANumber_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("sent");
        QTest::addRow("absent") << "" << "&Origin=0";
        QTest::addRow("numeric") << "17" << "&Origin=17";
        QTest::addRow("text") << "partner" << "&Origin=0";
    }
    void originGoesOutAsANumber()
    {
        QFETCH(QString, setting);
        QFETCH(QString, sent);
        if (!setting.isEmpty())
            SaveAppSetting("Origin", setting, kSettings);
        DialogAnswerer script;
        script.answer("frmLogin", SignIn(kDemo, kDemoPassword));
        StandInLogin manager(mainWindow.get());
        manager.Login({});
        QVERIFY(manager.LoggedIn());
        QVERIFY(LogLines().filter("Login.asp?").first().endsWith(sent));
    }

    // The forgotten-password link opens the service's page and stays; Esc
    // ends the program. (Sign-up from here is walked in tst_startup.)
    void forgottenPasswordAndEscape()
    {
        SaveAppSetting("LastPhoneNumber", "0411000111", kSettings);
        QString shownNumber;
        DialogAnswerer script;
        script.answer("frmLogin", [&](QWidget* w) {
            auto* window = static_cast<frmLogin*>(w);
            shownNumber = window->txtMobileNumber->text();
            QTest::mouseClick(window->lblURL, Qt::LeftButton);
            QTest::keyClick(window, Qt::Key_Escape);
        });
        StandInLogin manager(mainWindow.get());
        manager.Login({});
        QCOMPARE(shownNumber, QString("0411000111"));
        QCOMPARE(ground->openedUrls, QStringList{service->baseUrl() + "password.asp"});
        QCOMPARE(ground->endCodes, QList<int>{0});
    }

    void numberTakesDigitsAndEnterSignsIn()
    {
        QString typed;
        DialogAnswerer script;
        script.answer("frmLogin", [&](QWidget* w) {
            auto* window = static_cast<frmLogin*>(w);
            window->txtMobileNumber->clear();
            QTest::keyClicks(window->txtMobileNumber, "04a12-3 456x78");
            QTest::keyClick(window->txtMobileNumber, Qt::Key_Backspace);
            QTest::keyClicks(window->txtMobileNumber, "8");
            typed = window->txtMobileNumber->text();
            window->txtMobileNumber->setText(kDemo);
            window->txtPassword->setText(kDemoPassword);
            QTest::keyClick(window->txtPassword, Qt::Key_Return);
        });
        StandInLogin manager(mainWindow.get());
        manager.Login("0400000000");
        QCOMPARE(typed, QString("0412345678"));
        QVERIFY(manager.LoggedIn());
    }

    void threeAnnouncementsThreeWindowsFourRequests()
    {
        const QString id = service->addActiveCustomer("0400000101", "secret99", "Ann");
        QVERIFY(!id.isEmpty());
        service->get("ReferFriends.asp?refCustomerID=" + id +
                     "&FirstName1=Bo&MobileNumber1=0400000102&FirstName2=Cy&MobileNumber2=0400000103&"
                     "MobileNumber=0400000101&Password=secret99");
        QVERIFY(!service->addActiveCustomer("0400000102", "secret99", "Bo").isEmpty());
        QVERIFY(!service->addActiveCustomer("0400000103", "secret99", "Cy").isEmpty());
        gstrMobileNumber = "0400000101";
        gstrPassword = Encrypt("secret99", gstrMachineKey);
        DialogAnswerer script;
        script.answer("frmAnnouncements", "imgOK")
            .answer("frmAnnouncements", [](QWidget* w) { QTest::keyClick(w, Qt::Key_Escape); })
            .answer("frmAnnouncements", [](QWidget* w) { QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(2, 2)); });
        CAnnouncements().CheckForAnnouncements();
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QVERIFY(script.seen[0].text.contains("Welcome to Quillo Tone, Ann!\nYour first 3 tones"));
        QVERIFY(script.seen[1].text.contains("Your friend Bo has joined"));
        QVERIFY(script.seen[2].text.contains("Your friend Cy has joined"));
        QCOMPARE(Requests("AnnouncementRead.asp?MobileNumber=0400000101&Password=secret99"), 4);
    }

    void unreachableServiceShowsErrUntilAnswered()
    {
        QVERIFY(!service->addActiveCustomer("0400000104", "secret99").isEmpty());
        service->get("AnnouncementRead.asp?MobileNumber=0400000104&Password=secret99");
        gstrMobileNumber = "0400000104";
        gstrPassword = Encrypt("secret99", gstrMachineKey);
        seams().serviceBaseUrl = ServiceFixture::unreachableUrl();
        // Closing the "err" window paces the next try; by then the service is back.
        DialogAnswerer script;
        script.answer("frmGenericOKDialog", "Enter")
            .answer("frmAnnouncements", [this](QWidget* w) {
                seams().serviceBaseUrl = service->baseUrl();
                QTest::mouseClick(w->findChild<QWidget*>("imgOK"), Qt::LeftButton);
            });
        CAnnouncements().CheckForAnnouncements();
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QVERIFY(script.seen[0].text.contains("cannot be reached"));
        QVERIFY(script.seen[1].text.split('\n').contains("err"));
    }
};

QTEST_MAIN(tst_Login)
#include "tst_login.moc"
