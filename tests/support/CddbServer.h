#pragma once
// A CDDB server of the tests' own on loopback, speaking the protocol over
// HTTP as the public mirrors do ("GET /~cddb/cddb.cgi?cmd=cddb+query+..."),
// for one disc it knows. It can also know nothing, answer junk, or take the
// connection and never answer. What the client said is kept for checks.
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class QTcpServer;

class CddbServer : public QObject {
    Q_OBJECT
public:
    enum Mode { Knows, KnowsNothing, Junk, Silent };
    explicit CddbServer(Mode mode = Knows);

    int port() const;
    // The entry it holds: the disc id and its names.
    void know(const QString& discId, const QList<int>& offsets, int seconds, const QString& artist,
              const QString& title, const QStringList& tracks);
    QStringList commands;  // each request's cmd, decoded
    QStringList hellos;    // each request's hello: user, host, client, version

private:
    QString reply(const QString& command) const;

    Mode mMode;
    QTcpServer* mServer;
    QString mDiscId;
    QList<int> mOffsets;
    int mSeconds = 0;
    QString mArtist;
    QString mTitle;
    QStringList mTracks;
};

// A loopback port where nothing listens.
int DeadPort();
