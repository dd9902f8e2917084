#pragma once
// Encodes interleaved signed 16-bit frames to a finished sound file: MP3
// (LAME), a wave file, or AMR narrowband / wideband in the "#!AMR\n" and
// "#!AMR-WB\n" storage format that phones open. Rate and channel changes
// are done here. The file is written under a scratch name and takes its own
// name only once it is complete, so a failed or abandoned encode never leaves
// a half file that looks good.
#include <QString>
#include <cstdint>
#include <memory>

struct EncoderTarget {
    enum Kind { Mp3, Wave, AmrNarrowband, AmrWideband };
    Kind kind = Wave;
    int sampleRate = 16000;  // the nearest rate the encoder takes, when it does not take this one
    int channels = 1;
    int bitRate = 0;  // bit/s; ignored for wave files
};

class AudioEncoder {
public:
    AudioEncoder();
    ~AudioEncoder();  // abandons an unfinished file
    AudioEncoder(const AudioEncoder&) = delete;
    AudioEncoder& operator=(const AudioEncoder&) = delete;

    // Throws CError with FFmpeg's description on any failure.
    void Create(const QString& path, const EncoderTarget& target, int inputRate, int inputChannels);
    void Write(const int16_t* frames, int count);
    void Finish();
    void Abandon();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
