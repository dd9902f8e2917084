#include "editing/ToneMeasures.h"

#include "core/numbers.h"

namespace {
QString minutesAndSeconds(int32_t wholeSeconds, int width)
{
    return QStringLiteral("%1m %2s")
        .arg(wholeSeconds / 60, width, 10, QLatin1Char('0'))
        .arg(wholeSeconds % 60, width, 10, QLatin1Char('0'));
}
}  // namespace

float MillisecondsToSeconds(int32_t milliseconds)
{
    return static_cast<float>(milliseconds) / 1000.0f;
}

QString LengthCaption(float seconds)
{
    return minutesAndSeconds(RoundToEven(seconds), 0);
}

QString ToneSizeCaption(float seconds)
{
    return QStringLiteral("~%1Kb").arg(RoundToEven(seconds * 1600.0f / 1024.0f));
}

QString PositionCaption(int32_t positionSeconds, float trimOffset)
{
    const float shown = static_cast<float>(positionSeconds) - trimOffset;
    return minutesAndSeconds(RoundToEven(shown), 2);
}
