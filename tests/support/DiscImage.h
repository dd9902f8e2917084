#pragma once
// An audio CD as libcdio reads one: a BIN of 44.1 kHz stereo 16-bit sectors
// and its CUE sheet. Each track is a pair of tones of its own, so a rip can
// be told from its neighbours; the samples are kept for comparison, and the
// disc id a CDDB server files it under is worked out from the table of contents.
#include <QList>
#include <QString>
#include <cstdint>
#include <vector>

class DiscImage {
public:
    // Audio tracks of the given seconds (each rounded up to whole sectors),
    // after a data track of dataSectors when that is not 0.
    DiscImage(const QString& folder, const QList<double>& seconds, int dataSectors = 0);
    // A disc with one data track and no audio.
    static QString MakeDataDisc(const QString& folder);

    QString cue() const { return mCue; }
    // Tracks on the disc, the data track too.
    int trackCount() const { return static_cast<int>(mSectors.size()) + (mDataSectors ? 1 : 0); }
    // Of the audio track, counted from 0.
    int sectors(int track) const { return mSectors[track]; }
    // The track's sound mixed to one channel.
    std::vector<int16_t> mono(int track) const;
    QString discId() const;
    // The CDDB query's offsets of each track, 150 sectors before the first.
    QList<int> offsets() const;
    int discSeconds() const;

private:
    QString mCue;
    QList<int> mSectors;
    int mDataSectors = 0;
};

// The largest normalised correlation of b against a, for shifts of b up to maxLag samples.
double BestCorrelation(const std::vector<int16_t>& a, const std::vector<int16_t>& b, int maxLag);
