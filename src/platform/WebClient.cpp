#include "platform/WebClient.h"

#include "core/CError.h"
#include "core/codepage.h"
#include "core/seams.h"

#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>

namespace {
// The URL as it stands: the query goes out with its characters as given,
// only made legal where a URL cannot hold them.
QUrl RequestUrl(const QString& text, bool secure)
{
    const qsizetype mark = text.indexOf(QLatin1Char('?'));
    QUrl url(mark < 0 ? text : text.left(mark), QUrl::TolerantMode);
    if (mark >= 0)
        url.setQuery(text.mid(mark + 1), QUrl::TolerantMode);
    if (!secure && url.scheme() == QLatin1String("https")) {
        url.setPort(url.port(443));
        url.setScheme(QStringLiteral("http"));
    }
    return url;
}

QSslConfiguration TrustedTls()
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    const QString own = seams().serviceCertificateFile;
    if (!own.isEmpty() && QFile::exists(own))
        tls.addCaCertificates(own, QSsl::Pem);
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer);
    return tls;
}

long ErrorNumber(QNetworkReply::NetworkError error, int status)
{
    switch (error) {
    case QNetworkReply::HostNotFoundError:
        return WebClient::kNameNotResolved;
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::TemporaryNetworkFailureError:
        return WebClient::kCannotConnect;
    case QNetworkReply::TimeoutError:
        return WebClient::kTimedOut;
    case QNetworkReply::SslHandshakeFailedError:
        return WebClient::kSecureFailure;
    default:
        return status >= 400 ? status : WebClient::kConnectionFailed;
    }
}
}  // namespace

WebClient::WebClient(QObject* parent) : QObject(parent), mManager(new QNetworkAccessManager(this)) {}

WebClient::~WebClient() = default;

QByteArray WebClient::Run(const QByteArray* postBody)
{
    QNetworkRequest request(RequestUrl(URL, Security == kSecure));
    request.setSslConfiguration(TrustedTls());
    QNetworkReply* reply = nullptr;
    if (postBody) {
        request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
        reply = mManager->post(request, *postBody);
    } else {
        reply = mManager->get(request);
    }
    connect(reply, &QNetworkReply::downloadProgress, this, &WebClient::State);
    connect(reply, &QNetworkReply::uploadProgress, this, &WebClient::State);

    bool timedOut = false;
    QTimer deadline;
    deadline.setSingleShot(true);
    connect(&deadline, &QTimer::timeout, reply, [&] {
        timedOut = true;
        reply->abort();
    });
    QEventLoop loop;
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    mBusy = true;
    if (!reply->isFinished()) {
        if (Timeout > 0)
            deadline.start(Timeout);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    mBusy = false;
    deadline.stop();

    const QByteArray body = reply->readAll();
    const QNetworkReply::NetworkError error = reply->error();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QString description = reply->errorString();
    reply->deleteLater();
    if (timedOut)
        throw CError(kTimedOut, QStringLiteral("The operation timed out"), QStringLiteral("WebClient"));
    if (error != QNetworkReply::NoError)
        throw CError(ErrorNumber(error, status), description, QStringLiteral("WebClient"));
    return body;
}

void WebClient::Get(QString& result)
{
    result = codepage::FromAnsi(Run(nullptr));
}

void WebClient::Get(QByteArray& result)
{
    result = Run(nullptr);
}

void WebClient::Post(const QString& data, QString& result)
{
    const QByteArray body = codepage::ToAnsi(data);
    result = codepage::FromAnsi(Run(&body));
}
