// The sign-up road against our real service over TLS, from a fresh install to
// the main window, as a person takes it: the picture's code read off the
// program's own state, the SMS code read off the phone's own outbox. Then the
// form's checks, what goes wrong on the road, and referrals.
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "editing/frmMain.h"
#include "service/CSignUpManager.h"
#include "service/frmActivationCode.h"
#include "service/frmCheckPhoneEnabled.h"
#include "service/frmFreeQuills.h"
#include "service/frmSignup1.h"
#include "service/frmSignup2.h"
#include "shell/SubMain.h"
#include "shell/frmIntro.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "support/CannedService.h"
#include "support/DialogAnswerer.h"
#include "support/MainWindowFixture.h"
#include "support/QuietOffscreen.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTest>
#include <memory>

namespace {
using Step = DialogAnswerer::Step;
const QString kPassword = QStringLiteral("secret1");
QTemporaryDir runtime;  // the instance lock's folder, private to the test

void Click(QWidget* control) { QTest::mouseClick(control, Qt::LeftButton); }
void Select(QComboBox* list, const QString& text) { list->setCurrentIndex(list->findText(text)); }

template <class Window>
Window* Shown(const char* name)
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String(name) && w->isVisible())
            return qobject_cast<Window*>(w);
    return nullptr;
}

// Types into the window's boxes, then presses its button.
Step Type(const QStringList& boxesAndTexts, const char* button = "imgOK")
{
    return [=](QWidget* w) {
        for (qsizetype i = 0; i + 1 < boxesAndTexts.size(); i += 2)
            w->findChild<QLineEdit*>(boxesAndTexts[i])->setText(boxesAndTexts[i + 1]);
        Click(w->findChild<QWidget*>(button));
    };
}

// The picture's code is the copy the program keeps in the window's Tag; typed
// in lower case, which the box turns upper. `then` runs before OK.
Step TypePictureCode(std::function<void()> then = {})
{
    return [then](QWidget* w) {
        auto* window = static_cast<frmActivationCode*>(w);
        QTest::keyClicks(window->txtCode, window->Tag.toLower());
        if (then)
            then();
        Click(window->imgOK);
    };
}

}  // namespace

class tst_SignUp : public QObject {
    Q_OBJECT
    std::unique_ptr<ServiceFixture> service;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<MainWindowFixture<frmMain>> window;
    std::unique_ptr<CSignUpManager> road;  // the road without the start-up around it
    int nextMobile = 100;

    QString NewMobile() { return QStringLiteral("0433000%1").arg(nextMobile++); }
    Step SignIn(const QString& mobile) { return Type({"txtMobileNumber", mobile, "txtPassword", kPassword}, "imgSignIn"); }

    // The code in the newest text to this phone, as its owner reads it.
    Step TypeSmsCode(const QString& mobile)
    {
        return [this, mobile](QWidget* w) {
            static const QRegularExpression code("code is (\\d+)");
            Type({"txtCode", code.match(service->phone(mobile, kPassword).value(0)).captured(1)})(w);
        };
    }

    // A person's details, the mobile typed with blanks around it.
    static void Fill(frmSignup1& form, const QString& mobile)
    {
        for (auto [box, text] : {std::pair{form.txtFirstName, "Kim"}, {form.txtLastName, "Lee"}, {form.txtAge, "30"},
                                 {form.txtEmailAddress, "kim@example.com"}})
            box->setText(text);
        form.txtMobileNumber->setText("  " + mobile + " ");
        form.txtPassword->setText(kPassword);
        form.txtConfirmPassword->setText(kPassword);
        Click(form.lblGal);
    }

