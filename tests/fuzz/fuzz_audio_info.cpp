// The tag and length readers that My Music and the song report use.
#include "FuzzKit.h"
#include "core/CError.h"
#include "platform/AudioFileInfo.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString path = SoundFile(data, size);
    AudioFileInfo tags;
    tags.Open(path);
    AudioInfo length;
    try {
        length.Open(path);
    } catch (const CError&) {
    }
    // A length is shown to the user: whatever the header says, never below zero.
    if (tags.Duration() < 0 || length.DurationMilliseconds() < 0)
        std::abort();
    return 0;
}
