#pragma once
// The recorder, with the list of input devices, and the wave file writer.
// The recorder takes 16-bit samples from an input of the sound server and
// hands them out in blocks (EndArrayRecord, then GetArray); the writer puts
// such blocks into a wave file whose header is made right when it closes.
// Both report failures through Status (negative).
#include "platform/StallWatch.h"

#include <QAudioDevice>
#include <QByteArray>
#include <QFile>
#include <QList>
#include <QObject>
#include <cstdint>

class QAudioSource;
class QIODevice;
class QTimer;

class NCTAudioRecord2 : public QObject {
    Q_OBJECT
public:
    explicit NCTAudioRecord2(QObject* parent = nullptr);
    ~NCTAudioRecord2() override;

    // 1: 16-bit samples, the only kind there is; any other value makes the
    // start fail.
    int RecordOptionA = 1;
    // true: Timer carries the levels of what came in; false: levels are 0.
    bool RecordOptionB = true;

    void SetFormat(int sampleRate, int channels);
    int BytesForMilliseconds(int milliseconds) const;
    void StartArrayRecord();
    // Ends the take; what came in since the last full block comes out as
    // one last, shorter block before this returns.
    void Stop();
    int Status() const { return mStatus; }
    QByteArray GetArray() const { return mArray; }
    int32_t SamplesToMilliseconds(int64_t samples) const;
    void CloseFile();

    // The input devices of the sound server; numbers count from 0.
    int DeviceCount() const { return static_cast<int>(mDevices.size()); }
    int CurrentDevice() const { return mCurrent; }
    void SetCurrentDevice(int number) { mCurrent = number; }
    bool DeviceUsable() const;
    QString DeviceName() const;

signals:
    void EndArrayRecord();
    void Timer(int64_t CurrentSamples, int LevelLeft, int LevelRight);

private:
    void takeIn();
    void tick();
    void sourceStateChanged();
    void handOut(qsizetype bytes);

    QList<QAudioDevice> mDevices;
    int mCurrent = -1;
    int mRate = 44100;
    int mChannels = 2;
    int mBlockBytes = 0;
    int mStatus = 0;
    QAudioSource* mSource = nullptr;
    QIODevice* mInput = nullptr;
    QTimer* mTimer = nullptr;
    QByteArray mPending;
    QByteArray mArray;
    int64_t mFrames = 0;
    int mLevelLeft = 0;
    int mLevelRight = 0;
    static constexpr int kTimerMs = 100;
    StallWatch mStall{kTimerMs};
};

class NCTAudioFileWriter2 {
public:
    ~NCTAudioFileWriter2();
    // Wave files of 44100 Hz, 2 channels, 16 bits unless told otherwise.
    void CreateFile(const QString& path, int flag);
    int Status() const { return mStatus; }
    int SampleRate() const { return mRate; }
    int Channels() const { return mChannels; }
    void SetBlockSize(int bytes) { mBlockBytes = bytes; }
    void WriteArray(const QByteArray& block);
    void CloseFile();

private:
    void flush();

    QFile mFile;
    QByteArray mBuffer;
    int mRate = 44100;
    int mChannels = 2;
    int mBlockBytes = 0;
    int mStatus = 0;
    qint64 mDataBytes = 0;
};
