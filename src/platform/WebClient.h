#pragma once
// Our HTTP client object: one blocking request at a time over Qt Network.
// While a request runs, windows keep painting and timers keep firing, but
// user input waits until it is done. TLS is always verified: against the
// system's authorities plus the web service's own certificate
// (seams().serviceCertificateFile).
//
// A failure raises CError. Numbers follow the usual Internet error codes:
// 12007 the name did not resolve, 9060 nothing listens there (both mean the
// host cannot be reached), 12002 time-out, 12175 a TLS failure, 12030 any
// other transport failure; an HTTP error status raises its own number.
#include <QByteArray>
#include <QObject>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

class WebClient : public QObject {
    Q_OBJECT
public:
    explicit WebClient(QObject* parent = nullptr);
    ~WebClient() override;

    int Timeout = 0;   // milliseconds for the whole request
    int Security = 0;  // kSecure turns TLS on; without it an https URL is asked for in plain HTTP
    QString URL;
    static constexpr int kSecure = 8;

    // GET into text (the body read as Windows-1252) or bytes.
    void Get(QString& result);
    void Get(QByteArray& result);
    // POST of data as it stands, a form body; the reply as text.
    void Post(const QString& data, QString& result);

    // 0 idle, 1 a request is under way.
    int state() const { return mBusy ? 1 : 0; }

    static constexpr long kNameNotResolved = 12007;
    static constexpr long kCannotConnect = 9060;
    static constexpr long kTimedOut = 12002;
    static constexpr long kSecureFailure = 12175;
    static constexpr long kConnectionFailed = 12030;

signals:
    // Fires while a request makes progress.
    void State();

private:
    QByteArray Run(const QByteArray* postBody);

    QNetworkAccessManager* mManager;
    bool mBusy = false;
};
