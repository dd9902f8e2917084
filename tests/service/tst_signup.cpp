// The sign-up road against our real service over TLS: the phone question,
// the phone lists, the personal details, the picture code, the SMS code as
// the phone receives it, and the first login; the pending confirmation at
// start; referrals. Failures: every check of the form, a service that is
// gone at each step, a broken code in the reply, stored values that no
// longer decipher.
#include "core/MainWindow.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "service/CActivationCode.h"
#include "service/CLoginManager.h"
#include "service/CSignUpManager.h"
#include "service/PendingSignUp.h"
#include "service/frmActivationCode.h"
#include "service/frmCheckPhoneEnabled.h"
#include "service/frmFreeQuills.h"
#include "service/frmLogin.h"
#include "service/frmSMSConfirmation.h"
#include "service/frmSignup1.h"
#include "service/frmSignup2.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "support/DialogAnswerer.h"
#include "support/QuietOffscreen.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTest>
#include <memory>

namespace {
using Step = DialogAnswerer::Step;

void Click(QWidget* control)
{
    QTest::mouseClick(control, Qt::LeftButton);
}

// The code of the latest text message to this phone, as its owner reads it.
QString SmsCode(const ServiceFixture& service, const QString& mobile)
{
    static const QRegularExpression code(QStringLiteral("code is (\\d+)"));
    for (const QString& message : service.outbox()) {
        if (message.startsWith(mobile + QStringLiteral(": ")))
            return code.match(message).captured(1);
    }
    return {};
}

Step TypeAndPress(const QString& box, const QString& text, const QString& button)
{
    return [box, text, button](QWidget* w) {
        w->findChild<QLineEdit*>(box)->setText(text);
        Click(w->findChild<QWidget*>(button));
    };
}

// The picture's code is the one the program keeps in the window's Tag.
Step TypePictureCode(std::function<void()> before = {})
{
    return [before](QWidget* w) {
        auto* window = static_cast<frmActivationCode*>(w);
        QTest::keyClicks(window->txtCode, window->Tag.toLower());
        if (before)
            before();
        Click(window->imgOK);
    };
}

Step TypeSmsCode(const ServiceFixture& service, const QString& mobile)
{
    return [&service, mobile](QWidget* w) {
        auto* window = static_cast<frmSMSConfirmation*>(w);
        window->txtCode->setText(SmsCode(service, mobile));
        Click(window->imgOK);
    };
}

Step SignIn(const QString& mobile, const QString& password)
{
    return [mobile, password](QWidget* w) {
        auto* window = static_cast<frmLogin*>(w);
        window->txtMobileNumber->setText(mobile);
        window->txtPassword->setText(password);
        Click(window->imgSignIn);
    };
}

void Select(QComboBox* list, const QString& text)
{
    list->setCurrentIndex(list->findText(text));
}

// A service that answers every page with the same text, over TLS with our
// service's identity: the stand-in for a service that went wrong. After its
// last answer it stops listening, as a service that went down.
class CannedService : public QObject {
public:
    CannedService(const ServiceFixture& real, QByteArray body, int answers = 1000)
        : mBody(std::move(body)), mAnswers(answers)
    {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setLocalCertificateChain(QSslCertificate::fromPath(real.certificateFile()));
        QFile key(real.dataFolder() + QStringLiteral("/service.key"));
        key.open(QIODevice::ReadOnly);
        tls.setPrivateKey(QSslKey(&key, QSsl::Ec));
        mServer.setSslConfiguration(tls);
        connect(&mServer, &QSslServer::pendingConnectionAvailable, this, [this] {
            while (auto* socket = static_cast<QSslSocket*>(mServer.nextPendingConnection())) {
                connect(socket, &QSslSocket::readyRead, socket, [this, socket] {
                    if (!socket->readAll().contains("\r\n\r\n"))
                        return;
                    socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\nContent-Length: " +
                                  QByteArray::number(mBody.size()) + "\r\n\r\n" + mBody);
                    socket->disconnectFromHost();
                    if (--mAnswers == 0)
                        mServer.close();
                });
            }
        });
        mServer.listen(QHostAddress::LocalHost);
    }
    QString url() const { return QStringLiteral("https://127.0.0.1:%1/").arg(mServer.serverPort()); }

private:
    QSslServer mServer;
    QByteArray mBody;
    int mAnswers;
};

