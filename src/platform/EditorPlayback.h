#pragma once
// Plays frames [start, end) of an open decoder through the default output
// of the sound server, with a software gain that clips instead of wrapping.
#include "platform/StallWatch.h"

#include <QIODevice>
#include <QObject>
#include <cstdint>
#include <memory>

class AudioDecoder;
class QAudioSink;
class QTimer;

// Hands the decoder's frames to the sink, which pulls them.
class DecoderStream : public QIODevice {
    Q_OBJECT
public:
    DecoderStream(AudioDecoder& source, int64_t end, QObject* parent = nullptr);
    void SetGain(double gain) { mGain = gain; }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return mDone; }
    qint64 bytesAvailable() const override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    AudioDecoder& mSource;
    int64_t mEnd;
    double mGain = 1.0;
    bool mDone = false;
};

// Scales 16-bit samples in place, clipping at full scale.
void ApplyGain(int16_t* samples, int64_t count, double gain);

class EditorPlayback : public QObject {
    Q_OBJECT
public:
    // Throws CError when the sound server gives no output.
    EditorPlayback(AudioDecoder& source, int64_t start, int64_t end, double gain, QObject* parent = nullptr);
    ~EditorPlayback() override;
    void SetGain(double gain);
    int64_t Frame() const;  // what has gone to the output, within [start, end]
    int64_t FinalFrame() const;  // where the cursor stops once Ended came

signals:
    void Moved(int64_t frame);
    void Ended();

private:
    void stateChanged();
    void tick();
    void finish();

    int64_t mStart;
    int64_t mEnd;
    int mRate;
    DecoderStream* mStream;
    QAudioSink* mSink;
    QTimer* mTick;
    bool mEnded = false;
    StallWatch mStall;
};
