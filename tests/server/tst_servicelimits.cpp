// The web service against clients that misbehave: endless and oversized
// requests, slow and many connections, requests sent ahead, weak TLS; and
// what it keeps on disk.
#include "support/Files.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSslCipher>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTest>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

namespace {
const QByteArray kLoginQuery = "/Login.asp?MobileNumber=0412345678&Password=tonedemo&Origin=0";
const QByteArray kLogin = "GET " + kLoginQuery + " HTTP/1.1\r\nHost: x\r\n\r\n";

std::unique_ptr<QSslSocket> Connect(const ServiceFixture& service, QSsl::SslProtocol protocol = QSsl::TlsV1_2OrLater,
                                    const QList<QSslCipher>& ciphers = {}, const QString& caFile = {})
{
    auto socket = std::make_unique<QSslSocket>();
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setCaCertificates(QSslCertificate::fromPath(caFile.isEmpty() ? service.certificateFile() : caFile));
    tls.setProtocol(protocol);
    if (!ciphers.isEmpty())
        tls.setCiphers(ciphers);
    socket->setSslConfiguration(tls);
    const QUrl url(service.baseUrl());
    socket->connectToHostEncrypted(url.host(), static_cast<quint16>(url.port()));
    socket->waitForEncrypted(10000);
    return socket;
}

// Plain TCP connections from a chosen loopback address, never a handshake.
std::vector<std::unique_ptr<QTcpSocket>> ConnectFrom(const ServiceFixture& service, int count,
                                                      const std::function<QString(int)>& from)
{
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    const QUrl url(service.baseUrl());
    for (int i = 0; i < count; ++i) {
        sockets.push_back(std::make_unique<QTcpSocket>());
        sockets.back()->bind(QHostAddress(from(i)));
        sockets.back()->connectToHost(url.host(), static_cast<quint16>(url.port()));
        sockets.back()->waitForConnected(5000);
    }
    return sockets;
}

bool AllClosed(auto begin, auto end)
{
    return std::all_of(begin, end, [](const auto& s) { return s->state() == QAbstractSocket::UnconnectedState; });
}

struct Answer {
    int status = 0;
    QByteArray head, body;
};

// Replies until count have come whole, the connection ends or 15 s pass.
QList<Answer> ReadReplies(QSslSocket& socket, int count)
{
    QList<Answer> answers;
    QByteArray in;
    QElapsedTimer clock;
    clock.start();
    while (answers.size() < count && clock.elapsed() < 15000) {
        const qsizetype headEnd = in.indexOf("\r\n\r\n");
        if (headEnd >= 0) {
            const auto length =
                QRegularExpression("(?i)content-length: (\\d+)").match(QString::fromLatin1(in.left(headEnd)));
            const qsizetype end = headEnd + 4 + length.captured(1).toLongLong();
            if (in.size() >= end) {
                answers.append({in.mid(9, 3).toInt(), in.left(headEnd), in.mid(headEnd + 4, end - headEnd - 4)});
                in.remove(0, end);
                continue;
            }
        }
        if (!socket.bytesAvailable() && !socket.waitForReadyRead(1000) &&
            socket.state() != QAbstractSocket::ConnectedState)
            break;
        in += socket.readAll();
    }
    return answers;
}

qint64 PeakKilobytes(qint64 pid)
{
    const auto m = QRegularExpression("VmHWM:\\s+(\\d+) kB")
                       .match(QString::fromLatin1(ReadFile(QStringLiteral("/proc/%1/status").arg(pid))));
    return m.captured(1).toLongLong();
}
}  // namespace

class tst_ServiceLimits : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<ServiceFixture> service;  // goes before the ground

    bool loginServed() const { return service->get(kLoginQuery.mid(1)).body.startsWith("1,"); }

