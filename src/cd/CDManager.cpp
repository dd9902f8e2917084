#include "cd/CDManager.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/SettingSwitch.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "platform/AudioConversion.h"
#include "platform/NCTAudioCDGrabber2.h"
#include "platform/NCTAudioPlayer2.h"
#include "wire/ToneFormats.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>

namespace {
constexpr double kFadeSeconds = 1.0;
constexpr double kNoFadeUpTo = 5.0;
const QString kDefaultBoost = QStringLiteral("3");
constexpr int kBitsPerSample = 16;  // every tone's, wave and AMR alike
constexpr int16_t kBlocksPerRead = 26;  // a third of a second: a feed never stalls the window

void convertToAmr(const QString& source, const QString& target, const wire::EncoderTarget& tone, bool fadeIn,
                  bool fadeOut)
{
    AudioFileConverter converter;
    converter.Open(source);
    AmrEncoderSettings settings;
    ConversionJob& job = converter.Job();
    job.TargetFile(target);
    const float duration = converter.DurationSeconds();
    if (duration > kNoFadeUpTo && (fadeIn || fadeOut)) {
        job.FadesEnabled(true);
        if (fadeIn)
            job.FadeInSeconds(kFadeSeconds);
        if (fadeOut)
            job.FadeOutSeconds(kFadeSeconds);
    }
    QString boost = GetAppSetting(QStringLiteral("VolumeBoost"), kSettings).trimmed();
    bool numeric = false;
    boost.toDouble(&numeric);
    if (!numeric)
        boost = kDefaultBoost;
    job.VolumeBoost(boost.toDouble());
    settings.BitRate = tone.bitRate;
    settings.Channels = tone.channels;
    settings.EncoderParameterA = 2;
    settings.BitsPerSample = kBitsPerSample;
    settings.EncoderParameterB = 64000;
    job.Run(settings);
}

// Copies the samples through; no fades, no boost.
void copySamples(const QString& sourcePath, const QString& targetPath, const wire::EncoderTarget& tone)
{
    AudioFileStream source;
    AudioFileStream target;
    source.Open(sourcePath, 0, 1);
    if (tone.codec == wire::Codec::Wave)
        target.SetWaveOutput(tone.sampleRate, tone.channels, kBitsPerSample);
    else
        target.SetMp3Output(tone.sampleRate, tone.bitRate / 1000, tone.channels);
    target.Create(targetPath, 0);
    target.SetInputFormat(source.SampleRate(), source.Channels());
    target.WriteAllOf(source);
    target.Close();
    source.Close();
}
}  // namespace

void CDManager::ConvertAudio(QString& SourceFile, QString& TargetFilename, int32_t& PreferredFormat)
{
    const bool fadeIn = GetAppSwitch(QStringLiteral("FadeIn"));
    const bool fadeOut = GetAppSwitch(QStringLiteral("FadeOut"));
    const wire::ToneFormat* format = wire::ToneFormatNumbered(PreferredFormat);
    const wire::EncoderTarget tone = format ? format->target : wire::EncoderTarget{.codec = wire::Codec::None};
    try {
        switch (tone.codec) {
        case wire::Codec::AmrNarrowband:
        case wire::Codec::AmrWideband:
            convertToAmr(SourceFile, TargetFilename, tone, fadeIn, fadeOut);
            break;
        case wire::Codec::Mp3:
        case wire::Codec::Wave:
            copySamples(SourceFile, TargetFilename, tone);
            break;
        case wire::Codec::None:
            return;  // QCELP, AAC and unknown numbers make nothing here
        }
    } catch (const CError& e) {
        MsgBox(QStringLiteral("ConvertAudio: ") + e.Description());
    }
}

void PauseAndPump(int milliseconds)
{
    QThread::msleep(static_cast<unsigned long>(milliseconds));
    QCoreApplication::processEvents();
}

CDManager::CDManager()
{
    makePlayer();
    PauseAndPump(100);
}

CDManager::~CDManager() { CleanUp(); }

void CDManager::makePlayer()
{
    mobjAudioPlayer = std::make_unique<NCTAudioPlayer2>(this);
    mobjAudioPlayer->SetFormat(44100, 2);
    connect(mobjAudioPlayer.get(), &NCTAudioPlayer2::RequestOnLoadArray, this, &CDManager::feed);
    connect(mobjAudioPlayer.get(), &NCTAudioPlayer2::EndArrayPlay, this, &CDManager::feed);
    connect(mobjAudioPlayer.get(), &NCTAudioPlayer2::EndPlay, this, &CDManager::mobjAudioPlayer_EndPlay);
    connect(mobjAudioPlayer.get(), &NCTAudioPlayer2::Timer, this, &CDManager::mobjAudioPlayer_Timer);
}

