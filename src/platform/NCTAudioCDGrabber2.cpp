#include "platform/NCTAudioCDGrabber2.h"

#include "core/CError.h"
#include "platform/AudioEncoder.h"
#include "platform/CDSource.h"
#include "platform/FrameThread.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include <cddb/cddb.h>
#include <cdio/cdio.h>
#include <cdio/paranoia/cdda.h>
#include <cdio/paranoia/paranoia.h>

namespace {
const QString kSource = QStringLiteral("NCTAudioCDGrabber2");
constexpr int kFramesPerSector = CDIO_CD_FRAMESIZE_RAW / 4;  // 588 stereo 16-bit frames
constexpr int kParanoiaRetries = 20;
constexpr size_t kBatchSectors = 32;  // sectors handed to the encoder at once
constexpr int kPregap = CDIO_PREGAP_SECTORS;  // CDDB counts from the disc's start, 150 sectors before LSN 0

[[noreturn]] void fail(const QString& description)
{
    throw CError(ErrNo::PathFileAccess, description, kSource);
}

CdIo_t* openSource(const QString& path)
{
    if (path.isEmpty())
        fail(QStringLiteral("There is no CD drive"));
    CdIo_t* cdio = cdio_open(QFile::encodeName(path).constData(), DRIVER_UNKNOWN);
    if (!cdio)
        fail(QStringLiteral("The CD in %1 cannot be read").arg(path));
    return cdio;
}

// What a paranoia read gave up on; its callback has no context of its own,
// and each rip runs on its own thread.
thread_local bool tParanoiaSkipped = false;
void paranoiaCallback(long, paranoia_cb_mode_t mode)
{
    if (mode == PARANOIA_CB_SKIP)
        tParanoiaSkipped = true;
}

enum class RipEnd { Complete, Cancelled, Unreadable };

// Paranoia hands out its last good sector again where the source has nothing
// more (an image cut short, a disc taken out), so the track's last sector is
// read directly before the rip and after it.
bool lastSectorReads(CdIo_t* cdio, int32_t last)
{
    QByteArray sector(CDIO_CD_FRAMESIZE_RAW, Qt::Uninitialized);
    return cdio_read_audio_sectors(cdio, sector.data(), last, 1) == DRIVER_OP_SUCCESS;
}

// Reads sectors first..last with paranoia's checks into an MP3 at path.
// A cancel or a sector that stays unreadable ends early; what was read so far
// stays in the file.
RipEnd ripSectors(const QString& source, int32_t first, int32_t last, const QString& path,
                  const std::atomic_bool& cancel, const std::function<void(double)>& progress)
{
    CdIo_t* cdio = cdio_open(QFile::encodeName(source).constData(), DRIVER_UNKNOWN);
    if (!cdio)
        return RipEnd::Unreadable;
    cdrom_drive_t* drive = cdio_cddap_identify_cdio(cdio, CDDA_MESSAGE_FORGETIT, nullptr);
    if (!drive || cdio_cddap_open(drive) != 0) {
        if (drive)
            cdio_cddap_close_no_free_cdio(drive);
        cdio_destroy(cdio);
        return RipEnd::Unreadable;
    }
    cdrom_paranoia_t* paranoia = cdio_paranoia_init(drive);
    cdio_paranoia_modeset(paranoia, PARANOIA_MODE_FULL ^ PARANOIA_MODE_NEVERSKIP);
    cdio_paranoia_seek(paranoia, first, SEEK_SET);
    tParanoiaSkipped = false;

    RipEnd end = RipEnd::Unreadable;
    AudioEncoder encoder;
    try {
        encoder.Create(path, {.codec = wire::Codec::Mp3, .sampleRate = 44100, .bitRate = kRipBitRate, .channels = 2}, 44100, 2);
        const double total = last - first + 1;
        int shownPercent = -1;  // one event a percent: each one pumps the window
        bool readable = lastSectorReads(cdio, last);
        // The drive reads on while the encoder works on the sectors before.
        FrameThread encoding(2, [&encoder](const int16_t* frames, int count) { encoder.Write(frames, count); });
        std::vector<int16_t> batch;
        for (int32_t sector = first; readable && sector <= last && !cancel; ++sector) {
            const int16_t* frames = cdio_paranoia_read_limited(paranoia, paranoiaCallback, kParanoiaRetries);
            if (!frames || tParanoiaSkipped) {
                readable = false;
                break;
            }
            batch.insert(batch.end(), frames, frames + kFramesPerSector * 2);
            if (batch.size() >= kBatchSectors * kFramesPerSector * 2) {
                encoding.Write(std::move(batch));
                batch = encoding.Spare();
            }
            // 100 is kept for the finished file.
            const double done = std::min(99.99, (sector - first + 1) * 100.0 / total);
            const int percent = static_cast<int>(done);
            if (percent != shownPercent) {
                shownPercent = percent;
                progress(done);
            }
        }
        encoding.Write(std::move(batch));
        encoding.Drain();
        readable = readable && (cancel || lastSectorReads(cdio, last));
        encoder.Finish();  // a stopped rip keeps what it has, under its own name
        end = !readable ? RipEnd::Unreadable : cancel ? RipEnd::Cancelled : RipEnd::Complete;
    } catch (const CError&) {
        end = cancel ? RipEnd::Cancelled : RipEnd::Unreadable;
    }
    cdio_paranoia_free(paranoia);
    cdio_cddap_close_no_free_cdio(drive);
    cdio_destroy(cdio);
    return end;
}

}  // namespace

