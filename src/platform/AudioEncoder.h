#pragma once
// Encodes interleaved signed 16-bit frames to a finished sound file: MP3
// (LAME), a wave file, or AMR narrowband / wideband in the "#!AMR\n" and
// "#!AMR-WB\n" storage format that phones open. Rate and channel changes
// are done here. The file is written under a scratch name and takes its own
// name only once it is complete, so a failed or abandoned encode never leaves
// a half file that looks good.
#include "wire/ToneFormats.h"

#include <QString>
#include <cstdint>
#include <memory>

// Its sample rate is a wish: the encoder takes the nearest rate it has.
using EncoderTarget = wire::EncoderTarget;

class AudioEncoder {
public:
    AudioEncoder();
    ~AudioEncoder();  // abandons an unfinished file
    AudioEncoder(const AudioEncoder&) = delete;
    AudioEncoder& operator=(const AudioEncoder&) = delete;

    // Throws CError with FFmpeg's description on any failure, and for a
    // target of no codec.
    void Create(const QString& path, const EncoderTarget& target, int inputRate, int inputChannels);
    void Write(const int16_t* frames, int count);
    void Finish();
    void Abandon();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
