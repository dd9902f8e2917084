#pragma once
// The one road from a sound file to another: frames are decoded from where
// the source stands, shaped on the way when a shaper is given, and encoded
// into a target the caller has created and finishes.
#include <cstdint>
#include <functional>

class AudioDecoder;
class AudioEncoder;
class SampleShaper;

struct TranscodeSteps {
    SampleShaper* shaper = nullptr;  // none: frames go out as they were decoded
    int64_t frames = -1;             // how many to take; below 0, all to the source's end
    std::function<void(int64_t done)> progress;  // after each chunk, with the frames taken so far
};

// Returns the frames taken from the source: fewer than asked when it ended first.
int64_t Transcode(AudioDecoder& source, AudioEncoder& target, const TranscodeSteps& steps = {});
