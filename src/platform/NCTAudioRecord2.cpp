#include "platform/NCTAudioRecord2.h"

#include "platform/SoundLevel.h"

#include <QAudioFormat>
#include <QAudioSource>
#include <QMediaDevices>
#include <QTimer>
#include <QtEndian>
#include <cmath>

namespace {
constexpr int kWaveHeaderBytes = 44;

QByteArray waveHeader(int rate, int channels, quint32 dataBytes)
{
    QByteArray h(kWaveHeaderBytes, '\0');
    auto put32 = [&](int at, quint32 v) { qToLittleEndian(v, h.data() + at); };
    auto put16 = [&](int at, quint16 v) { qToLittleEndian(v, h.data() + at); };
    memcpy(h.data(), "RIFF", 4);
    put32(4, 36 + dataBytes);
    memcpy(h.data() + 8, "WAVEfmt ", 8);
    put32(16, 16);
    put16(20, 1);
    put16(22, static_cast<quint16>(channels));
    put32(24, static_cast<quint32>(rate));
    put32(28, static_cast<quint32>(rate * channels * 2));
    put16(32, static_cast<quint16>(channels * 2));
    put16(34, 16);
    memcpy(h.data() + 36, "data", 4);
    put32(40, dataBytes);
    return h;
}
}  // namespace

NCTAudioRecord2::NCTAudioRecord2(QObject* parent) : QObject(parent), mDevices(QMediaDevices::audioInputs())
{
    const QAudioDevice standard = QMediaDevices::defaultAudioInput();
    for (int i = 0; i < mDevices.size(); ++i) {
        if (mDevices[i].id() == standard.id())
            mCurrent = i;
    }
    if (mCurrent < 0 && !mDevices.isEmpty())
        mCurrent = 0;
    mTimer = new QTimer(this);
    mTimer->setInterval(kTimerMs);
    connect(mTimer, &QTimer::timeout, this, &NCTAudioRecord2::tick);
    SetFormat(mRate, mChannels);
}

NCTAudioRecord2::~NCTAudioRecord2()
{
    blockSignals(true);  // nobody is left to take a last block
    CloseFile();
}

void NCTAudioRecord2::SetFormat(int sampleRate, int channels)
{
    mRate = sampleRate;
    mChannels = channels;
    mBlockBytes = BytesForMilliseconds(1000);
}

int NCTAudioRecord2::BytesForMilliseconds(int milliseconds) const
{
    return static_cast<int>(static_cast<int64_t>(mRate) * milliseconds / 1000) * mChannels * 2;
}

bool NCTAudioRecord2::DeviceUsable() const
{
    if (mCurrent < 0 || mCurrent >= mDevices.size())
        return false;
    QAudioFormat format;
    format.setSampleRate(mRate);
    format.setChannelCount(mChannels);
    format.setSampleFormat(QAudioFormat::Int16);
    return mDevices[mCurrent].isFormatSupported(format);
}

QString NCTAudioRecord2::DeviceName() const
{
    return mCurrent >= 0 && mCurrent < mDevices.size() ? mDevices[mCurrent].description() : QString();
}

void NCTAudioRecord2::StartArrayRecord()
{
    CloseFile();
    mStatus = 0;
    mPending.clear();
    mArray.clear();
    mFrames = 0;
    if (RecordOptionA != 1 || mCurrent < 0 || mCurrent >= mDevices.size() || mRate <= 0 || mChannels <= 0) {
        mStatus = -1;
        return;
    }
    QAudioFormat format;
    format.setSampleRate(mRate);
    format.setChannelCount(mChannels);
    format.setSampleFormat(QAudioFormat::Int16);
    mSource = new QAudioSource(mDevices[mCurrent], format, this);
    connect(mSource, &QAudioSource::stateChanged, this, &NCTAudioRecord2::sourceStateChanged);
    mInput = mSource->start();
    if (!mInput || mSource->error() != QAudio::NoError) {
        mStatus = -1;
        return;
    }
    connect(mInput, &QIODevice::readyRead, this, &NCTAudioRecord2::takeIn);
    mStall.Reset(mFrames);
    mTimer->start();
}

void NCTAudioRecord2::takeIn()
{
    if (!mInput)
        return;
    const QByteArray got = mInput->readAll();
    const int frameBytes = mChannels * 2;
    const int64_t frames = got.size() / frameBytes;
    if (RecordOptionB && frames > 0) {
        const auto levels = PeakLevels(reinterpret_cast<const int16_t*>(got.constData()), frames, mChannels);
        mLevelLeft = levels[0];
        mLevelRight = levels[1];
    }
    mFrames += frames;
    mPending += got;
    while (mBlockBytes > 0 && mPending.size() >= mBlockBytes)
        handOut(mBlockBytes);
}

void NCTAudioRecord2::handOut(qsizetype bytes)
{
    mArray = mPending.left(bytes);
    mPending.remove(0, bytes);
    emit EndArrayRecord();
}

void NCTAudioRecord2::Stop()
{
    if (!mSource)
        return;
    takeIn();
    mTimer->stop();
    mSource->disconnect(this);
    mSource->stop();
    mInput = nullptr;
    if (!mPending.isEmpty())
        handOut(mPending.size());
}

void NCTAudioRecord2::CloseFile()
{
    Stop();
    delete mSource;
    mSource = nullptr;
}

int32_t NCTAudioRecord2::SamplesToMilliseconds(int64_t samples) const
{
    return MillisecondsOfFrames(samples, mRate);
}

void NCTAudioRecord2::tick()
{
    // Silence from the input ends the take as a failed device does.
    if (mStall.Stalled(mFrames)) {
        mStatus = -1;
        mTimer->stop();
        return;
    }
    emit Timer(mFrames, mLevelLeft, mLevelRight);
}

void NCTAudioRecord2::sourceStateChanged()
{
    // A device that goes away ends the take; what came in stays.
    if (mSource && mSource->state() == QAudio::StoppedState && mSource->error() != QAudio::NoError) {
        mStatus = -1;
        mTimer->stop();
    }
}

NCTAudioFileWriter2::~NCTAudioFileWriter2() { CloseFile(); }

void NCTAudioFileWriter2::CreateFile(const QString& path, int)
{
    CloseFile();
    mStatus = 0;
    mDataBytes = 0;
    mFile.setFileName(path);
    if (!mFile.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        mFile.write(waveHeader(mRate, mChannels, 0)) != kWaveHeaderBytes)
        mStatus = -1;
}

void NCTAudioFileWriter2::WriteArray(const QByteArray& block)
{
    if (!mFile.isOpen() || mStatus < 0)
        return;
    mBuffer += block;
    if (mBuffer.size() >= mBlockBytes)
        flush();
}

void NCTAudioFileWriter2::flush()
{
    if (mBuffer.isEmpty())
        return;
    if (mFile.write(mBuffer) != mBuffer.size())
        mStatus = -1;
    else
        mDataBytes += mBuffer.size();
    mBuffer.clear();
}

void NCTAudioFileWriter2::CloseFile()
{
    if (!mFile.isOpen())
        return;
    flush();
    // The header tells the true length only now that it is known.
    if (!mFile.seek(0) || mFile.write(waveHeader(mRate, mChannels, static_cast<quint32>(mDataBytes))) != kWaveHeaderBytes)
        mStatus = -1;
    mFile.close();
}
