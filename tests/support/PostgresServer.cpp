#include "support/PostgresServer.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <memory>
#include <unistd.h>

namespace {
const QString kBin = QStringLiteral("/usr/lib/postgresql/15/bin/");
constexpr uid_t kNobody = 65534;
constexpr gid_t kNoGroup = 65534;
}  // namespace

void PostgresServer::startChild(QProcess& process) const
{
    if (mAsNobody)
        process.setChildProcessModifier([] {
            if (::setgid(kNoGroup) != 0 || ::setuid(kNobody) != 0)
                ::_exit(126);
        });
}

bool PostgresServer::runAsOwner(const QString& program, const QStringList& args, QString* output)
{
    QProcess p;
    startChild(p);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, args);
    const bool ok = p.waitForFinished(120000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    if (output)
        *output = QString::fromLocal8Bit(p.readAll());
    return ok;
}

PostgresServer::PostgresServer()
{
    mAsNobody = ::geteuid() == 0;
    if (!mDir.isValid() || (mAsNobody && ::chown(mDir.path().toLocal8Bit().constData(), kNobody, kNoGroup) != 0)) {
        mError = QStringLiteral("no temporary folder for the database");
        return;
    }
    QString output;
    if (!runAsOwner(kBin + QStringLiteral("initdb"), {QStringLiteral("-D"), mDir.filePath(QStringLiteral("data")),
                                                      QStringLiteral("-U"), QStringLiteral("quillotone"),
                                                      QStringLiteral("-A"), QStringLiteral("trust"),
                                                      QStringLiteral("-E"), QStringLiteral("UTF8"),
                                                      QStringLiteral("--no-locale"), QStringLiteral("--no-sync")},
                    &output)) {
        mError = QStringLiteral("initdb failed (is Debian's postgresql installed?): ") + output;
        return;
    }
    startChild(mServer);
    mServer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Only the socket in the folder; fsync off: a test proves what survives a
    // process killed, not a power cut. Transactions that collide and are run
    // again are the service's daily bread, not news for the log.
    mServer.start(kBin + QStringLiteral("postgres"),
                  {QStringLiteral("-D"), mDir.filePath(QStringLiteral("data")), QStringLiteral("-k"), mDir.path(),
                   QStringLiteral("-c"), QStringLiteral("listen_addresses="), QStringLiteral("-c"),
                   QStringLiteral("fsync=off"), QStringLiteral("-c"), QStringLiteral("max_connections=200"),
                   QStringLiteral("-c"), QStringLiteral("log_min_messages=fatal")});
    const QDeadlineTimer deadline(60000);
    while (query(QStringLiteral("postgresql://quillotone@/postgres?host=") + mDir.path(), QStringLiteral("SELECT 1"))
               .isNull()) {
        if (deadline.hasExpired() || mServer.state() == QProcess::NotRunning) {
            mError = QStringLiteral("the PostgreSQL server did not start");
            return;
        }
        QThread::msleep(100);
    }
}

PostgresServer::~PostgresServer()
{
    if (mServer.state() == QProcess::NotRunning)
        return;
    mServer.terminate();  // SIGTERM: its smart shutdown
    if (!mServer.waitForFinished(30000))
        mServer.kill();
    mServer.waitForFinished(5000);
}

QString PostgresServer::newDatabase()
{
    const QString name = QStringLiteral("quillotone%1").arg(++mDatabases);
    const QString url = QStringLiteral("postgresql://quillotone@/%1?host=%2");
    if (query(url.arg(QStringLiteral("postgres"), mDir.path()), QStringLiteral("CREATE DATABASE ") + name).isNull())
        return {};
    return url.arg(name, mDir.path());
}

QString PostgresServer::query(const QString& url, const QString& statement)
{
    QProcess psql;
    psql.start(QStringLiteral("psql"), {QStringLiteral("-X"), QStringLiteral("-q"), QStringLiteral("-At"),
                                        QStringLiteral("-v"), QStringLiteral("ON_ERROR_STOP=1"), QStringLiteral("-d"),
                                        url, QStringLiteral("-c"), statement});
    if (!psql.waitForFinished(60000) || psql.exitStatus() != QProcess::NormalExit || psql.exitCode() != 0)
        return {};
    QString rows = QStringLiteral("");  // not null: it worked
    rows += QString::fromUtf8(psql.readAllStandardOutput()).trimmed();
    return rows;
}

PostgresServer& PostgresServer::shared()
{
    static std::unique_ptr<PostgresServer> server;
    if (!server) {
        server = std::make_unique<PostgresServer>();
        qAddPostRoutine([] { server.reset(); });
    }
    return *server;
}
