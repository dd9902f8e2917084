#include "platform/AudioConversion.h"

#include "core/CError.h"
#include "platform/SampleShaper.h"
#include "platform/Transcode.h"

#include <QFileInfo>

namespace {
constexpr int kNarrowbandTop = 12200;

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
    mOutput = EncoderTarget{EncoderTarget::Wave, sampleRate, channels, 0};
}

void AudioFileStream::SetMp3Output(int sampleRate, int kbitPerSecond, int channels)
{
    mOutput = EncoderTarget{EncoderTarget::Mp3, sampleRate, channels, kbitPerSecond * 1000};
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
    const bool wide = settings.BitRate > kNarrowbandTop;
    const EncoderTarget target{wide ? EncoderTarget::AmrWideband : EncoderTarget::AmrNarrowband, wide ? 16000 : 8000,
                               settings.Channels, settings.BitRate};
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
