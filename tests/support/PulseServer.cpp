#include "support/PulseServer.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <csignal>
#include <sys/types.h>

namespace {
QProcessEnvironment serverEnvironment(const QString& root)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", root);
    env.insert("XDG_RUNTIME_DIR", root);
    env.insert("XDG_CONFIG_HOME", root + "/config");
    env.insert("PULSE_RUNTIME_PATH", root + "/run");
    env.insert("PULSE_STATE_PATH", root + "/state");
    env.remove("DBUS_SESSION_BUS_ADDRESS");
    env.remove("DISPLAY");
    return env;
}
}  // namespace

PulseServer::PulseServer()
{
    if (!mDir.isValid()) {
        mError = "no scratch folder";
        return;
    }
    const QString root = mDir.path();
    QFile script(root + "/server.pa");
    script.open(QIODevice::WriteOnly);
    script.write(QStringLiteral("load-module module-native-protocol-unix socket=%1 auth-anonymous=1\n"
                                "load-module module-null-sink sink_name=%2 rate=44100 channels=2\n"
                                "load-module module-remap-source source_name=%3 master=%2.monitor\n"
                                "set-default-sink %2\n"
                                "set-default-source %3\n")
                     .arg(Socket(), kSink, kSource)
                     .toUtf8());
    script.close();
    QFile client(root + "/client.conf");
    client.open(QIODevice::WriteOnly);
    client.write("autospawn = no\n");
    client.close();

    // As root the server must not look for a system-wide instance (-n, our
    // own script) and must not daemonize into a shared runtime folder.
    // --daemonize=yes returns only once the server is ready to take clients.
    QProcess start;
    start.setProcessEnvironment(serverEnvironment(root));
    start.start("pulseaudio", {"-n", "-F", root + "/server.pa", "--daemonize=yes", "--exit-idle-time=-1",
                               "--use-pid-file=yes", "--disable-shm=yes", "--log-target=file:" + root + "/log"});
    if (!start.waitForFinished(20000) || start.exitCode() != 0) {
        mError = "pulseaudio did not start: " + QString::fromLocal8Bit(start.readAllStandardError());
        return;
    }
    QFile pid(root + "/run/pid");
    if (pid.open(QIODevice::ReadOnly))
        mPid = pid.readAll().trimmed().toLongLong();
    if (mPid <= 0) {
        mError = "pulseaudio wrote no pid";
        return;
    }
    // A test that crashes must not leave its server behind: a watcher ends
    // the server once this process is gone.
    QProcess::startDetached("sh", {"-c", QStringLiteral("tail --pid=%1 -f /dev/null; kill -9 %2")
                                             .arg(QCoreApplication::applicationPid())
                                             .arg(mPid)});
    qputenv("PULSE_SERVER", ("unix:" + Socket()).toLocal8Bit());
    qputenv("PULSE_CLIENTCONFIG", (root + "/client.conf").toLocal8Bit());
}

PulseServer::~PulseServer()
{
    if (mPid > 0)
        ::kill(static_cast<pid_t>(mPid), SIGKILL);
    qunsetenv("PULSE_SERVER");
}

QString PulseServer::Socket() const { return mDir.path() + "/native"; }

QString PulseServer::Pactl(const QStringList& arguments) const
{
    QProcess p;
    p.start("pactl", QStringList{"--server=unix:" + Socket()} + arguments);
    if (!p.waitForFinished(10000) || p.exitCode() != 0)
        return {};
    return QString::fromLocal8Bit(p.readAllStandardOutput());
}

bool PulseServer::UnplugDevices() const
{
    const QString modules = Pactl({"list", "short", "modules"});
    bool any = false;
    for (const QString& line : modules.split('\n')) {
        if (line.contains("module-null-sink") || line.contains("module-remap-source")) {
            Pactl({"unload-module", line.section('\t', 0, 0)});
            any = true;
        }
    }
    return any;
}
