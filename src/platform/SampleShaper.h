#pragma once
// Shapes a tone on its way to the encoder: a linear fade from silence over
// its first seconds, a linear fade to silence over its last seconds, and a
// volume boost in decibels (0 leaves the level, 3 is about 1.41 times,
// negative values make it softer). Samples clip at full scale, never wrap.
// The end of the sound is not known in advance, so the last fade-out
// seconds are held back until Flush.
#include <cstdint>
#include <deque>
#include <vector>

class SampleShaper {
public:
    SampleShaper(int sampleRate, int channels, double fadeInSeconds, double fadeOutSeconds, double boostDecibels);

    // Shapes frames and returns those that are ready to be written.
    std::vector<int16_t> Push(const int16_t* frames, int count);
    // The held-back end, faded out.
    std::vector<int16_t> Flush();

    static double GainOfDecibels(double decibels);

private:
    int16_t shape(int32_t value, double gain) const;

    int mChannels;
    int64_t mFadeInFrames;
    int64_t mFadeOutFrames;
    double mGain;
    int64_t mFrameIndex = 0;
    std::deque<int16_t> mHeld;  // up to mFadeOutFrames frames, boosted, not yet faded
};
