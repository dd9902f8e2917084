#pragma once
// What a send needs of the phone's format word from the login (the table is
// wire/ToneFormats.h): the conversion number, the scratch name, the content
// type and the extension; and the names of the tone's files.
#include <QDateTime>
#include <QString>

struct ToneFormat {
    int preferredFormat;     // the number ConvertAudio takes
    QString convertedName;   // in the temporary folder
    QString contentType;
    QString extension;
};

// Exact, case-sensitive match in table order; any other word takes the last row.
ToneFormat ToneFormatFor(const QString& preferredFormat);

// The cut the editor writes: temporary folder + "preview.mp3".
QString PreviewFilePath();
// temporary folder + the row's converted name.
QString ConvertedFilePath(const ToneFormat& format);
// program folder/servercache/yyyymmddhhmmss.ext, from the local time of the move.
QString ToneFilePath(const QDateTime& when, const QString& extension);
