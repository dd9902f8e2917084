#pragma once
// The bridge to the audio CD, made once for the run (gobjCDManager): it reads
// the disc's table of contents and names into CDTrack records and plays a
// track so the user can find the part they want. The rip has a grabber of its
// own (frmRipping). ConvertAudio, which has nothing to do with the CD, turns a
// sound file into a tone file in the form the user's phone takes.
#include "cd/CDTrack.h"

#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>

class NCTAudioCDGrabber2;
class NCTAudioPlayer2;

class CDManager : public QObject {
    Q_OBJECT
public:
    CDManager();
    ~CDManager() override;

    // Reads the disc and asks for its names; returns when the lookup is over.
    // A missing disc or a failed lookup gives no message, just fewer facts.
    void LoadTracks();
    const CDTrackCollection& Tracks() const { return mcolTracks; }
    QString CDTitle() const { return mstrCDTitle; }
    QString CDArtist() const { return mstrCDArtist; }
    void PlaySelectedTrack(int16_t TrackIDToRip);
    void StopPlaying();
    void CleanUp();
    void CancelRip() { mbCancelRip = true; }
    QString LastRippedTrackFilename() const { return mstrLastRippedTrack; }
    bool Playing() const { return mbPlaying; }

    // PreferredFormat: 1 AMR narrowband, 2 AMR wideband, 5 MP3, 6 wave;
    // every other value makes nothing. Failures show one message box
    // "ConvertAudio: " + description and leave no target file behind.
    void ConvertAudio(QString& SourceFile, QString& TargetFilename, int32_t& PreferredFormat);

signals:
    // The playing position, "03m 07s".
    void CDTrackTimer(const QString& ElapsedTime);

private:
    void makePlayer();
    void feed();
    void stopSequence();
    void mobjAudioPlayer_EndPlay();
    void mobjAudioPlayer_Timer(int64_t CurrentSamples, int LevelLeft, int LevelRight);
    void mobjAudioCDGrabber2_FreeDBQueryStatus(int32_t status) { mlngQueryStatus = status; }

    bool mbPlaying = false;
    bool mbRipBusy = false;  // nothing sets it: the rip has its own window and grabber
    bool mbReading = false;  // the grabber hands out audio; feeds after a stop find nothing to read
    int32_t mlngQueryStatus = 0;
    QString mstrLastRippedTrack;  // nothing assigns it: the path travels by the windows' tags
    CDTrackCollection mcolTracks;
    QString mstrCDTitle;
    QString mstrCDArtist;
    QString mstrLastError;
    int16_t mintBlocksPerRead = 0;
    bool mbCancelRip = false;
    std::unique_ptr<NCTAudioCDGrabber2> mobjAudioCDGrabber2;
    std::unique_ptr<NCTAudioPlayer2> mobjAudioPlayer;
};

// The one CDManager of the run; null until TheCDManager first makes it (tests
// delete and clear it between cases).
extern CDManager* gobjCDManager;
// gobjCDManager, made on first use.
CDManager* TheCDManager();
// The wait between steps that lets the drive settle: a pause, then pending events.
void PauseAndPump(int milliseconds);
