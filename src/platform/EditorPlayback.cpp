#include "platform/EditorPlayback.h"

#include "core/CError.h"
#include "platform/AudioDecoder.h"
#include "platform/SoundOutput.h"

#include <QAudioFormat>
#include <QAudioSink>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace {
constexpr int kTickMs = 40;
}

void ApplyGain(int16_t* samples, int64_t count, double gain)
{
    if (gain == 1.0)
        return;
    for (int64_t i = 0; i < count; ++i)
        samples[i] = static_cast<int16_t>(std::clamp(std::lround(samples[i] * gain), -32768L, 32767L));
}

DecoderStream::DecoderStream(AudioDecoder& source, int64_t end, QObject* parent)
    : QIODevice(parent), mSource(source), mEnd(end)
{
}

qint64 DecoderStream::bytesAvailable() const
{
    const int64_t left = std::max<int64_t>(0, mEnd - mSource.Position());
    return QIODevice::bytesAvailable() + left * mSource.Channels() * 2;
}

qint64 DecoderStream::readData(char* data, qint64 maxSize)
{
    const int frameBytes = mSource.Channels() * 2;
    const int64_t want = std::min<int64_t>(maxSize / frameBytes, mEnd - mSource.Position());
    if (want <= 0) {
        mDone = true;
        return 0;
    }
    int16_t* out = reinterpret_cast<int16_t*>(data);
    int got = 0;
    try {
        got = mSource.Read(out, static_cast<int>(want));
    } catch (const CError&) {
        got = 0;  // the rest of the file cannot be read: the playback ends here
    }
    if (got == 0) {
        mDone = true;
        return 0;
    }
    ApplyGain(out, static_cast<int64_t>(got) * mSource.Channels(), mGain);
    return static_cast<qint64>(got) * frameBytes;
}

EditorPlayback::EditorPlayback(AudioDecoder& source, int64_t start, int64_t end, double gain, QObject* parent)
    : QObject(parent), mStart(start), mEnd(end), mRate(source.SampleRate()), mStall(kTickMs)
{
    QAudioFormat format;
    format.setSampleRate(source.SampleRate());
    format.setChannelCount(source.Channels());
    format.setSampleFormat(QAudioFormat::Int16);
    const QAudioDevice device = SoundOutput();
    if (device.isNull())
        throw CError(ErrNo::PathFileAccess, QStringLiteral("No sound output device"), QStringLiteral("Playback"));
    source.Seek(start);
    mStream = new DecoderStream(source, end, this);
    mStream->SetGain(gain);
    mStream->open(QIODevice::ReadOnly);
    mSink = new QAudioSink(device, format, this);
    mTick = new QTimer(this);
    mTick->setInterval(kTickMs);
    connect(mTick, &QTimer::timeout, this, &EditorPlayback::tick);
    connect(mSink, &QAudioSink::stateChanged, this, &EditorPlayback::stateChanged);
    mSink->start(mStream);
    if (mSink->error() != QAudio::NoError)
        throw CError(ErrNo::PathFileAccess, QStringLiteral("The sound output could not be started"),
                     QStringLiteral("Playback"));
    mTick->start();
}

EditorPlayback::~EditorPlayback()
{
    mSink->disconnect(this);
    mSink->stop();
}

void EditorPlayback::SetGain(double gain) { mStream->SetGain(gain); }

int64_t EditorPlayback::FinalFrame() const
{
    // When all of it went out the end is where the cursor stops; the
    // output's count lags a little behind.
    return mStream->atEnd() ? mEnd : Frame();
}

int64_t EditorPlayback::Frame() const
{
    return std::min(mEnd, mStart + static_cast<int64_t>(mSink->processedUSecs()) * mRate / 1000000);
}

void EditorPlayback::tick()
{
    if (mStall.Stalled(mSink->processedUSecs())) {
        finish();
        return;
    }
    emit Moved(Frame());
}

void EditorPlayback::finish()
{
    if (mEnded)
        return;
    mEnded = true;
    mTick->stop();
    emit Ended();
}

void EditorPlayback::stateChanged()
{
    const bool finished = (mSink->state() == QAudio::IdleState && mStream->atEnd()) ||
                          (mSink->state() == QAudio::StoppedState && mSink->error() != QAudio::NoError);
    if (finished)
        finish();
}
