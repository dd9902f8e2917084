// The web service against clients that misbehave: oversized and endless
// requests, slow and many connections, requests sent ahead, weak TLS; and
// what it keeps on disk.
#include "support/Files.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSslCipher>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTest>
#include <QTimer>
#include <QElapsedTimer>
#include <memory>
#include <vector>

namespace {
constexpr char kLogin[] = "GET /Login.asp?MobileNumber=0412345678&Password=tonedemo&Origin=0 HTTP/1.1\r\nHost: x\r\n\r\n";

// A TLS connection of our own, from a chosen loopback address.
std::unique_ptr<QSslSocket> Connect(const QString& base, const QString& caFile, const QString& from = "127.0.0.1",
                                    QSsl::SslProtocol protocol = QSsl::TlsV1_2OrLater,
                                    const QList<QSslCipher>& ciphers = {})
{
    auto socket = std::make_unique<QSslSocket>();
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setCaCertificates(QSslCertificate::fromPath(caFile));
    tls.setProtocol(protocol);
    if (!ciphers.isEmpty())
        tls.setCiphers(ciphers);
    socket->setSslConfiguration(tls);
    socket->bind(QHostAddress(from));
    const QUrl url(base);
    socket->connectToHostEncrypted(url.host(), static_cast<quint16>(url.port()));
    socket->waitForEncrypted(10000);
    return socket;
}

struct Answer {
    int status = 0;
    QByteArray head, body;
};

// Reads replies until count have come whole, the connection ends or 15 s pass.
QList<Answer> ReadReplies(QSslSocket& socket, int count)
{
    QList<Answer> answers;
    QByteArray in;
    QElapsedTimer clock;
    clock.start();
    while (answers.size() < count && clock.elapsed() < 15000) {
        const qsizetype headEnd = in.indexOf("\r\n\r\n");
        if (headEnd >= 0) {
            const auto length = QRegularExpression("(?i)content-length: (\\d+)").match(QString::fromLatin1(in.left(headEnd)));
            const qsizetype bodyLength = length.hasMatch() ? length.captured(1).toLongLong() : 0;
            if (in.size() >= headEnd + 4 + bodyLength) {
                answers.append({in.mid(9, 3).toInt(), in.left(headEnd), in.mid(headEnd + 4, bodyLength)});
                in.remove(0, headEnd + 4 + bodyLength);
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
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    status.open(QIODevice::ReadOnly);
    const auto m = QRegularExpression("VmHWM:\\s+(\\d+) kB").match(QString::fromLatin1(status.readAll()));
    return m.captured(1).toLongLong();
}

bool OwnerOnly(const QString& path)
{
    const auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                        QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    return QFileInfo::exists(path) && !(QFile::permissions(path) & others);
}
}  // namespace

class tst_ServiceLimits : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<ServiceFixture> service;

    std::unique_ptr<QSslSocket> connect(const QString& from = "127.0.0.1") const
    {
        return Connect(service->baseUrl(), service->certificateFile(), from);
    }
    bool loginServed() const
    {
        return service->get("Login.asp?MobileNumber=0412345678&Password=tonedemo&Origin=0").body.startsWith("1,");
    }

private slots:
    void initTestCase()
    {
        ground = std::make_unique<TestGround>();
        service = std::make_unique<ServiceFixture>(QStringList{"--client-timeout", "1", "--per-address", "8"});
        QVERIFY(service->running());
        // The largest honest request first: hostile ones must cost no more.
        const QByteArray hex = QByteArray(1000000, '\x5a').toHex();
        QByteArray upload = "MobileNumber=0412345678&Password=tonedemo&xmldata=" +
                            QUrl::toPercentEncoding("<Message ContentType=\"audio/amr\" Filename=\"a.amr\" "
                                                    "MobileNumber=\"0412345678\"/>");
        for (qsizetype at = 0, n = 1; at < hex.size(); at += 32760, ++n)
            upload += "&tonedata" + QByteArray::number(n) + "=" + hex.mid(at, 32760);
        QVERIFY(service->post("SendT2.asp", upload).body.startsWith("1,"));
    }
    void cleanupTestCase()
    {
        service.reset();
        ground.reset();
    }

    // Each is answered before what would be refused is read, and costs the
    // service little memory.
    void hostileRequests_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("unit");  // the body, repeated
        QTest::addColumn<int>("repeat");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("replyStart");
        const int upload = 4 * 1024 * 1024;
        QTest::addRow("upload of separators")
            << "POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(upload) + "\r\n\r\n"
            << QByteArray("&") << upload << 200 << QByteArray("0,3,");
        QTest::addRow("upload larger than a tone")
            << QByteArray("POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000000\r\n\r\n") << QByteArray()
            << 0 << 200 << QByteArray("0,3,");
        QTest::addRow("endless chunked body")
            << QByteArray("POST /Login.asp HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n")
            << "10000\r\n" + QByteArray(0x10000, 'a') + "\r\n" << 800 << 413 << QByteArray();
        QByteArray manyLines = "GET /Login.asp?MobileNumber=0412345678&Password=tonedemo&Origin=0 HTTP/1.1\r\n";
        for (int i = 0; i < 100000; ++i)
            manyLines += "X-A: b\r\n";
        QTest::addRow("a hundred thousand header lines") << manyLines + "\r\n" << QByteArray() << 0 << 431 << QByteArray();
    }
    void hostileRequests()
    {
        QFETCH(QByteArray, head);
        QFETCH(QByteArray, unit);
        QFETCH(int, repeat);
        QFETCH(int, status);
        QFETCH(QByteArray, replyStart);
        const qint64 peakBefore = PeakKilobytes(service->pid());
        auto socket = connect();
        socket->write(head);
        // Sent in slices, stopping once the service has answered.
        const QByteArray slice = unit.repeated(qMax(1, 256 * 1024 / qMax<qsizetype>(1, unit.size())));
        for (qint64 sent = 0; sent < qint64(repeat) * unit.size() && !socket->bytesAvailable() &&
                              socket->state() == QAbstractSocket::ConnectedState;) {
            const QByteArray piece = slice.left(qint64(repeat) * unit.size() - sent);
            socket->write(piece);
            sent += piece.size();
            socket->waitForBytesWritten(2000);
        }
        const auto answers = ReadReplies(*socket, 1);
        QCOMPARE(answers.size(), 1);
        QCOMPARE(answers[0].status, status);
        QVERIFY2(answers[0].body.startsWith(replyStart), answers[0].body.constData());
        QVERIFY(loginServed());
        QVERIFY2(PeakKilobytes(service->pid()) - peakBefore < 40 * 1024,
                 qPrintable(QString::number(PeakKilobytes(service->pid()) - peakBefore)));
    }

    void requestsSentAheadAreAllAnswered_data()
    {
        QTest::addColumn<QByteArray>("requests");
        QTest::addColumn<int>("count");
        QTest::addRow("two") << QByteArray(kLogin).repeated(2) << 2;
        QTest::addRow("a hundred") << QByteArray(kLogin).repeated(100) << 100;
        const QByteArray form = "MobileNumber=0412345678&Password=tonedemo&xmldata=x";
        const QByteArray post =
            "POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(form.size()) + "\r\n\r\n" + form;
        QTest::addRow("a post among them") << kLogin + post + kLogin << 3;
    }
    void requestsSentAheadAreAllAnswered()
    {
        QFETCH(QByteArray, requests);
        QFETCH(int, count);
        auto socket = connect();
        socket->write(requests);
        const auto answers = ReadReplies(*socket, count);
        QCOMPARE(answers.size(), count);
        for (const auto& answer : answers)
            QCOMPARE(answer.status, 200);
        QVERIFY(answers.first().body.startsWith("1,"));
    }

    void slowClientsAreCutOffWhileLoginsAreServed()
    {
        // 200 clients from 25 addresses, each sending a byte now and then and
        // never a whole handshake.
        std::vector<std::unique_ptr<QTcpSocket>> slow;
        const QUrl url(service->baseUrl());
        for (int i = 0; i < 200; ++i) {
            auto socket = std::make_unique<QTcpSocket>();
            socket->bind(QHostAddress(QStringLiteral("127.0.1.%1").arg(1 + i / 8)));
            socket->connectToHost(url.host(), static_cast<quint16>(url.port()));
            QVERIFY(socket->waitForConnected(5000));
            socket->write("\x16");
            slow.push_back(std::move(socket));
        }
        QTimer trickle;
        QObject::connect(&trickle, &QTimer::timeout, [&] {
            for (auto& socket : slow) {
                if (socket->state() == QAbstractSocket::ConnectedState)
                    socket->write("\x03");
            }
        });
        trickle.start(200);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(loginServed());
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
        // Each had a second for its handshake and request, however it trickled.
        QVERIFY(QTest::qWaitFor(
            [&] {
                return std::all_of(slow.begin(), slow.end(), [](const auto& s) {
                    return s->state() == QAbstractSocket::UnconnectedState;
                });
            },
            8000));
    }

    void connectionsPerAddressAreCapped()
    {
        // Twelve from one address: the last four are turned away at once.
        QList<int> closedOrder;
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        const QUrl url(service->baseUrl());
        for (int i = 0; i < 12; ++i) {
            auto socket = std::make_unique<QTcpSocket>();
            socket->bind(QHostAddress("127.0.2.1"));
            QObject::connect(socket.get(), &QTcpSocket::disconnected, [&closedOrder, i] { closedOrder << i; });
            socket->connectToHost(url.host(), static_cast<quint16>(url.port()));
            QVERIFY(socket->waitForConnected(5000));
            sockets.push_back(std::move(socket));
        }
        QVERIFY(QTest::qWaitFor([&] { return closedOrder.size() >= 4; }, 5000));
        std::sort(closedOrder.begin(), closedOrder.begin() + 4);
        QCOMPARE(closedOrder.mid(0, 4), (QList<int>{8, 9, 10, 11}));
        QVERIFY(loginServed());
    }

    void tls_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::addColumn<QStringList>("ciphers");
        QTest::addColumn<QString>("negotiated");  // empty: refused
        QTest::addRow("1.3") << int(QSsl::TlsV1_3) << QStringList() << "TLS_AES_256_GCM_SHA384";
        QTest::addRow("1.2 AES-GCM") << int(QSsl::TlsV1_2) << QStringList{"ECDHE-ECDSA-AES256-GCM-SHA384"}
                                     << "ECDHE-ECDSA-AES256-GCM-SHA384";
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
        auto socket = Connect(service->baseUrl(), service->certificateFile(), "127.0.0.1",
                              static_cast<QSsl::SslProtocol>(protocol), offered);
        QCOMPARE(socket->isEncrypted(), !negotiated.isEmpty());
        if (negotiated.isEmpty())
            return;
        QCOMPARE(socket->sessionCipher().name(), negotiated);
        // Replies are never compressed, whatever the client accepts.
        socket->write("GET /Login.asp?MobileNumber=0412345678&Password=tonedemo&Origin=0 HTTP/1.1\r\nHost: x\r\n"
                      "Accept-Encoding: gzip, deflate, br\r\n\r\n");
        const auto answers = ReadReplies(*socket, 1);
        QCOMPARE(answers.size(), 1);
        QVERIFY(!answers[0].head.toLower().contains("content-encoding"));
        QVERIFY(answers[0].body.startsWith("1,"));
    }