struct Person {
    QString first = QStringLiteral("Kim"), last = QStringLiteral("Lee"), mobile, age = QStringLiteral("30"),
            password = QStringLiteral("secret1"), confirm = QStringLiteral("secret1"),
            email = QStringLiteral("kim@example.com");
    bool gal = true;
};
}  // namespace

class tst_SignUp : public QObject {
    Q_OBJECT
    std::unique_ptr<ServiceFixture> service;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<QWidget> mainWindow;
    std::unique_ptr<CSignUpManager> road;
    int nextMobile = 100;

    QString NewMobile() { return QStringLiteral("0433000%1").arg(nextMobile++); }

    // The phone question answered yes, the phone and network chosen: the personal details are up.
    void ToPersonalDetails(const QString& country = QStringLiteral("Australia"),
                           const QString& network = QStringLiteral("Telstra"))
    {
        road->BeginSignUp();
        frmCheckPhoneEnabled& check = road->PhoneCheck();
        Click(check.imgYes);
        Click(check.imgOK);
        frmSignup2& phone = road->PhoneDetails();
        QVERIFY(phone.isVisible() && !check.isVisible());
        Select(phone.cmbCountry, country);
        Select(phone.cmbPhoneMake, QStringLiteral("Nokia"));
        Select(phone.cmbPhoneModel, QStringLiteral("6230i"));
        Select(phone.cmbNetworkOperator, network);
        Click(phone.imgSend);
        QVERIFY(road->PersonalDetails().isVisible() && !phone.isVisible());
    }

    void Fill(const Person& p)
    {
        frmSignup1& form = road->PersonalDetails();
        form.txtFirstName->setText(p.first);
        form.txtLastName->setText(p.last);
        form.txtMobileNumber->setText(p.mobile);
        form.txtAge->setText(p.age);
        form.txtPassword->setText(p.password);
        form.txtConfirmPassword->setText(p.confirm);
        form.txtEmailAddress->setText(p.email);
        if (p.gal)
            Click(form.lblGal);
    }

private slots:
    void initTestCase()
    {
        QuietOffscreenPlugin();
        service = std::make_unique<ServiceFixture>();
        QVERIFY(service->running());
    }
    void cleanupTestCase() { service.reset(); }
    void init()
    {
        ground = std::make_unique<TestGround>();
        service->aimSeams();
        gstrMachineKey = QStringLiteral("0123456789ABCDEF");
        // A stand-in main window with the two controls login touches.
        mainWindow = std::make_unique<QWidget>();
        mainWindow->resize(800, 600);
        new QLabel(mainWindow.get());
        mainWindow->findChild<QLabel*>()->setObjectName(QStringLiteral("lblFreeQuillCount"));
        auto* backdrop = new QWidget(mainWindow.get());
        backdrop->setObjectName(QStringLiteral("picLoginBackground"));
        SetMainWindow([this] { return mainWindow.get(); });
        road = std::make_unique<CSignUpManager>([](const QString& number) {
            CLoginManager login;
            login.Login(number);
            return login.LoggedIn();
        });
        connect(road.get(), &CSignUpManager::SignedUp, mainWindow.get(), &QWidget::show);
    }
    void cleanup()
    {
        road.reset();
        SetMainWindow(nullptr);
        mainWindow.reset();
        ground.reset();
    }

