#include "platform/Transcode.h"

#include "platform/AudioDecoder.h"
#include "platform/AudioEncoder.h"
#include "platform/FrameThread.h"
#include "platform/SampleShaper.h"

#include <algorithm>
#include <vector>

namespace {
constexpr int kChunkFrames = 16384;
}

int64_t Transcode(AudioDecoder& source, AudioEncoder& target, const TranscodeSteps& steps)
{
    const int channels = source.Channels();
    // This thread decodes and shapes while the encoder works on what came before.
    FrameThread encoding(channels, [&target](const int16_t* frames, int count) { target.Write(frames, count); });
    int64_t done = 0;
    for (;;) {
        const int64_t left = steps.frames < 0 ? kChunkFrames : steps.frames - done;
        if (left <= 0)
            break;
        std::vector<int16_t> chunk = encoding.Spare();
        chunk.resize(static_cast<size_t>(kChunkFrames) * channels);
        const int got = source.Read(chunk.data(), static_cast<int>(std::min<int64_t>(kChunkFrames, left)));
        if (got == 0)
            break;
        chunk.resize(static_cast<size_t>(got) * channels);
        encoding.Write(steps.shaper ? steps.shaper->Push(chunk.data(), got) : std::move(chunk));
        done += got;
        if (steps.progress)
            steps.progress(done);
    }
    if (steps.shaper)
        encoding.Write(steps.shaper->Flush());
    encoding.Drain();
    return done;
}
