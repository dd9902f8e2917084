#pragma once
// The output every player plays through: the sound server's default. Null
// when the machine has none (no sound card, no server), and then the windows
// that play say so instead of staying silent.
#include <QAudioDevice>

QAudioDevice SoundOutput();
inline bool SoundOutputAvailable() { return !SoundOutput().isNull(); }
