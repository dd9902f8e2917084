#pragma once
// Minimum and maximum of every channel over blocks of 64 frames, and again
// over blocks 16, 256 and 4096 times as long, so that a drawing of any zoom
// touches a few thousand values at most and never the samples. An hour of
// stereo at 44.1 kHz takes about 21 MB.
#include <array>
#include <cstdint>
#include <vector>

class PeakSummary {
public:
    static constexpr int64_t kBlock = 64;
    static constexpr int64_t kFactor = 16;
    static constexpr int kLevels = 4;

    struct Span {
        int16_t low = 0;
        int16_t high = 0;
    };

    void Reset(int channels);
    // Room for about this many frames, so that the summary does not grow by doubling.
    void Reserve(int64_t frames);
    void Add(const int16_t* frames, int count);
    void Finish();  // closes the last partial blocks
    // The frames of the coarsest block: a summary of a multiple of them has
    // no partial block, and one that follows it can be appended.
    static int64_t WholeBlockFrames();
    // Takes over, without a copy, a summary of the frames that come right
    // after this one's, which holds a multiple of WholeBlockFrames. Once.
    void Append(PeakSummary&& later);

    int Channels() const { return mChannels; }
    int64_t Frames() const { return mFrames; }
    // Extremes of one channel over frames [from, to), to the nearest block
    // of a level fine enough for a step of (to - from) frames.
    Span Range(int channel, int64_t from, int64_t to) const;

private:
    void closeBlock(int level);
    std::vector<Span>& filling(int level) { return mJoined ? mAppended[level] : mLevels[level]; }

    int mChannels = 0;
    int64_t mFrames = 0;
    std::array<std::vector<Span>, kLevels> mLevels;  // blocks, channel-interleaved
    std::array<std::vector<Span>, kLevels> mAppended;  // the blocks of an appended summary, after those
    bool mJoined = false;
    std::array<std::vector<Span>, kLevels> mOpen;    // the block being filled, per channel
    std::array<int64_t, kLevels> mOpenCount{};       // frames (level 0) or blocks in it
};
