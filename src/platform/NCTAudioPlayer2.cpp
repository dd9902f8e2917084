#include "platform/NCTAudioPlayer2.h"

#include "core/CError.h"
#include "platform/SoundLevel.h"
#include "platform/SoundOutput.h"

#include <QAudioFormat>
#include <QAudioSink>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstring>

void NCTAudioFileReader2::OpenFile(const QString& path, int, int)
{
    mStatus = 0;
    try {
        mDecoder.Open(path);
    } catch (const CError&) {
        mStatus = -1;
        throw;
    }
}

QByteArray NCTAudioFileReader2::ReadBlock(int bytes)
{
    if (!mDecoder.IsOpen())
        return {};
    const int frameBytes = mDecoder.Channels() * 2;
    QByteArray block(std::max(bytes / frameBytes, 0) * frameBytes, Qt::Uninitialized);
    const int got = mDecoder.Read(reinterpret_cast<int16_t*>(block.data()), block.size() / frameBytes);
    block.truncate(got * frameBytes);
    return block;
}

void NCTAudioFileReader2::CloseFile() { mDecoder.Close(); }

void BlockQueue::Append(const QByteArray& block)
{
    if (!block.isEmpty())
        mBlocks.enqueue(block);
}

void BlockQueue::Clear()
{
    mBlocks.clear();
    mAt = 0;
}

qint64 BlockQueue::bytesAvailable() const
{
    qint64 n = QIODevice::bytesAvailable() - mAt;
    for (const QByteArray& b : mBlocks)
        n += b.size();
    return n;
}

qint64 BlockQueue::readData(char* data, qint64 maxSize)
{
    qint64 done = 0;
    while (done < maxSize && !mBlocks.isEmpty()) {
        const QByteArray& front = mBlocks.head();
        if (mAt == 0)
            emit BlockStarted(static_cast<int>(mBlocks.size()) - 1);
        const qint64 take = std::min<qint64>(maxSize - done, front.size() - mAt);
        std::memcpy(data + done, front.constData() + mAt, static_cast<size_t>(take));
        Levels = PeakLevels(reinterpret_cast<const int16_t*>(front.constData() + mAt), take / (2 * Channels), Channels);
        done += take;
        mAt += take;
        if (mAt == front.size()) {
            ++Finished;
            mBlocks.dequeue();
            mAt = 0;
            emit BlockFinished();
        }
    }
    return done;
}

NCTAudioPlayer2::NCTAudioPlayer2(QObject* parent) : QObject(parent)
{
    mTimer = new QTimer(this);
    mTimer->setInterval(kTimerMs);
    connect(mTimer, &QTimer::timeout, this, &NCTAudioPlayer2::tick);
}

NCTAudioPlayer2::~NCTAudioPlayer2() { Stop(); }

void NCTAudioPlayer2::SetFormat(int sampleRate, int channels)
{
    mRate = sampleRate;
    mChannels = channels;
}

int NCTAudioPlayer2::BytesForMilliseconds(int milliseconds) const
{
    return static_cast<int>(static_cast<int64_t>(mRate) * milliseconds / 1000) * mChannels * 2;
}

void NCTAudioPlayer2::StartArrayPlay()
{
    Stop();
    mStatus = 0;
    mEnded = false;
    mStall.Reset();
    const QAudioDevice device = SoundOutput();
    QAudioFormat format;
    format.setSampleRate(mRate);
    format.setChannelCount(mChannels);
    format.setSampleFormat(QAudioFormat::Int16);
    if (device.isNull() || mRate <= 0 || mChannels <= 0) {
        mStatus = -1;
        return;
    }
    mQueue = new BlockQueue(this);
    mQueue->Channels = mChannels;
    mQueue->open(QIODevice::ReadOnly);
    // The player asks for more while it starts on its last block, and says
    // when each block is done; both arrive through the event loop.
    connect(mQueue, &BlockQueue::BlockStarted, this, [this](int left) {
        if (left == 0)
            emit RequestOnLoadArray();
    }, Qt::QueuedConnection);
    connect(mQueue, &BlockQueue::BlockFinished, this, &NCTAudioPlayer2::EndArrayPlay, Qt::QueuedConnection);
    mSink = new QAudioSink(device, format, this);
    connect(mSink, &QAudioSink::stateChanged, this, &NCTAudioPlayer2::sinkStateChanged);
    mSink->start(mQueue);
    if (mSink->error() != QAudio::NoError) {
        Stop();
        mStatus = -1;
        return;
    }
    mTimer->start();
}

void NCTAudioPlayer2::LoadArray(const QByteArray& block)
{
    if (!mQueue)
        return;
    mQueue->Append(block);
}

void NCTAudioPlayer2::Stop()
{
    mTimer->stop();
    if (mSink) {
        mSink->disconnect(this);
        mSink->stop();
        delete mSink;
        mSink = nullptr;
    }
    if (mQueue) {
        mQueue->disconnect(this);
        delete mQueue;
        mQueue = nullptr;
    }
}

int32_t NCTAudioPlayer2::SamplesToMilliseconds(int64_t samples) const
{
    return MillisecondsOfFrames(samples, mRate);
}

void NCTAudioPlayer2::tick()
{
    if (!mSink)
        return;
    const qint64 processed = mSink->processedUSecs();
    // Only while there is sound to play does standing still end the playback.
    if (mStall.Stalled(processed, mQueue->Blocks() > 0)) {
        mStatus = -1;
        mTimer->stop();
        if (!mEnded) {
            mEnded = true;
            emit EndPlay();
        }
        return;
    }
    const int64_t frames = processed * mRate / 1000000;
    emit Timer(frames, mQueue->Levels[0], mQueue->Levels[1]);
}

void NCTAudioPlayer2::sinkStateChanged()
{
    const bool lost = mSink->state() == QAudio::StoppedState && mSink->error() != QAudio::NoError;
    const bool dry = mSink->state() == QAudio::IdleState && mQueue->Blocks() == 0 && mQueue->Finished > 0;
    if (lost)
        mStatus = -1;
    if ((lost || dry) && !mEnded) {
        mEnded = true;
        emit EndPlay();
    }
}
