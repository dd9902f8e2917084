#include "platform/PeakSummary.h"

#include <algorithm>
#include <cstddef>

namespace {
int64_t blockFrames(int level)
{
    int64_t frames = PeakSummary::kBlock;
    for (int i = 0; i < level; ++i)
        frames *= PeakSummary::kFactor;
    return frames;
}

void merge(PeakSummary::Span& into, const PeakSummary::Span& from)
{
    into.low = std::min(into.low, from.low);
    into.high = std::max(into.high, from.high);
}

constexpr PeakSummary::Span kEmpty{INT16_MAX, INT16_MIN};
}  // namespace

void PeakSummary::Reset(int channels)
{
    mChannels = channels;
    mFrames = 0;
    mJoined = false;
    for (int l = 0; l < kLevels; ++l) {
        mLevels[l].clear();
        mAppended[l].clear();
        mOpen[l].assign(channels, kEmpty);
        mOpenCount[l] = 0;
    }
}

void PeakSummary::Reserve(int64_t frames)
{
    for (int l = 0; l < kLevels; ++l)
        mLevels[l].reserve(static_cast<size_t>(frames / blockFrames(l) + 2) * mChannels);
}

void PeakSummary::Add(const int16_t* frames, int count)
{
    while (count > 0) {
        const int take = static_cast<int>(std::min<int64_t>(count, kBlock - mOpenCount[0]));
        for (int c = 0; c < mChannels; ++c) {
            int16_t low = mOpen[0][c].low, high = mOpen[0][c].high;
            const int16_t* p = frames + c;
            for (int i = 0; i < take; ++i, p += mChannels) {
                low = std::min(low, *p);
                high = std::max(high, *p);
            }
            mOpen[0][c] = {low, high};
        }
        frames += static_cast<std::ptrdiff_t>(take) * mChannels;
        count -= take;
        mFrames += take;
        mOpenCount[0] += take;
        if (mOpenCount[0] == kBlock)
            closeBlock(0);
    }
}

void PeakSummary::closeBlock(int level)
{
    for (int c = 0; c < mChannels; ++c) {
        filling(level).push_back(mOpen[level][c]);
        if (level + 1 < kLevels)
            merge(mOpen[level + 1][c], mOpen[level][c]);
        mOpen[level][c] = kEmpty;
    }
    mOpenCount[level] = 0;
    if (level + 1 < kLevels && ++mOpenCount[level + 1] == kFactor)
        closeBlock(level + 1);
}

void PeakSummary::Finish()
{
    for (int l = 0; l < kLevels; ++l) {
        if (mOpenCount[l] > 0)
            closeBlock(l);
    }
}

int64_t PeakSummary::WholeBlockFrames() { return blockFrames(kLevels - 1); }

void PeakSummary::Append(PeakSummary&& later)
{
    mAppended = std::move(later.mLevels);
    mJoined = true;
    mOpen = std::move(later.mOpen);
    mOpenCount = later.mOpenCount;
    mFrames += later.mFrames;
}

PeakSummary::Span PeakSummary::Range(int channel, int64_t from, int64_t to) const
{
    if (channel < 0 || channel >= mChannels || to <= from)
        return {};
    int level = 0;
    while (level + 1 < kLevels && blockFrames(level + 1) <= to - from)
        ++level;
    const int64_t size = blockFrames(level);
    const std::vector<Span>& before = mLevels[level];
    const std::vector<Span>& after = mAppended[level];
    const auto inBefore = static_cast<int64_t>(before.size());
    const int64_t blocks = (inBefore + static_cast<int64_t>(after.size())) / mChannels;
    const int64_t first = std::max<int64_t>(0, from / size);
    const int64_t last = std::min(blocks, (to + size - 1) / size);
    Span out = kEmpty;
    for (int64_t b = first; b < last; ++b) {
        const int64_t at = b * mChannels + channel;
        merge(out, at < inBefore ? before[at] : after[at - inBefore]);
    }
    return first < last ? out : Span{};
}
