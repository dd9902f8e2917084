#include "platform/SongFeatures.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>

namespace {
constexpr int kStretch = 2048;          // analysed samples of one stretch: a power of two for the FFT
constexpr int kHalf = kStretch / 2;
constexpr double kAnalysedRate = 5512.5; // enough for the pitches that make a chord
constexpr double kLowestPitch = 65;      // Hz: C2
constexpr double kHighestPitch = 2000;
// How long a section is compared with the rest of the song, in seconds: a
// chorus lasts about that long, whatever the length of the tone.
constexpr double kShortestSection = 4;
constexpr double kLongestSection = 12;
// Below this mean similarity nothing counts as repeated.
constexpr double kRepeated = 0.5;

using Complex = std::complex<float>;

// e^(-2 pi i k / kStretch) for k below kHalf.
const std::vector<Complex>& twiddles()
{
    static const std::vector<Complex> table = [] {
        std::vector<Complex> t(kHalf);
        for (int k = 0; k < kHalf; ++k)
            t[k] = std::polar(1.0f, static_cast<float>(-2 * std::numbers::pi * k / kStretch));
        return t;
    }();
    return table;
}

// In place, radix 2, for kHalf points.
void fft(std::vector<Complex>& a)
{
    const std::vector<Complex>& twiddle = twiddles();
    const int n = kHalf;
    for (int i = 1, j = 0; i < n; ++i) {
        int bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(a[i], a[j]);
    }
    for (int len = 2; len <= n; len <<= 1) {
        const int step = 2 * n / len;  // the table is for twice as many points
        for (int i = 0; i < n; i += len) {
            for (int k = 0; k < len / 2; ++k) {
                const Complex u = a[i + k];
                const Complex v = a[i + k + len / 2] * twiddle[k * step];
                a[i + k] = u + v;
                a[i + k + len / 2] = u - v;
            }
        }
    }
}

// Magnitudes of bins 0 to kHalf - 1 of kStretch real samples, from one
// complex transform of half the length: even samples real, odd imaginary.
std::vector<float> magnitudes(const std::vector<float>& samples)
{
    std::vector<Complex> z(kHalf);
    for (int i = 0; i < kHalf; ++i)
        z[i] = Complex(samples[2 * i], samples[2 * i + 1]);
    fft(z);
    const std::vector<Complex>& twiddle = twiddles();
    std::vector<float> out(kHalf);
    for (int k = 0; k < kHalf; ++k) {
        const Complex a = z[k], b = std::conj(z[(kHalf - k) % kHalf]);
        const Complex even = (a + b) * 0.5f, odd = (a - b) * Complex(0, -0.5f);
        out[k] = std::abs(even + twiddle[k] * odd);
    }
    return out;
}

const std::vector<float>& hann()
{
    static const std::vector<float> window = [] {
        std::vector<float> w(kStretch);
        for (int i = 0; i < kStretch; ++i)
            w[i] = static_cast<float>(0.5 - 0.5 * std::cos(2 * std::numbers::pi * i / (kStretch - 1)));
        return w;
    }();
    return window;
}
}  // namespace

void SongFeatures::Reset(int sampleRate, int channels)
{
    *this = SongFeatures();
    mRate = sampleRate;
    mChannels = std::max(channels, 1);
    mDecimation = std::max(1, static_cast<int>(std::lround(sampleRate / kAnalysedRate)));
    const double analysed = static_cast<double>(sampleRate) / mDecimation;
    mPitchClass.assign(kHalf, -1);
    for (int bin = 1; bin < kHalf; ++bin) {
        const double hz = bin * analysed / kStretch;
        if (hz >= kLowestPitch && hz <= kHighestPitch)
            mPitchClass[bin] = ((static_cast<int>(std::lround(12 * std::log2(hz / 440.0))) + 69) % 12 + 12) % 12;
    }
    mStretch.reserve(kStretch);
}

void SongFeatures::Add(const int16_t* frames, int count)
{
    if (mRate <= 0)
        return;
    // One channel, averaged down to the analysed rate: the average is also
    // the low-pass that keeps higher sound from folding into the pitches.
    // The frames of one analysed sample lie side by side: one run of values.
    const int16_t* sample = frames;
    for (int f = 0; f < count;) {
        const int take = std::min(count - f, mDecimation - mSummed);
        const int values = take * mChannels;
        int32_t sum = 0;
        for (int i = 0; i < values; ++i)
            sum += sample[i];
        sample += values;
        f += take;
        mSum += sum;
        mSummed += take;
        if (mSummed == mDecimation) {
            mStretch.push_back(static_cast<float>(mSum / (mSummed * mChannels * 32768.0)));
            mSum = 0;
            mSummed = 0;
            if (static_cast<int>(mStretch.size()) == kStretch)
                closeStretch();
        }
    }
    mFrames += count;
}

int64_t SongFeatures::FramesPerStretch() const { return int64_t{kStretch} * mDecimation; }

