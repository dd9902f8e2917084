// CHTTPCall against our real service over TLS, a host that does not exist, a
// port where nothing listens, a server that never answers and a service whose
// certificate the program does not trust.
#include "core/modCommon.h"
#include "core/seams.h"
#include "service/CHTTPCall.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/ServiceFixture.h"
#include "support/TestGround.h"

#include <QFile>
#include <QTcpServer>
#include <QTest>
#include <QTimer>
#include <memory>

namespace {
const QString kUnreachable =
    "The Quillo Tone server cannot be reached. Please check your Internet connection.";
const QString kSendFailed = "An error occured connecting to Quillotone - please try again.";

struct PaintCounter : QWidget {
    int paints = 0;
    void paintEvent(QPaintEvent*) override { ++paints; }
};

}  // namespace

class tst_HTTPCall : public QObject {
    Q_OBJECT
    std::unique_ptr<ServiceFixture> service;
    std::unique_ptr<TestGround> ground;

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
    }
    void cleanup() { ground.reset(); }

    void quotesLeaveTheCallersParams()
    {
        QString params = QString("MobileNumber=0412'345678&Password=tone'demo&Origin=0");
        CHTTPCall call;
        QVERIFY(call.GetPage(ptLogin, params, true, kServiceTimeOut).startsWith("1,"));
        QCOMPARE(params, QString("MobileNumber=0412345678&Password=tonedemo&Origin=0"));
    }

    // A service the call cannot reach, or whose certificate is not the
    // trusted one: one message, "err" back, and nothing logged.
    void unreachableServer_data()
    {
        QTest::addColumn<QString>("base");  // "stranger": a service of the same make but another identity
        QTest::addColumn<QString>("message");
        QTest::addRow("host that does not exist") << "https://service.quillotone.invalid/" << kUnreachable;
        QTest::addRow("certificate not trusted") << "stranger" << "certificate is not the one this computer trusts";
    }
    void unreachableServer()
    {
        QFETCH(QString, base);
        std::unique_ptr<ServiceFixture> stranger;
        if (base == "stranger") {
            stranger = std::make_unique<ServiceFixture>();
            QVERIFY(stranger->running());
            base = stranger->baseUrl();
            seams().serviceCertificateFile = service->certificateFile();
        }
        seams().serviceBaseUrl = base;
        SaveAppSetting("Logging", "1", kSettings);
        DialogAnswerer answerer;
        answerer.answer("frmGenericOKDialog", "Enter");
        QString params = "MobileNumber=1";
        CHTTPCall call;
        QCOMPARE(call.GetPage(ptLookupMobileNumber, params, true, kServiceTimeOut), kServerUnreachable);
        QVERIFY2(answerer.finishedCleanly(), qPrintable(answerer.problems()));
        QCOMPARE(answerer.seen.size(), 1);
        QFETCH(QString, message);
        QVERIFY2(answerer.seen[0].text.contains(message), qPrintable(answerer.seen[0].text));
        QVERIFY(ReadFile(LogFilePath()).isEmpty());
    }

    void serverThatNeverAnswersTimesOutWhileWindowsLive()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        seams().serviceBaseUrl = QString("https://127.0.0.1:%1/").arg(silent.serverPort());
        DialogAnswerer answerer;
        answerer.answer("MsgBox", "OK");

        // Timers run and windows repaint during the call.
        PaintCounter window;
        window.show();
        int ticks = 0;
        QTimer ticker;
        QObject::connect(&ticker, &QTimer::timeout, [&] {
            ++ticks;
            window.update();
        });
        ticker.start(20);
        QTRY_VERIFY(window.paints > 0);
        const int paintsBefore = window.paints;
        CHTTPCall call;
        QString params;
        QCOMPARE(call.GetPage(ptCountryList, params, true, 400), QString());
        QVERIFY(ticks >= 3);
        QVERIFY(window.paints > paintsBefore);
        QVERIFY(answerer.allAnswered());
        QCOMPARE(answerer.seen[0].text, QString("The operation timed out"));
    }

    void sendHttpFailures_data()
    {
        QTest::addColumn<QString>("post");
        QTest::addRow("post") << "a=b";
        QTest::addRow("get") << "";
    }
    void sendHttpFailures()
    {
        QFETCH(QString, post);
        DialogAnswerer answerer;
        answerer.answer("frmGenericOKDialog", "Enter");
        const QString file = ground->tempFolder() + "/never.jpg";
        CHTTPCall call;
        QCOMPARE(call.SendHTTP(ServiceFixture::unreachableUrl() + "x", true, post, file, 2000), QString());
        QVERIFY(answerer.allAnswered());
        QCOMPARE(answerer.seen[0].text, kSendFailed);
        QVERIFY(!QFile::exists(file));
    }
};

QTEST_MAIN(tst_HTTPCall)
#include "tst_httpcall.moc"
