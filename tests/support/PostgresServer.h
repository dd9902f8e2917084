#pragma once
// A real PostgreSQL server for a test: initdb into a temporary folder and the
// server on a Unix socket there, as an unprivileged user (PostgreSQL refuses
// to run as root; under root the folder goes to "nobody"). Stopped when the
// object goes. Debian's postgresql package provides it.
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

class PostgresServer {
public:
    PostgresServer();
    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    bool running() const { return mError.isEmpty(); }
    // Why it could not start.
    QString error() const { return mError; }
    // A new, empty database, as the URL the service takes.
    QString newDatabase();
    // The statement's rows, "|" between columns, one line each; a null string on failure.
    static QString query(const QString& url, const QString& statement);

    // The server of this test process, started on first use and stopped at its end.
    static PostgresServer& shared();

private:
    bool runAsOwner(const QString& program, const QStringList& args, QString* output = nullptr);
    void startChild(QProcess& process) const;

    QTemporaryDir mDir;
    QProcess mServer;
    QString mError;
    int mDatabases = 0;
    bool mAsNobody = false;
};
