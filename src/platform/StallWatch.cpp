#include "platform/StallWatch.h"

void StallWatch::Reset(qint64 progress)
{
    mLast = progress;
    mStillTicks = 0;
    mMoved = false;
}

bool StallWatch::Stalled(qint64 progress, bool expecting)
{
    const bool still = progress == mLast;
    if (!still && mLast >= 0)
        mMoved = true;
    mStillTicks = expecting && still ? mStillTicks + 1 : 0;
    mLast = progress;
    return mStillTicks * mTickMs >= (mMoved ? kLimitMs : kStartLimitMs);
}
