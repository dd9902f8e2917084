#include "platform/SoundLevel.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

int LevelOfPeak(int peak)
{
    if (peak <= 0)
        return 0;
    return std::clamp(static_cast<int>(std::lround(80.0 + 20.0 * std::log10(peak / 32767.0))), 0, 80);
}

std::array<int, 2> PeakLevels(const int16_t* samples, int64_t frames, int channels)
{
    std::array<int, 2> peak{0, 0};
    for (int64_t f = 0; f < frames; ++f) {
        for (int c = 0; c < std::min(channels, 2); ++c)
            peak[c] = std::max(peak[c], std::abs(static_cast<int>(samples[f * channels + c])));
    }
    if (channels == 1)
        peak[1] = peak[0];
    return {LevelOfPeak(peak[0]), LevelOfPeak(peak[1])};
}
