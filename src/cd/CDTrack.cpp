#include "cd/CDTrack.h"

#include "core/numbers.h"

void CDTrackCollection::Add(const CDTrack& track, const QString& key)
{
    mItems << track;
    mKeys << key;
}

const CDTrack* CDTrackCollection::Item(const QString& key) const
{
    const qsizetype at = mKeys.indexOf(key);
    return at < 0 ? nullptr : &mItems[at];
}

void CDTrackCollection::Clear()
{
    mItems.clear();
    mKeys.clear();
}

QString CDTrackKey(int16_t SessionInd) { return QStringLiteral("T") + QString::number(SessionInd); }

QString CDTrackDuration(int minutes, int seconds)
{
    const QString sign = minutes < 0 ? QString() : QStringLiteral(" ");
    return sign + QString::number(minutes) + QStringLiteral(":") + QStringLiteral("%1").arg(seconds, 2, 10, QLatin1Char('0'));
}

CDTrackPlace SplitSessionInd(int16_t id)
{
    const auto session = static_cast<int16_t>(RoundToEven(id / 100.0));
    return {session, static_cast<int16_t>(id - session * 100)};
}
