// The web service through a real TLS client: its lists, the whole life of an
// account, tone uploads and downloads, referrals, the picture page, restarts
// and hostile requests.
#include "support/Files.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QImage>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSslSocket>
#include <QTest>
#include <memory>

namespace {
// A tone body the way the program posts it: hexadecimal in fields of 32760.
QByteArray UploadBody(const QString& mobile, const QString& password, const QByteArray& tone,
                      const QString& contentType = "audio/amr", const QString& filename = "20250101120000.amr")
{
    const QString xml = QStringLiteral("<Message ContentType=\"%1\" Filename=\"%2\" QueueIdentifier=\"AB\" "
                                       "QueueData=\"CD\" Created=\"1/01/2025 12:00:00 PM\" Status=\"Ready\" "
                                       "MobileNumber=\"%3\" Password=\"%4\"/>")
                            .arg(contentType, filename, mobile, password);
    QByteArray body = "MobileNumber=" + mobile.toLatin1() + "&Password=" + password.toLatin1() +
                      "&xmldata=" + QUrl::toPercentEncoding(xml);
    const QByteArray hex = tone.toHex().toUpper();
    int n = 1;
    qsizetype at = 0;
    do {
        body += "&tonedata" + QByteArray::number(n++) + "=" + hex.mid(at, 32760);
        at += 32760;
    } while (at < hex.size());
    return body;
}

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

QString LoginQuery(const QString& mobile, const QString& password)
{
    return QStringLiteral("Login.asp?MobileNumber=%1&Password=%2&Origin=0").arg(mobile, password);
}
}  // namespace

