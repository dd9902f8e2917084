// Two service processes on one PostgreSQL store behave as one service: a limit
// counted on one holds on the other, a code or link made on one is taken once
// on the other, a retried upload is kept and charged once, and a process
// killed during a stream of uploads loses none that it acknowledged.
#include "support/PostgresServer.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <csignal>
#include <memory>

class tst_ServiceCluster : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    QString store;
    std::unique_ptr<ServiceFixture> one, two;

private slots:
    void initTestCase()
    {
        ground = std::make_unique<TestGround>();
        PostgresServer& postgres = PostgresServer::shared();
        QVERIFY2(postgres.running(), qPrintable("PostgreSQL could not be started: " + postgres.error()));
        store = postgres.newDatabase();
        QVERIFY(!store.isEmpty());
        one = std::make_unique<ServiceFixture>(QStringList{"--store", store});
        two = std::make_unique<ServiceFixture>(QStringList{"--store", store});
        QVERIFY(one->running() && two->running());
    }
    void cleanupTestCase()
    {
        two.reset();
        one.reset();
    }

    void guessesCountedOnOneHoldOnTheOther()
    {
        QVERIFY(!one->addActiveCustomer("0400000050", "secret99").isEmpty());
        for (int i = 0; i < 10; ++i)
            QCOMPARE(one->get(LoginQuery("0400000050", QString("guess%1").arg(i))).body, QByteArray("0"));
        QCOMPARE(two->get(LoginQuery("0400000050", "secret99")).body, QByteArray("0"));
    }

    void codesAndLinksAreTakenOnceAnywhere()
    {
        QVERIFY(!one->addActiveCustomer("0400000051", "secret99").isEmpty());
        // A reset code asked for on one is taken on the other, once.
        QCOMPARE(one->post("password.asp", "MobileNumber=0400000051").status, 200);
        const auto code =
            QRegularExpression("reset code is (\\w+)\\.").match(two->phone("0400000051", "secret99").first());
        QVERIFY(code.hasMatch());
        const QByteArray reset = "MobileNumber=0400000051&Code=" + code.captured(1).toLatin1() +
                                 "&Password=newpass1&ConfirmPassword=newpass1";
        QVERIFY(two->post("password.asp", reset).body.contains("Your password is changed"));
        QVERIFY(one->post("password.asp", reset).body.contains("wrong, used or too old"));
        // The operator's one-time link made on one opens once, on the other.
        const auto made = one->postAsOperator("operator.asp", "MobileNumber=0400000051");
        const auto link = QRegularExpression("outbox\\.asp\\?link=[0-9a-f]{32}").match(QString::fromLatin1(made.body));
        QVERIFY2(link.hasMatch(), made.body.constData());
        QVERIFY(!ServiceFixture::messagesIn(two->get(link.captured(0)).body).isEmpty());
        QCOMPARE(one->get(link.captured(0)).status, 403);
    }

    void aRetryOnTheOtherIsNotChargedTwice()
    {
        QVERIFY(!one->addActiveCustomer("0400000052", "secret99").isEmpty());
        const QByteArray body = UploadBody("0400000052", "secret99", QByteArray(5000, 'x'));
        const auto first = one->post("SendT2.asp", body);
        QVERIFY(first.body.startsWith("1,"));
        // The same tone, named by each at its own address.
        QCOMPARE(two->post("SendT2.asp", body).body.replace(two->baseUrl().toLatin1(), ""),
                 QByteArray(first.body).replace(one->baseUrl().toLatin1(), ""));
        QCOMPARE(two->freeQuills("0400000052", "secret99"), QString("2"));
    }

    // Uploads go to both in turn; one is killed in the middle of one. Each
    // upload whose reply was lost is tried again on the other, as the program
    // does. Every acknowledged tone is then served whole, and none is kept twice.
    void aKilledProcessLosesNoAcknowledgedUpload()
    {
        QVERIFY(!one->addActiveCustomer("0400000053", "secret99").isEmpty());
        ServiceFixture doomed({"--store", store});
        QVERIFY(doomed.running());
        QMap<QString, QString> links;  // tone name -> link acknowledged
        QMap<QString, QByteArray> tones;
        for (int i = 0; i < 30; ++i) {
            const QString name = QString("2025010100%1.amr").arg(i, 4, 10, QLatin1Char('0'));
            tones[name] = QByteArray(150 * 1024, static_cast<char>('a' + i % 26));
            const QByteArray body = UploadBody("0400000053", "secret99", tones[name], "audio/amr", name);
            // The tenth goes to the doomed one, which dies while it reads it.
            if (i == 10)
                QTimer::singleShot(0, [&] { ::kill(static_cast<pid_t>(doomed.pid()), SIGKILL); });
            ServiceFixture::Reply reply = (i % 2 == 0 && i <= 10 ? doomed : *one).post("SendT2.asp", body);
            if (reply.status == 0)
                reply = one->post("SendT2.asp", body);
            QVERIFY2(reply.body.startsWith("1,"), reply.body.constData());
            links[name] = QString::fromLatin1(reply.body).section(QLatin1Char(','), 2);
        }
        for (auto it = links.cbegin(); it != links.cend(); ++it) {
            const auto download = two->get(it.value().mid(it.value().indexOf("tones/")));
            QVERIFY2(download.body == tones[it.key()], qPrintable(it.key()));
        }
        QCOMPARE(PostgresServer::query(store, "SELECT count(*), count(DISTINCT filename) FROM tones t JOIN customers c"
                                              " ON c.id = t.customer_id WHERE c.mobile = '0400000053'"),
                 QString("30|30"));
        QCOMPARE(two->phone("0400000053", "secret99").filter("Your Quillo Tone is ready").size(), 30);
    }
};

QTEST_MAIN(tst_ServiceCluster)
#include "tst_servicecluster.moc"
