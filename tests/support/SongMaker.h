#pragma once
// Songs with a known form, for the best-part finder: sections of a verse
// (one chord progression, every time the same), a chorus (another one, each
// time the same) and free playing (chords drawn at random, a new one every
// second, never coming back), each at its own level. Encoded by FFmpeg.
#include <QList>
#include <QString>

struct SongSection {
    enum Kind { Verse, Chorus, Free } kind;
    double seconds;
    double level;  // of full scale
};

// Mono 22.05 kHz; the encoding follows the path's extension. Empty on failure.
QString MakeSong(const QString& path, const QList<SongSection>& sections);

// The usual form: quiet verses that repeat, a louder chorus that comes back
// three times, the first at 40 s, in a song of 3 minutes.
QList<SongSection> PopSongForm(double firstChorusAt = 40);
