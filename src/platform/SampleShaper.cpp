#include "platform/SampleShaper.h"

#include <algorithm>
#include <cmath>

SampleShaper::SampleShaper(int sampleRate, int channels, double fadeInSeconds, double fadeOutSeconds,
                           double boostDecibels)
    : mChannels(channels),
      mFadeInFrames(std::llround(std::max(0.0, fadeInSeconds) * sampleRate)),
      mFadeOutFrames(std::llround(std::max(0.0, fadeOutSeconds) * sampleRate)),
      mGain(GainOfDecibels(boostDecibels))
{
}

double SampleShaper::GainOfDecibels(double decibels)
{
    return std::pow(10.0, std::clamp(decibels, -120.0, 60.0) / 20.0);
}

int16_t SampleShaper::shape(int32_t value, double gain) const
{
    return static_cast<int16_t>(std::clamp<long>(std::lround(value * gain), -32768L, 32767L));
}

std::vector<int16_t> SampleShaper::Push(const int16_t* frames, int count)
{
    std::vector<int16_t> ready;
    ready.reserve(static_cast<size_t>(count) * mChannels);
    for (int f = 0; f < count; ++f, ++mFrameIndex) {
        double gain = mGain;
        if (mFrameIndex < mFadeInFrames)
            gain *= static_cast<double>(mFrameIndex) / mFadeInFrames;
        for (int c = 0; c < mChannels; ++c)
            mHeld.push_back(shape(frames[static_cast<size_t>(f) * mChannels + c], gain));
    }
    const size_t keep = static_cast<size_t>(mFadeOutFrames) * mChannels;
    if (mHeld.size() > keep) {
        const auto cut = mHeld.end() - static_cast<std::ptrdiff_t>(keep);
        ready.insert(ready.end(), mHeld.begin(), cut);
        mHeld.erase(mHeld.begin(), cut);
    }
    return ready;
}

std::vector<int16_t> SampleShaper::Flush()
{
    // A sound shorter than the fade fades over what there is.
    const int64_t frames = static_cast<int64_t>(mHeld.size()) / mChannels;
    std::vector<int16_t> out(mHeld.begin(), mHeld.end());
    mHeld.clear();
    for (int64_t f = 0; f < frames; ++f) {
        const double gain = static_cast<double>(frames - 1 - f) / std::max<int64_t>(1, mFadeOutFrames);
        for (int c = 0; c < mChannels; ++c) {
            int16_t& s = out[static_cast<size_t>(f * mChannels + c)];
            s = static_cast<int16_t>(std::lround(s * std::min(1.0, gain)));
        }
    }
    return out;
}