void CDManager::LoadTracks()
{
    FreeDBQuerySettings settings;
    try {
        mcolTracks.Clear();
        settings.ProxyMode = 0;
        settings.Port = 80;
        settings.UserName = CreateUniqueName();
        settings.ClientName = QStringLiteral("NCTAudioCDGrabber");
        settings.ClientVersion = QStringLiteral("2.6");
        settings.TimeoutMs = 30000;
        mobjAudioCDGrabber2 = std::make_unique<NCTAudioCDGrabber2>();
        connect(mobjAudioCDGrabber2.get(), &NCTAudioCDGrabber2::FreeDBQueryStatus, this,
                &CDManager::mobjAudioCDGrabber2_FreeDBQueryStatus);
    } catch (const CError& e) {
        MsgBox(QStringLiteral("Ripping error: ") + e.Description());
        return;
    }
    // From here a failing call is skipped: a drive without a readable disc
    // gives an empty list rather than a message.
    NCTAudioCDGrabber2& grabber = *mobjAudioCDGrabber2;
    ErrObject err;
    ResumeNext(err, [&] { grabber.Open(); });
    grabber.GrabOptionA(1);
    grabber.GrabOptionC(1);
    PauseAndPump(100);
    mlngQueryStatus = 0;
    ResumeNext(err, [&] { grabber.ReadContents(); });
    ResumeNext(err, [&] { grabber.QueryFreeDB(settings, 0); });
    // The grabber ends the lookup by its deadline; the window stays alive meanwhile.
    while (mlngQueryStatus != -1 && mlngQueryStatus != -2 && mlngQueryStatus != 3)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    mstrCDArtist = grabber.DiscArtist();
    mstrCDTitle = grabber.DiscTitle();
    const int16_t sessions = grabber.SessionCount();
    for (int16_t s = 0; s < sessions; ++s) {
        ResumeNext(err, [&] { grabber.SelectSession(s); });
        const int16_t tracks = grabber.TrackCount();
        for (int16_t t = 0; t < tracks; ++t) {
            ResumeNext(err, [&] { grabber.SelectTrack(t); });
            ResumeNext(err, [&] {
                CDTrack track;
                grabber.SelectTrack(t);
                if (!grabber.TrackIsAudio())
                    return;  // keeps its number: the rows count as the disc does
                track.SessionInd = static_cast<int16_t>(s * 100 + t);
                track.TrackName = grabber.TrackTitle();
                track.duration = CDTrackDuration(grabber.TrackMinutes(), grabber.TrackSeconds());
                mcolTracks.Add(track, CDTrackKey(track.SessionInd));
            });
        }
    }
    mintBlocksPerRead = kBlocksPerRead;
}

void CDManager::PlaySelectedTrack(int16_t TrackIDToRip)
{
    if (mbRipBusy || mbPlaying)
        return;
    try {
        if (!mobjAudioCDGrabber2)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("The CD has not been read"), QStringLiteral("CDManager"));
        const CDTrackPlace place = SplitSessionInd(TrackIDToRip);
        NCTAudioCDGrabber2& grabber = *mobjAudioCDGrabber2;
        grabber.SelectSession(place.session);
        grabber.SelectTrack(place.track);
        grabber.GrabOptionA(0);
        grabber.GrabOptionB(0);
        grabber.GrabOptionC(0);
        grabber.StartAudioRead();
        mbReading = true;
        if (!mobjAudioPlayer)
            makePlayer();
        mobjAudioPlayer->StartArrayPlay();
        mbPlaying = true;
        feed();  // the first block; the player asks for the rest
    } catch (const CError& e) {
        MsgBox(QStringLiteral("Error occured while playing a track: ") + e.Description());
    }
}

void CDManager::feed()
{
    if (!mbReading || !mobjAudioCDGrabber2 || !mobjAudioPlayer)
        return;
    try {
        mobjAudioPlayer->LoadArray(mobjAudioCDGrabber2->ReadAudioBlocks(mintBlocksPerRead));
    } catch (const CError& e) {
        mstrLastError = e.Description();
        stopSequence();
        MsgBox(QStringLiteral("Error during playing the track! ") + e.Description());
    }
}

// The player's Stop, then the end of the audio read; tried again for as long as it fails.
void CDManager::stopSequence()
{
    for (;;) {
        try {
            if (mobjAudioPlayer)
                mobjAudioPlayer->Stop();
            mbReading = false;
            if (mobjAudioCDGrabber2)
                mobjAudioCDGrabber2->StopAudioRead();
            return;
        } catch (const CError& e) {
            mstrLastError = e.Description();
            MsgBox(QStringLiteral("Error during stop playing the track! ") + e.Description());
        }
    }
}

// mbPlaying stays set: a track that ran to its end counts as playing until StopPlaying.
void CDManager::mobjAudioPlayer_EndPlay() { stopSequence(); }

void CDManager::StopPlaying()
{
    ErrObject err;
    if (mobjAudioPlayer)
        mobjAudioPlayer->Stop();
    mbReading = false;
    if (mobjAudioCDGrabber2)
        ResumeNext(err, [&] { mobjAudioCDGrabber2->StopAudioRead(); });
    mbPlaying = false;
}

void CDManager::mobjAudioPlayer_Timer(int64_t CurrentSamples, int, int)
{
    const float seconds = static_cast<float>(mobjAudioPlayer->SamplesToMilliseconds(CurrentSamples)) / 1000.0f;
    const int32_t n = RoundToEven(seconds);
    emit CDTrackTimer(QStringLiteral("%1m %2s").arg(n / 60, 2, 10, QLatin1Char('0')).arg(n % 60, 2, 10, QLatin1Char('0')));
}

void CDManager::CleanUp()
{
    ErrObject err;
    mbReading = false;
    if (mobjAudioCDGrabber2)
        ResumeNext(err, [&] { mobjAudioCDGrabber2->Close(); });
    PauseAndPump(100);
    mobjAudioPlayer.reset();
    mobjAudioCDGrabber2.reset();
}

CDManager* gobjCDManager = nullptr;

CDManager* TheCDManager()
{
    if (!gobjCDManager)
        gobjCDManager = new CDManager;
    return gobjCDManager;
}