DiscToc ReadDiscToc(CdIo_t* cdio)
{
    DiscToc toc;
    const track_t first = cdio_get_first_track_num(cdio);
    const track_t count = cdio_get_num_tracks(cdio);
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK)
        return toc;
    for (track_t t = first; t < first + count; ++t)
        toc.tracks << DiscToc::Entry{t, cdio_get_track_lsn(cdio, t), cdio_get_track_format(cdio, t) == TRACK_FORMAT_AUDIO};
    toc.leadOut = cdio_get_track_lsn(cdio, CDIO_CDROM_LEADOUT_TRACK);
    lsn_t lastSession = 0;
    if (cdio_get_last_session(cdio, &lastSession) == DRIVER_OP_SUCCESS)
        toc.lastSessionStart = lastSession;
    return toc;
}

namespace {
struct LookupResult {
    int status = -2;
    QString artist;
    QString title;
    QStringList trackTitles;
};

void quietLog(cddb_log_level_t, const char*) {}

LookupResult lookUp(const FreeDBServer& server, const FreeDBQuerySettings& settings, const QList<int32_t>& firsts,
                    int32_t leadOut, const std::function<void(int)>& step)
{
    LookupResult result;
    cddb_log_set_handler(quietLog);
    cddb_conn_t* conn = cddb_new();
    cddb_disc_t* disc = cddb_disc_new();
    if (!conn || !disc) {
        cddb_destroy(conn);
        cddb_disc_destroy(disc);
        return result;
    }
    cddb_cache_disable(conn);
    cddb_set_server_name(conn, server.host.toUtf8().constData());
    cddb_set_server_port(conn, server.port > 0 ? server.port : settings.Port);
    cddb_http_enable(conn);  // port 80 is CDDB over HTTP
    cddb_set_http_path_query(conn, "/~cddb/cddb.cgi");
    // An abandoned lookup still ends soon after the deadline.
    cddb_set_timeout(conn, std::max(1, std::min(settings.TimeoutMs, kLookupDeadlineMs) / 1000));
    cddb_set_client(conn, settings.ClientName.toUtf8().constData(), settings.ClientVersion.toUtf8().constData());
    cddb_set_email_address(conn, (settings.UserName + QStringLiteral("@localhost")).toUtf8().constData());

    for (int32_t first : firsts) {
        cddb_track_t* track = cddb_track_new();
        cddb_track_set_frame_offset(track, first + kPregap);
        cddb_disc_add_track(disc, track);
    }
    cddb_disc_set_length(disc, (leadOut + kPregap) / CDIO_CD_FRAMES_PER_SEC);
    cddb_disc_calc_discid(disc);

    step(1);
    const int matches = cddb_query(conn, disc);
    if (matches == 0) {
        result.status = -1;
    } else if (matches > 0) {
        step(2);
        if (cddb_read(conn, disc) == 1) {
            result.status = 3;
            result.artist = QString::fromUtf8(cddb_disc_get_artist(disc));
            result.title = QString::fromUtf8(cddb_disc_get_title(disc));
            for (int i = 0; i < firsts.size(); ++i) {
                cddb_track_t* track = cddb_disc_get_track(disc, i);
                result.trackTitles << (track ? QString::fromUtf8(cddb_track_get_title(track)) : QString());
            }
        }
    }
    cddb_disc_destroy(disc);
    cddb_destroy(conn);
    return result;
}
}  // namespace

