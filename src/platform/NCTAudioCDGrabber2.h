#pragma once
// The CD grabber over libcdio: the table of contents by sessions and tracks,
// the disc's names over the CDDB protocol (libcddb), audio blocks for
// listening, and the rip of one track to MP3 through paranoia and LAME.
// The rip and the name lookup run on threads of their own; their events
// reach the interface thread through the event loop, in order.
// Operations that fail throw CError; callers that go on regardless wrap
// each in ResumeNext.
#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

typedef struct _CdIo CdIo_t;

// A disc's table of contents as the drive reports it.
struct DiscToc {
    struct Entry {
        int number = 0;  // on the disc, from 1
        int32_t first = 0;  // sectors
        bool audio = true;
    };
    QList<Entry> tracks;
    int32_t leadOut = 0;  // of the whole disc
    int32_t lastSessionStart = 0;  // first sector of the last session; 0 when the disc has one
};
// Where the grabber reads the table of contents: libcdio unless a test hands
// a disc of its own (an image cannot say where its sessions start).
using DiscTocReader = std::function<DiscToc(CdIo_t*)>;
DiscTocReader& discTocReader();
DiscToc ReadDiscToc(CdIo_t* cdio);

// On a multisession disc the next session starts this many sectors after the
// lead-out of the one before: lead-out, lead-in and pregap.
inline constexpr int32_t kSessionGap = 11400;

// The whole name lookup, host name included, ends within this time.
inline constexpr int kLookupDeadlineMs = 10000;

struct FreeDBQuerySettings {
    int ProxyMode = 0;
    int Port = 80;
    QString UserName;
    QString ClientName;
    QString ClientVersion;
    int TimeoutMs = 30000;
};

// The CDDB server the lookup asks. The default is a public mirror that still
// answers; tests aim it at a server of their own on loopback.
inline constexpr char kDefaultFreeDBServer[] = "gnudb.gnudb.org";
struct FreeDBServer {
    QString host = QString::fromLatin1(kDefaultFreeDBServer);
    int port = 0;  // 0: the port of the query settings
};
FreeDBServer& freeDBServer();

// The rip's MP3: a source worth keeping, not a phone tone.
inline constexpr int kRipBitRate = 192000;

class NCTAudioCDGrabber2 : public QObject {
    Q_OBJECT
public:
    explicit NCTAudioCDGrabber2(QObject* parent = nullptr);
    ~NCTAudioCDGrabber2() override;

    void Open();
    void Close();
    void ReadContents();
    void RipToFile(const QString& path);
    void CancelOperation();
    int16_t SessionCount() const;
    void SelectSession(int16_t index);
    int16_t TrackCount() const;
    void SelectTrack(int16_t index);
    int16_t TrackMinutes() const;
    int16_t TrackSeconds() const;
    QString DiscArtist() const { return mArtist; }
    QString DiscTitle() const { return mTitle; }
    QString TrackTitle() const;
    // Whether the selected track holds sound; a data track is numbered but not played.
    bool TrackIsAudio() const { return selected().audio; }
    // Read options of the interface; reading here is the same for every use.
    void GrabOptionA(int value) { mOptions[0] = value; }
    void GrabOptionB(int value) { mOptions[1] = value; }
    void GrabOptionC(int value) { mOptions[2] = value; }
    void StartAudioRead();
    void StopAudioRead();
    // Up to blocks sectors of the selected track as 44.1 kHz stereo 16-bit
    // frames; empty at the track's end.
    QByteArray ReadAudioBlocks(int blocks);
    void QueryFreeDB(const FreeDBQuerySettings& settings, int flags = 0);

signals:
    // 1 asking, 2 reading the entry; then one of 3 found, -1 unknown, -2 failed.
    void FreeDBQueryStatus(int32_t status);
    // 0 to 100; exactly 100 only once the file is complete.
    void OperationProgress(double progress);
    // The rip stopped at a sector that could not be read (a scratch, the disc
    // taken out); no 100 follows.
    void OperationFailed(const QString& description);

private:
    struct Track {
        int number = 0;  // on the disc, from 1
        int32_t first = 0;  // sectors
        int32_t last = 0;
        int session = 0;
        bool audio = true;
    };
    const Track& selected() const;
    const Track& selectedAudio() const;
    QList<const Track*> sessionTracks(int session) const;
    void joinWorkers();
    void endLookup(int status);

    QString mSource;
    CdIo_t* mCdio = nullptr;
    QList<Track> mTracks;  // every track of the disc, data tracks too
    int32_t mLeadOut = 0;
    int mSessions = 0;
    int mSession = 0;
    int mTrackIndex = -1;
    int mOptions[3] = {0, 0, 0};
    int32_t mReadAt = -1;  // next sector handed out for listening; -1 none
    QString mArtist;
    QString mTitle;
    QStringList mTrackTitles;  // by disc track number - 1
    std::thread mRip;
    std::shared_ptr<std::atomic_bool> mCancel;
    int mLookupId = 0;  // a late answer of an abandoned lookup is dropped
    bool mLookupOpen = false;
};
