#pragma once
// One track of a disc as the CD window lists it, and the tracks of a disc in
// the order they were read, each under its key "T" + SessionInd.
#include <QList>
#include <QString>
#include <cstdint>

struct CDTrack {
    QString duration;   // " 3:07": minutes with a blank kept for the sign
    QString TrackName;
    int16_t SessionInd = 0;  // session * 100 + track, both from 0
};

class CDTrackCollection {
public:
    void Add(const CDTrack& track, const QString& key);
    int Count() const { return static_cast<int>(mItems.size()); }
    // By key; null when there is none.
    const CDTrack* Item(const QString& key) const;
    void Clear();
    QList<CDTrack>::const_iterator begin() const { return mItems.begin(); }
    QList<CDTrack>::const_iterator end() const { return mItems.end(); }

private:
    QList<CDTrack> mItems;
    QList<QString> mKeys;
};

// The key a track stands under: "T0", "T7", "T101".
QString CDTrackKey(int16_t SessionInd);
// The minutes with their blank, ":" and two-digit seconds.
QString CDTrackDuration(int minutes, int seconds);
// Session and track of an identifier: the session is the identifier / 100
// rounded to the nearest, a tie to the even one, so 51 gives session 1, track -49.
struct CDTrackPlace {
    int16_t session;
    int16_t track;
};
CDTrackPlace SplitSessionInd(int16_t id);
