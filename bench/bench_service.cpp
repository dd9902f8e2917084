// Load on our web service from other processes on loopback: the service runs
// on a free port with a fresh data folder, quillotone-service-load drives it
// over keep-alive TLS connections. Logins a second and uploads a second of a
// 150 KB tone, each with its p99 latency, and the service's peak memory: on
// SQLite, on PostgreSQL, and as two processes on PostgreSQL behind haproxy.
// Then the uploads acknowledged but not stored (which must be 0) when one of
// two processes is killed (SIGKILL) during a stream of uploads.
// Under attack: logins a second while 500 slow clients hold connections, and
// the service's peak memory through 100 hostile requests of each kind.
#include "Bench.h"
#include "support/PostgresServer.h"
#include "support/ServiceFixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <csignal>
#include <map>

namespace {
constexpr int kConnections = 4;
const QString kSeconds = QStringLiteral("3");

struct LoadFigures {
    double loginsPerSecond = -1, loginP99 = -1, uploadsPerSecond = -1, uploadP99 = -1, peakMegabytes = -1;
};

enum class Layout { Sqlite, Postgres, TwoPostgresBehindHaproxy };

// The service in a layout; empty when PostgreSQL or haproxy cannot start.
std::unique_ptr<ServiceFixture> StartService(Layout layout)
{
    if (layout == Layout::Sqlite)
        return std::make_unique<ServiceFixture>();
    if (!PostgresServer::shared().running())
        return nullptr;
    if (layout == Layout::Postgres)
        return std::make_unique<ServiceFixture>(QStringList{"--store", PostgresServer::shared().newDatabase()});
    qputenv("QUILLOTONE_TEST_CLUSTER", "1");
    auto service = std::make_unique<ServiceFixture>();
    qunsetenv("QUILLOTONE_TEST_CLUSTER");
    return service;
}

// "key=value" out of the load client's line.
double Value(const QString& line, const QString& key)
{
    const auto m = QRegularExpression(key + QStringLiteral("=([0-9.]+)")).match(line);
    return m.hasMatch() ? m.captured(1).toDouble() : -1;
}

QString RunLoad(const QString& base, const QString& certificate, const QString& kind)
{
    QProcess load;
    load.start(BuiltProgram(QStringLiteral("quillotone-service-load")),
               {base, certificate, kind, QLatin1String(ServiceFixture::kDemoMobile), QLatin1String(ServiceFixture::kDemoPassword),
                QString::number(kConnections), kSeconds});
    load.waitForFinished(60000);
    return QString::fromLatin1(load.readAllStandardOutput());
}

double PeakMegabytes(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const auto m = QRegularExpression(QStringLiteral("VmHWM:\\s+(\\d+) kB")).match(QString::fromLatin1(status.readAll()));
    return m.hasMatch() ? m.captured(1).toDouble() / 1024 : -1;
}

const LoadFigures& Figures(Layout layout = Layout::Sqlite)
{
    static std::map<Layout, LoadFigures> measured;
    if (const auto it = measured.find(layout); it != measured.end())
        return it->second;
    LoadFigures& f = measured[layout];
    const auto service = StartService(layout);
    if (!service || !service->running())
        return f;
    const QString base = service->baseUrl();
    const QString certificate = service->certificateFile();
    const QString logins = RunLoad(base, certificate, QStringLiteral("login"));
    f.loginsPerSecond = Value(logins, QStringLiteral("rate"));
    f.loginP99 = Value(logins, QStringLiteral("p99_ms"));
    const QString uploads = RunLoad(base, certificate, QStringLiteral("upload"));
    f.uploadsPerSecond = Value(uploads, QStringLiteral("rate"));
    f.uploadP99 = Value(uploads, QStringLiteral("p99_ms"));
    f.peakMegabytes = PeakMegabytes(service->pid());
    return f;
}

// Uploads through haproxy to two processes; once some are stored, one process
// is killed. Acknowledged uploads that the store does not hold.
double UploadsLostUnderKill()
{
    const auto service = StartService(Layout::TwoPostgresBehindHaproxy);
    if (!service || !service->running())
        return -1;
    const QString countTones = QStringLiteral("SELECT count(*) FROM tones");
    QProcess load;
    load.start(BuiltProgram(QStringLiteral("quillotone-service-load")),
               {service->baseUrl(), service->certificateFile(), QStringLiteral("upload"),
                QLatin1String(ServiceFixture::kDemoMobile), QLatin1String(ServiceFixture::kDemoPassword),
                QString::number(kConnections), QStringLiteral("6")});
    while (PostgresServer::query(service->store(), countTones).toInt() < 20 && load.state() == QProcess::Running)
        QThread::msleep(50);
    ::kill(static_cast<pid_t>(service->secondPid()), SIGKILL);
    load.waitForFinished(60000);
    const QString line = QString::fromLatin1(load.readAllStandardOutput());
    const double acknowledged = Value(line, QStringLiteral("requests")) - Value(line, QStringLiteral("failed"));
    return std::max(0.0, acknowledged - PostgresServer::query(service->store(), countTones).toDouble());
}

// Logins a second from 127.0.0.1 while 500 slow clients from other
// addresses hold connections open.
double LoginsWithSlowClients()
{
    ServiceFixture service;
    if (!service.running())
        return -1;
    QProcess slow;
    slow.start(BuiltProgram(QStringLiteral("quillotone-service-load")),
               {service.baseUrl(), service.certificateFile(), QStringLiteral("slow"), QString(), QString(),
                QStringLiteral("500"), QString::number(kSeconds.toDouble() + 4)});
    while (!slow.canReadLine() && slow.waitForReadyRead(30000)) {
    }
    const double rate =
        Value(RunLoad(service.baseUrl(), service.certificateFile(), QStringLiteral("login")), QStringLiteral("rate"));
    slow.waitForFinished(60000);
    return rate;
}

// The service's peak memory through the hostile requests, in megabytes.
double HostilePeakMegabytes()
{
    ServiceFixture service;
    if (!service.running())
        return -1;
    QProcess load;
    load.start(BuiltProgram(QStringLiteral("quillotone-service-load")),
               {service.baseUrl(), service.certificateFile(), QStringLiteral("hostile"), QString(), QString(),
                QString::number(kConnections), kSeconds});
    load.waitForFinished(600000);
    // Every one must have been refused as it should.
    if (Value(QString::fromLatin1(load.readAllStandardOutput()), QStringLiteral("failed")) != 0)
        return -1;
    return PeakMegabytes(service.pid());
}

const bool logins = RegisterBench(QStringLiteral("Service_Logins"),
                                  [] { return BenchFigure{Figures().loginsPerSecond, QStringLiteral("logins/s")}; });
const bool loginP99 = RegisterBench(QStringLiteral("Service_LoginP99"),
                                    [] { return BenchFigure{Figures().loginP99, QStringLiteral("ms")}; });
const bool uploads = RegisterBench(QStringLiteral("Service_Uploads150KB"),
                                   [] { return BenchFigure{Figures().uploadsPerSecond, QStringLiteral("uploads/s")}; });
const bool uploadP99 = RegisterBench(QStringLiteral("Service_UploadP99"),
                                     [] { return BenchFigure{Figures().uploadP99, QStringLiteral("ms")}; });
const bool peak = RegisterBench(QStringLiteral("Service_PeakMemory"),
                                [] { return BenchFigure{Figures().peakMegabytes, QStringLiteral("MB")}; });
const bool lost = RegisterBench(QStringLiteral("Service_UploadsLost"),
                                [] { return BenchFigure{UploadsLostUnderKill(), QStringLiteral("uploads")}; });
const bool loginsPostgres = RegisterBench(QStringLiteral("Service_LoginsPostgres"), [] {
    return BenchFigure{Figures(Layout::Postgres).loginsPerSecond, QStringLiteral("logins/s")};
});
const bool loginsTwo = RegisterBench(QStringLiteral("Service_LoginsPostgres2Haproxy"), [] {
    return BenchFigure{Figures(Layout::TwoPostgresBehindHaproxy).loginsPerSecond, QStringLiteral("logins/s")};
});
const bool uploadsPostgres = RegisterBench(QStringLiteral("Service_Uploads150KBPostgres"), [] {
    return BenchFigure{Figures(Layout::Postgres).uploadsPerSecond, QStringLiteral("uploads/s")};
});
const bool uploadsTwo = RegisterBench(QStringLiteral("Service_Uploads150KBPostgres2Haproxy"), [] {
    return BenchFigure{Figures(Layout::TwoPostgresBehindHaproxy).uploadsPerSecond, QStringLiteral("uploads/s")};
});

const bool slowLogins = RegisterBench(QStringLiteral("Service_LoginsWith500SlowClients"),
                                      [] { return BenchFigure{LoginsWithSlowClients(), QStringLiteral("logins/s")}; });
const bool hostilePeak = RegisterBench(QStringLiteral("Service_HostilePeakMemory"),
                                       [] { return BenchFigure{HostilePeakMegabytes(), QStringLiteral("MB")}; });
}  // namespace
