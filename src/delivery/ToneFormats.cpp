#include "delivery/ToneFormats.h"

#include "core/modCommon.h"
#include "core/seams.h"

#include "wire/ToneFormats.h"

namespace {
QString text(std::string_view ascii)
{
    return QString::fromLatin1(ascii.data(), static_cast<qsizetype>(ascii.size()));
}
}  // namespace

ToneFormat ToneFormatFor(const QString& preferredFormat)
{
    const QByteArray word = preferredFormat.toUtf8();
    const wire::ToneFormat& row = wire::ToneFormatForWord(std::string_view(word.constData(), word.size()));
    return {row.number, text(row.convertedName), text(row.contentType), text(row.extension)};
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
