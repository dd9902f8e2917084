#include "delivery/ToneUpload.h"

#include "core/modCommon.h"

QString ToneDataFields(const QString& hex)
{
    QString fields;
    fields.reserve(hex.size() + 16 * (hex.size() / kToneDataChars + 1));
    QStringView rest(hex);
    for (int n = 1;; ++n) {
        fields += QStringLiteral("tonedata") + QString::number(n) + QLatin1Char('=');
        fields += rest.left(kToneDataChars);
        if (rest.size() <= kToneDataChars)
            return fields;
        fields += QLatin1Char('&');
        rest = rest.mid(kToneDataChars);
    }
}

QString BuildUploadBody(const QString& recordXml, const QString& toneHex)
{
    return BuildAccountQuery() + QStringLiteral("&xmldata=") + EncodeForUrl(recordXml) + QLatin1Char('&') +
           ToneDataFields(toneHex);
}

bool UploadReplyEndsLoop(const QString& reply)
{
    const QStringList fields = reply.split(QLatin1Char(','));
    return fields.size() < 3 || fields[2].left(4) == QLatin1String("http");
}
