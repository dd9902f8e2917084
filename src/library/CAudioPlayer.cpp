#include "library/CAudioPlayer.h"

#include "core/CError.h"
#include "skin/frmMessage.h"

#include <cmath>

namespace {
constexpr int kBlockMilliseconds = 4000;
}

CAudioPlayer::CAudioPlayer(QObject* parent)
    : QObject(parent), mobjAudioPlayer(new NCTAudioPlayer2(this)), mobjAudioFile(std::make_unique<NCTAudioFileReader2>())
{
    connect(mobjAudioPlayer, &NCTAudioPlayer2::RequestOnLoadArray, this, &CAudioPlayer::feed);
    connect(mobjAudioPlayer, &NCTAudioPlayer2::EndArrayPlay, this, &CAudioPlayer::feed);
    connect(mobjAudioPlayer, &NCTAudioPlayer2::Timer, this, &CAudioPlayer::mobjAudioPlayer_Timer);
}

CAudioPlayer::~CAudioPlayer() { StopPlaying(); }

void CAudioPlayer::LoadFile(const QString& FileName) { mstrFile = FileName; }

void CAudioPlayer::StartPlaying()
{
    try {
        if (mbPlaying)
            StopPlaying();
        mobjAudioFile->OpenFile(mstrFile, 0, 1);
        if (mobjAudioFile->Status() < 0 || mobjAudioFile->HasAudio() == 0)
            return;
        mobjAudioPlayer->SetFormat(mobjAudioFile->SampleRate(), mobjAudioFile->Channels());
        mlngBlockBytes = mobjAudioPlayer->BytesForMilliseconds(kBlockMilliseconds);
        mobjAudioPlayer->StartArrayPlay();
        if (mobjAudioPlayer->Status() < 0) {
            mobjAudioFile->CloseFile();
            return;
        }
        mbPlaying = true;
        feed();
    } catch (const CError&) {
        ShowMessageWindow(QStringLiteral("frmInvalidFileFormat"));
    }
}

void CAudioPlayer::feed()
{
    if (!mbPlaying)
        return;
    QByteArray block;
    try {
        block = mobjAudioFile->ReadBlock(mlngBlockBytes);
    } catch (const CError&) {
        return;  // a file that cannot be read on simply runs dry, like its end
    }
    if (block.size() > 1)
        mobjAudioPlayer->LoadArray(block);
}

void CAudioPlayer::StopPlaying()
{
    mobjAudioPlayer->Stop();
    mobjAudioFile->CloseFile();
    mbPlaying = false;
}

void CAudioPlayer::mobjAudioPlayer_Timer(int64_t CurrentSamples, int, int)
{
    const auto thousands = static_cast<int64_t>(std::nearbyint(CurrentSamples / 1000.0));
    emit Timer(static_cast<double>(mobjAudioPlayer->SamplesToMilliseconds(thousands)));
}
