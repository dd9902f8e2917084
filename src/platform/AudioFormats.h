#pragma once
// The sound files this machine's FFmpeg can open and decode, by extension.
#include <QStringList>

// Lower-case extensions without the dot, sorted: among them flac, ogg,
// opus, aac and m4a when FFmpeg has their demuxers and decoders.
QStringList DecodableAudioExtensions();
