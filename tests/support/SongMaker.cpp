#include "support/SongMaker.h"

#include "support/SoundFiles.h"

#include <QFile>
#include <QRandomGenerator>
#include <cmath>
#include <numbers>
#include <vector>

namespace {
constexpr int kRate = 22050;

struct Chord {
    int root;  // semitones above A 220 Hz
    bool minor;
};

// A chord with two overtones on each note, at the level given.
void addChord(std::vector<float>& out, Chord chord, double seconds, double level)
{
    const int third = chord.minor ? 3 : 4;
    const size_t start = out.size();
    const auto frames = static_cast<size_t>(seconds * kRate);
    out.resize(start + frames);
    for (const int step : {0, third, 7}) {
        const double hz = 220.0 * std::pow(2.0, (chord.root + step) / 12.0);
        for (size_t i = 0; i < frames; ++i) {
            const double t = static_cast<double>(i) / kRate;
            double v = 0;
            for (int h = 1; h <= 3; ++h)
                v += std::sin(2 * std::numbers::pi * hz * h * t) / h;
            out[start + i] += static_cast<float>(v * level / 3.0 / 1.9);
        }
    }
}
}  // namespace

QString MakeSong(const QString& path, const QList<SongSection>& sections)
{
    const std::vector<Chord> verse = {{0, true}, {8, false}, {3, false}, {10, false}};  // Am F C G
    const std::vector<Chord> chorus = {{5, false}, {7, false}, {4, true}, {2, true}};  // D E C#m Bm
    QRandomGenerator random(27);
    std::vector<float> song;
    for (const SongSection& section : sections) {
        const double chordSeconds = section.kind == SongSection::Verse ? 4 : section.kind == SongSection::Chorus ? 2 : 1;
        const auto count = static_cast<int>(std::lround(section.seconds / chordSeconds));
        for (int i = 0; i < count; ++i) {
            Chord chord{random.bounded(12), random.bounded(2) == 1};
            if (section.kind == SongSection::Verse)
                chord = verse[i % verse.size()];
            else if (section.kind == SongSection::Chorus)
                chord = chorus[i % chorus.size()];
            addChord(song, chord, chordSeconds, section.level);
        }
    }
    std::vector<int16_t> pcm(song.size());
    for (size_t i = 0; i < song.size(); ++i)
        pcm[i] = static_cast<int16_t>(std::lround(std::clamp(song[i], -1.0f, 1.0f) * 32767));
    const QString raw = path + ".pcm";
    QFile file(raw);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(reinterpret_cast<const char*>(pcm.data()), static_cast<qint64>(pcm.size() * sizeof(int16_t)));
    file.close();
    const bool ok = RunTool("ffmpeg", {"-v", "error", "-y", "-f", "s16le", "-ar", QString::number(kRate), "-ac", "1",
                                       "-i", raw, path});
    QFile::remove(raw);
    return ok ? path : QString();
}

QList<SongSection> PopSongForm(double firstChorusAt)
{
    const double intro = firstChorusAt - 16;
    return {{SongSection::Free, intro, 0.2},   {SongSection::Verse, 16, 0.3},  {SongSection::Chorus, 16, 0.7},
            {SongSection::Verse, 16, 0.3},     {SongSection::Chorus, 16, 0.7}, {SongSection::Free, 20, 0.35},
            {SongSection::Chorus, 16, 0.7},    {SongSection::Free, 96 - firstChorusAt, 0.2}};
}
