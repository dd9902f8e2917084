#include "platform/SoundScan.h"

#include "platform/AudioDecoder.h"
#include "platform/PeakSummary.h"
#include "platform/SongFeatures.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

namespace {
constexpr int kChunkFrames = 16384;
constexpr int kMatchFrames = 4096;  // compared where the halves meet
// Shorter sounds are read in one piece: a second decoder would not pay.
constexpr double kShortestSplitSeconds = 60;

// Reads up to frames from source into peaks and features (when given), in
// chunks, calling after with each; returns the frames read.
int64_t readInto(AudioDecoder& source, int64_t frames, PeakSummary& peaks, SongFeatures& features,
                 const std::function<bool()>& after)
{
    std::vector<int16_t> chunk(static_cast<size_t>(kChunkFrames) * source.Channels());
    int64_t done = 0;
    while (done < frames) {
        const int got = source.Read(chunk.data(), static_cast<int>(std::min<int64_t>(kChunkFrames, frames - done)));
        if (got == 0)
            break;
        peaks.Add(chunk.data(), got);
        features.Add(chunk.data(), got);
        done += got;
        if (!after())
            break;
    }
    return done;
}

// The next frames, as many as asked for unless the sound ends first.
std::vector<int16_t> readFrames(AudioDecoder& source, int frames)
{
    const int channels = source.Channels();
    std::vector<int16_t> out(static_cast<size_t>(frames) * channels);
    int got = 0;
    while (got < frames) {
        const int n = source.Read(out.data() + static_cast<size_t>(got) * channels, frames - got);
        if (n == 0)
            break;
        got += n;
    }
    out.resize(static_cast<size_t>(got) * channels);
    return out;
}

// The second half, read on a thread of its own.
class SecondHalf {
public:
    SecondHalf(const QString& path, int64_t from, int64_t frames, int rate, int channels)
    {
        mPeaks.Reset(channels);
        mPeaks.Reserve(frames);
        mFeatures.Reset(rate, channels);
        mThread = std::jthread([this, path, from](std::stop_token stop) { run(path, from, stop); });
    }

    // Waits up to a moment for the half to be read; true when it is.
    bool Wait()
    {
        std::unique_lock hold(mLock);
        return mEnded.wait_for(hold, std::chrono::milliseconds(100), [this] { return mDone; });
    }
    int Percent() const { return mPercent; }
    // Read and usable: it began with exactly these frames.
    bool Matches(const std::vector<int16_t>& expected) const { return !mFailed && mFirst == expected; }
    PeakSummary& Peaks() { return mPeaks; }
    SongFeatures& Features() { return mFeatures; }

private:
    void run(const QString& path, int64_t from, const std::stop_token& stop)
    {
        try {
            AudioDecoder source;
            source.Open(path);
            // The decoder learns where the file's time starts from its first
            // frame; a seek before any read would count from the place sought.
            int16_t first[2];
            source.Read(first, 1);
            source.Seek(from);
            mFirst = readFrames(source, kMatchFrames);
            const int got = static_cast<int>(mFirst.size()) / source.Channels();
            mPeaks.Add(mFirst.data(), got);
            mFeatures.Add(mFirst.data(), got);
            const int start = source.ProgressPercent();
            readInto(source, INT64_MAX, mPeaks, mFeatures, [&] {
                mPercent = source.ProgressPercent() - start;
                return !stop.stop_requested();
            });
        } catch (...) {
            mFailed = true;
        }
        const std::lock_guard hold(mLock);
        mDone = true;
        mEnded.notify_all();
    }

    PeakSummary mPeaks;
    SongFeatures mFeatures;
    std::vector<int16_t> mFirst;
    std::atomic<int> mPercent = 0;
    bool mFailed = false;
    std::mutex mLock;
    std::condition_variable mEnded;
    bool mDone = false;
    std::jthread mThread;  // last: stops and joins first
};
}  // namespace

bool ScanSound(AudioDecoder& source, const QString& path, PeakSummary& peaks, SongFeatures& features,
               const ScanStep& step)
{
    const int channels = source.Channels();
    // The halves meet where the summary and the features both have whole blocks.
    const int64_t whole = std::lcm(PeakSummary::WholeBlockFrames(), features.FramesPerStretch());
    const auto told = static_cast<int64_t>(source.DurationSeconds() * source.SampleRate());
    const int64_t middle = told / 2 / whole * whole;
    std::unique_ptr<SecondHalf> second;
    if (source.DurationSeconds() >= kShortestSplitSeconds && middle > 0)
        second = std::make_unique<SecondHalf>(path, middle, (told - middle) * 51 / 50, source.SampleRate(), channels);
    int shown = 0;  // never back, when the halves do not meet and the second is dropped
    const auto progress = [&] {
        shown = std::max(shown, std::min(99, source.ProgressPercent() + (second ? second->Percent() : 0)));
        step(shown);
        return true;
    };
    const int64_t read = readInto(source, second ? middle : INT64_MAX, peaks, features, progress);
    if (second && read == middle) {
        const std::vector<int16_t> meet = readFrames(source, kMatchFrames);
        const int got = static_cast<int>(meet.size()) / channels;
        while (!second->Wait())
            progress();
        if (second->Matches(meet)) {
            peaks.Append(std::move(second->Peaks()));
            features.Append(second->Features());
            return true;
        }
        // The halves do not meet: the first decoder reads on, from where it stands.
        peaks.Add(meet.data(), got);
        features.Add(meet.data(), got);
        second.reset();
        if (got < kMatchFrames)
            return false;
    }
    second.reset();  // the sound ended before the middle its header told
    readInto(source, INT64_MAX, peaks, features, progress);
    return false;
}