    frmSignup1& PersonalDetails(const QString& country = "Australia", const QString& network = "Telstra")
    {
        frmSignup2& phone = road->PhoneDetails();
        phone.Load();
        phone.LoadLists();
        Select(phone.cmbCountry, country);
        Select(phone.cmbPhoneMake, "Nokia");
        Select(phone.cmbPhoneModel, "6230i");
        Select(phone.cmbNetworkOperator, network);
        road->ShowPersonalDetails();
        return road->PersonalDetails();
    }

private slots:
    void initTestCase()
    {
        QuietOffscreenPlugin();
        qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
        service = std::make_unique<ServiceFixture>();
        QVERIFY(service->running());
    }
    void cleanupTestCase() { service.reset(); }
    void init()
    {
        ground = std::make_unique<TestGround>();
        service->aimSeams();
        window = std::make_unique<MainWindowFixture<frmMain>>(MainForm, DropMainForm);
        startRoads() = DefaultStartRoads();
        gbSignUpActive = false;
        InitMachineKey();
        road = std::make_unique<CSignUpManager>([](const QString&) { return false; });
    }
    void cleanup()
    {
        road.reset();
        DropStartupWindows();
        window.reset();
        ground.reset();
    }

    // A fresh install from the intro to the main window: the phone question
    // in its three answers, the lists with Australia chosen, a wrong picture
    // code and the right one, the SMS code, the first login. Or the program
    // left at the SMS code, and the next start comes back to it.
    void freshInstallSignsUp_data()
    {
        QTest::addColumn<bool>("restart");
        QTest::addRow("straight through") << false;
        QTest::addRow("restarted at the SMS code") << true;
    }
    void freshInstallSignsUp()
    {
        QFETCH(bool, restart);
        const QString mobile = NewMobile();
        SubMain();
        QVERIFY(IntroWindow().isVisible() && !Shown<QWidget>("frmMain"));
        Click(IntroWindow().Button("imgOK"));
        auto* check = Shown<frmCheckPhoneEnabled>("frmCheckPhoneEnabled");
        QVERIFY(check && !IntroWindow().isVisible());
        DialogAnswerer script;
        // No answer, then no, then yes: a yes clears the no, or its window would come again.
        script.answer("frmTellUsAboutPhone", "Enter").answer("frmPhoneNotCapable", "Escape");
        for (QWidget* press : std::initializer_list<QWidget*>{check->imgOK, check->imgNo, check->imgOK, check->imgYes,
                                                             check->imgOK})
            Click(press);

        auto* phone = Shown<frmSignup2>("frmSignup2");
        QVERIFY(phone && !check->isVisible());
        QCOMPARE(phone->cmbCountry->currentText(), QString("Australia"));
        // The networks and their rules stand in the same order.
        const int telstra = phone->cmbNetworkOperator->findText("Telstra");
        QCOMPARE(gstrProviders.mid(5 * telstra, 5), QStringList({"101", "Telstra", "04", "10", "10"}));
        QCOMPARE(phone->cmbNetworkOperator->itemData(telstra).toInt(), 101);
        Select(phone->cmbPhoneMake, "Nokia");
        Select(phone->cmbPhoneModel, "6230i");
        Select(phone->cmbNetworkOperator, "Optus");
        Click(phone->imgSend);

        auto* form = Shown<frmSignup1>("frmSignup1");
        QVERIFY(form && !phone->isVisible());
        Fill(*form, mobile);
        script.answer("frmActivationCode", [&](QWidget* w) {
            auto* code = static_cast<frmActivationCode*>(w);
            const QString first = code->Tag;
            QVERIFY(!code->Image1->pixmap().isNull());
            Type({"txtCode", "WRONG"})(w);  // the invalid-code window comes and goes in here
            QVERIFY(code->Tag != first && code->txtCode->text().isEmpty());
            TypePictureCode()(w);
        });
        script.answer("frmInvalidCaptchaCode", "Enter");
        if (restart)
            script.answer("frmSMSConfirmation", "imgCancel").answer("frmActivationCodeCancelled", "Enter");
        else
            script.answer("frmSMSConfirmation", TypeSmsCode(mobile))
                .answer("frmLogin", SignIn(mobile))
                .answer("frmAnnouncements", "imgOK");
        Click(form->imgSend);
        if (restart) {
            QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
            QCOMPARE(ground->endCodes, QList<int>{0});
            QCOMPARE(GetAppSetting("DID", kSettings), QString("-1"));
            DropStartupWindows();
            script.answer("frmSMSConfirmation", TypeSmsCode(mobile))
                .answer("frmLogin", SignIn(mobile))
                .answer("frmAnnouncements", "imgOK")
                .answer("frmConfirmSearch", "imgCancel");
            SubMain();
        }
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QVERIFY(Shown<frmMain>("frmMain"));
        QCOMPARE(gstrMobileNumber, mobile);
        QCOMPARE(gintFreeQuills, int16_t(3));
        QCOMPARE(GetAppSetting("DID", kSettings), QString("1"));
        QVERIFY(GetAppSetting("t1nuc", kSettings).isEmpty() && GetAppSetting("t2nuc", kSettings).isEmpty());
        // The form's copies go once the sign-up ends in its own run.
        QCOMPARE(GetAppSetting("FirstName", kSettings).isEmpty(), !restart);
        QCOMPARE(service->get("LookupMobileNumber.asp?MobileNumber=" + mobile).body, QByteArray("1"));
        QCOMPARE(ground->endCodes.size(), restart ? 1 : 0);
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
        const QString au = "Australia", valid = "Please enter a valid ";
        const auto row = [&](const char* name, const QString& field, const QString& value, const QString& message,
                             const QString& focus, const QString& country = "Australia",
                             const QString& network = "Telstra") {
            QTest::addRow("%s", name) << country << network << field << value << message << focus;
        };
        row("first name", "txtFirstName", " ", "Please enter your first name.", "txtFirstName");
        row("last name", "txtLastName", "", "Please enter your last name.", "txtLastName");
        row("mobile", "txtMobileNumber", "  ", "Please enter your mobile phone number.", "txtMobileNumber");
        row("prefix", "txtMobileNumber", "0312345678", valid + "Telstra phone number (should begin with 04).",
            "txtMobileNumber");
        row("length, one number", "txtMobileNumber", "041234567", valid + "Optus phone number (10 numbers).",
            "txtMobileNumber", au, "Optus");
        row("length, between", "txtMobileNumber", "021123456789",
            valid + "Vodafone New Zealand phone number (between 9 and 11 numbers.).", "txtMobileNumber",
            "New Zealand", "Vodafone New Zealand");
        row("age", "txtAge", "", "Please enter your age.", "txtMobileNumber");
        row("password", "txtPassword", "", "Please enter your password.", "txtPassword");
        row("confirmation", "txtConfirmPassword", "", "Please confirm your password.", "txtConfirmPassword");
        row("short password before the match", "txtPassword", "abcde",
            "Your password should be at least 6 characters long.", "txtPassword");
        // Characters the login's query would cut or change, before the match.
        for (const char* password : {"ab&cdef", "ab=cdef", "ab%41cdef", "ab+cdef", "ab#cdef", "ab?cdef", "ab cdef",
                                     "ab'cdef", "ab\u4E2Dcdef", "ab\tcdef"})
            row(qPrintable("password " + QString::fromUtf8(password)), "txtPassword", QString::fromUtf8(password),
                kPasswordCharacters, "txtPassword");
        row("passwords differ", "txtConfirmPassword", "secret2", "Passwords do not match. Please try again.",
            "txtPassword");
        row("email without a dot", "txtEmailAddress", "kim@example",
            "Please enter a valid email address. (An invalid email address will prevent usage).", "txtPassword");
        row("gender", "gender", "", "Are you a guy or a gal?", "txtAge");
        row("all good, blanks trimmed", "txtMobileNumber", " 81234567 ", "", "", "Singapore", "M1");
    }
    void validateForm()
    {
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(QString, message);
        QFETCH(QString, country);
        QFETCH(QString, network);
        frmSignup1& form = PersonalDetails(country, network);
        Fill(form, "0412345678");
        if (field == "gender")
            Click(form.imgGalChecked);
        else
            form.findChild<QLineEdit*>(field)->setText(value);
        form.txtAge->setFocus();
        DialogAnswerer script;
        if (!message.isEmpty())
            script.answer("frmGenericOKDialog", "Enter");
        QCOMPARE(form.ValidateForm(), message.isEmpty());
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        if (!message.isEmpty()) {
            QCOMPARE(script.seen[0].text, message);
            QTEST(form.focusWidget()->objectName(), "focus");
        } else {
            QCOMPARE(form.txtMobileNumber->text(), value.trimmed());
        }
    }

