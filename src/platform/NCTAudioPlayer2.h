#pragma once
// The player and the file reader. The reader decodes a sound file into
// blocks of interleaved 16-bit samples; the player plays such blocks through
// the default output of the sound server, asking for more as it goes.
// The player reports failures through Status (negative). The reader throws
// CError when a file cannot be opened as sound (its Status is then negative
// too) and when ReadBlock cannot read on.
#include "platform/AudioDecoder.h"
#include "platform/StallWatch.h"

#include <QByteArray>
#include <QIODevice>
#include <QObject>
#include <QQueue>
#include <array>
#include <cstdint>

class QAudioSink;
class QTimer;

class NCTAudioFileReader2 {
public:
    void OpenFile(const QString& path, int flagA, int flagB);
    int Status() const { return mStatus; }
    int HasAudio() const { return mDecoder.IsOpen() && mDecoder.Channels() > 0 ? 1 : 0; }
    int SampleRate() const { return mDecoder.SampleRate(); }
    int Channels() const { return mDecoder.Channels(); }
    // The next whole frames, up to bytes; empty at the end.
    QByteArray ReadBlock(int bytes);
    void CloseFile();

private:
    AudioDecoder mDecoder;
    int mStatus = 0;
};

// Queued blocks, pulled by the sink.
class BlockQueue : public QIODevice {
    Q_OBJECT
public:
    using QIODevice::QIODevice;
    void Append(const QByteArray& block);
    void Clear();
    int Blocks() const { return static_cast<int>(mBlocks.size()); }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;
    int Channels = 2;
    int Finished = 0;                  // blocks played to their end
    std::array<int, 2> Levels{0, 0};   // of what was handed to the sink last

signals:
    void BlockStarted(int left);  // blocks still queued after this one
    void BlockFinished();

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QQueue<QByteArray> mBlocks;
    qint64 mAt = 0;  // read position in the front block
};

class NCTAudioPlayer2 : public QObject {
    Q_OBJECT
public:
    explicit NCTAudioPlayer2(QObject* parent = nullptr);
    ~NCTAudioPlayer2() override;

    void SetFormat(int sampleRate, int channels);
    int BytesForMilliseconds(int milliseconds) const;
    void StartArrayPlay();
    void LoadArray(const QByteArray& block);
    void Stop();
    int Status() const { return mStatus; }
    int32_t SamplesToMilliseconds(int64_t samples) const;
    bool IsPlaying() const { return mSink != nullptr; }

signals:
    void RequestOnLoadArray();
    void EndArrayPlay();
    void EndPlay();
    void Timer(int64_t CurrentSamples, int LevelLeft, int LevelRight);

private:
    void sinkStateChanged();
    void tick();

    int mRate = 44100;
    int mChannels = 2;
    int mStatus = 0;
    QAudioSink* mSink = nullptr;
    BlockQueue* mQueue = nullptr;
    QTimer* mTimer = nullptr;
    bool mEnded = false;
    static constexpr int kTimerMs = 100;
    StallWatch mStall{kTimerMs};
};
