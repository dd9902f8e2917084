#include "support/ServiceFixture.h"

#include "core/seams.h"

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
#include <QTextDocumentFragment>
#include <QTimer>
#include <QUrl>
#include <QUuid>
#include <QFile>
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
    mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // A test that dies takes its service with it.
    mProcess.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    start();
}

ServiceFixture::~ServiceFixture()
{
    stop();
}

bool ServiceFixture::start()
{
    mBaseUrl.clear();
    mProcess.start(servicePath(), mArgs);
    if (!mProcess.waitForStarted(10000))
        return false;
    // The service says where it listens once it takes requests.
    while (!mProcess.canReadLine()) {
        if (!mProcess.waitForReadyRead(30000))
            return false;
    }
    const QString line = QString::fromUtf8(mProcess.readLine()).trimmed();
    const qsizetype at = line.indexOf(QStringLiteral("https://"));
    if (at < 0)
        return false;
    mBaseUrl = line.mid(at);
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
    if (mProcess.state() == QProcess::NotRunning)
        return;
    mProcess.terminate();
    if (!mProcess.waitForFinished(10000)) {
        mProcess.kill();
        mProcess.waitForFinished(5000);
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

QString ServiceFixture::unreachableUrl()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return QStringLiteral("https://127.0.0.1:%1/").arg(probe.serverPort());
}
