#pragma once
// The conversion objects the tone conversion drives: a stream that reads or
// writes a sound file sample by sample, and a whole-file converter to AMR with
// its job and encoder settings. Every failure is a CError with a description
// that can be shown as it stands.
#include "platform/AudioDecoder.h"
#include "platform/AudioEncoder.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>

// One sound file, read as a source or written as a target.
class AudioFileStream {
public:
    AudioFileStream();
    ~AudioFileStream();

    void Open(const QString& path, int flagA, int flagB);
    // On a target: finishes the file; on a source: lets it go.
    void Close();
    // Names the output; it is written once SetInputFormat has told the
    // form of the samples.
    void Create(const QString& path, int flag);
    // Writes what is left of source, which is open, as it was decoded.
    void WriteAllOf(AudioFileStream& source);
    void SetInputFormat(int sampleRate, int channels);
    void SetWaveOutput(int sampleRate, int channels, int bitsPerSample);
    void SetMp3Output(int sampleRate, int kbitPerSecond, int channels);
    int Channels() const;
    int SampleRate() const;

private:
    AudioDecoder mSource;
    AudioEncoder mTarget;
    std::optional<EncoderTarget> mOutput;
    QString mTargetPath;
    bool mWriting = false;
};

struct AmrEncoderSettings {
    int EncoderParameterA = 0;  // kept for the caller; the encoders have no such knob
    int BitsPerSample = 16;
    int BitRate = 12200;        // up to 12200 narrowband at 8000 Hz, above wideband at 16000 Hz
    int EncoderParameterB = 0;  // likewise
    int Channels = 1;
};

class AudioFileConverter;

// The settings of one conversion and its start.
class ConversionJob {
public:
    void TargetFile(const QString& path) { mTarget = path; }
    // Converts the whole source; returns when the target is complete.
    void Run(const AmrEncoderSettings& settings);
    void FadesEnabled(bool on) { mFades = on; }
    void FadeInSeconds(double seconds) { mFadeIn = seconds; }
    void FadeOutSeconds(double seconds) { mFadeOut = seconds; }
    // Decibels; see SampleShaper.
    void VolumeBoost(double decibels) { mBoost = decibels; }

private:
    friend class AudioFileConverter;
    explicit ConversionJob(AudioFileConverter& owner) : mOwner(owner) {}

    AudioFileConverter& mOwner;
    QString mTarget;
    bool mFades = false;
    double mFadeIn = 0;
    double mFadeOut = 0;
    double mBoost = 0;
};

class AudioFileConverter {
public:
    AudioFileConverter();
    void Open(const QString& path);
    // Exact length of the decoded sound.
    float DurationSeconds();
    ConversionJob& Job() { return mJob; }

private:
    friend class ConversionJob;
    QString mSource;
    ConversionJob mJob;
};
