#include "support/DiscImage.h"

#include "support/Files.h"

#include <QDir>
#include <cmath>

namespace {
constexpr int kRate = 44100;
constexpr int kFramesPerSector = 588;
constexpr int kSectorsPerSecond = 75;

double sample(int track, int64_t frame)
{
    const double t = double(frame) / kRate;
    const double low = 330.0 + 110.0 * track;
    const double high = 1250.0 + 370.0 * track;
    return 9000 * std::sin(2 * M_PI * low * t) + 5000 * std::sin(2 * M_PI * high * t);
}

QString msf(int sectors)
{
    return QStringLiteral("%1:%2:%3")
        .arg(sectors / (60 * kSectorsPerSecond), 2, 10, QLatin1Char('0'))
        .arg(sectors / kSectorsPerSecond % 60, 2, 10, QLatin1Char('0'))
        .arg(sectors % kSectorsPerSecond, 2, 10, QLatin1Char('0'));
}
}  // namespace

DiscImage::DiscImage(const QString& folder, const QList<double>& seconds, int dataSectors) : mDataSectors(dataSectors)
{
    QByteArray bin(dataSectors * kFramesPerSector * 4, '\0');
    QString cue = QStringLiteral("FILE \"disc.bin\" BINARY\n");
    if (dataSectors)
        cue += QStringLiteral("  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n");
    int at = dataSectors;
    for (int track = 0; track < seconds.size(); ++track) {
        const int sectors = static_cast<int>(std::ceil(seconds[track] * kSectorsPerSecond));
        mSectors << sectors;
        const int number = track + 1 + (dataSectors ? 1 : 0);
        cue += QStringLiteral("  TRACK %1 AUDIO\n    INDEX 01 %2\n").arg(number, 2, 10, QLatin1Char('0')).arg(msf(at));
        const int64_t frames = int64_t(sectors) * kFramesPerSector;
        QByteArray audio(frames * 4, Qt::Uninitialized);
        auto* out = reinterpret_cast<int16_t*>(audio.data());
        for (int64_t f = 0; f < frames; ++f) {
            // Left and right differ by a little, as real stereo does.
            out[2 * f] = static_cast<int16_t>(sample(track, f));
            out[2 * f + 1] = static_cast<int16_t>(sample(track, f) * 0.9);
        }
        bin += audio;
        at += sectors;
    }
    WriteFile(folder + "/disc.bin", bin);
    mCue = folder + "/disc.cue";
    WriteFile(mCue, cue.toUtf8());
}

QString DiscImage::MakeDataDisc(const QString& folder)
{
    WriteFile(folder + "/data.bin", QByteArray(300 * 2352, '\0'));
    WriteFile(folder + "/data.cue", "FILE \"data.bin\" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n");
    return folder + "/data.cue";
}

std::vector<int16_t> DiscImage::mono(int track) const
{
    std::vector<int16_t> out(size_t(mSectors[track]) * kFramesPerSector);
    for (size_t f = 0; f < out.size(); ++f) {
        const double s = sample(track, int64_t(f));
        out[f] = static_cast<int16_t>((int16_t(s) + int16_t(s * 0.9)) / 2);
    }
    return out;
}

QList<int> DiscImage::offsets() const
{
    QList<int> list;
    int at = 150;
    if (mDataSectors) {
        list << at;
        at += mDataSectors;
    }
    for (int s : mSectors) {
        list << at;
        at += s;
    }
    return list;
}

int DiscImage::discSeconds() const
{
    int total = 150 + mDataSectors;
    for (int s : mSectors)
        total += s;
    return total / kSectorsPerSecond;
}

// The CDDB disc id: digit sums of the tracks' start seconds, the disc's
// length in seconds and the number of tracks.
QString DiscImage::discId() const
{
    int sum = 0;
    for (int offset : offsets()) {
        for (int n = offset / kSectorsPerSecond; n > 0; n /= 10)
            sum += n % 10;
    }
    const int length = discSeconds() - offsets().first() / kSectorsPerSecond;
    const uint32_t id = (uint32_t(sum % 0xff) << 24) | (uint32_t(length) << 8) | uint32_t(trackCount());
    return QStringLiteral("%1").arg(id, 8, 16, QLatin1Char('0'));
}

double BestCorrelation(const std::vector<int16_t>& a, const std::vector<int16_t>& b, int maxLag)
{
    double best = 0;
    for (int lag = -maxLag; lag <= maxLag; ++lag) {
        double ab = 0, aa = 0, bb = 0;
        for (size_t i = 0; i < a.size(); i += 7) {  // every seventh sample is plenty for tones
            const int64_t j = int64_t(i) + lag;
            if (j < 0 || j >= int64_t(b.size()))
                continue;
            ab += double(a[i]) * b[size_t(j)];
            aa += double(a[i]) * a[i];
            bb += double(b[size_t(j)]) * b[size_t(j)];
        }
        if (aa > 0 && bb > 0)
            best = std::max(best, ab / std::sqrt(aa * bb));
    }
    return best;
}