    void certificateLastsAYearAndIsRenewedNearItsEnd()
    {
        const QSslCertificate current = QSslCertificate::fromPath(service->certificateFile()).value(0);
        QVERIFY(qAbs(current.effectiveDate().daysTo(current.expiryDate()) - 365) <= 1);

        // A certificate with five days left is replaced under the same name at start.
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
        auto socket = Connect(renewing.baseUrl(), data.filePath("service.crt"));
        QVERIFY2(socket->isEncrypted(), qPrintable(socket->errorString()));
    }

    void dataIsPrivateAndTidiedAtStart()
    {
        const QByteArray record = QUrl::toPercentEncoding(
            "<Message ContentType=\"audio/amr\" Filename=\"a.amr\" MobileNumber=\"0412345678\"/>");
        const auto sent = service->post("SendT2.asp",
                                        "MobileNumber=0412345678&Password=tonedemo&xmldata=" + record + "&tonedata1=00");
        QVERIFY2(sent.body.startsWith("1,"), sent.body.constData());
        const QString data = service->dataFolder();
        const QString tones = data + "/tones";
        const QStringList stored = QDir(tones).entryList(QDir::Files);
        QVERIFY(!stored.isEmpty());
        for (const QString& path : {tones, data + "/service.db", data + "/service.key", tones + "/" + stored.first()})
            QVERIFY2(OwnerOnly(path), qPrintable(path));

        WriteFile(tones + "/0123456789abcdef0123456789abcdef.amr.part", "half");
        WriteFile(tones + "/fedcba9876543210fedcba9876543210.amr", "never recorded");
        QVERIFY(service->restart());
        QCOMPARE(QDir(tones).entryList(QDir::Files), stored);
    }

    void helpListsEveryOption()
    {
        QProcess help;
        help.start(ServiceFixture::servicePath(), {"--help"});
        QVERIFY(help.waitForFinished(20000));
        QCOMPARE(help.exitCode(), 0);
        const QString text = QString::fromUtf8(help.readAllStandardOutput());
        for (const char* option :
             {"--listen ADDR:PORT", "--data DIR", "--demo-account NUMBER:PASSWORD", "--client-timeout SECONDS",
              "--per-address N", "--help"})
            QVERIFY2(text.contains(QLatin1String(option)), option);
    }
};

QTEST_MAIN(tst_ServiceLimits)
#include "tst_servicelimits.moc"
