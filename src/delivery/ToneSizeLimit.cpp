#include "delivery/ToneSizeLimit.h"

#include "core/modCommon.h"
#include "skin/ControlTag.h"
#include "skin/frmMessage.h"

#include <QFileInfo>
#include <QLabel>

const QList<ToneSizeWord>& ToneSizeWords()
{
    static const QList<ToneSizeWord> words = {
        {QStringLiteral("50 KB"), 51200},   {QStringLiteral("100 KB"), 102400}, {QStringLiteral("150 KB"), 153600},
        {QStringLiteral("200 KB"), 204800}, {QStringLiteral("500 KB"), 512000}, {QStringLiteral("Unlimited"), std::nullopt},
    };
    return words;
}

std::optional<int64_t> MaxToneSizeLimit(const QString& setting)
{
    for (const ToneSizeWord& word : ToneSizeWords()) {
        if (word.words == setting)
            return word.bytes;
    }
    // Not the 153600 of "150 KB": the default is a round 150000 on purpose.
    return 150000;
}

void CheckToneSize(const QString& path, bool& result)
{
    const auto limit = MaxToneSizeLimit(GetAppSetting(QStringLiteral("MaxToneSize"), kSettings));
    const qint64 size = QFileInfo(path).size();
    result = true;
    if (!limit || size <= *limit)
        return;
    const QString answer = ShowMessageWindow(QStringLiteral("frmToneTooBig"), [size](frmMessage& window) {
        SetControlTag(window.Label(QStringLiteral("lblTooBig")), QString::number(size));
    });
    result = answer != QLatin1String("Q");
}
