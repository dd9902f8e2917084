#include "support/SoundFiles.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <algorithm>
#include <cstdlib>
#include <cstring>

bool RunTool(const QString& program, const QStringList& arguments, QByteArray* output)
{
    QProcess p;
    p.start(program, arguments);
    if (!p.waitForFinished(120000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return false;
    if (output)
        *output = p.readAllStandardOutput();
    return true;
}

QString MakeTone(const QString& path, double seconds, int frequency, int sampleRate, int channels)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    QStringList codec;
    if (suffix == "mp3")
        codec = {"-c:a", "libmp3lame", "-b:a", "128k"};
    else if (suffix == "wma")
        codec = {"-c:a", "wmav2", "-b:a", "128k"};
    else if (suffix == "amr")
        codec = {"-c:a", "libopencore_amrnb", "-b:a", "12.2k"};
    else if (suffix == "flac")
        codec = {"-c:a", "flac"};
    else if (suffix == "opus")  // Opus runs at 48 kHz whatever it is given
        codec = {"-c:a", "libopus", "-b:a", "96k"};
    else if (suffix == "ogg")
        codec = {"-c:a", "libvorbis", "-q:a", "4"};
    else
        codec = {"-c:a", "pcm_s16le"};
    const QString source = QStringLiteral("sine=frequency=%1:sample_rate=%2:duration=%3")
                               .arg(frequency)
                               .arg(sampleRate)
                               .arg(seconds, 0, 'f', 6);
    const bool ok = RunTool("ffmpeg", QStringList{"-v", "error", "-y", "-f", "lavfi", "-i", source, "-ac",
                                                  QString::number(channels), "-ar", QString::number(sampleRate)} +
                                          codec + QStringList{path});
    return ok ? path : QString();
}

ProbedSound Probe(const QString& path)
{
    QByteArray json;
    ProbedSound out;
    if (!RunTool("ffprobe", {"-v", "error", "-select_streams", "a:0", "-show_entries",
                             "stream=codec_name,sample_rate,channels", "-of", "json", path},
                 &json))
        return out;
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    const QJsonArray streams = root.value("streams").toArray();
    if (streams.isEmpty())
        return out;
    const QJsonObject s = streams.first().toObject();
    out.codec = s.value("codec_name").toString();
    out.sampleRate = s.value("sample_rate").toString().toInt();
    out.channels = s.value("channels").toInt();
    // The packets' own timeline: containers such as AMR store no length, and
    // ffprobe's estimate from the bit rate would hide a wrong one.
    QByteArray packets;
    if (!RunTool("ffprobe", {"-v", "error", "-select_streams", "a:0", "-show_entries", "packet=pts_time,duration_time",
                             "-of", "csv=p=0", path},
                 &packets))
        return out;
    double first = -1, end = 0;
    for (const QByteArray& line : packets.split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.size() < 2)
            continue;
        const double pts = fields[0].toDouble();
        if (first < 0)
            first = pts;
        end = std::max(end, pts + fields[1].toDouble());
    }
    out.seconds = first < 0 ? 0 : end - first;
    return out;
}

std::vector<int16_t> DecodeMono(const QString& path, int sampleRate)
{
    QByteArray raw;
    if (!RunTool("ffmpeg", {"-v", "error", "-i", path, "-ac", "1", "-ar", QString::number(sampleRate), "-f", "s16le",
                            "-"},
                 &raw))
        return {};
    std::vector<int16_t> samples(static_cast<size_t>(raw.size()) / 2);
    if (!samples.empty())
        std::memcpy(samples.data(), raw.constData(), samples.size() * 2);
    return samples;
}

int PeakBetween(const std::vector<int16_t>& samples, int sampleRate, double from, double to)
{
    const auto a = static_cast<size_t>(std::max(0.0, from * sampleRate));
    const auto b = std::min(samples.size(), static_cast<size_t>(std::max(0.0, to * sampleRate)));
    int peak = 0;
    for (size_t i = a; i < b; ++i)
        peak = std::max(peak, std::abs(static_cast<int>(samples[i])));
    return peak;
}
