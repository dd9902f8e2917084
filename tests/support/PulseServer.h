#pragma once
// A private PulseAudio server for one test process: a null sink as the
// default output and a source remapped from that sink's monitor as the
// default input, so that what the program plays can be recorded back.
// It lives in its own runtime folder, so tests running side by side never
// meet, and the process's PULSE_SERVER points at it.
#include <QString>
#include <QTemporaryDir>

class PulseServer {
public:
    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    bool Started() const { return mPid > 0; }
    QString Error() const { return mError; }
    QString Socket() const;
    // Runs pactl against this server; its standard output, or empty on failure.
    QString Pactl(const QStringList& arguments) const;
    // Removes the sink and the source, as when a device is unplugged.
    bool UnplugDevices() const;

    static constexpr const char* kSink = "qtsink";
    static constexpr const char* kSource = "qtmic";

private:
    QTemporaryDir mDir;
    qint64 mPid = 0;
    QString mError;
};
