#include "support/CddbServer.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <QUrlQuery>

CddbServer::CddbServer(Mode mode) : mMode(mode), mServer(new QTcpServer(this))
{
    mServer->listen(QHostAddress::LocalHost, 0);
    connect(mServer, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = mServer->nextPendingConnection()) {
            socket->setParent(this);
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                const QByteArray request = socket->peek(64 * 1024);
                if (!request.contains("\r\n\r\n") && !request.contains("\n\n"))
                    return;  // the headers are not all in yet
                socket->readAll();
                const QByteArray target = request.split(' ').value(1);
                const QUrlQuery query(QUrl(QString::fromLatin1(target)));
                const QString command = query.queryItemValue("cmd", QUrl::FullyDecoded).replace('+', ' ');
                commands << command;
                hellos << query.queryItemValue("hello", QUrl::FullyDecoded).replace('+', ' ');
                if (mMode == Silent)
                    return;
                socket->write("HTTP/1.0 200 OK\r\nContent-Type: text/plain; charset=UTF-8\r\n\r\n");
                socket->write(reply(command).toUtf8());
                socket->disconnectFromHost();
            });
        }
    });
}

int CddbServer::port() const { return mServer->serverPort(); }

void CddbServer::know(const QString& discId, const QList<int>& offsets, int seconds, const QString& artist,
                      const QString& title, const QStringList& tracks)
{
    mDiscId = discId;
    mOffsets = offsets;
    mSeconds = seconds;
    mArtist = artist;
    mTitle = title;
    mTracks = tracks;
}

QString CddbServer::reply(const QString& command) const
{
    if (mMode == Junk)
        return QStringLiteral("<html><body>Welcome to our page!</body></html>\r\n");
    const QStringList words = command.split(' ');
    const bool known = mMode == Knows && words.value(2) == mDiscId;
    if (words.value(0) == "cddb" && words.value(1) == "query") {
        if (!known)
            return QStringLiteral("202 No match for disc ID %1.\r\n").arg(words.value(2));
        return QStringLiteral("200 rock %1 %2 / %3\r\n").arg(mDiscId, mArtist, mTitle);
    }
    if (words.value(0) == "cddb" && words.value(1) == "read" && words.value(3) == mDiscId) {
        QString entry = QStringLiteral("210 rock %1 CD database entry follows (until terminating `.')\r\n"
                                       "# xmcd\r\n#\r\n# Track frame offsets:\r\n")
                            .arg(mDiscId);
        for (int offset : mOffsets)
            entry += QStringLiteral("#\t%1\r\n").arg(offset);
        entry += QStringLiteral("#\r\n# Disc length: %1 seconds\r\n#\r\n# Revision: 0\r\n# Submitted via: quillotone-tests 1.0\r\n#\r\nDISCID=%2\r\n").arg(mSeconds).arg(mDiscId);
        entry += QStringLiteral("DTITLE=%1 / %2\r\nDYEAR=2004\r\nDGENRE=Rock\r\n").arg(mArtist, mTitle);
        for (int i = 0; i < mTracks.size(); ++i)
            entry += QStringLiteral("TTITLE%1=%2\r\n").arg(i).arg(mTracks[i]);
        entry += QStringLiteral("EXTD=\r\n");
        for (int i = 0; i < mTracks.size(); ++i)
            entry += QStringLiteral("EXTT%1=\r\n").arg(i);
        entry += QStringLiteral("PLAYORDER=\r\n.\r\n");
        return entry;
    }
    return QStringLiteral("500 Command syntax error.\r\n");
}

int DeadPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const int port = probe.serverPort();
    probe.close();
    return port;
}