private slots:
    void initTestCase()
    {
        ground = std::make_unique<TestGround>();
        service = std::make_unique<ServiceFixture>(QStringList{"--per-address", "8"});
        QVERIFY(service->running());
        // A stored tone, for the checks on disk.
        const QByteArray record = QUrl::toPercentEncoding(
            "<Message ContentType=\"audio/amr\" Filename=\"a.amr\" MobileNumber=\"0412345678\"/>");
        QVERIFY(service->post("SendT2.asp", "MobileNumber=0412345678&Password=tonedemo&xmldata=" + record +
                                                "&tonedata1=00")
                    .body.startsWith("1,"));
    }

    // Each is answered before what would be refused is read, and costs little memory.
    void hostileRequests_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("unit");  // the body, sent over and over until the answer comes
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("replyStart");
        QTest::addRow("upload larger than any tone")
            << QByteArray("POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000000\r\n\r\n")
            << QByteArray(64 * 1024, 'A') << 200 << QByteArray("0,5,");
        QTest::addRow("endless chunked body")
            << QByteArray("POST /Login.asp HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n")
            << "10000\r\n" + QByteArray(0x10000, 'a') + "\r\n" << 413 << QByteArray();
        QTest::addRow("a million header lines")
            << "GET " + kLoginQuery + " HTTP/1.1\r\n" + QByteArray("X-A: b\r\n").repeated(1000000) + "\r\n"
            << QByteArray() << 431 << QByteArray();
    }
    void hostileRequests()
    {
        QFETCH(QByteArray, head);
        QFETCH(QByteArray, unit);
        QFETCH(int, status);
        QFETCH(QByteArray, replyStart);
        const qint64 peakBefore = PeakKilobytes(service->pid());
        auto socket = Connect(*service);
        socket->write(head);
        // Up to 100 MB of body, stopping once the service has answered.
        for (int i = 0; i < 1600 && !unit.isEmpty() && !socket->bytesAvailable() &&
                        socket->state() == QAbstractSocket::ConnectedState;
             ++i) {
            socket->write(unit);
            socket->waitForBytesWritten(2000);
        }
        const auto answers = ReadReplies(*socket, 1);
        QCOMPARE(answers.size(), 1);
        QCOMPARE(answers[0].status, status);
        QVERIFY2(answers[0].body.startsWith(replyStart), answers[0].body.constData());
        const qint64 grown = PeakKilobytes(service->pid()) - peakBefore;
        QVERIFY2(grown < 32 * 1024, qPrintable(QString::number(grown) + " kB more"));
        QVERIFY(loginServed());
    }

    void requestsSentAheadAreAllAnswered_data()
    {
        QTest::addColumn<QByteArray>("requests");
        QTest::addColumn<int>("count");
        QTest::addRow("a hundred") << kLogin.repeated(100) << 100;
        const QByteArray form = "MobileNumber=0412345678&Password=tonedemo&xmldata=x";
        QTest::addRow("a post among them")
            << kLogin + "POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(form.size()) +
                   "\r\n\r\n" + form + kLogin
            << 3;
    }
    void requestsSentAheadAreAllAnswered()
    {
        QFETCH(QByteArray, requests);
        QFETCH(int, count);
        auto socket = Connect(*service);
        socket->write(requests);
        const auto answers = ReadReplies(*socket, count);
        QCOMPARE(answers.size(), count);
        for (const auto& answer : answers)
            QCOMPARE(answer.status, 200);
        QVERIFY(answers.first().body.startsWith("1,") && answers.last().body.startsWith("1,"));
    }

    void largeBodiesAtOnceAreAllRead()
    {
        // Together more than the service holds at once: the second waits for
        // the first, whose end comes after the second has started.
        const QByteArray body(33 * 1024 * 1024, 'A');
        const QByteArray request =
            "POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        auto first = Connect(*service);
        auto second = Connect(*service);
        first->write(request.left(32 * 1024 * 1024));
        QVERIFY(QTest::qWaitFor([&] { return first->encryptedBytesToWrite() + first->bytesToWrite() == 0; }, 20000));
        second->write(request);
        // As much of the second as the service takes (all but its last megabytes, or none).
        QTest::qWaitFor([&] { return second->encryptedBytesToWrite() + second->bytesToWrite() < 3 * 1024 * 1024; },
                        3000);
        first->write(request.mid(32 * 1024 * 1024));
        QVERIFY(QTest::qWaitFor([&] { return first->bytesAvailable() && second->bytesAvailable(); }, 30000));
        for (QSslSocket* socket : {first.get(), second.get()})
            QVERIFY(ReadReplies(*socket, 1).value(0).body.startsWith("0,4,"));
    }

    void slowClientsAreCutOffWhileLoginsAreServed()
    {
        // 500 clients from 63 addresses, each sending a byte of a handshake now
        // and then and never a whole one.
        auto slow = ConnectFrom(*service, 500, [](int i) { return QStringLiteral("127.0.1.%1").arg(1 + i / 8); });
        QTimer trickle;
        QObject::connect(&trickle, &QTimer::timeout, [&] {
            for (auto& socket : slow) {
                if (socket->state() == QAbstractSocket::ConnectedState)
                    socket->write("\x16");
            }
        });
        trickle.start(200);
        QVERIFY(loginServed());
        // Each had a second for its handshake, however it trickled.
        QVERIFY(QTest::qWaitFor([&] { return AllClosed(slow.begin(), slow.end()); }, 15000));
    }

    void connectionsPerAddressAreCapped()
    {
        // Twelve from one address: the last four are turned away at once.
        const auto sockets = ConnectFrom(*service, 12, [](int) { return QStringLiteral("127.0.2.1"); });
        QVERIFY(QTest::qWaitFor([&] { return AllClosed(sockets.begin() + 8, sockets.end()); }, 5000));
        QVERIFY(std::none_of(sockets.begin(), sockets.begin() + 8,
                             [](const auto& s) { return s->state() == QAbstractSocket::UnconnectedState; }));
        QVERIFY(loginServed());
    }

    void tls_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::addColumn<QStringList>("ciphers");
        QTest::addColumn<QString>("negotiated");  // empty: refused
        QTest::addRow("1.3") << int(QSsl::TlsV1_3) << QStringList() << "TLS_AES_256_GCM_SHA384";
        QTest::addRow("1.2 in the service's order")
            << int(QSsl::TlsV1_2)
            << QStringList{"ECDHE-ECDSA-CHACHA20-POLY1305", "ECDHE-ECDSA-AES256-GCM-SHA384",
                           "ECDHE-ECDSA-AES128-GCM-SHA256"}
            << "ECDHE-ECDSA-AES128-GCM-SHA256";
        QTest::addRow("1.2 CBC") << int(QSsl::TlsV1_2)
                                 << QStringList{"ECDHE-ECDSA-AES128-SHA256", "ECDHE-ECDSA-AES256-SHA"} << "";
    }
    void tls()
    {
        QFETCH(int, protocol);
        QFETCH(QStringList, ciphers);
        QFETCH(QString, negotiated);
        QList<QSslCipher> offered;
        for (const QString& name : ciphers)
            offered << QSslCipher(name);
        auto socket = Connect(*service, static_cast<QSsl::SslProtocol>(protocol), offered);
        QCOMPARE(socket->isEncrypted(), !negotiated.isEmpty());
        if (negotiated.isEmpty())
            return;
        QCOMPARE(socket->sessionCipher().name(), negotiated);
        // Replies are never compressed, whatever the client accepts.
        socket->write(QByteArray(kLogin).replace("\r\n\r\n", "\r\nAccept-Encoding: gzip, deflate, br\r\n\r\n"));
        const auto answers = ReadReplies(*socket, 1);
        QCOMPARE(answers.size(), 1);
        QVERIFY(!answers[0].head.toLower().contains("content-encoding"));
        QVERIFY(answers[0].body.startsWith("1,"));
    }

    void certificateLastsAYearAndIsRenewedNearItsEnd()
    {
        const QSslCertificate current = QSslCertificate::fromPath(service->certificateFile()).value(0);
        QVERIFY(qAbs(current.effectiveDate().daysTo(current.expiryDate()) - 365) <= 1);
        // One with five days left is replaced under the same name at start.
        QTemporaryDir data;
        QProcess make;
        make.start("openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                               "-days", "5", "-subj", "/CN=localhost", "-keyout", data.filePath("service.key"),
                               "-out", data.filePath("service.crt")});
        QVERIFY(make.waitForFinished(20000) && make.exitCode() == 0);
        ServiceFixture renewing({"--data", data.path()});
        QVERIFY(renewing.running());
        const QSslCertificate renewed = QSslCertificate::fromPath(data.filePath("service.crt")).value(0);
        QVERIFY(renewed.expiryDate() > QDateTime::currentDateTimeUtc().addDays(360));
        QVERIFY(Connect(renewing, QSsl::TlsV1_2OrLater, {}, data.filePath("service.crt"))->isEncrypted());
    }

    void dataIsPrivateAndTidiedAtStart()
    {
        const QString data = service->dataFolder();
        const QString tones = data + "/tones";
        const QStringList stored = QDir(tones).entryList(QDir::Files);
        QVERIFY(!stored.isEmpty());
        const auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                            QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
        for (const QString& path : {tones, data + "/service.db", data + "/service.key", tones + "/" + stored.first()})
            QVERIFY2(QFileInfo::exists(path) && !(QFile::permissions(path) & others), qPrintable(path));

        WriteFile(tones + "/0123456789abcdef0123456789abcdef.amr.part", "half");
        WriteFile(tones + "/fedcba9876543210fedcba9876543210.amr", "never recorded");
        QVERIFY(service->restart());
        QCOMPARE(QDir(tones).entryList(QDir::Files), stored);
    }
};

QTEST_MAIN(tst_ServiceLimits)
#include "tst_servicelimits.moc"