class tst_ServicePages : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<ServiceFixture> service;

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
        service.reset();
        ground.reset();
    }

    void lists_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("group");
        QTest::addColumn<QString>("mustHold");
        QTest::addRow("countries") << "GetCountryList.asp" << 2 << "1,Australia,";
        QTest::addRow("makers") << "GetTerminalVendorList.asp" << 2 << "1,Nokia,";
        QTest::addRow("models of a maker") << "GetTerminalTypeList.asp?TerminalVendorID=2" << 2 << ",K750i,";
        QTest::addRow("networks of Australia") << "GetServiceProviderList.asp?CountryID=1" << 5
                                               << "101,Telstra,04,10,10,";
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

        // Not active yet: the number is free and the login refused.
        QCOMPARE(service->get("LookupMobileNumber.asp?MobileNumber=0411222333").body, QByteArray("0"));
        QCOMPARE(service->get(LoginQuery("0411222333", "secret99")).body, QByteArray("0"));
        const QString wrong = fields[2] == "1234" ? "4321" : "1234";
        QCOMPARE(service->get("ActivateCustomer.asp?CustomerID=" + fields[1] + "&ActivationCode=" + wrong).body,
                 QByteArray("0"));
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
        QCOMPARE(Fields(service->get(LoginQuery("0411222333", "secret99")).body)[7], QString("2"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(Fields(service->post("SendT2.asp", UploadBody("0411222333", "secret99", Tone(100), "audio/mpeg",
                                                                   "x.mp3"))
                                .body)[0],
                     QString("1"));
        QCOMPARE(Fields(service->get(LoginQuery("0411222333", "secret99")).body)[7], QString("0"));

        // A second sign-up with the number is refused.
        QVERIFY(service->get("AddCustomer.asp?FirstName=A&LastName=B&gender=male&MobileNumber=0411222333"
                             "&Email=a%40b.c&Password=secret99&Age=3&CountryID=1&TerminalVendorID=1"
                             "&TerminalTypeID=1&ServiceProviderID=101&ReceiveMarketing=0&PartnerID=")
                    .body.startsWith("0,"));

        // Restart: everything is still there, the certificate too.
        const QByteArray certificate = ReadFile(service->certificateFile());
        QVERIFY(service->restart());
        QCOMPARE(Fields(service->get(LoginQuery("0411222333", "secret99")).body)[7], QString("0"));
        QVERIFY(service->get(reply[2].mid(reply[2].indexOf("tones/"))).body == tone);
        QCOMPARE(ReadFile(service->certificateFile()), certificate);
    }

    void uploadRefusals_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("start");
        const QByteArray good = UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword, Tone(40000));
        QTest::addRow("wrong password") << UploadBody(ServiceFixture::kDemoMobile, "nope", Tone(10)) << 200 << "0,1,";
        QTest::addRow("unknown type") << UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword,
                                                    Tone(10), "text/html", "x.amr")
                                      << 200 << "0,2,";
        QTest::addRow("name with folder") << UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword,
                                                        Tone(10), "audio/amr", "../../x.amr")
                                          << 200 << "0,2,";
        QTest::addRow("empty tone") << UploadBody(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword, {})
                                    << 200 << "0,3,";
        QTest::addRow("record not xml") << QByteArray("MobileNumber=0412345678&Password=tonedemo&xmldata=%3CMess"
                                                      "&tonedata1=00")
                                        << 200 << "0,2,";
        QTest::addRow("a field missing") << QByteArray(good).replace("&tonedata2=", "&tonedata9=") << 400 << "Missing";
        QTest::addRow("a field cut short") << QByteArray(good).replace("&tonedata2=", "&tonedata2=AB&x=") << 400
                                           << "Field";
        QTest::addRow("not hexadecimal") << QByteArray(good).replace("&tonedata3=", "&tonedata3=ZZ") << 400
                                         << "Field";
        QTest::addRow("no password") << QByteArray("MobileNumber=0412345678&xmldata=x&tonedata1=00") << 400
                                     << "Missing field Password";
        QTest::addRow("binary junk") << QByteArray("\x00\xff\x01&&==&\xfe", 10) << 400 << "Missing";
    }
    void uploadRefusals()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, start);
        const auto reply = service->post("SendT2.asp", body);
        QCOMPARE(reply.status, status);
        QVERIFY2(QString::fromLatin1(reply.body).startsWith(start), reply.body.constData());
        // A refusal the program reads must have three fields, or it counts as delivered.
        if (status == 200)
            QVERIFY(Fields(reply.body).size() >= 3);
        QCOMPARE(Fields(service->get(LoginQuery(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword)).body)[7],
                 QString("5"));
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
                                            << 400 << QByteArray("Unknown customer");
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

    void hugeBodyIsRefusedAndServiceGoesOn()
    {
        const auto reply = service->post("SendT2.asp", QByteArray(50 * 1024 * 1024, 'A'));
        // Refused in the upload's own fields, or cut off while sending.
        QVERIFY2((reply.status == 200 && reply.body.startsWith("0,3,")) || (reply.status == 0 && !reply.error.isEmpty()),
                 qPrintable(QString::number(reply.status) + reply.error));
        QCOMPARE(Fields(service->get(LoginQuery(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword)).body)[0],
                 QString("1"));
    }

    void stallingClientIsCutOffWhileOthersAreServed()
    {
        QSslSocket staller;
        QSignalSpy gone(&staller, &QAbstractSocket::disconnected);
        const QUrl url(service->baseUrl());
        staller.connectToHost(url.host(), static_cast<quint16>(url.port()));
        QVERIFY(staller.waitForConnected(5000));
        staller.write("\x16\x03\x01");  // the start of a handshake, never finished
        staller.flush();
        QCOMPARE(Fields(service->get(LoginQuery(ServiceFixture::kDemoMobile, ServiceFixture::kDemoPassword)).body)[0],
                 QString("1"));
        QVERIFY(gone.wait(10000));
    }

    void referrals()
    {
        const QString id = service->addActiveCustomer("0400000002", "secret99", "Ann");
        QVERIFY(!id.isEmpty());
        const QString refer = "ReferFriends.asp?refCustomerID=" + id + "&";
        // Two friends: lines with a line break each.
        QCOMPARE(service->get(refer + "FirstName1=Bo&MobileNumber1=0400000003&FirstName3=Cy&MobileNumber3=0400000004&")
                     .body,
                 QByteArray("1,Bo,0400000003\r\n1,Cy,0400000004\r\n"));
        QVERIFY(service->outbox().first().startsWith("0400000004: Hi Cy, Ann thinks"));
        // A friend referred before starts with "0".
        QCOMPARE(service->get(refer + "FirstName1=Bo&MobileNumber1=0400000003&").body,
                 QByteArray("0,Bo,0400000003\r\n"));
        // A customer already: the number in international form.
        QCOMPARE(service->get(refer + "FirstName1=Di&MobileNumber1=0412345678&").body,
                 QByteArray("The number +61412345678 is already in system"));
        // When Bo signs up, Ann earns a quill and hears of it.
        QCOMPARE(Fields(service->get(LoginQuery("0400000002", "secret99")).body)[7], QString("3"));
        QVERIFY(!service->addActiveCustomer("0400000003", "secret99", "Bo").isEmpty());
        QCOMPARE(Fields(service->get(LoginQuery("0400000002", "secret99")).body)[7], QString("4"));
        service->get("AnnouncementRead.asp?MobileNumber=0400000002&Password=secret99");
        QVERIFY(service->get("AnnouncementRead.asp?MobileNumber=0400000002&Password=secret99")
                    .body.contains("Your friend Bo has joined"));
        // Ten referrals at most.
        for (int i = 0; i < 7; ++i)
            service->get(refer + QString("FirstName1=F&MobileNumber1=04100000%1&").arg(10 + i));
        QCOMPARE(service->get(refer + "FirstName1=G&MobileNumber1=0410000099&").body,
                 QByteArray("No more referrals available"));
    }

    void passwordResetSendsANewOne()
    {
        QVERIFY(!service->addActiveCustomer("0400000005", "oldpass1").isEmpty());
        QCOMPARE(Fields(service->get(LoginQuery("0400000005", "oldpass1")).body)[0], QString("1"));
        QCOMPARE(service->post("password.asp", "MobileNumber=0400000005").status, 200);
        const QString sms = service->outbox().first();
        const auto m = QRegularExpression("^0400000005: Your new Quillo Tone password is (\\w+)\\.$").match(sms);
        QVERIFY2(m.hasMatch(), qPrintable(sms));
        QCOMPARE(service->get(LoginQuery("0400000005", "oldpass1")).body, QByteArray("0"));
        QCOMPARE(Fields(service->get(LoginQuery("0400000005", m.captured(1))).body)[0], QString("1"));
        // Passwords are stored hashed and salted, never in clear.
        const QByteArray raw = ReadFile(service->dataFolder() + "/service.db");
        QVERIFY(!raw.contains("oldpass1") && !raw.contains(ServiceFixture::kDemoPassword));
    }

    void songReportAndPhonePages()
    {
        QCOMPARE(service->get("PostSongData.asp?CID=1&SongBlob=Rock%7CSong+Title%7C").body, QByteArray("1"));
        QVERIFY(!service->addActiveCustomer("0400000006", "secret99").isEmpty());
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
        QTest::addRow("one") << "7";
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