    // What goes wrong: the service down at each step, a reply with an unusable
    // code, too many wrong SMS codes, stored values that no longer decipher.
    // The message and the outcome, never a crash.
    void badInput_data()
    {
        QTest::addColumn<QString>("where");     // the step, or what the store holds at start
        QTest::addColumn<QByteArray>("reply");  // the new customer's reply from a service gone wrong
        QTest::addColumn<QStringList>("windows");
        QTest::addColumn<QString>("message");  // told on the way
        QTest::addColumn<bool>("ended");
        const QString ok = "frmGenericOKDialog", code = "frmActivationCode", sms = "frmSMSConfirmation",
                      wrong = "frmInvalidCaptchaCode", again = "! Please sign up again.",
                      fatal = "Internal error - invalid activation code came back. Fatal.";
        const auto row = [](const char* name, const QString& where, const QByteArray& reply, const QStringList& windows,
                            const QString& message, bool ended) {
            QTest::addRow("%s", name) << where << reply << windows << message << ended;
        };
        row("down at the phone lists", "lists", {}, {ok}, "cannot be reached", false);
        row("down at the number", "lookup", {}, {ok}, "cannot be reached", false);
        row("down at the picture", "picture", "0", {ok, code}, "An error occured connecting to Quillotone", false);
        // Another sign-up of the number waits for its code: the form says so
        // before any picture code is asked.
        row("a number that waits for its code", "waiting", {}, {ok},
            "The mobile number you have selected is already in use. Please try again.", false);
        row("down at the new customer", "customer", {}, {code, ok, ok},
            "Problem talking to Quillo Tone. Please contact technical support.", false);
        row("a code of letters", "customer", "1,77,abc", {code, "MsgBox"}, fatal, true);
        QStringList fiveWrong{code};
        for (int i = 0; i < 5; ++i)
            fiveWrong << sms << wrong;
        row("five wrong SMS codes at sign-up", "sms", {}, fiveWrong << "frmActivationCodeCancelled", "", true);
        row("stored by another computer", "otherKey", {}, {"MsgBox", "MsgBox", "MsgBox"}, again, false);
        row("three wrong SMS codes at start", "start", {}, {sms, wrong, sms, wrong, sms, wrong}, "", true);
    }
    void badInput()
    {
        QFETCH(QString, where);
        QFETCH(QByteArray, reply);
        QFETCH(QStringList, windows);
        QFETCH(QString, message);
        QFETCH(bool, ended);
        const QString gone = ServiceFixture::unreachableUrl();
        CannedService canned(*service, reply, where == "picture" ? 1 : 1000);
        // The new customer's call goes where the row says, after the picture.
        const auto leave = [&] { seams().serviceBaseUrl = reply.isEmpty() ? gone : canned.url(); };
        DialogAnswerer script;
        for (const QString& w : windows) {
            if (w == "frmActivationCode" && where == "picture")
                script.answer(w, "imgCancel");
            else if (w == "frmActivationCode")
                script.answer(w, TypePictureCode(where == "customer" ? leave : std::function<void()>()));
            else if (w == "frmSMSConfirmation")
                script.answer(w, Type({"txtCode", "0000"}));
            else
                script.answer(w, w == "MsgBox" ? "OK" : "Enter");
        }
        // Waiting for its SMS code, the sign-up stays: the next start asks again.
        const bool pending = where == "sms" || where == "start";
        if (where == "otherKey" || where == "start") {
            const QString key = where == "otherKey" ? "another computer" : gstrMachineKey;
            SaveAppSetting("t1nuc", Encrypt("1234", key), kSettings);
            SaveAppSetting("t2nuc", Encrypt("77", key), kSettings);
            SaveAppSetting("DID", "-1", kSettings);
            try {
                SubMain();
            } catch (const ProgramEnded&) {
            }
            QVERIFY(!Shown<QWidget>("frmMain") && !Shown<QWidget>("frmIntro"));
        } else if (where == "lists") {
            road->ShowPhoneCheck();
            seams().serviceBaseUrl = gone;
            Click(road->PhoneCheck().imgYes);
            Click(road->PhoneCheck().imgOK);
            QVERIFY(road->PhoneCheck().isVisible() && road->PhoneCheck().imgOK->isEnabled());
            QVERIFY(!road->PhoneDetails().isVisible());
        } else {
            frmSignup1& form = PersonalDetails();
            const QString mobile = NewMobile();
            if (where == "waiting")
                QVERIFY(service->get("AddCustomer.asp?FirstName=Ann&LastName=Lee&gender=female&MobileNumber=" + mobile +
                                     "&Email=ann%40example.com&Password=other1&Age=40&CountryID=1&TerminalVendorID=1"
                                     "&TerminalTypeID=3&ServiceProviderID=101&ReceiveMarketing=0&PartnerID=")
                            .body.startsWith("1,"));
            Fill(form, mobile);
            if (where == "lookup" || where == "picture")
                seams().serviceBaseUrl = where == "lookup" ? gone : canned.url();
            Click(form.imgSend);
            QCOMPARE(form.isVisible() && form.imgSend->isEnabled() && !form.picTalkingToServer->isVisible(), !ended);
        }
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        QStringList seen, told;
        for (const auto& s : script.seen) {
            seen << s.window;
            told << s.text;
        }
        QCOMPARE(seen, windows);
        QVERIFY2(told.join('\n').contains(message), qPrintable(told.join('\n')));
        QCOMPARE(ground->endCodes.size(), ended ? 1 : 0);
        QCOMPARE(GetAppSetting("DID", kSettings), pending ? QString("-1") : QString());
        QCOMPARE(!GetAppSetting("t1nuc", kSettings).isEmpty() && !GetAppSetting("t2nuc", kSettings).isEmpty(), pending);
    }

