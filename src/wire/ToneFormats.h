#pragma once
// The tone formats a phone can take, in the order the login's format word is
// compared: what the program converts to and how it names the tone, and how
// the service tells from a tone's content type which extension it must have.
#include <array>
#include <string_view>

namespace wire {
enum class Codec { None, Wave, Mp3, AmrNarrowband, AmrWideband };

// What the encoder writes. Wave files are 16 bits a sample and take no bit rate.
struct EncoderTarget {
    Codec codec = Codec::Wave;
    int sampleRate = 16000;
    int bitRate = 0;  // bit/s
    int channels = 1;
};

// The AMR codecs run at their standard rates only.
inline constexpr EncoderTarget kAmrNarrowbandTone{Codec::AmrNarrowband, 8000, 12200, 1};
inline constexpr EncoderTarget kAmrWidebandTone{Codec::AmrWideband, 16000, 19850, 1};

struct ToneFormat {
    std::string_view word;           // as the login names it; empty on the fallback row
    int number;                      // the conversion's format number
    std::string_view convertedName;  // the conversion's scratch file
    std::string_view contentType;
    std::string_view extension;
    EncoderTarget target;            // codec None: nothing makes this format yet
};

inline constexpr std::array<ToneFormat, 7> kToneFormats = {{
    {"WAV", 6, "preview.wav", "audio/wav", "wav", {Codec::Wave, 16000, 0, 1}},
    {"AMR Wideband", 2, "preview.amr", "audio/amr-wb", "amr", kAmrWidebandTone},
    {"AMR Narrowband", 1, "preview.amr", "audio/amr", "amr", kAmrNarrowbandTone},
    // Not "preview.mp3": that name is the cut, and source and target must differ.
    {"MP3", 5, "preview1.mp3", "audio/mpeg", "mp3", {Codec::Mp3, 16000, 24000, 1}},
    {"AAC", 4, "preview.aac", "audio/aac", "aac", {Codec::None, 0, 0, 0}},
    {"QCELP", 3, "preview.qcp", "audio/qcelp", "qcp", {Codec::None, 0, 0, 0}},
    {"", 1, "preview.amr", "audio/amr", "amr", kAmrNarrowbandTone},
}};

// Exact, case-sensitive match in table order; any other word takes the last row.
constexpr const ToneFormat& ToneFormatForWord(std::string_view word)
{
    for (const ToneFormat& row : kToneFormats) {
        if (row.word == word)
            return row;
    }
    return kToneFormats.back();
}

// The first row of that number or content type; null when none has it.
constexpr const ToneFormat* ToneFormatNumbered(int number)
{
    for (const ToneFormat& row : kToneFormats) {
        if (row.number == number)
            return &row;
    }
    return nullptr;
}

constexpr const ToneFormat* ToneFormatOfType(std::string_view contentType)
{
    for (const ToneFormat& row : kToneFormats) {
        if (row.contentType == contentType)
            return &row;
    }
    return nullptr;
}
}  // namespace wire
