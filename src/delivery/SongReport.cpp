// The song a tone was cut from, told to the service after delivery.
#include "delivery/SendTone.h"

#include "core/globals.h"
#include "core/modCommon.h"
#include "platform/AudioFileInfo.h"

#include <QDir>
#include <QFileInfo>
#include <array>

QString BuildSongReport(const QString& FileName)
{
    // Blob position 2 to 13, as places among the file information's getters.
    static constexpr std::array<int, 12> kPlaces = {2, 3, 11, 4, 10, 5, 12, 13, 6, 9, 8, 7};
    AudioFileInfo info;
    info.Open(FileName);
    QString blob;
    const QString first = info.Field(1).toString();
    if (!first.isEmpty())
        blob = first + QLatin1Char('|');
    else
        // The folder's name stands in with no "|" behind it: the service lives
        // with the missing separator.
        blob = QFileInfo(FileName).absoluteDir().dirName();
    for (int place : kPlaces)
        blob += info.Field(place).toString() + QLatin1Char('|');
    return QStringLiteral("CID=") + gstrCustomerID + QStringLiteral("&SongBlob=") + EncodeForUrl(blob);
}
