#pragma once
// Records the default input into a wave file with the recorder and the
// writer, wired the way the program wires them. Header only: the shared test
// library does not link the audio components, the tests that use this do.
#include "platform/NCTAudioRecord2.h"

#include <QString>
#include <algorithm>
#include <vector>

class TakeRecorder {
public:
    explicit TakeRecorder(const QString& path)
    {
        writer.CreateFile(path, 0);
        recorder.SetFormat(writer.SampleRate(), writer.Channels());
        writer.SetBlockSize(recorder.BytesForMilliseconds(1000));
        QObject::connect(&recorder, &NCTAudioRecord2::EndArrayRecord,
                         [this] { writer.WriteArray(recorder.GetArray()); });
        recorder.StartArrayRecord();
    }
    void Stop()
    {
        recorder.Stop();
        writer.CloseFile();
    }
    NCTAudioFileWriter2 writer;  // outlives the recorder, which may hand out a last block
    NCTAudioRecord2 recorder;
};

// Zero crossings per second of a mono recording between two times: about
// twice the frequency of a clean tone.
inline double CrossingsPerSecond(const std::vector<int16_t>& samples, int rate, double from, double to)
{
    const auto a = static_cast<size_t>(from * rate);
    const auto b = std::min(samples.size(), static_cast<size_t>(to * rate));
    int crossings = 0;
    for (size_t i = a + 1; i < b; ++i)
        crossings += (samples[i - 1] < 0) != (samples[i] < 0);
    return b > a ? crossings / (double(b - a) / rate) : 0;
}

// The pitch of a tone between two times, from the median time between rising
// zero crossings: a buffer the sound server delivered late leaves a gap that
// stretches one period, not the median.
inline double MedianPitch(const std::vector<int16_t>& samples, int rate, double from, double to)
{
    const auto a = static_cast<size_t>(std::max(0.0, from) * rate);
    const auto b = std::min(samples.size(), static_cast<size_t>(to * rate));
    std::vector<double> periods;
    double previous = -1;
    for (size_t i = a + 1; i < b; ++i) {
        if (samples[i - 1] >= 0 || samples[i] < 0)
            continue;
        // Where the line between the two samples crosses zero.
        const double at = double(i - 1) + double(-samples[i - 1]) / double(samples[i] - samples[i - 1]);
        if (previous >= 0)
            periods.push_back(at - previous);
        previous = at;
    }
    if (periods.empty())
        return 0;
    std::nth_element(periods.begin(), periods.begin() + periods.size() / 2, periods.end());
    return rate / periods[periods.size() / 2];
}
