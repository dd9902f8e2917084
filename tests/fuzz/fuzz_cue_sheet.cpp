// A disc image's CUE sheet as the CD grabber reads it: the table of
// contents, each track's length, and its first blocks of sound.
#include "FuzzKit.h"
#include "core/CError.h"
#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    MakeDiscBin();
    SetCDImage(ScratchFile(data, size, QStringLiteral("disc.cue")));
    NCTAudioCDGrabber2 grabber;
    try {
        grabber.Open();
    } catch (const CError&) {
        return 0;
    }
    for (int16_t session = 0; session < grabber.SessionCount(); ++session) {
        try {
            grabber.SelectSession(session);
            for (int16_t track = 0; track < grabber.TrackCount(); ++track) {
                grabber.SelectTrack(track);
                grabber.TrackMinutes();
                grabber.TrackSeconds();
                grabber.StartAudioRead();
                grabber.ReadAudioBlocks(4);
            }
        } catch (const CError&) {
        }
    }
    return 0;
}