    // An empty list from the service is a list: the phone page comes, and
    // each list with nothing in it says so.
    void emptyLists_data()
    {
        QTest::addColumn<bool>("fromTheStart");
        QTest::addColumn<QStringList>("empty");
        QTest::addRow("no lists at all") << true << QStringList{"cmbCountry", "cmbNetworkOperator", "cmbPhoneMake"};
        QTest::addRow("no models for a make") << false << QStringList{"cmbPhoneModel"};
    }
    void emptyLists()
    {
        QFETCH(bool, fromTheStart);
        QFETCH(QStringList, empty);
        CannedService canned(*service, {}, 1000);
        if (fromTheStart)
            seams().serviceBaseUrl = canned.url();
        road->ShowPhoneCheck();
        Click(road->PhoneCheck().imgYes);
        Click(road->PhoneCheck().imgOK);
        frmSignup2& phone = road->PhoneDetails();
        QVERIFY(phone.isVisible() && !road->PhoneCheck().isVisible());
        seams().serviceBaseUrl = canned.url();
        if (!fromTheStart)
            Select(phone.cmbPhoneMake, "Nokia");
        QStringList saying;
        for (QComboBox* list : phone.findChildren<QComboBox*>()) {
            if (list->count() == 0 && list->placeholderText() == kNothingToChoose)
                saying << list->objectName();
        }
        saying.sort();
        QCOMPARE(saying, empty);
    }

