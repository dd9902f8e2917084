// The web service through a real TLS client: its lists, the whole life of an
// account, tone uploads and downloads, referrals, the picture page, restarts,
// hostile requests, and what guessing and taking over accounts cost.
#include "support/Files.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QElapsedTimer>
#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <algorithm>
#include <memory>

namespace {
QByteArray Tone(int bytes)
{
    QByteArray tone(bytes, Qt::Uninitialized);
    for (int i = 0; i < bytes; ++i)
        tone[i] = static_cast<char>((i * 37 + 11) & 0xFF);
    return tone;
}

QStringList Fields(const QByteArray& body)
{
    return QString::fromLatin1(body).split(QLatin1Char(','));
}

}  // namespace

class tst_ServicePages : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<ServiceFixture> service;
    std::unique_ptr<ServiceFixture> signUps;

private slots:
    // One service for the whole run: each case works with numbers of its own.
    void initTestCase()
    {
        ground = std::make_unique<TestGround>();
        service = std::make_unique<ServiceFixture>(QStringList{"--client-timeout", "1"});
        QVERIFY(service->running());
    }
    void cleanupTestCase()
    {
        signUps.reset();
        service.reset();
        ground.reset();
    }

    void lists_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("group");
        QTest::addColumn<QString>("mustHold");
        QTest::addRow("countries") << "GetCountryList.asp" << 2 << "1,Australia,";
        QTest::addRow("models of a maker") << "GetTerminalTypeList.asp?TerminalVendorID=2" << 2 << ",K750i,";
        QTest::addRow("every network") << "GetServiceProviderList.asp?CountryID=" << 5 << ",Vodafone UK,07,11,11,";
        QTest::addRow("maker with no models") << "GetTerminalTypeList.asp?TerminalVendorID=999" << 2 << "";
    }
    void lists()
    {
        QFETCH(QString, page);
        QFETCH(int, group);
        QFETCH(QString, mustHold);
        const auto reply = service->get(page);
        QCOMPARE(reply.status, 200);
        const QString body = QString::fromLatin1(reply.body);
        QVERIFY2(body.contains(mustHold), qPrintable(body));
        if (body.isEmpty())
            return;
        // Flat list with a trailing ",", whole groups, numeric ids first in each group.
        QVERIFY(body.endsWith(QLatin1Char(',')));
        const QStringList fields = body.split(QLatin1Char(','));
        QCOMPARE((fields.size() - 1) % group, 0);
        for (qsizetype i = 0; i + 1 < fields.size(); i += group) {
            bool numeric = false;
            fields[i].toInt(&numeric);
            QVERIFY2(numeric, qPrintable(fields[i]));
        }
    }

    void accountLife()
    {
        // Sign-up: the code comes back and goes to the phone.
        const auto added = service->get(
            "AddCustomer.asp?FirstName=Mary+Ann&LastName=O%27Brien&gender=female&MobileNumber=0411222333"
            "&Email=mary%40example.com&Password=secret99&Age=31&CountryID=1&TerminalVendorID=2&TerminalTypeID=10"
            "&ServiceProviderID=102&ReceiveMarketing=1&PartnerID=");
        QCOMPARE(added.status, 200);
        const QStringList fields = Fields(added.body);
        QCOMPARE(fields.size(), 3);
        QCOMPARE(fields[0], QString("1"));
        QVERIFY(QRegularExpression("^\\d{4}$").match(fields[2]).hasMatch());
        QVERIFY(service->outbox().first().startsWith("0411222333: ") &&
                service->outbox().first().contains(fields[2]));

        // Not active yet: the number is held and the login refused.
        QCOMPARE(service->get("LookupMobileNumber.asp?MobileNumber=0411222333").body, QByteArray("1"));
        QCOMPARE(service->get(LoginQuery("0411222333", "secret99")).body, QByteArray("0"));
        QCOMPARE(service->get("ActivateCustomer.asp?CustomerID=" + fields[1] + "&ActivationCode=" + fields[2]).body,
                 QByteArray("1"));
        QCOMPARE(service->get("LookupMobileNumber.asp?MobileNumber=0411222333").body, QByteArray("1"));

        // Login: eleven fields, the phone's format and the charge wording.
        QStringList login = Fields(service->get(LoginQuery("0411222333", "secret99")).body);
        QCOMPARE(login.size(), 11);
        QCOMPARE(login[0], QString("1"));
        QCOMPARE(login[1], fields[1]);
        QCOMPARE(login[7], QString("3"));
        QCOMPARE(login[9], QString("MP3"));
        QVERIFY(login[10].contains("A$"));
        QCOMPARE(service->get(LoginQuery("0411222333", "secret98")).body, QByteArray("0"));

        // The welcome announcement is read once.
        const QString announcements = "AnnouncementRead.asp?MobileNumber=0411222333&Password=secret99";
        QVERIFY(service->get(announcements).body.contains("Welcome to Quillo Tone, Mary Ann!\r\n"));
        QCOMPARE(service->get(announcements).body, QByteArray());

        // Upload of 40000 bytes in three fields; the link fetches the very bytes.
        const QByteArray tone = Tone(40000);
        const auto sent = service->post("SendT2.asp", UploadBody("0411222333", "secret99", tone, "audio/mpeg",
                                                                 "20250101120000.mp3"));
        QCOMPARE(sent.status, 200);
        const QStringList reply = Fields(sent.body);
        QCOMPARE(reply.size(), 3);
        QCOMPARE(reply[0], QString("1"));
        QVERIFY(reply[2].startsWith(service->baseUrl() + "tones/"));
        QVERIFY(service->outbox().first().endsWith(reply[2]));
        const auto download = service->get(reply[2].mid(service->baseUrl().size()));
        QCOMPARE(download.status, 200);
        QCOMPARE(download.contentType, QByteArray("audio/mpeg"));
        QVERIFY(download.body == tone);

        // A free quill was spent; at none left the tone is still sent, charged.
        QCOMPARE(service->freeQuills("0411222333", "secret99"), QString("2"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(Fields(service->post("SendT2.asp", UploadBody("0411222333", "secret99", Tone(100), "audio/mpeg",
                                                                   QString("x%1.mp3").arg(i)))
                                .body)[0],
                     QString("1"));
        QCOMPARE(service->freeQuills("0411222333", "secret99"), QString("0"));

        // A second sign-up with the number is refused.
        QVERIFY(service->get(ServiceFixture::signUpQuery("0411222333", "secret99")).body.startsWith("0,"));

        // Restart: everything is still there, the certificate too.
        const QByteArray certificate = ReadFile(service->certificateFile());
        QVERIFY(service->restart());
        QCOMPARE(service->freeQuills("0411222333", "secret99"), QString("0"));
        QVERIFY(service->get(reply[2].mid(reply[2].indexOf("tones/"))).body == tone);
        QCOMPARE(ReadFile(service->certificateFile()), certificate);
    }

    void uploadRefusals_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("start");
        const QByteArray good = UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword, Tone(40000));
        QTest::addRow("wrong password") << UploadBody(ServiceFixture::kDemoMobile, "nope", Tone(10)) << "0,1,";
        QTest::addRow("unknown type") << UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword,
                                                    Tone(10), "text/html", "x.amr")
                                      << "0,2,";
        QTest::addRow("name with folder") << UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword,
                                                        Tone(10), "audio/amr", "../../x.amr")
                                          << "0,2,";
        QTest::addRow("empty tone") << UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword, {})
                                    << "0,3,";
        QTest::addRow("record not xml") << QByteArray("MobileNumber=0412345678&Password=tonedemo&xmldata=%3CMess"
                                                      "&tonedata1=00")
                                        << "0,2,";
        QTest::addRow("a field missing") << QByteArray(good).replace("&tonedata2=", "&tonedata9=") << "0,4,Missing";
        QTest::addRow("a field cut short") << QByteArray(good).replace("&tonedata2=", "&tonedata2=AB&x=")
                                           << "0,4,Field";
        QTest::addRow("not hexadecimal") << QByteArray(good).replace("&tonedata3=", "&tonedata3=ZZ") << "0,4,Field";
        QTest::addRow("no password") << QByteArray("MobileNumber=0412345678&xmldata=x&tonedata1=00")
                                     << "0,4,Missing field Password";
        QTest::addRow("binary junk") << QByteArray("\x00\xff\x01&&==&\xfe", 10) << "0,4,Missing";
        QTest::addRow("a million ampersands") << QByteArray(1000000, '&') << "0,4,Missing field MobileNumber";
        QTest::addRow("a quarter million fields") << QByteArray("x=1&").repeated(250000) << "0,4,Too many fields";
    }
    void uploadRefusals()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, start);
        const auto reply = service->post("SendT2.asp", body);
        // A refusal the program reads has three fields, or it counts as delivered.
        QCOMPARE(reply.status, 200);
        QVERIFY2(QString::fromLatin1(reply.body).startsWith(start), reply.body.constData());
        QVERIFY(Fields(reply.body).size() >= 3);
        QCOMPARE(service->freeQuills(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword),
                 QString("5"));
    }

    void aRetriedUploadIsStoredAndChargedOnce()
    {
        QVERIFY(!service->addActiveCustomer("0400000020", "secret99").isEmpty());
        const QByteArray body = UploadBody("0400000020", "secret99", Tone(20000), "audio/amr", "20250102030405.amr");
        const auto first = service->post("SendT2.asp", body);
        const auto retry = service->post("SendT2.asp", body);
        QCOMPARE(first.status, 200);
        QVERIFY(first.body.startsWith("1,"));
        QCOMPARE(retry.body, first.body);
        QCOMPARE(service->freeQuills("0400000020", "secret99"), QString("2"));
        QCOMPARE(service->phone("0400000020", "secret99").filter("Your Quillo Tone is ready").size(), 1);
        // Another tone name is another tone.
        QVERIFY(service->post("SendT2.asp", UploadBody("0400000020", "secret99", Tone(20000), "audio/amr",
                                                       "20250102030406.amr"))
                    .body != first.body);
        QCOMPARE(service->freeQuills("0400000020", "secret99"), QString("1"));
    }

    void hostileRequests_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addRow("login without password") << "Login.asp?MobileNumber=0412345678" << 400
                                                << QByteArray("Missing field Password");
        QTest::addRow("quote in number") << "Login.asp?MobileNumber=0412345678'--&Password=x&Origin=0" << 200
                                         << QByteArray("0");
        QTest::addRow("always-true password") << "Login.asp?MobileNumber=0412345678&Password=x%27+OR+%271%27%3D%271"
                                                 "&Origin=0"
                                              << 200 << QByteArray("0");
        QTest::addRow("country not a number") << "GetServiceProviderList.asp?CountryID=1;DROP+TABLE+providers" << 400
                                              << QByteArray("Field CountryID is not a number");
        QTest::addRow("vendor missing") << "GetTerminalTypeList.asp" << 400
                                        << QByteArray("Missing field TerminalVendorID");
        QTest::addRow("unknown page") << "Nothing.asp" << 404 << QByteArray("No such page");
        QTest::addRow("unknown tone") << "tones/0123456789abcdef0123456789abcdef" << 404 << QByteArray("No such tone");
        QTest::addRow("activation of nobody") << "ActivateCustomer.asp?CustomerID=99999&ActivationCode=1" << 200
                                              << QByteArray("0");
        QTest::addRow("referral by nobody") << "ReferFriends.asp?refCustomerID=99999&FirstName1=A&MobileNumber1=1"
                                               "&MobileNumber=0412345678&Password=tonedemo"
                                            << 200 << QByteArray("Invalid mobile number or password");
        QTest::addRow("picture without code") << "qtc/JpegImage.aspx?" << 400
                                              << QByteArray("The code must have 1 to 32 characters");
        QTest::addRow("picture of a long code") << "qtc/JpegImage.aspx?" + QString(33, 'A') << 400
                                                << QByteArray("The code must have 1 to 32 characters");
        QTest::addRow("version not a version") << "CheckVersion.asp?Version=1.x" << 400
                                               << QByteArray("Version is not major.minor.revision");
        QTest::addRow("version") << "CheckVersion.asp?Version=1.0.12" << 200 << QByteArray("1");
    }
    void hostileRequests()
    {
        QFETCH(QString, request);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        const auto reply = service->get(request);
        QCOMPARE(reply.status, status);
        QCOMPARE(reply.body, body);
        // Nothing stored was touched.
        QCOMPARE(Fields(service->get(LoginQuery(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword)).body)[0],
                 QString("1"));
        QVERIFY(service->get("GetServiceProviderList.asp?CountryID=1").body.contains("Telstra"));
    }

    void metacharactersAreStoredAsText()
    {
        const QString id = service->addActiveCustomer("0400000001", "pa'ss;--", "Robert%27%29%3B+DROP+TABLE+customers%3B--");
        QVERIFY(!id.isEmpty());
        const QStringList login = Fields(service->get(LoginQuery("0400000001", "pa'ss;--")).body);
        QCOMPARE(login[0], QString("1"));
        QCOMPARE(login[2], QString("Robert'); DROP TABLE customers;--"));
        QCOMPARE(Fields(service->get(LoginQuery(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword)).body)[0],
                 QString("1"));
    }

    void referrals()
    {
        const QString id = service->addActiveCustomer("0400000002", "secret99", "Ann");
        QVERIFY(!id.isEmpty());
        const QString refer = "ReferFriends.asp?refCustomerID=" + id + "&MobileNumber=0400000002&Password=secret99&";
        // Two friends: lines with a line break each.
        QCOMPARE(service->get(refer + "FirstName1=Bo&MobileNumber1=0400000003&FirstName3=Cy&MobileNumber3=0400000004&")
                     .body,
                 QByteArray("1,Bo,0400000003\r\n1,Cy,0400000004\r\n"));
        // When Bo signs up, Ann earns a quill (the news of it: tst_login).
        QCOMPARE(service->freeQuills("0400000002", "secret99"), QString("3"));
        QVERIFY(!service->addActiveCustomer("0400000003", "secret99", "Bo").isEmpty());
        QCOMPARE(service->freeQuills("0400000002", "secret99"), QString("4"));
    }

    void resetProvesThePhone()
    {
        QVERIFY(!service->addActiveCustomer("0400000005", "oldpass1").isEmpty());
        // Asking changes nothing yet: a one-time code goes to the phone only.
        QCOMPARE(service->post("password.asp", "MobileNumber=0400000005").status, 200);
        QCOMPARE(Fields(service->get(LoginQuery("0400000005", "oldpass1")).body)[0], QString("1"));
        const QString sms = service->phone("0400000005", "oldpass1").first();
        const auto m = QRegularExpression("reset code is (\\w+)\\.").match(sms);
        QVERIFY2(m.hasMatch(), qPrintable(sms));
        const QByteArray code = m.captured(1).toLatin1();
        const auto reset = [&](const QByteArray& tried, const QByteArray& fresh, const QByteArray& again) {
            return service->post("password.asp", "MobileNumber=0400000005&Code=" + tried + "&Password=" + fresh +
                                                     "&ConfirmPassword=" + again);
        };
        QVERIFY(reset("wrong123", "newpass1", "newpass1").body.contains("wrong, used or too old"));
        QVERIFY(reset(code, "newpass1", "newpass2").body.contains("must be the same"));
        QVERIFY(reset(code, "newpass1", "newpass1").body.contains("Your password is changed"));
        QCOMPARE(service->get(LoginQuery("0400000005", "oldpass1")).body, QByteArray("0"));
        QCOMPARE(Fields(service->get(LoginQuery("0400000005", "newpass1")).body)[0], QString("1"));
        // The code works once.
        QVERIFY(reset(code, "newpass3", "newpass3").body.contains("wrong, used or too old"));
        QCOMPARE(Fields(service->get(LoginQuery("0400000005", "newpass1")).body)[0], QString("1"));
        // A number with no account gets the same page, and no message.
        const auto nobody = service->post("password.asp", "MobileNumber=0400000066");
        QVERIFY(nobody.body.contains("If 0400000066 belongs to a Quillo Tone account"));
        QVERIFY(service->outbox().filter("0400000066").isEmpty());
        // Passwords are stored hashed and salted, never in clear.
        const QByteArray raw = ReadFile(service->dataFolder() + "/service.db");
        QVERIFY(!raw.contains("oldpass1") && !raw.contains("newpass1") && !raw.contains(ServiceFixture::kDemoPassword));
    }

    void onlyTheOwnerReadsAPhone()
    {
        QVERIFY(!service->addActiveCustomer("0400000007", "secret99").isEmpty());
        QVERIFY(!service->addActiveCustomer("0400000008", "secret98").isEmpty());
        // Nobody's messages on the public page, nor with a wrong password.
        QVERIFY(ServiceFixture::messagesIn(service->get("outbox.asp").body).isEmpty());
        const auto wrong = service->post("outbox.asp", "MobileNumber=0400000007&Password=secret98");
        QCOMPARE(wrong.status, 403);
        QVERIFY(ServiceFixture::messagesIn(wrong.body).isEmpty());
        // The owner reads their own phone, and only it.
        const QStringList own = service->phone("0400000007", "secret99");
        QVERIFY(!own.isEmpty());
        for (const QString& message : own)
            QVERIFY2(message.startsWith("0400000007: "), qPrintable(message));
        // The operator's view wants the key; its one-time link opens one phone once.
        QCOMPARE(service->get("operator.asp").status, 401);
        QVERIFY(service->outbox().filter("0400000008: ").size() > 0);
        const auto made = service->postAsOperator("operator.asp", "MobileNumber=0400000008");
        const auto link = QRegularExpression("outbox\\.asp\\?link=[0-9a-f]{32}").match(QString::fromLatin1(made.body));
        QVERIFY2(link.hasMatch(), made.body.constData());
        QCOMPARE(ServiceFixture::messagesIn(service->get(link.captured(0)).body),
                 service->phone("0400000008", "secret98"));
        QCOMPARE(service->get(link.captured(0)).status, 403);
    }

    void operatorViewIsOffWithoutAKey()
    {
        ServiceFixture noKey({}, false);
        QVERIFY(noKey.running());
        QCOMPARE(noKey.getAsOperator("operator.asp").status, 404);
        QCOMPARE(noKey.get("operator.asp").status, 404);
    }

    void signUpWaitsForItsCode()
    {
        // Signed up again with the same password: the same customer and code.
        const QString query = ServiceFixture::signUpQuery("0400000009", "secret99");
        const QByteArray first = service->get(query).body;
        QVERIFY(first.startsWith("1,"));
        QCOMPARE(service->get(query).body, first);
    }

    // A waiting sign-up keeps its code for 30 days; after its first hour another
    // sign-up of the number may take its place.
    void waitingSignUp_data()
    {
        QTest::addColumn<QString>("mobile");
        QTest::addColumn<int>("age");
        QTest::addColumn<bool>("signUpAgain");  // with another password
        QTest::addColumn<QByteArray>("lookup");
        QTest::addColumn<bool>("outboxReadable");
        QTest::addColumn<QByteArray>("againStart");
        QTest::addColumn<QByteArray>("activation");
        QTest::addRow("fresh") << "0400000030" << 0 << true << QByteArray("1") << true << QByteArray("0,")
                               << QByteArray("1");
        QTest::addRow("after an hour, replaced") << "0400000031" << 3700 << true << QByteArray("0") << true
                                                 << QByteArray("1,") << QByteArray("0");
        QTest::addRow("after 29 days") << "0400000032" << 29 * 86400 << false << QByteArray("0") << true << QByteArray()
                                       << QByteArray("1");
        QTest::addRow("after 31 days") << "0400000033" << 31 * 86400 << false << QByteArray("0") << false
                                       << QByteArray() << QByteArray("0");
    }
    void waitingSignUp()
    {
        QFETCH(QString, mobile);
        QFETCH(int, age);
        QFETCH(bool, signUpAgain);
        QFETCH(QByteArray, lookup);
        QFETCH(bool, outboxReadable);
        QFETCH(QByteArray, againStart);
        QFETCH(QByteArray, activation);
        // A service of its own: these sign-ups would use up the address's allowance.
        if (!signUps)
            signUps = std::make_unique<ServiceFixture>();
        const ServiceFixture* service = signUps.get();
        const QStringList first = Fields(service->get(ServiceFixture::signUpQuery(mobile, "secret99")).body);
        QCOMPARE(first[0], QString("1"));
        QVERIFY(service->ageSignUp(mobile, age));
        QCOMPARE(service->get("LookupMobileNumber.asp?MobileNumber=" + mobile).body, lookup);
        QCOMPARE(!service->phone(mobile, "secret99").isEmpty(), outboxReadable);
        if (signUpAgain)
            QVERIFY(service->get(ServiceFixture::signUpQuery(mobile, "other999")).body.startsWith(againStart));
        QCOMPARE(service->get("ActivateCustomer.asp?CustomerID=" + first[1] + "&ActivationCode=" + first[2]).body,
                 activation);
    }

    // Passwords that the login, which sends them as they stand, could not carry.
    void passwordsTheLoginCannotCarry_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("taken");
        for (const char* sign : {"&", "=", "%", "+", "#", "?", " "})
            QTest::addRow("with \"%s\"", sign) << QString("abc%1def").arg(QLatin1String(sign)) << false;
        QTest::addRow("outside Windows-1252") << QString::fromUtf8("abc\u0100def") << false;
        QTest::addRow("Western European") << QString::fromUtf8("\u20acur\u00e9s;-_") << true;
    }
    void passwordsTheLoginCannotCarry()
    {
        QFETCH(QString, password);
        QFETCH(bool, taken);
        const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(password));
        const QByteArray added = service->get(ServiceFixture::signUpQuery("0400000040", encoded)).body;
        QCOMPARE(added.startsWith("1,"), taken);
        if (!taken)
            QCOMPARE(added, QByteArray("0,Please choose a password without spaces and without & = % + # ? or letters "
                                       "from outside Western Europe"));
        const QByteArray reset = service->post("password.asp", "MobileNumber=0400000041&Code=abcdefgh&Password=" +
                                                                   encoded.toLatin1() + "&ConfirmPassword=" +
                                                                   encoded.toLatin1())
                                     .body;
        QCOMPARE(reset.contains("must be the same"), !taken);
    }

    void activationCodeDiesAfterTenWrongTries()
    {
        const QStringList fields = Fields(service->get(ServiceFixture::signUpQuery("0400000010", "secret99")).body);
        const QString activate = "ActivateCustomer.asp?CustomerID=" + fields[1] + "&ActivationCode=";
        for (int wrong = 0; wrong < 10; ++wrong)
            QCOMPARE(service->get(activate + (fields[2] == "1000" ? "1001" : "1000")).body, QByteArray("0"));
        QCOMPARE(service->get(activate + fields[2]).body, QByteArray("0"));
    }

    void passwordGuessingIsSlowedPerNumber()
    {
        QVERIFY(!service->addActiveCustomer("0400000011", "secret99").isEmpty());
        QCOMPARE(Fields(service->get(LoginQuery("0400000011", "secret99")).body)[0], QString("1"));
        // The program's five tries, each with its announcement check, pass free.
        for (int i = 0; i < 10; ++i)
            QCOMPARE(service->get(LoginQuery("0400000011", QString("guess%1").arg(i))).body, QByteArray("0"));
        // Then even the right password waits.
        QCOMPARE(service->get(LoginQuery("0400000011", "secret99")).body, QByteArray("0"));
    }

    void loginTakesAsLongForANumberWithNoAccount()
    {
        QVERIFY(!service->addActiveCustomer("0400000012", "secret99").isEmpty());
        QCOMPARE(Fields(service->get(LoginQuery("0400000012", "secret99")).body)[0], QString("1"));
        const auto median = [&](const QString& mobile) {
            QList<qint64> times;
            for (int i = 0; i < 7; ++i) {
                QElapsedTimer clock;
                clock.start();
                service->get(LoginQuery(mobile, "wrong99" + QString::number(i)));
                times << clock.nsecsElapsed();
            }
            std::sort(times.begin(), times.end());
            return times[3];
        };
        const qint64 known = median("0400000012");
        const qint64 unknown = median("0400000099");
        QVERIFY2(unknown * 2 > known, qPrintable(QString("%1 ns against %2 ns").arg(unknown).arg(known)));
    }

    void guessingIsLimitedPerAddress()
    {
        ServiceFixture own;
        QVERIFY(own.running());
        const QStringList fields = Fields(own.get(ServiceFixture::signUpQuery("0420000001", "secret99")).body);
        // Wrong codes spread over many customers, from one address; then even
        // the right code waits.
        for (int i = 0; i < 20; ++i)
            QCOMPARE(own.get(QString("ActivateCustomer.asp?CustomerID=%1&ActivationCode=1").arg(1000 + i)).body,
                     QByteArray("0"));
        QCOMPARE(own.get("ActivateCustomer.asp?CustomerID=" + fields[1] + "&ActivationCode=" + fields[2]).body,
                 QByteArray("0"));
        // Sign-ups from one address are limited too: 20 an hour.
        int added = 1;
        for (int i = 0; i < 20; ++i)
            added += own.get(ServiceFixture::signUpQuery(QString("04200000%1").arg(10 + i), "secret99"))
                         .body.startsWith("1,");
        QCOMPARE(added, 20);
    }

    void referralsAndReportsWantThePassword_data()
    {
        QTest::addColumn<QString>("account");
        QTest::addRow("no account") << "";
        QTest::addRow("wrong password") << "&MobileNumber=0400000013&Password=secret98";
        QTest::addRow("another customer's") << QString("&MobileNumber=%1&Password=%2")
                                                   .arg(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword);
    }
    void referralsAndReportsWantThePassword()
    {
        QFETCH(QString, account);
        static const QString id = service->addActiveCustomer("0400000013", "secret99");
        QVERIFY(!id.isEmpty());
        const auto referral =
            service->get("ReferFriends.asp?refCustomerID=" + id + "&FirstName1=Jo&MobileNumber1=0400000014&" + account);
        QVERIFY(!referral.body.startsWith("1,"));
        QVERIFY(service->outbox().filter("0400000014").isEmpty());
        QVERIFY(service->get("PostSongData.asp?CID=" + id + "&SongBlob=Rock%7C" + account).body != "1");
        // With the customer's own password both are taken.
        const QString own = "&MobileNumber=0400000013&Password=secret99";
        QCOMPARE(service->get("PostSongData.asp?CID=" + id + "&SongBlob=Rock%7C" + own).body, QByteArray("1"));
    }

    void songReportAndPhonePages()
    {
        const QString id = service->addActiveCustomer("0400000006", "secret99");
        QVERIFY(!id.isEmpty());
        const QString account = "MobileNumber=0400000006&Password=secret99";
        QCOMPARE(service->get("UpdateTID.asp?" + account + "&TerminalTypeID=10").body, QByteArray("1"));
        QCOMPARE(Fields(service->get(LoginQuery("0400000006", "secret99")).body)[9], QString("MP3"));
        QCOMPARE(service->get("DeleteTID.asp?" + account).body, QByteArray("1"));
        QCOMPARE(Fields(service->get(LoginQuery("0400000006", "secret99")).body)[9], QString("AMR Narrowband"));
        // Send.asp sends a stored tone's link again.
        const QStringList sent =
            Fields(service->post("SendT2.asp", UploadBody("0400000006", "secret99", Tone(9))).body);
        QCOMPARE(service->get("Send.asp?" + account + "&ToneID=" + sent[1]).body,
                 QString("1,%1,%2").arg(sent[1], sent[2]).toLatin1());
        QCOMPARE(Fields(service->get("Send.asp?" + account + "&ToneID=987654").body)[0], QString("0"));
        for (const char* page : {"", "help.asp", "password.asp", "outbox.asp"}) {
            const auto reply = service->get(page);
            QCOMPARE(reply.status, 200);
            QVERIFY(reply.contentType.startsWith("text/html"));
        }
    }

    void codePicture_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addRow("seven letters") << "A1B2C3D";
        QTest::addRow("longest") << QString(32, 'F');
    }
    void codePicture()
    {
        QFETCH(QString, code);
        const auto reply = service->get("qtc/JpegImage.aspx?" + code);
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.contentType, QByteArray("image/jpeg"));
        QImage picture;
        QVERIFY(picture.loadFromData(reply.body, "JPEG"));
        // Wide enough for every character, with dark ink on a light ground.
        QVERIFY(picture.width() >= 20 * code.size());
        int dark = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                dark += qGray(picture.pixel(x, y)) < 80;
        QVERIFY(dark > 60 * code.size());
        QVERIFY(qGray(picture.pixel(1, 1)) > 200);
    }
};

QTEST_MAIN(tst_ServicePages)
#include "tst_servicepages.moc"
