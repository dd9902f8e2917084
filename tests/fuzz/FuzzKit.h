#pragma once
// What every fuzz target shares: the bytes as the reader gets them (text, or
// a file in a scratch folder), and one quiet, windowless Qt application.
#include <QString>
#include <cstddef>
#include <cstdint>

// Every target starts a QApplication on the offscreen platform before its
// first input (the kit's LLVMFuzzerInitialize). Qt's own warnings about bad
// input are expected here and go nowhere, and a message box that a reader
// shows is closed at once.

// The bytes as text, the way the service's replies reach their readers.
QString TextOf(const uint8_t* data, size_t size);

// The bytes as a file of the given name in a scratch folder of this run;
// the same path each time, replaced by each input.
QString ScratchFile(const uint8_t* data, size_t size, const QString& name);
QString ScratchFolder();

// Sound files are named as users name them, and the first byte of an input
// picks the name's extension (readers such as TagLib go by it): the rest is
// the file.
QString SoundFile(const uint8_t* data, size_t size);

// "disc.bin" in the scratch folder, two seconds of a quiet wave, for the CUE
// sheets that name it; made once.
void MakeDiscBin();
