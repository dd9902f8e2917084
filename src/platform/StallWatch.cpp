#include "platform/StallWatch.h"

void StallWatch::Reset(qint64 progress)
{
    mLast = progress;
    mStillTicks = 0;
}

bool StallWatch::Stalled(qint64 progress, bool expecting)
{
    mStillTicks = expecting && progress == mLast ? mStillTicks + 1 : 0;
    mLast = progress;
    return mStillTicks * mTickMs >= kLimitMs;
}
