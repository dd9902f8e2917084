#include "support/ServiceFixture.h"

#include "core/seams.h"
#include "support/PostgresServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QUrl>
#include <QUuid>
#include <QFile>
#include <QDeadlineTimer>
#include <QThread>
#include <csignal>
#include <sys/prctl.h>

QString ServiceFixture::servicePath()
{
    const QString fromEnvironment = qEnvironmentVariable("QUILLOTONE_SERVICE");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    // The build puts every program in <build>/bin; tests sit a level or two below <build>.
    QDir dir(QCoreApplication::applicationDirPath());
    for (int up = 0; up < 4; ++up) {
        const QString candidate = dir.filePath(QStringLiteral("bin/quillotone-service"));
        if (QFileInfo::exists(candidate))
            return candidate;
        dir.cdUp();
    }
    return QStringLiteral("quillotone-service");
}

ServiceFixture::ServiceFixture(const QStringList& extraArgs, bool withOperatorKey)
{
    mOperatorKey = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    if (withOperatorKey) {
        const QString keyFile = mData.filePath(QStringLiteral("operator.key"));
        QFile key(keyFile);
        if (key.open(QIODevice::WriteOnly))
            key.write(mOperatorKey + '\n');
        mArgs << QStringLiteral("--operator-key-file") << keyFile;
    }
    mArgs << QStringLiteral("--listen") << QStringLiteral("127.0.0.1:0") << QStringLiteral("--data") << mData.path()
          << QStringLiteral("--demo-account")
          << QStringLiteral("%1:%2").arg(QLatin1String(kDemoMobile), QLatin1String(kDemoPassword)) << extraArgs;
    const qsizetype store = extraArgs.indexOf(QStringLiteral("--store"));
    if (store >= 0 && store + 1 < extraArgs.size())
        mStore = extraArgs[store + 1];
    mCluster = qEnvironmentVariableIntValue("QUILLOTONE_TEST_CLUSTER") == 1;
    if (mCluster && mStore.isEmpty()) {
        PostgresServer& postgres = PostgresServer::shared();
        if (!postgres.running()) {
            qWarning("PostgreSQL could not be started: %s", qPrintable(postgres.error()));
            return;
        }
        mStore = postgres.newDatabase();
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        mBalancerPort = probe.serverPort();
        // Links the services hand out point at the balancer.
        mArgs << QStringLiteral("--store") << mStore << QStringLiteral("--public-url")
              << QStringLiteral("https://127.0.0.1:%1/").arg(mBalancerPort);
    }
    for (QProcess* process : {&mProcess, &mSecond, &mBalancer}) {
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        // A test that dies takes its service with it.
        process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    }
    start();
}

ServiceFixture::~ServiceFixture()
{
    stop();
}

bool ServiceFixture::startOne(QProcess& process, QString& baseUrl)
{
    baseUrl.clear();
    process.start(servicePath(), mArgs);
    if (!process.waitForStarted(10000))
        return false;
    // The service says where it listens once it takes requests.
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(30000))
            return false;
    }
    const QString line = QString::fromUtf8(process.readLine()).trimmed();
    const qsizetype at = line.indexOf(QStringLiteral("https://"));
    if (at < 0)
        return false;
    baseUrl = line.mid(at);
    return true;
}

bool ServiceFixture::startBalancer(const QString& first, const QString& second)
{
    const quint16 port = mBalancerPort;
    // TLS passes through to the services, which share the data folder's certificate.
    const QString config = mData.filePath(QStringLiteral("haproxy.cfg"));
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QStringLiteral("defaults\n  mode tcp\n  timeout connect 5s\n  timeout client 60s\n"
                              "  timeout server 60s\n  retries 2\n  option redispatch\n"
                              "frontend quillotone\n  bind 127.0.0.1:%1\n  default_backend services\n"
                              "backend services\n  balance roundrobin\n  server one 127.0.0.1:%2\n"
                              "  server two 127.0.0.1:%3\n")
                   .arg(port)
                   .arg(QUrl(first).port())
                   .arg(QUrl(second).port())
                   .toUtf8());
    file.close();
    mBalancer.start(QStringLiteral("haproxy"), {QStringLiteral("-db"), QStringLiteral("-f"), config});
    if (!mBalancer.waitForStarted(10000)) {
        qWarning("haproxy could not be started: is Debian's haproxy installed?");
        return false;
    }
    const QDeadlineTimer deadline(30000);
    for (;;) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (socket.waitForConnected(2000))
            break;
        if (deadline.hasExpired() || mBalancer.state() == QProcess::NotRunning)
            return false;
        QThread::msleep(100);
    }
    mBaseUrl = QStringLiteral("https://127.0.0.1:%1/").arg(port);
    return true;
}

