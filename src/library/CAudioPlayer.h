#pragma once
// Plays a sound file by streaming it in blocks of four seconds into the
// player; used for previews outside the editor. Feeding happens only in
// reply to the player's events, so the block size keeps it from running dry.
// A file that cannot be opened as sound shows frmInvalidFileFormat.
#include "platform/NCTAudioPlayer2.h"

#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>

class CAudioPlayer : public QObject {
    Q_OBJECT
public:
    explicit CAudioPlayer(QObject* parent = nullptr);
    ~CAudioPlayer() override;

    void LoadFile(const QString& FileName);
    void StartPlaying();
    void StopPlaying();
    bool IsPlaying() const { return mbPlaying; }

signals:
    void Timer(double SecondsElapsed);

private:
    void feed();
    void mobjAudioPlayer_Timer(int64_t CurrentSamples, int LevelLeft, int LevelRight);

    NCTAudioPlayer2* mobjAudioPlayer;
    std::unique_ptr<NCTAudioFileReader2> mobjAudioFile;
    QString mstrFile;
    bool mbPlaying = false;
    int32_t mlngBlockBytes = 0;
};
