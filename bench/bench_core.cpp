// Hexadecimal conversion of a tone for upload, and percent encoding of a
// long service value, both with their event pumping.
#include "Bench.h"
#include "core/modCommon.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {
const bool fileToHex = RegisterBench("FileToHexString_500KB", [] {
    QTemporaryDir dir;
    const QString path = dir.filePath("tone.bin");
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    QByteArray bytes(500 * 1024, Qt::Uninitialized);
    QRandomGenerator gen(7);
    for (char& b : bytes)
        b = static_cast<char>(gen.bounded(256));
    f.write(bytes);
    f.close();
    return BenchFigure{MedianMilliseconds(21, [&] { FileToHexString(path); }), "ms"};
});

const bool encode = RegisterBench("EncodeForUrl_100KB", [] {
    // A song report's kind of text: tag values and a file path, with blanks,
    // marks to escape and an underscore (a pump) in every line.
    QString text;
    const QString piece = QStringLiteral("Title=Song Title (Live) & Co&Artist=The Band&Album=Greatest: Vol. 2&"
                                         "Path=/home/jo/Music/The Band/02 - song_title.mp3\r\n");
    while (text.size() < 100 * 1024)
        text += piece;
    text.truncate(100 * 1024);
    return BenchFigure{MedianMilliseconds(21, [&] { EncodeForUrl(text); }), "ms"};
});
}  // namespace
