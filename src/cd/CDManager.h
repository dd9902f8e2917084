#pragma once
// The bridge to the audio CD, made once for the run (gobjCDManager), and the
// home of ConvertAudio, which turns a sound file into a tone file in the form
// the user's phone takes. The CD side joins later.
#include <QObject>
#include <QString>
#include <cstdint>

class CDManager : public QObject {
    Q_OBJECT
public:
    // PreferredFormat: 1 AMR narrowband, 2 AMR wideband, 5 MP3, 6 wave;
    // every other value makes nothing. Failures show one message box
    // "ConvertAudio: " + description and leave no target file behind.
    void ConvertAudio(QString& SourceFile, QString& TargetFilename, int32_t& PreferredFormat);
};

// gobjCDManager, made on first use.
CDManager* TheCDManager();
