#include "platform/AudioFileInfo.h"

#include "core/CError.h"
#include "platform/AudioDecoder.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <vector>

#include <taglib/fileref.h>
#include <taglib/tag.h>
#include <taglib/tpropertymap.h>

namespace {
QString text(const TagLib::String& s) { return QString::fromStdString(s.to8Bit(true)).trimmed(); }

QString property(const TagLib::PropertyMap& map, const char* key)
{
    const auto it = map.find(key);
    return it == map.end() || it->second.isEmpty() ? QString() : text(it->second.front());
}

int16_t small(unsigned value) { return static_cast<int16_t>(std::min<unsigned>(value, INT16_MAX)); }
}  // namespace

void AudioFileInfo::Open(const QString& path)
{
    *this = AudioFileInfo{};
    if (!QFileInfo(path).isFile())
        throw CError(ErrNo::FileNotFound, QStringLiteral("File not found"), QStringLiteral("AudioFileInfo"));
    const QByteArray local = QFile::encodeName(path);
    const TagLib::FileRef ref(local.constData());
    if (ref.isNull())
        return;
    if (const TagLib::Tag* tag = ref.tag()) {
        mTitle = text(tag->title());
        mArtist = text(tag->artist());
        mAlbum = text(tag->album());
        mGenre = text(tag->genre());
        mComment = text(tag->comment());
        mYear = small(tag->year());
        mTrack = small(tag->track());
    }
    const TagLib::PropertyMap map = ref.file()->properties();
    if (mComment.isEmpty())
        mComment = property(map, "COMMENT");  // FFmpeg-made tags keep it in a user text frame
    mComposer = property(map, "COMPOSER");
    mAlbumArtist = property(map, "ALBUMARTIST");
    mPublisher = property(map, "LABEL");
    mCopyright = property(map, "COPYRIGHT");
    mEncodedBy = property(map, "ENCODEDBY");
    if (const TagLib::AudioProperties* audio = ref.audioProperties())
        mDuration = audio->lengthInSeconds();
    // The tag library believes the header; a length it cannot tell, one below
    // zero or one longer than the file can hold is taken from the sound instead.
    if (mDuration <= 0 || mDuration > PlausibleSeconds(QFileInfo(path).size())) {
        AudioInfo sound;
        try {
            sound.Open(path);
        } catch (const CError&) {
        }
        mDuration = sound.DurationMilliseconds() / 1000;
    }
}

QVariant AudioFileInfo::Field(int place) const
{
    switch (place) {
    case 1: return mTitle;
    case 2: return mArtist;
    case 3: return mAlbum;
    case 4: return mGenre;
    case 5: return QVariant::fromValue(mYear);
    case 6: return mComment;
    case 7: return QVariant::fromValue(mDuration);
    case 8: return mComposer;
    case 9: return QVariant::fromValue(mTrack);
    case 10: return mAlbumArtist;
    case 11: return mPublisher;
    case 12: return mCopyright;
    case 13: return mEncodedBy;
    default: return {};
    }
}

void AudioInfo::Open(const QString& path)
{
    AudioDecoder decoder;
    decoder.Open(path);
    double seconds = decoder.DurationSeconds();
    // A header that claims all the file can hold, or more, may lie: count the frames.
    if (seconds >= PlausibleSeconds(QFileInfo(path).size())) {
        std::vector<int16_t> chunk(size_t{16384} * decoder.Channels());
        int64_t frames = 0;
        while (const int got = decoder.Read(chunk.data(), 16384))
            frames += got;
        seconds = static_cast<double>(frames) / decoder.SampleRate();
    }
    mMilliseconds = static_cast<int32_t>(std::clamp<double>(std::nearbyint(seconds * 1000.0), 0, INT32_MAX));
}
