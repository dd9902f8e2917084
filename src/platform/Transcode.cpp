#include "platform/Transcode.h"

#include "platform/AudioDecoder.h"
#include "platform/AudioEncoder.h"
#include "platform/SampleShaper.h"

#include <algorithm>
#include <vector>

namespace {
constexpr int kChunkFrames = 16384;
}

int64_t Transcode(AudioDecoder& source, AudioEncoder& target, const TranscodeSteps& steps)
{
    const int channels = source.Channels();
    std::vector<int16_t> chunk(static_cast<size_t>(kChunkFrames) * channels);
    int64_t done = 0;
    for (;;) {
        const int64_t left = steps.frames < 0 ? kChunkFrames : steps.frames - done;
        const int got = left > 0 ? source.Read(chunk.data(), static_cast<int>(std::min<int64_t>(kChunkFrames, left))) : 0;
        if (got == 0)
            break;
        if (steps.shaper) {
            const std::vector<int16_t> ready = steps.shaper->Push(chunk.data(), got);
            target.Write(ready.data(), static_cast<int>(ready.size() / channels));
        } else {
            target.Write(chunk.data(), got);
        }
        done += got;
        if (steps.progress)
            steps.progress(done);
    }
    if (steps.shaper) {
        const std::vector<int16_t> tail = steps.shaper->Flush();
        target.Write(tail.data(), static_cast<int>(tail.size() / channels));
    }
    return done;
}
