#include "platform/AudioConversion.h"

#include "core/CError.h"
#include "platform/SampleShaper.h"
#include "platform/Transcode.h"

#include <QFileInfo>

namespace {
CError streamError(const QString& text) { return CError(ErrNo::PathFileAccess, text, QStringLiteral("AudioFileStream")); }
}  // namespace

AudioFileStream::AudioFileStream() = default;
AudioFileStream::~AudioFileStream() = default;

void AudioFileStream::Open(const QString& path, int, int) { mSource.Open(path); }

void AudioFileStream::Close()
{
    if (mWriting) {
        mWriting = false;
        mTarget.Finish();
    }
    mSource.Close();
}

void AudioFileStream::Create(const QString& path, int)
{
    if (!mOutput)
        throw streamError(QStringLiteral("No output format was set"));
    if (!QFileInfo(QFileInfo(path).absolutePath()).isDir())
        throw CError(ErrNo::PathNotFound, QStringLiteral("Path not found"), QStringLiteral("AudioFileStream"));
    mTargetPath = path;
}

void AudioFileStream::SetInputFormat(int sampleRate, int channels)
{
    if (mTargetPath.isEmpty())
        throw streamError(QStringLiteral("No output file was created"));
    mTarget.Create(mTargetPath, *mOutput, sampleRate, channels);
    mWriting = true;
}

void AudioFileStream::WriteAllOf(AudioFileStream& source)
{
    if (!mWriting)
        throw streamError(QStringLiteral("The output file is not open"));
    Transcode(source.mSource, mTarget);
}

void AudioFileStream::SetWaveOutput(int sampleRate, int channels, int bitsPerSample)
{
    if (bitsPerSample != 16)
        throw streamError(QStringLiteral("Only 16 bits per sample can be written"));
    mOutput = EncoderTarget{.codec = wire::Codec::Wave, .sampleRate = sampleRate, .bitRate = 0, .channels = channels};
}

void AudioFileStream::SetMp3Output(int sampleRate, int kbitPerSecond, int channels)
{
    mOutput = EncoderTarget{
        .codec = wire::Codec::Mp3, .sampleRate = sampleRate, .bitRate = kbitPerSecond * 1000, .channels = channels};
}

int AudioFileStream::Channels() const { return mSource.Channels(); }
int AudioFileStream::SampleRate() const { return mSource.SampleRate(); }

AudioFileConverter::AudioFileConverter() : mJob(*this) {}

void AudioFileConverter::Open(const QString& path)
{
    AudioDecoder probe;
    probe.Open(path);  // a missing or unreadable source fails here, before anything is written
    mSource = path;
}

float AudioFileConverter::DurationSeconds()
{
    AudioDecoder decoder;
    decoder.Open(mSource);
    return static_cast<float>(SecondsToTheEnd(decoder));
}

void ConversionJob::Run(const AmrEncoderSettings& settings)
{
    if (mTarget.isEmpty())
        throw CError(ErrNo::PathFileAccess, QStringLiteral("No target file was named"), QStringLiteral("ConversionJob"));
    if (settings.BitsPerSample != 16)
        throw CError(ErrNo::PathFileAccess, QStringLiteral("AMR takes 16 bits per sample"),
                     QStringLiteral("ConversionJob"));
    EncoderTarget target =
        settings.BitRate > wire::kAmrNarrowbandTone.bitRate ? wire::kAmrWidebandTone : wire::kAmrNarrowbandTone;
    target.bitRate = settings.BitRate;
    target.channels = settings.Channels;
    AudioDecoder source;
    source.Open(mOwner.mSource);
    const int channels = source.Channels();
    SampleShaper shaper(source.SampleRate(), channels, mFades ? mFadeIn : 0.0, mFades ? mFadeOut : 0.0, mBoost);
    AudioEncoder encoder;
    encoder.Create(mTarget, target, source.SampleRate(), channels);
    TranscodeSteps steps;
    steps.shaper = &shaper;
    Transcode(source, encoder, steps);
    encoder.Finish();
}
