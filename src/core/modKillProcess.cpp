#include "core/modKillProcess.h"

#include "core/MsgBox.h"

#include <QDir>
#include <QList>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace {
// The program file of a process, or empty when it cannot be read (a process
// of another user, or one that has just gone).
QString programFileOf(const QString& pid)
{
    const QByteArray link = QByteArrayLiteral("/proc/") + pid.toLatin1() + QByteArrayLiteral("/exe");
    char path[4096];
    const ssize_t n = ::readlink(link.constData(), path, sizeof path - 1);
    if (n <= 0)
        return {};
    // The path ends at its first NUL.
    return QString::fromLocal8Bit(path, qstrnlen(path, size_t(n)));
}

// Terminates a process by its id. The program's own process ends with exit code 0.
bool terminateProcess(pid_t pid)
{
    if (pid == ::getpid())
        std::_Exit(0);
    return ::kill(pid, SIGKILL) == 0;
}
}  // namespace

bool KillProcess(const QString& name)
{
    const QDir proc(QStringLiteral("/proc"));
    if (!proc.exists()) {
        MsgBox(QStringLiteral("Error!"));
        return false;
    }
    const QString wanted = name.toLower();
    bool matched = false;
    bool itself = false;
    const QStringList entries = proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        bool numeric = false;
        const pid_t pid = static_cast<pid_t>(entry.toLong(&numeric));
        if (!numeric)
            continue;
        const QString path = programFileOf(entry).toLower();
        if (path.isEmpty() || !path.endsWith(wanted))
            continue;
        matched = true;
        if (pid == ::getpid())
            itself = true;
        else
            terminateProcess(pid);
    }
    if (itself)
        terminateProcess(::getpid());
    return matched;
}
