#pragma once
// Levels as the player and the recorder report them: 0 for silence up to 80
// for full scale, in decibels above -80 dBFS.
#include <QByteArray>
#include <array>
#include <cstdint>

// Peak level of each of the first two channels of interleaved 16-bit samples.
std::array<int, 2> PeakLevels(const int16_t* samples, int64_t frames, int channels);
int LevelOfPeak(int peak);
