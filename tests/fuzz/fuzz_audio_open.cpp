// The editor's open path on a file's bytes: decoder, peak summary, then the
// cut that saving makes from the middle of what opened, as the send pipeline
// asks for it (an MP3 of at most a second).
#include "FuzzKit.h"
#include "core/CError.h"
#include "platform/AudioEditor2.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static AudioEditor2 editor;
    const QString path = SoundFile(data, size);
    try {
        editor.OpenFile(path);
    } catch (const CError&) {
        return 0;
    }
    const int32_t total = editor.TotalSamples();
    editor.SetSelectionStart(total / 2);
    editor.SetSelectionEnd(static_cast<int32_t>(std::min<int64_t>(total, int64_t(total / 2) + editor.SampleRate())));
    try {
        editor.SaveToFile(ScratchFolder() + QStringLiteral("/cut.mp3"), true, AudioEditor2::FormatMp3);
    } catch (const CError&) {
    }
    return 0;
}
