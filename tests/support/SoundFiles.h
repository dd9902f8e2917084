#pragma once
// Test sound made on the spot with FFmpeg, and FFmpeg's own view of what the
// program wrote: codec, rate, channels, duration and the samples.
#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

struct ProbedSound {
    QString codec;  // ffprobe's codec_name, empty when no audio stream
    int sampleRate = 0;
    int channels = 0;
    double seconds = 0;  // from the first packet to the end of the last
};

// Runs a program to its end; true when it exits with 0.
bool RunTool(const QString& program, const QStringList& arguments, QByteArray* output = nullptr);

// A sine tone of the given length; the encoding follows the path's
// extension (.mp3 LAME, .wma wmav2, .wav 16-bit, .amr AMR-NB, .flac, .opus
// libopus at 48 kHz only, .ogg Vorbis).
QString MakeTone(const QString& path, double seconds, int frequency = 440, int sampleRate = 44100,
                 int channels = 2);

ProbedSound Probe(const QString& path);

// The file decoded by FFmpeg to 16-bit samples, mixed to one channel at the rate given.
std::vector<int16_t> DecodeMono(const QString& path, int sampleRate);

// Largest absolute sample within [from, to) seconds.
int PeakBetween(const std::vector<int16_t>& samples, int sampleRate, double from, double to);
