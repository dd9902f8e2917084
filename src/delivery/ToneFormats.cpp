#include "delivery/ToneFormats.h"

#include "core/modCommon.h"
#include "core/seams.h"

#include <array>

namespace {
const std::array<ToneFormat, 7>& table()
{
    static const std::array<ToneFormat, 7> rows = {{
        {QStringLiteral("WAV"), 6, QStringLiteral("preview.wav"), QStringLiteral("audio/wav"), QStringLiteral("wav")},
        {QStringLiteral("AMR Wideband"), 2, QStringLiteral("preview.amr"), QStringLiteral("audio/amr-wb"), QStringLiteral("amr")},
        {QStringLiteral("AMR Narrowband"), 1, QStringLiteral("preview.amr"), QStringLiteral("audio/amr"), QStringLiteral("amr")},
        // Not "preview.mp3": that name is the cut, and source and target must differ.
        {QStringLiteral("MP3"), 5, QStringLiteral("preview1.mp3"), QStringLiteral("audio/mpeg"), QStringLiteral("mp3")},
        {QStringLiteral("AAC"), 4, QStringLiteral("preview.aac"), QStringLiteral("audio/aac"), QStringLiteral("aac")},
        {QStringLiteral("QCELP"), 3, QStringLiteral("preview.qcp"), QStringLiteral("audio/qcelp"), QStringLiteral("qcp")},
        {QString(), 1, QStringLiteral("preview.amr"), QStringLiteral("audio/amr"), QStringLiteral("amr")},
    }};
    return rows;
}
}  // namespace

const ToneFormat& ToneFormatFor(const QString& preferredFormat)
{
    for (const ToneFormat& row : table()) {
        if (row.word == preferredFormat && !row.word.isEmpty())
            return row;
    }
    return table().back();
}

QString PreviewFilePath()
{
    return GetTempFolder() + QStringLiteral("preview.mp3");
}

QString ConvertedFilePath(const ToneFormat& format)
{
    return GetTempFolder() + format.convertedName;
}

QString ToneFilePath(const QDateTime& when, const QString& extension)
{
    return ProgramFolderPath(QStringLiteral("servercache/")) + when.toString(QStringLiteral("yyyyMMddHHmmss")) +
           QLatin1Char('.') + extension;
}