    // The referral window: its checks, the consent, and the three kinds of reply.
    void referFriends_data()
    {
        QTest::addColumn<QStringList>("rows");  // "name|mobile" a row, in its place
        QTest::addColumn<QString>("setUp");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("stays");
        const auto row = [](const char* name, const QStringList& rows, const QString& setUp, const QString& message,
                            bool stays) { QTest::addRow("%s", name) << rows << setUp << message << stays; };
        row("a name without a number", {"", "Bo|"}, "", "Please specify both a name and mobile number.", true);
        row("seven digits", {"Bo|0412345"}, "", "Please specify a valid mobile number.", true);
        row("nobody", {}, "", "Enter at least one friend's name and mobile number!.", true);
        row("consent refused", {"Bo|0455000001"}, "refuse", "", true);
        row("referred, one of them before", {"Bo Ray|0455000002", "", "Cy|0455000003"}, "referBefore",
            "You have referred 2 friends. 1 friend have already been referred.", false);
        row("maximum reached", {"Di|0455000004"}, "fill",
            "You have signed up your maximum amount. Enjoy the free quills!", false);
        row("already a customer", {"Ed|" + QString(ServiceFixture::kDemoMobile)}, "",
            "The phone number +61412345678 is already signed up to Quillo Tone!", true);
        row("service gone", {"Fy|0455000005"}, "gone", "error", true);
    }
    void referFriends()
    {
        QFETCH(QStringList, rows);
        QFETCH(QString, setUp);
        QFETCH(QString, message);
        gstrMobileNumber = NewMobile();
        gstrPassword = Encrypt(kPassword, gstrMachineKey);
        gstrCustomerID = service->addActiveCustomer(gstrMobileNumber, kPassword, "Al");
        QVERIFY(!gstrCustomerID.isEmpty());
        const QString refer = "ReferFriends.asp?refCustomerID=" + gstrCustomerID + "&" + BuildAccountQuery();
        if (setUp == "referBefore")
            service->get(refer + "&FirstName1=Cy&MobileNumber1=0455000003");
        for (int i = 0; setUp == "fill" && i < 10; ++i)
            service->get(refer + QString("&FirstName1=X&MobileNumber1=04560000%1").arg(i, 2, 10, QChar('0')));

        frmFreeQuills window;
        window.Load();
        window.show();
        for (int i = 0; i < rows.size(); ++i) {
            window.txtName[i]->setText(rows[i].section('|', 0, 0));
            window.txtMobile[i]->setText(rows[i].section('|', 1, 1));
        }
        DialogAnswerer script;
        // The form's own checks come before the consent is asked.
        if (!message.startsWith("Please specify") && !message.startsWith("Enter at least"))
            script.answer("frmSMSPermission", setUp == "refuse" ? "Escape" : "Enter");
        if (setUp == "gone") {
            seams().serviceBaseUrl = ServiceFixture::unreachableUrl();
            script.answer("frmGenericOKDialog", "Enter").answer("MsgBox", "OK");
        } else if (!message.isEmpty()) {
            script.answer("frmGenericOKDialog", "Enter");
        }
        Click(window.imgSend);
        QVERIFY2(script.finishedCleanly(), qPrintable(script.problems()));
        if (!message.isEmpty())
            QCOMPARE(script.seen.last().text, message);
        QTEST(window.isVisible(), "stays");
        if (setUp == "referBefore") {
            const QStringList outbox = service->outbox();
            QVERIFY(outbox[0].startsWith("0455000003: Hi Cy, Al thinks"));
            QVERIFY(outbox[1].startsWith("0455000002: Hi Bo Ray, Al thinks"));
        }
    }
};

QTEST_MAIN(tst_SignUp)
#include "tst_signup.moc"