bool ServiceFixture::start()
{
    mBaseUrl.clear();
    if (mCluster && mStore.isEmpty())
        return false;
    QString first;
    if (!startOne(mProcess, first))
        return false;
    if (mCluster) {
        QString second;
        if (!startOne(mSecond, second) || !startBalancer(first, second))
            return false;
    } else {
        mBaseUrl = first;
    }
    aimSeams();
    return true;
}

void ServiceFixture::aimSeams() const
{
    seams().serviceBaseUrl = mBaseUrl;
    seams().serviceCertificateFile = certificateFile();
}

void ServiceFixture::stop()
{
    for (QProcess* process : {&mBalancer, &mSecond, &mProcess}) {
        if (process->state() == QProcess::NotRunning)
            continue;
        process->terminate();
        if (!process->waitForFinished(10000)) {
            process->kill();
            process->waitForFinished(5000);
        }
    }
}

bool ServiceFixture::restart()
{
    stop();
    return start();
}

ServiceFixture::Reply ServiceFixture::request(const QString& url, const QByteArray* postBody,
                                              const QByteArray& contentType, bool asOperator) const
{
    QNetworkAccessManager manager;
    QNetworkRequest request{QUrl(url)};
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificates(certificateFile());
    request.setSslConfiguration(tls);
    request.setTransferTimeout(20000);
    if (asOperator)
        request.setRawHeader("Authorization", "Basic " + ("operator:" + mOperatorKey).toBase64());
    QNetworkReply* reply = nullptr;
    if (postBody) {
        request.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
        reply = manager.post(request, *postBody);
    } else {
        reply = manager.get(request);
    }
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    Reply out;
    out.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    out.body = reply->readAll();
    out.contentType = reply->header(QNetworkRequest::ContentTypeHeader).toByteArray();
    if (reply->error() != QNetworkReply::NoError)
        out.error = reply->errorString();
    delete reply;
    return out;
}

ServiceFixture::Reply ServiceFixture::get(const QString& pathAndQuery) const
{
    return request(mBaseUrl + pathAndQuery, nullptr, {});
}

ServiceFixture::Reply ServiceFixture::post(const QString& path, const QByteArray& body,
                                           const QByteArray& contentType) const
{
    return request(mBaseUrl + path, &body, contentType);
}

ServiceFixture::Reply ServiceFixture::getAsOperator(const QString& pathAndQuery) const
{
    return request(mBaseUrl + pathAndQuery, nullptr, {}, true);
}

ServiceFixture::Reply ServiceFixture::postAsOperator(const QString& path, const QByteArray& body) const
{
    return request(mBaseUrl + path, &body, "application/x-www-form-urlencoded", true);
}

QStringList ServiceFixture::messagesIn(const QByteArray& page)
{
    const QString html = QString::fromUtf8(page);
    static const QRegularExpression row(
        QStringLiteral("<tr><td>\\d+</td><td>[^<]*</td><td>([^<]*)</td><td>([^<]*)</td></tr>"));
    QStringList messages;
    for (auto it = row.globalMatch(html); it.hasNext();) {
        const auto m = it.next();
        messages << QTextDocumentFragment::fromHtml(m.captured(1) + QStringLiteral(": ") + m.captured(2))
                        .toPlainText();
    }
    return messages;
}

