#include "platform/SoundOutput.h"

#include <QMediaDevices>

QAudioDevice SoundOutput() { return QMediaDevices::defaultAudioOutput(); }
