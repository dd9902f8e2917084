#pragma once
// The file information object: a sound file's tags, read with TagLib. The
// thirteen fields in the order of their getters (Field(1) .. Field(13)):
//   1 Title        text        8 Composer     text
//   2 Artist       text        9 Track        16-bit (number within the album)
//   3 Album        text       10 AlbumArtist  text
//   4 Genre        text       11 Publisher    text (the label)
//   5 Year         16-bit     12 Copyright    text
//   6 Comment      text       13 EncodedBy    text
//   7 Duration     32-bit, whole seconds, never below zero
// A field the file does not carry is empty text or 0.
#include <QString>
#include <QVariant>
#include <cstdint>

class AudioFileInfo {
public:
    // Throws CError "File not found" for a missing file. A file without
    // tags, or that TagLib does not know, opens with empty fields.
    void Open(const QString& path);

    QString Title() const { return mTitle; }
    QString Artist() const { return mArtist; }
    QString Album() const { return mAlbum; }
    QString Genre() const { return mGenre; }
    int16_t Year() const { return mYear; }
    QString Comment() const { return mComment; }
    int32_t Duration() const { return mDuration; }
    QString Composer() const { return mComposer; }
    int16_t Track() const { return mTrack; }
    QString AlbumArtist() const { return mAlbumArtist; }
    QString Publisher() const { return mPublisher; }
    QString Copyright() const { return mCopyright; }
    QString EncodedBy() const { return mEncodedBy; }

    // The getter at that place, 1 to 13: a QString, an int16_t or an int32_t.
    QVariant Field(int place) const;

private:
    QString mTitle, mArtist, mAlbum, mGenre, mComment, mComposer, mAlbumArtist, mPublisher, mCopyright, mEncodedBy;
    int16_t mYear = 0;
    int16_t mTrack = 0;
    int32_t mDuration = 0;
};

// The audio information object: the length of a sound file, from its header,
// or counted from its frames where the header claims more than the file can
// hold (PlausibleSeconds). Never below zero.
class AudioInfo {
public:
    // Throws CError for a missing file or one that holds no sound; the
    // length of the last file opened then stays.
    void Open(const QString& path);
    int32_t DurationMilliseconds() const { return mMilliseconds; }

private:
    int32_t mMilliseconds = 0;
};