void SongFeatures::Append(const SongFeatures& later)
{
    mLoudness.insert(mLoudness.end(), later.mLoudness.begin(), later.mLoudness.end());
    mChroma.insert(mChroma.end(), later.mChroma.begin(), later.mChroma.end());
    mFrames += later.mFrames;
}

void SongFeatures::Finish()
{
    mStretch.clear();
    mSum = 0;
    mSummed = 0;
}

void SongFeatures::closeStretch()
{
    const std::vector<float>& window = hann();
    double power = 0;
    for (int i = 0; i < kStretch; ++i) {
        power += double(mStretch[i]) * mStretch[i];
        mStretch[i] *= window[i];
    }
    mLoudness.push_back(static_cast<float>(std::sqrt(power / kStretch)));
    const std::vector<float> spectrum = magnitudes(mStretch);
    mStretch.clear();
    Chroma chroma{};
    for (int bin = 1; bin < kHalf; ++bin) {
        if (mPitchClass[bin] >= 0)
            chroma[mPitchClass[bin]] += spectrum[bin];
    }
    // Compressed, centred and of unit length: what counts is which pitch
    // classes stand out, not how loud they are, and a flat spectrum (noise,
    // silence) is like nothing else.
    for (float& v : chroma)
        v = std::log1p(v);
    const float mean = std::accumulate(chroma.begin(), chroma.end(), 0.0f) / 12;
    float norm = 0;
    for (float& v : chroma) {
        v -= mean;
        norm += v * v;
    }
    norm = std::sqrt(norm);
    for (float& v : chroma)
        v = norm > 1e-3f ? v / norm : 0;
    mChroma.push_back(chroma);
}

double SongFeatures::SecondsPerStretch() const
{
    return mRate > 0 ? static_cast<double>(kStretch) * mDecimation / mRate : 0;
}

// For each start, how well the section of that many stretches matches the
// best other place in the song that does not overlap it: the mean chroma
// similarity along the diagonal of the self-similarity between the two.
std::vector<double> SongFeatures::repetition(int window) const
{
    const int n = Stretches();
    std::vector<double> best(n, -1);
    std::vector<double> sums(n + 1);
    for (int lag = window; lag + window <= n; ++lag) {
        sums[0] = 0;
        for (int i = 0; i + lag < n; ++i) {
            const Chroma& a = mChroma[i];
            const Chroma& b = mChroma[i + lag];
            sums[i + 1] = sums[i] + std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
        }
        for (int s = 0; s + lag + window <= n; ++s) {
            const double mean = (sums[s + window] - sums[s]) / window;
            best[s] = std::max(best[s], mean);
            best[s + lag] = std::max(best[s + lag], mean);
        }
    }
    return best;
}

// Mean loudness of each section of that many stretches.
std::vector<double> SongFeatures::windowLoudness(int window) const
{
    const int n = Stretches();
    std::vector<double> sums(n + 1);
    for (int i = 0; i < n; ++i)
        sums[i + 1] = sums[i] + mLoudness[i];
    std::vector<double> mean(std::max(0, n - window + 1));
    for (size_t s = 0; s < mean.size(); ++s)
        mean[s] = (sums[s + window] - sums[s]) / window;
    return mean;
}

SongFeatures::Part SongFeatures::BestPart(double seconds) const
{
    const int n = Stretches();
    const double stretch = SecondsPerStretch();
    const int64_t length = std::max<int64_t>(1, std::llround(seconds * mRate));
    if (mFrames == 0)
        return {};
    if (n == 0 || length >= mFrames)
        return {0, std::min(length, mFrames)};

    const double section = std::clamp(seconds, kShortestSection, kLongestSection);
    const int window = std::clamp(static_cast<int>(std::lround(section / stretch)), 1, n);
    const std::vector<double> repeated = repetition(window);
    const std::vector<double> loud = windowLoudness(window);
    const double loudest = *std::max_element(loud.begin(), loud.end());
    // Repeated and loud; the earliest of the near-best, since a chorus comes
    // back and its first time is what a listener knows it by.
    std::vector<double> score(loud.size());
    for (size_t s = 0; s < loud.size(); ++s)
        score[s] = repeated[s] >= kRepeated && loudest > 0 ? repeated[s] * loud[s] / loudest : 0;
    const double top = *std::max_element(score.begin(), score.end());
    int pick = 0;
    if (top > 0) {
        pick = static_cast<int>(std::find_if(score.begin(), score.end(), [top](double v) { return v >= 0.95 * top; }) -
                                score.begin());
    } else {
        // Nothing comes back: the loudest section of the tone's own length.
        const int whole = std::clamp(static_cast<int>(std::lround(seconds / stretch)), 1, n);
        const std::vector<double> wholeLoud = windowLoudness(whole);
        pick = static_cast<int>(std::max_element(wholeLoud.begin(), wholeLoud.end()) - wholeLoud.begin());
    }
    // The tone keeps its length: near the song's end it starts earlier.
    const int64_t start = std::clamp<int64_t>(std::llround(pick * stretch * mRate), 0, mFrames - length);
    return {start, start + length};
}