DiscTocReader& discTocReader()
{
    static DiscTocReader reader = ReadDiscToc;
    return reader;
}

FreeDBServer& freeDBServer()
{
    static FreeDBServer server;
    return server;
}

NCTAudioCDGrabber2::NCTAudioCDGrabber2(QObject* parent) : QObject(parent) {}

NCTAudioCDGrabber2::~NCTAudioCDGrabber2() { Close(); }

void NCTAudioCDGrabber2::joinWorkers()
{
    if (mCancel)
        *mCancel = true;
    if (mRip.joinable())
        mRip.join();
    // A lookup is never waited for: it may hang on the host name, so it is
    // left to end on its own, and whatever it finds later is dropped.
    ++mLookupId;
    mLookupOpen = false;
}

void NCTAudioCDGrabber2::Open()
{
    Close();
    mSource = CDSourcePath();
    mCdio = openSource(mSource);
    ReadContents();  // a drive reads the table of contents as it opens
}

void NCTAudioCDGrabber2::Close()
{
    joinWorkers();
    if (mCdio)
        cdio_destroy(mCdio);
    mCdio = nullptr;
    mReadAt = -1;
}

void NCTAudioCDGrabber2::ReadContents()
{
    mTracks.clear();
    mTrackTitles.clear();
    mArtist.clear();
    mTitle.clear();
    mSessions = 0;
    mSession = 0;
    mTrackIndex = -1;
    if (!mCdio)
        fail(QStringLiteral("The CD drive is not open"));
    const DiscToc toc = discTocReader()(mCdio);
    if (toc.tracks.isEmpty())
        fail(QStringLiteral("There is no disc in the drive"));
    const auto sessionOf = [&toc](int32_t sector) {
        return toc.lastSessionStart > 0 && sector >= toc.lastSessionStart ? 1 : 0;
    };
    for (int i = 0; i < toc.tracks.size(); ++i) {
        const DiscToc::Entry& entry = toc.tracks[i];
        Track track;
        track.number = entry.number;
        track.first = entry.first;
        track.audio = entry.audio;
        track.session = sessionOf(entry.first);
        // A track ends where the next begins; the last of a session ends at
        // that session's lead-out, well before the next session starts.
        int32_t end = i + 1 < toc.tracks.size() ? toc.tracks[i + 1].first : toc.leadOut;
        if (i + 1 < toc.tracks.size() && sessionOf(end) != track.session)
            end -= kSessionGap;
        track.last = end - 1;
        mTracks << track;
    }
    mLeadOut = toc.leadOut;
    mSessions = mTracks.last().session + 1;
    mTrackTitles = QStringList(QList<QString>(mTracks.size()));
}

QList<const NCTAudioCDGrabber2::Track*> NCTAudioCDGrabber2::sessionTracks(int session) const
{
    QList<const Track*> tracks;
    for (const Track& t : mTracks) {
        if (t.session == session)
            tracks << &t;
    }
    return tracks;
}

int16_t NCTAudioCDGrabber2::SessionCount() const { return static_cast<int16_t>(mSessions); }

void NCTAudioCDGrabber2::SelectSession(int16_t index)
{
    if (index < 0 || index >= mSessions)
        fail(QStringLiteral("There is no session %1 on the disc").arg(index));
    mSession = index;
    mTrackIndex = -1;
}

int16_t NCTAudioCDGrabber2::TrackCount() const { return static_cast<int16_t>(sessionTracks(mSession).size()); }

void NCTAudioCDGrabber2::SelectTrack(int16_t index)
{
    if (index < 0 || index >= sessionTracks(mSession).size())
        fail(QStringLiteral("There is no track %1 in session %2").arg(index).arg(mSession));
    mTrackIndex = index;
}

const NCTAudioCDGrabber2::Track& NCTAudioCDGrabber2::selected() const
{
    const QList<const Track*> tracks = sessionTracks(mSession);
    if (mTrackIndex < 0 || mTrackIndex >= tracks.size())
        fail(QStringLiteral("No track is selected"));
    return *tracks[mTrackIndex];
}

int16_t NCTAudioCDGrabber2::TrackMinutes() const
{
    const Track& t = selected();
    return static_cast<int16_t>((t.last - t.first + 1) / CDIO_CD_FRAMES_PER_SEC / 60);
}

int16_t NCTAudioCDGrabber2::TrackSeconds() const
{
    const Track& t = selected();
    return static_cast<int16_t>((t.last - t.first + 1) / CDIO_CD_FRAMES_PER_SEC % 60);
}