QStringList ServiceFixture::outbox() const
{
    return messagesIn(getAsOperator(QStringLiteral("operator.asp")).body);
}

QStringList ServiceFixture::phone(const QString& mobile, const QString& password) const
{
    const Reply reply = post(QStringLiteral("outbox.asp"), "MobileNumber=" + QUrl::toPercentEncoding(mobile) +
                                                               "&Password=" + QUrl::toPercentEncoding(password));
    return reply.status == 200 ? messagesIn(reply.body) : QStringList();
}

QString ServiceFixture::signUpQuery(const QString& mobile, const QString& password, const QString& firstName)
{
    return QStringLiteral("AddCustomer.asp?FirstName=%1&LastName=Lee&gender=female&MobileNumber=%2"
                          "&Email=kim%40example.com&Password=%3&Age=30&CountryID=1&TerminalVendorID=1"
                          "&TerminalTypeID=2&ServiceProviderID=101&ReceiveMarketing=0&PartnerID=")
        .arg(firstName, mobile, password);
}

QString LoginQuery(const QString& mobile, const QString& password)
{
    return QStringLiteral("Login.asp?MobileNumber=%1&Password=%2&Origin=0").arg(mobile, password);
}

QString ServiceFixture::freeQuills(const QString& mobile, const QString& password) const
{
    return QString::fromLatin1(get(LoginQuery(mobile, password)).body).section(QLatin1Char(','), 7, 7);
}

QByteArray UploadBody(const QString& mobile, const QString& password, const QByteArray& tone,
                      const QString& contentType, const QString& filename)
{
    const QString xml = QStringLiteral("<Message ContentType=\"%1\" Filename=\"%2\" QueueIdentifier=\"AB\" "
                                       "QueueData=\"CD\" Created=\"1/01/2025 12:00:00 PM\" Status=\"Ready\" "
                                       "MobileNumber=\"%3\" Password=\"%4\"/>")
                            .arg(contentType, filename, mobile, password);
    QByteArray body = "MobileNumber=" + mobile.toLatin1() + "&Password=" + password.toLatin1() +
                      "&xmldata=" + QUrl::toPercentEncoding(xml);
    const QByteArray hex = tone.toHex().toUpper();
    qsizetype at = 0;
    int n = 1;
    do {
        body += "&tonedata" + QByteArray::number(n++) + "=" + hex.mid(at, 32760);
        at += 32760;
    } while (at < hex.size());
    return body;
}

QString ServiceFixture::addActiveCustomer(const QString& mobile, const QString& password, const QString& firstName)
{
    const Reply added = get(signUpQuery(mobile, password, firstName));
    const QStringList fields = QString::fromLatin1(added.body).split(QLatin1Char(','));
    if (fields.size() < 3 || fields[0] != QLatin1String("1"))
        return {};
    const Reply activated =
        get(QStringLiteral("ActivateCustomer.asp?CustomerID=%1&ActivationCode=%2").arg(fields[1], fields[2]));
    return activated.body == "1" ? fields[1] : QString();
}

bool ServiceFixture::ageSignUp(const QString& mobile, int seconds) const
{
    if (!mStore.isEmpty())
        return !PostgresServer::query(mStore, QStringLiteral("UPDATE customers SET created = created - interval "
                                                             "'%1 seconds' WHERE mobile = '%2'")
                                                  .arg(seconds)
                                                  .arg(mobile))
                    .isNull();
    QProcess sql;
    sql.start(QStringLiteral("sqlite3"),
              {mData.filePath(QStringLiteral("service.db")),
               QStringLiteral(".timeout 10000"),
               QStringLiteral("UPDATE customers SET created = datetime(created, '-%1 seconds') WHERE mobile = '%2'")
                   .arg(seconds)
                   .arg(mobile)});
    return sql.waitForFinished(30000) && sql.exitCode() == 0;
}

QString ServiceFixture::unreachableUrl()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return QStringLiteral("https://127.0.0.1:%1/").arg(probe.serverPort());
}
