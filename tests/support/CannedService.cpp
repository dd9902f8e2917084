#include "support/CannedService.h"

#include "support/ServiceFixture.h"

#include <QFile>
#include <QSslKey>
#include <QSslSocket>

CannedService::CannedService(const ServiceFixture& real, QByteArray body, int answers)
    : mBody(std::move(body)), mAnswers(answers)
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificateChain(QSslCertificate::fromPath(real.certificateFile()));
    QFile key(real.dataFolder() + QStringLiteral("/service.key"));
    key.open(QIODevice::ReadOnly);
    tls.setPrivateKey(QSslKey(&key, QSsl::Ec));
    mServer.setSslConfiguration(tls);
    connect(&mServer, &QSslServer::pendingConnectionAvailable, this, [this] {
        while (auto* socket = static_cast<QSslSocket*>(mServer.nextPendingConnection())) {
            connect(socket, &QSslSocket::readyRead, socket, [this, socket] {
                if (!socket->readAll().contains("\r\n\r\n"))
                    return;
                socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                              QByteArray::number(mBody.size()) + "\r\n\r\n" + mBody);
                socket->disconnectFromHost();
                if (--mAnswers == 0)
                    mServer.close();
            });
        }
    });
    mServer.listen(QHostAddress::LocalHost);
}

QString CannedService::url() const
{
    return QStringLiteral("https://127.0.0.1:%1/").arg(mServer.serverPort());
}
