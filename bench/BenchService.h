#pragma once
// Our web service for a benchmark: quillotone-service on a free loopback port
// with a fresh data folder and one account, stopped when dropped.
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

class BenchService {
public:
    // account: "number:password"
    explicit BenchService(const QString& account);
    ~BenchService();

    bool Running() const { return !mBase.isEmpty(); }
    QString Base() const { return mBase; }  // "https://127.0.0.1:PORT/"
    QString Certificate() const { return mData.filePath(QStringLiteral("service.crt")); }
    QString DataFolder() const { return mData.path(); }
    qint64 Pid() const { return mProcess.processId(); }

private:
    QTemporaryDir mData;
    QProcess mProcess;
    QString mBase;
};

// A program built beside quillotone-bench.
QString BuiltProgram(const QString& name);
