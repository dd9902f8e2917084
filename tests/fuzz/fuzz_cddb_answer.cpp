// The answers of a CDDB server, as the CD grabber's name lookup reads them:
// the input is the answer to the query, a NUL, and the answer to the read.
// They come from a server on loopback that answers each request with the
// next one, after the HTTP head the mirrors send.
#include "FuzzKit.h"
#include "core/CError.h"
#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"

#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <cstdlib>

namespace {
QList<QByteArray> gAnswers;

void AnswerEachRequest(QTcpServer& server)
{
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&server] {
        while (QTcpSocket* socket = server.nextPendingConnection()) {
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] {
                if (!socket->peek(64 * 1024).contains("\r\n\r\n"))
                    return;
                socket->readAll();
                socket->write("HTTP/1.0 200 OK\r\nContent-Type: text/plain; charset=UTF-8\r\n\r\n");
                socket->write(gAnswers.isEmpty() ? QByteArray() : gAnswers.takeFirst());
                socket->disconnectFromHost();
            });
        }
    });
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTcpServer server;
    static NCTAudioCDGrabber2 grabber;
    if (!server.isListening()) {
        MakeDiscBin();
        const QByteArray cue("FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                             "  TRACK 02 AUDIO\n    INDEX 01 00:01:00\n");
        SetCDImage(ScratchFile(reinterpret_cast<const uint8_t*>(cue.constData()), size_t(cue.size()),
                               QStringLiteral("disc.cue")));
        if (!server.listen(QHostAddress::LocalHost, 0))
            std::abort();
        AnswerEachRequest(server);
        freeDBServer().host = QStringLiteral("127.0.0.1");
        freeDBServer().port = server.serverPort();
        grabber.Open();
    }
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const qsizetype nul = input.indexOf('\0');
    gAnswers = {input.left(nul < 0 ? input.size() : nul), nul < 0 ? QByteArray() : input.mid(nul + 1)};

    FreeDBQuerySettings settings;
    settings.ClientName = QStringLiteral("fuzz");
    settings.ClientVersion = QStringLiteral("1");
    settings.TimeoutMs = 5000;
    QEventLoop wait;
    const auto ended = QObject::connect(&grabber, &NCTAudioCDGrabber2::FreeDBQueryStatus, &wait, [&](int32_t status) {
        if (status == 3 || status < 0)
            wait.quit();
    });
    grabber.QueryFreeDB(settings);
    wait.exec();
    QObject::disconnect(ended);
    grabber.TrackCount();
    grabber.DiscArtist();
    return 0;
}
