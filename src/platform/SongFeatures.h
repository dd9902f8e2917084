#pragma once
// What a song sounds like over time, gathered once from its decoded frames
// as they pass (the editor's open): for each short stretch of about a third
// of a second, its loudness and its chroma, the share of each of the twelve
// pitch classes in its spectrum. From these it finds the part a listener
// would pick for a ringtone: the most repeated loud section (a chorus), by
// the self-similarity of the chroma, or the loudest section when nothing
// repeats.
#include <array>
#include <cstdint>
#include <vector>

class SongFeatures {
public:
    struct Part {
        int64_t start = 0;  // frames of the song
        int64_t end = 0;
    };

    void Reset(int sampleRate, int channels);
    void Add(const int16_t* frames, int count);
    void Finish();  // the last partial stretch is dropped
    // The frames of one stretch. The features of frames that follow a
    // multiple of them can be appended.
    int64_t FramesPerStretch() const;
    void Append(const SongFeatures& later);

    int Stretches() const { return static_cast<int>(mLoudness.size()); }
    double SecondsPerStretch() const;
    // A part of about that many seconds, within the song; the whole song
    // when it is shorter. Empty when nothing was gathered.
    Part BestPart(double seconds) const;

private:
    using Chroma = std::array<float, 12>;
    void closeStretch();
    std::vector<double> repetition(int window) const;
    std::vector<double> windowLoudness(int window) const;

    int mRate = 0;
    int mChannels = 0;
    int mDecimation = 1;  // frames averaged into one analysed sample
    int64_t mFrames = 0;
    int64_t mSum = 0;     // of the frames being averaged
    int mSummed = 0;
    std::vector<float> mStretch;  // analysed samples of the stretch being filled
    std::vector<int> mPitchClass; // of each spectrum bin, -1 outside the range heard as pitch
    std::vector<float> mLoudness;
    std::vector<Chroma> mChroma;  // centred and of unit length, or all zero
};