    void pairLoop_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QStringList>("entries");
        QTest::addRow("trailing separator") << "1,Nokia,2,Sony Ericsson," << QStringList{"Nokia=1", "Sony Ericsson=2"};
        QTest::addRow("no trailing separator loses the last") << "1,Nokia,2,Sony Ericsson" << QStringList{"Nokia=1"};
        QTest::addRow("unreachable adds nothing") << "err" << QStringList{};
    }
    void pairLoop()
    {
        QFETCH(QString, reply);
        QComboBox list;
        AddPairs(&list, reply);
        QStringList entries;
        for (int i = 0; i < list.count(); ++i)
            entries << list.itemText(i) + "=" + list.itemData(i).toString();
        QTEST(entries, "entries");
        QCOMPARE(list.currentIndex(), -1);
    }

    // From the phone question to the main window: the question in its three
    // answers, the lists with Australia chosen, a wrong picture code and then
    // the right one, the SMS code from the phone, the first login.
    void freshInstallSignsUpAndLogsIn()
    {
        const QString mobile = NewMobile();
        road->BeginSignUp();
        frmCheckPhoneEnabled& check = road->PhoneCheck();
        DialogAnswerer script;
        script.answer("frmTellUsAboutPhone", "Enter").answer("frmPhoneNotCapable", "Escape");
        Click(check.imgOK);
        Click(check.imgNo);
        Click(check.imgOK);
        QVERIFY(check.isVisible() && check.imgYes->pixmap().isNull());
        Click(check.imgYes);
        QVERIFY(check.imgNo->pixmap().isNull());
        Click(check.imgOK);

        frmSignup2& phone = road->PhoneDetails();
        QVERIFY(phone.isVisible() && !check.isVisible());
        QCOMPARE(phone.cmbCountry->currentText(), QString("Australia"));
        // The networks and their rules stand in the same order.
        QCOMPARE(phone.cmbNetworkOperator->count(), 5);
        const int telstra = phone.cmbNetworkOperator->findText("Telstra");
        QCOMPARE(gstrProviders.mid(5 * telstra, 5), QStringList({"101", "Telstra", "04", "10", "10"}));
        QCOMPARE(phone.cmbNetworkOperator->itemData(telstra).toInt(), 101);
        QCOMPARE(phone.cmbPhoneModel->count(), 0);
        Select(phone.cmbPhoneMake, "Nokia");
        QVERIFY(phone.cmbPhoneModel->count() > 0);
        Select(phone.cmbPhoneModel, "6230i");
        Select(phone.cmbNetworkOperator, "Optus");
        Click(phone.imgSend);

        frmSignup1& form = road->PersonalDetails();
        QVERIFY(form.isVisible());
        Person kim;
        kim.mobile = "  " + mobile + " ";
        Fill(kim);
        QString firstCode;
        script.answer("frmActivationCode",
                      [&](QWidget* w) {
                          auto* window = static_cast<frmActivationCode*>(w);
                          firstCode = window->Tag;
                          QVERIFY(!window->Image1->pixmap().isNull());
                          window->txtCode->setText("WRONG");
                          Click(window->imgOK);  // the invalid-code window comes and goes in here
                          QVERIFY(window->Tag != firstCode && window->txtCode->text().isEmpty());
                          TypePictureCode()(w);
                      })
            .answer("frmInvalidCaptchaCode", "Enter")
            .answer("frmSMSConfirmation", TypeSmsCode(*service, mobile))
            .answer("frmLogin", SignIn(mobile, kim.password))
            .answer("frmAnnouncements", "imgOK");
        Click(form.imgSend);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QVERIFY(script.seen[6].text.contains("Welcome to Quillo Tone, Kim!"));

        QVERIFY(mainWindow->isVisible());
        QVERIFY(!form.isVisible());
        QCOMPARE(gstrMobileNumber, mobile);
        QCOMPARE(gintFreeQuills, int16_t(3));
        QCOMPARE(gstrPreferredFormat, QString("MP3"));
        QCOMPARE(GetAppSetting("DID", kSettings), QString("1"));
        for (const char* key : {"t1nuc", "t2nuc", "FirstName", "LastName", "PhoneNumber", "Age", "EmailAddress",
                                "Password"})
            QVERIFY2(GetAppSetting(key, kSettings).isEmpty(), key);
        QCOMPARE(service->get("LookupMobileNumber.asp?MobileNumber=" + mobile).body, QByteArray("1"));
        QVERIFY(ground->endCodes.isEmpty());
    }

    // Cancelled at the SMS code: the program ends; the next start asks for
    // the same code, and the account then logs in.
    void restartComesBackToTheConfirmation()
    {
        const QString mobile = NewMobile();
        ToPersonalDetails();
        Person ann;
        ann.mobile = mobile;
        Fill(ann);
        {
            DialogAnswerer script;
            script.answer("frmActivationCode", TypePictureCode())
                .answer("frmSMSConfirmation", "imgCancel")
                .answer("frmActivationCodeCancelled", "Enter");
            Click(road->PersonalDetails().imgSend);
            QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        }
        QCOMPARE(ground->endCodes, QList<int>{0});
        QCOMPARE(GetAppSetting("DID", kSettings), QString("-1"));
        QCOMPARE(Decrypt(GetAppSetting("t1nuc", kSettings), gstrMachineKey), SmsCode(*service, mobile));
        QCOMPARE(GetAppSetting("FirstName", kSettings), QString("Kim"));
        QCOMPARE(Decrypt(GetAppSetting("Password", kSettings), gstrMachineKey), ann.password);

        // The next start asks for the same code.
        SaveAppSetting("LastPhoneNumber", mobile, kSettings);
        DialogAnswerer restart;
        QString shownNumber;
        restart.answer("frmSMSConfirmation", [&](QWidget* w) {
            shownNumber = static_cast<frmSMSConfirmation*>(w)->lblPhoneNumber->text();
            TypeSmsCode(*service, mobile)(w);
        });
        QCOMPARE(ConfirmPendingSignUp(), PendingSignUpOutcome::Confirmed);
        QVERIFY2(restart.finishedCleanly(), qPrintable(restart.problems()));
        QCOMPARE(shownNumber, mobile);
        QCOMPARE(GetAppSetting("DID", kSettings), QString("1"));
        QVERIFY(GetAppSetting("t1nuc", kSettings).isEmpty() && GetAppSetting("t2nuc", kSettings).isEmpty());
        QCOMPARE(service->get("Login.asp?MobileNumber=" + mobile + "&Password=secret1&Origin=0").body.left(2),
                 QByteArray("1,"));
    }

    // Every check of the form, in its order, with the message and where the focus goes.
    void validateForm_data()
    {
        QTest::addColumn<QString>("country");
        QTest::addColumn<QString>("network");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("focus");
        const QString au = "Australia", nz = "New Zealand", sg = "Singapore";
        QTest::addRow("first name") << au << "Telstra" << "txtFirstName" << " " << "Please enter your first name."
                                    << "txtFirstName";
        QTest::addRow("last name") << au << "Telstra" << "txtLastName" << "" << "Please enter your last name."
                                   << "txtLastName";
        QTest::addRow("mobile") << au << "Telstra" << "txtMobileNumber" << "  "
                                << "Please enter your mobile phone number." << "txtMobileNumber";
        QTest::addRow("prefix") << au << "Telstra" << "txtMobileNumber" << "0312345678"
                                << "Please enter a valid Telstra phone number (should begin with 04)."
                                << "txtMobileNumber";
        QTest::addRow("length, one number") << au << "Optus" << "txtMobileNumber" << "041234567"
                                            << "Please enter a valid Optus phone number (10 numbers)."
                                            << "txtMobileNumber";
        QTest::addRow("length, between") << nz << "Vodafone New Zealand" << "txtMobileNumber" << "021123456789"
                                         << "Please enter a valid Vodafone New Zealand phone number (between 9 and 11 "
                                            "numbers.)."
                                         << "txtMobileNumber";
        QTest::addRow("age") << au << "Telstra" << "txtAge" << "" << "Please enter your age." << "txtMobileNumber";
        QTest::addRow("password") << au << "Telstra" << "txtPassword" << "" << "Please enter your password."
                                  << "txtPassword";
        QTest::addRow("confirmation") << au << "Telstra" << "txtConfirmPassword" << ""
                                      << "Please confirm your password." << "txtConfirmPassword";
        QTest::addRow("short password before the match")
            << au << "Telstra" << "txtPassword" << "abcde" << "Your password should be at least 6 characters long."
            << "txtPassword";
        QTest::addRow("passwords differ") << au << "Telstra" << "txtConfirmPassword" << "secret2"
                                          << "Passwords do not match. Please try again." << "txtPassword";
        QTest::addRow("email without a dot")
            << au << "Telstra" << "txtEmailAddress" << "kim@example"
            << "Please enter a valid email address. (An invalid email address will prevent usage)." << "txtPassword";
        QTest::addRow("gender") << au << "Telstra" << "gender" << "" << "Are you a guy or a gal?" << "txtAge";
        QTest::addRow("all good, blanks trimmed") << sg << "M1" << "txtMobileNumber" << " 81234567 " << "" << "";
    }
    void validateForm()
    {
        QFETCH(QString, country);
        QFETCH(QString, network);
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(QString, message);
        frmSignup2& phone = road->PhoneDetails();
        phone.Load();
        QVERIFY(phone.LoadLists());
        Select(phone.cmbCountry, country);
        Select(phone.cmbNetworkOperator, network);
        road->ShowPersonalDetails();
        Person p;
        p.mobile = "0412345678";
        p.gal = field != "gender";
        Fill(p);
        frmSignup1& form = road->PersonalDetails();
        if (field != "gender")
            form.findChild<QLineEdit*>(field)->setText(value);
        form.txtAge->setFocus();
        DialogAnswerer script;
        if (!message.isEmpty())
            script.answer("frmGenericOKDialog", "Enter");
        QCOMPARE(form.ValidateForm(), message.isEmpty());
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        if (message.isEmpty()) {
            QCOMPARE(form.txtMobileNumber->text(), value.trimmed());
            return;
        }
        QCOMPARE(script.seen[0].text, message);
        QTEST(form.focusWidget()->objectName(), "focus");
    }

    // The pending confirmation at start, in each of its ends.
    void pendingSignUp_data()
    {
        QTest::addColumn<QString>("stored");   // pending: a real customer's; otherKey; text
        QTest::addColumn<QStringList>("typed");  // each round's code; CODE the right one, Q cancels
        QTest::addColumn<QStringList>("windows");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("did");
        QTest::addColumn<bool>("pendingStays");
        using O = PendingSignUpOutcome;
        const QStringList wrong{"frmSMSConfirmation", "frmInvalidCaptchaCode"};
        QTest::addRow("right code after a wrong one") << "pending" << QStringList{"0000", "CODE"}
                                                      << wrong + QStringList{"frmSMSConfirmation"}
                                                      << int(O::Confirmed) << "1" << false;
        QTest::addRow("cancelled") << "pending" << QStringList{"Q"}
                                   << QStringList{"frmSMSConfirmation", "frmActivationCodeCancelled"}
                                   << int(O::GivenUp) << "-1" << true;
        QTest::addRow("three wrong, an empty box among them")
            << "pending" << QStringList{"0000", "", "9999"} << wrong + wrong + wrong << int(O::GivenUp) << "-1"
            << true;
        QTest::addRow("no longer deciphers") << "otherKey" << QStringList{}
                                             << QStringList{"MsgBox", "MsgBox", "MsgBox"} << int(O::Unusable) << ""
                                             << false;
        QTest::addRow("not numbers") << "text" << QStringList{} << QStringList{"MsgBox"} << int(O::Unusable) << ""
                                     << false;
    }
    void pendingSignUp()
    {
        QFETCH(QString, stored);
        QFETCH(QStringList, typed);
        QFETCH(QStringList, windows);
        QFETCH(int, outcome);
        const QString mobile = NewMobile();
        const QStringList added =
            QString::fromLatin1(service->get("AddCustomer.asp?FirstName=Jo&LastName=Lee&gender=male&MobileNumber=" +
                                             mobile + "&Email=jo%40example.com&Password=secret1&Age=20&CountryID=1"
                                                      "&TerminalVendorID=1&TerminalTypeID=2&ServiceProviderID=101"
                                                      "&ReceiveMarketing=0&PartnerID=")
                                    .body)
                .split(',');
        QCOMPARE(added.size(), 3);
        const QString key = stored == "otherKey" ? "another computer" : gstrMachineKey;
        SaveAppSetting("t1nuc", Encrypt(stored == "text" ? "abcd" : added[2], key), kSettings);
        SaveAppSetting("t2nuc", Encrypt(added[1], key), kSettings);
        SaveAppSetting("DID", "-1", kSettings);

        DialogAnswerer script;
        for (const QString& code : typed) {
            if (code == "Q") {
                script.answer("frmSMSConfirmation", "imgCancel").answer("frmActivationCodeCancelled", "Enter");
                continue;
            }
            script.answer("frmSMSConfirmation", TypeAndPress("txtCode", code == "CODE" ? added[2] : code, "imgOK"));
            if (code != "CODE")
                script.answer("frmInvalidCaptchaCode", "Enter");
        }
        if (typed.isEmpty()) {
            for (int i = 0; i < windows.size(); ++i)
                script.answer("MsgBox", "OK");
        }
        QCOMPARE(int(ConfirmPendingSignUp()), outcome);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QStringList seen;
        for (const auto& s : script.seen)
            seen << s.window;
        QCOMPARE(seen, windows);
        if (typed.isEmpty())
            QVERIFY(script.seen.last().text.endsWith("! Please sign up again."));
        QTEST(GetAppSetting("DID", kSettings), "did");
        QTEST(!GetAppSetting("t1nuc", kSettings).isEmpty(), "pendingStays");
        QTEST(!GetAppSetting("t2nuc", kSettings).isEmpty(), "pendingStays");
        const bool activated = service->get("LookupMobileNumber.asp?MobileNumber=" + mobile).body == "1";
        QCOMPARE(activated, outcome == int(PendingSignUpOutcome::Confirmed));
    }

    // Five wrong SMS codes at sign-up give the account up.
    void fiveWrongCodesAtSignUp()
    {
        ToPersonalDetails();
        Person p;
        p.mobile = NewMobile();
        Fill(p);
        DialogAnswerer script;
        script.answer("frmActivationCode", TypePictureCode());
        // An empty box is no try: the window simply comes again.
        script.answer("frmSMSConfirmation", TypeAndPress("txtCode", "", "imgOK"));
        for (int i = 0; i < 5; ++i)
            script.answer("frmSMSConfirmation", TypeAndPress("txtCode", "0000", "imgOK"))
                .answer("frmInvalidCaptchaCode", "Enter");
        script.answer("frmActivationCodeCancelled", "Enter");
        Click(road->PersonalDetails().imgSend);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QCOMPARE(ground->endCodes, QList<int>{0});
        QCOMPARE(GetAppSetting("DID", kSettings), QString("-1"));
        QVERIFY(!GetAppSetting("t1nuc", kSettings).isEmpty());
    }

    // A service that is gone at each step: its message, and the form back as it was.
    void serviceGoneAtEachStep_data()
    {
        QTest::addColumn<QString>("step");
        QTest::addColumn<QStringList>("messages");
        QTest::addRow("phone lists") << "lists" << QStringList{"cannot be reached"};
        QTest::addRow("number lookup") << "lookup" << QStringList{"cannot be reached"};
        QTest::addRow("picture") << "picture" << QStringList{"An error occured connecting to Quillotone"};
        QTest::addRow("new customer") << "customer"
                                      << QStringList{"cannot be reached", "Problem talking to Quillo Tone. Please "
                                                                          "contact technical support."};
    }
    void serviceGoneAtEachStep()
    {
        QFETCH(QString, step);
        QFETCH(QStringList, messages);
        const QString gone = ServiceFixture::unreachableUrl();
        DialogAnswerer script;
        if (step == "lists") {
            road->BeginSignUp();
            seams().serviceBaseUrl = gone;
            script.answer("frmGenericOKDialog", "Enter");
            Click(road->PhoneCheck().imgYes);
            Click(road->PhoneCheck().imgOK);
            QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
            QVERIFY(road->PhoneCheck().isVisible() && road->PhoneCheck().imgOK->isEnabled());
            QVERIFY(!road->PhoneDetails().isVisible());
            QVERIFY(script.seen[0].text.contains(messages[0]));
            return;
        }
        ToPersonalDetails();
        Person p;
        p.mobile = NewMobile();
        Fill(p);
        // The lookup answers; then the service is gone.
        CannedService lookupOnly(*service, "0", 1);
        if (step == "lookup") {
            seams().serviceBaseUrl = gone;
            script.answer("frmGenericOKDialog", "Enter");
        } else if (step == "picture") {
            seams().serviceBaseUrl = lookupOnly.url();
            script.answer("frmGenericOKDialog", "Enter").answer("frmActivationCode", [](QWidget* w) {
                QVERIFY(static_cast<frmActivationCode*>(w)->Image1->pixmap().isNull());
                Click(w->findChild<QWidget*>("imgCancel"));
            });
        } else {
            script.answer("frmActivationCode", TypePictureCode([&] { seams().serviceBaseUrl = gone; }))
                .answer("frmGenericOKDialog", "Enter")
                .answer("frmGenericOKDialog", "Enter");
        }
        Click(road->PersonalDetails().imgSend);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QStringList told;
        for (const auto& s : script.seen) {
            if (s.window == "frmGenericOKDialog")
                told << s.text;
        }
        QCOMPARE(told.size(), messages.size());
        for (int i = 0; i < messages.size(); ++i)
            QVERIFY2(told[i].contains(messages[i]), qPrintable(told[i]));
        frmSignup1& form = road->PersonalDetails();
        QVERIFY(form.isVisible() && form.imgSend->isEnabled() && !form.picTalkingToServer->isVisible());
        QVERIFY(GetAppSetting("t1nuc", kSettings).isEmpty());
        QVERIFY(ground->endCodes.isEmpty());
    }

    // A code in the reply that is neither four characters nor a number ends the program.
    void unusableCodeInTheReplyIsFatal_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("fatal");
        QTest::addRow("letters") << QByteArray("1,77,abc") << true;
        QTest::addRow("no code at all") << QByteArray("1") << true;
        QTest::addRow("four letters pass") << QByteArray("1,77,abcd") << false;
    }
    void unusableCodeInTheReplyIsFatal()
    {
        QFETCH(QByteArray, reply);
        QFETCH(bool, fatal);
        ToPersonalDetails();
        Person p;
        p.mobile = NewMobile();
        Fill(p);
        CannedService broken(*service, reply);
        DialogAnswerer script;
        script.answer("frmActivationCode", TypePictureCode([&] { seams().serviceBaseUrl = broken.url(); }));
        if (fatal)
            script.answer("MsgBox", "OK");
        else
            script.answer("frmSMSConfirmation", "imgCancel").answer("frmActivationCodeCancelled", "Enter");
        Click(road->PersonalDetails().imgSend);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QCOMPARE(ground->endCodes, QList<int>{0});
        if (fatal)
            QCOMPARE(script.seen[1].text, QString("Internal error - invalid activation code came back. Fatal."));
        QCOMPARE(GetAppSetting("t1nuc", kSettings).isEmpty(), fatal);
    }

    // The referral window: its checks, the consent, and the three kinds of reply.
    void referFriends_data()
    {
        QTest::addColumn<QStringList>("rows");  // "name|mobile" a row, in its place
        QTest::addColumn<QString>("setUp");
        QTest::addColumn<bool>("asked");        // the consent window came
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("stays");
        QTest::addRow("a name without a number") << QStringList{"", "Bo|"} << "" << false
                                                 << "Please specify both a name and mobile number." << true;
        QTest::addRow("seven digits") << QStringList{"Bo|0412345"} << "" << false
                                      << "Please specify a valid mobile number." << true;
        QTest::addRow("nobody") << QStringList{} << "" << false
                                << "Enter at least one friend's name and mobile number!." << true;
        QTest::addRow("consent refused") << QStringList{"Bo|0455000001"} << "refuse" << true << "" << true;
        QTest::addRow("referred, one of them before")
            << QStringList{"Bo Ray|0455000002", "", "Cy|0455000003"} << "referBefore" << true
            << "You have referred 2 friends. 1 friend have already been referred." << false;
        QTest::addRow("maximum reached") << QStringList{"Di|0455000004"} << "fill" << true
                                         << "You have signed up your maximum amount. Enjoy the free quills!" << false;
        QTest::addRow("already a customer")
            << QStringList{"Ed|" + QString(ServiceFixture::kDemoMobile)} << "" << true
            << "The phone number +61412345678 is already signed up to Quillo Tone!" << true;
        QTest::addRow("service gone") << QStringList{"Fy|0455000005"} << "gone" << true << "error" << true;
    }
    void referFriends()
    {
        QFETCH(QStringList, rows);
        QFETCH(QString, setUp);
        QFETCH(bool, asked);
        QFETCH(QString, message);
        QFETCH(bool, stays);
        gstrCustomerID = service->addActiveCustomer(NewMobile(), "secret99", "Al");
        QVERIFY(!gstrCustomerID.isEmpty());
        const QString refer = "ReferFriends.asp?refCustomerID=" + gstrCustomerID;
        if (setUp == "referBefore")
            service->get(refer + "&FirstName1=Cy&MobileNumber1=0455000003&");
        for (int i = 0; setUp == "fill" && i < 10; ++i)
            service->get(refer + QString("&FirstName1=X&MobileNumber1=04560000%1&").arg(i, 2, 10, QChar('0')));

        frmFreeQuills window;
        window.Load();
        window.show();
        for (int i = 0; i < rows.size(); ++i) {
            window.txtName[i]->setText(rows[i].section('|', 0, 0));
            window.txtMobile[i]->setText(rows[i].section('|', 1, 1));
        }
        DialogAnswerer script;
        if (asked)
            script.answer("frmSMSPermission", setUp == "refuse" ? "Escape" : "Enter");
        if (setUp == "gone")
            seams().serviceBaseUrl = ServiceFixture::unreachableUrl();
        if (setUp == "gone")
            script.answer("frmGenericOKDialog", "Enter").answer("MsgBox", "OK");
        else if (!message.isEmpty())
            script.answer("frmGenericOKDialog", "Enter");
        Click(window.imgSend);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        if (!message.isEmpty())
            QCOMPARE(script.seen.last().text, message);
        QCOMPARE(window.isVisible(), stays);
        if (setUp == "referBefore") {
            QVERIFY(service->outbox().first().startsWith("0455000003: Hi Cy, Al thinks"));
            QVERIFY(service->outbox()[1].startsWith("0455000002: Hi Bo Ray, Al thinks"));
        }
    }
};

QTEST_MAIN(tst_SignUp)
#include "tst_signup.moc"