QString NCTAudioCDGrabber2::TrackTitle() const
{
    const int i = static_cast<int>(&selected() - mTracks.constData());
    return mTrackTitles.value(i);
}

const NCTAudioCDGrabber2::Track& NCTAudioCDGrabber2::selectedAudio() const
{
    const Track& track = selected();
    if (!track.audio)
        fail(QStringLiteral("Track %1 holds data, not sound").arg(track.number));
    return track;
}

void NCTAudioCDGrabber2::StartAudioRead()
{
    mReadAt = selectedAudio().first;
}

void NCTAudioCDGrabber2::StopAudioRead() { mReadAt = -1; }

QByteArray NCTAudioCDGrabber2::ReadAudioBlocks(int blocks)
{
    if (!mCdio || mReadAt < 0)
        fail(QStringLiteral("The audio read has not been started"));
    const int32_t last = selected().last;
    const int count = std::min<int32_t>(blocks, last - mReadAt + 1);
    if (count <= 0)
        return {};
    QByteArray audio(count * CDIO_CD_FRAMESIZE_RAW, Qt::Uninitialized);
    if (cdio_read_audio_sectors(mCdio, audio.data(), mReadAt, count) != DRIVER_OP_SUCCESS)
        fail(QStringLiteral("The CD could not be read at sector %1").arg(mReadAt));
    mReadAt += count;
    return audio;
}

void NCTAudioCDGrabber2::RipToFile(const QString& path)
{
    const Track& track = selectedAudio();
    CancelOperation();
    mCancel = std::make_shared<std::atomic_bool>(false);
    auto post = [this](double progress) {
        QMetaObject::invokeMethod(this, [this, progress] { emit OperationProgress(progress); }, Qt::QueuedConnection);
    };
    auto failed = [this, number = track.number] {
        QMetaObject::invokeMethod(
            this, [this, number] { emit OperationFailed(QStringLiteral("Track %1 could not be read from the CD").arg(number)); },
            Qt::QueuedConnection);
    };
    mRip = std::thread([source = mSource, first = track.first, last = track.last, path, cancel = mCancel, post, failed] {
        const RipEnd end = ripSectors(source, first, last, path, *cancel, post);
        if (end == RipEnd::Complete)
            post(100.0);
        else if (end == RipEnd::Unreadable)
            failed();
    });
}

void NCTAudioCDGrabber2::CancelOperation()
{
    if (mCancel)
        *mCancel = true;
    if (mRip.joinable())
        mRip.join();
}

void NCTAudioCDGrabber2::endLookup(int status)
{
    mLookupOpen = false;
    emit FreeDBQueryStatus(status);
}

void NCTAudioCDGrabber2::QueryFreeDB(const FreeDBQuerySettings& settings, int)
{
    const int id = ++mLookupId;
    mLookupOpen = true;
    // No disc, nothing to ask: the lookup ends as a failed one, so that a
    // caller waiting for its end is never left waiting.
    if (mTracks.isEmpty()) {
        QMetaObject::invokeMethod(this, [this, id] { if (id == mLookupId && mLookupOpen) endLookup(-2); }, Qt::QueuedConnection);
        return;
    }
    QTimer::singleShot(kLookupDeadlineMs, this, [this, id] {
        if (id == mLookupId && mLookupOpen)
            endLookup(-2);
    });
    // The worker may outlive this grabber; what it finds is delivered only
    // to the lookup that is still open.
    auto deliver = [guard = QPointer<NCTAudioCDGrabber2>(this), id](std::function<void(NCTAudioCDGrabber2&)> work) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, id, work = std::move(work)] {
                if (guard && guard->mLookupId == id && guard->mLookupOpen)
                    work(*guard);
            },
            Qt::QueuedConnection);
    };
    QList<int32_t> firsts;
    for (const Track& t : mTracks)
        firsts << t.first;
    std::thread([server = freeDBServer(), settings, firsts, leadOut = mLeadOut, deliver] {
        const LookupResult result = lookUp(server, settings, firsts, leadOut, [&deliver](int status) {
            deliver([status](NCTAudioCDGrabber2& grabber) { emit grabber.FreeDBQueryStatus(status); });
        });
        deliver([result](NCTAudioCDGrabber2& grabber) {
            if (result.status == 3) {
                grabber.mArtist = result.artist;
                grabber.mTitle = result.title;
                grabber.mTrackTitles = result.trackTitles;
            }
            grabber.endLookup(result.status);
        });
    }).detach();
}
