#pragma once
// Every piece of outside state that tests must own is reached through one
// seam here. Production code leaves them at their defaults, which use the real
// things; a test sets them to its own folders and recorders.
#include <QDateTime>
#include <QString>
#include <functional>

struct Seams {
    std::function<QString()> programFolder;                // folder of the running program file
    std::function<QString()> tempFolder;                   // no trailing separator
    std::function<bool(const QString&)> openUrl;           // desktop hand-off
    std::function<QDateTime()> now;                        // local clock
    std::function<void(int)> endNow;                       // ends the program at once, no clean-up
    std::function<bool(const QString&)> killProcess;       // KillProcess(name)
    QString serviceBaseUrl;                                // https base of the web service
    QString serviceCertificateFile;                        // PEM the service's TLS identity is checked against
};

// The live seams. Defaults() gives the production values.
Seams& seams();
Seams DefaultSeams();

// The program folder with a trailing separator, ready for a file name.
QString ProgramFolderPath(const QString& name);

// Thrown after a test's endNow returns, so that nothing after the end runs.
struct ProgramEnded {
    int code;
};

// Ends the program at once through the seam; never returns in production.
[[noreturn]] void EndProgramNow(int code = 0);
