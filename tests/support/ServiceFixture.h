#pragma once
// Our web service for a test: quillotone-service on a free loopback port with
// a data folder of its own and the demo account, over real TLS. The program's
// seams point at it (base URL and trusted certificate) while it runs.
// A restart keeps the data folder, as a real restart would.
//
// With QUILLOTONE_TEST_CLUSTER=1 in the environment the same fixture is a
// service that has outgrown one process: two quillotone-service processes on
// a fresh database of a real PostgreSQL server, behind haproxy, whose address
// is the base URL. Given "--store URL", it runs on that store.
#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

class ServiceFixture {
public:
    static constexpr char kDemoMobile[] = "0412345678";
    static constexpr char kDemoPassword[] = "tonedemo";

    // Starts the service, with an operator key of its own unless told not
    // to; extra arguments go on its command line.
    explicit ServiceFixture(const QStringList& extraArgs = {}, bool withOperatorKey = true);
    ~ServiceFixture();
    ServiceFixture(const ServiceFixture&) = delete;
    ServiceFixture& operator=(const ServiceFixture&) = delete;

    bool running() const { return mProcess.state() == QProcess::Running && !mBaseUrl.isEmpty(); }
    // Stops the service cleanly and starts it again on the same data.
    bool restart();
    void stop();

    QString baseUrl() const { return mBaseUrl; }  // "https://127.0.0.1:PORT/"
    // Points the program's seams at this service again (a new TestGround resets them).
    void aimSeams() const;
    QString dataFolder() const { return mData.path(); }
    QString certificateFile() const { return mData.filePath(QStringLiteral("service.crt")); }
    qint64 pid() const { return mProcess.processId(); }
    // The second process, with QUILLOTONE_TEST_CLUSTER.
    qint64 secondPid() const { return mSecond.processId(); }
    // The store's URL when it is PostgreSQL, else empty.
    QString store() const { return mStore; }

    // A plain client of our own, trusting the service's certificate.
    struct Reply {
        int status = 0;  // 0 when no HTTP answer came
        QByteArray body;
        QByteArray contentType;
        QString error;
    };
    Reply get(const QString& pathAndQuery) const;
    Reply post(const QString& path, const QByteArray& body,
               const QByteArray& contentType = "application/x-www-form-urlencoded") const;
    // As the operator, with the key the service was started with.
    Reply getAsOperator(const QString& pathAndQuery) const;
    Reply postAsOperator(const QString& path, const QByteArray& body) const;

    // Every text message in the operator's view, newest first, as "mobile: text".
    QStringList outbox() const;
    // The messages of one phone, read as its owner reads them: with the
    // number and its account's password. Empty when refused.
    QStringList phone(const QString& mobile, const QString& password) const;
    // Text messages in an outbox page, newest first, as "mobile: text".
    static QStringList messagesIn(const QByteArray& page);
    // The sign-up request of a customer with an Australian Telstra number.
    static QString signUpQuery(const QString& mobile, const QString& password, const QString& firstName = "Kim");
    // The free quills the login of an account gives.
    QString freeQuills(const QString& mobile, const QString& password) const;
    // Signs up and activates such a customer. Returns the id, or empty on failure.
    QString addActiveCustomer(const QString& mobile, const QString& password, const QString& firstName = "Kim");

    // Makes the waiting sign-up of a number that much older, straight in the store.
    bool ageSignUp(const QString& mobile, int seconds) const;

    static QString servicePath();
    // "https://127.0.0.1:PORT/" on a loopback port where nothing listens.
    static QString unreachableUrl();

private:
    bool start();
    bool startOne(QProcess& process, QString& baseUrl);
    bool startBalancer(const QString& first, const QString& second);
    Reply request(const QString& url, const QByteArray* postBody, const QByteArray& contentType,
                  bool asOperator = false) const;

    QTemporaryDir mData;
    QStringList mArgs;
    QProcess mProcess;
    QProcess mSecond, mBalancer;  // with QUILLOTONE_TEST_CLUSTER
    bool mCluster = false;
    quint16 mBalancerPort = 0;
    QString mStore;
    QString mBaseUrl;
    QByteArray mOperatorKey;
};

// A login request of an account.
QString LoginQuery(const QString& mobile, const QString& password);
// A tone upload the way the program posts it: hexadecimal in fields of 32760.
QByteArray UploadBody(const QString& mobile, const QString& password, const QByteArray& tone,
                      const QString& contentType = "audio/amr", const QString& filename = "20250101120000.amr");
