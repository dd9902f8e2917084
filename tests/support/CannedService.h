#pragma once
// A service gone wrong, for a test: it answers every request with one text,
// over TLS with the identity of our real service (so the program trusts it),
// and stops listening after a number of answers, as a service that went down.
#include <QByteArray>
#include <QObject>
#include <QSslServer>
#include <QString>

class ServiceFixture;

class CannedService : public QObject {
public:
    CannedService(const ServiceFixture& real, QByteArray body, int answers);
    // "https://127.0.0.1:PORT/"
    QString url() const;

private:
    QSslServer mServer;
    QByteArray mBody;
    int mAnswers;
};
