#pragma once
// A switch as the settings hold it: "True"/"False" in any case, or a number
// (non-zero is true). Anything else, the empty value included, is false.
#include "core/modCommon.h"

inline bool GetAppSwitch(const QString& key)
{
    const QString text = GetAppSetting(key, kSettings).trimmed();
    if (text.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0)
        return true;
    bool numeric = false;
    const double value = text.toDouble(&numeric);
    return numeric && value != 0;
}
