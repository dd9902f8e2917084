#pragma once
// Watches a sound device that may stop without a word: an output that was
// unplugged may simply stop taking data, an input simply fall silent. Told
// the device's progress once a tick, it says when that progress has stood
// still for two seconds.
#include <QtGlobal>

class StallWatch {
public:
    explicit StallWatch(int tickMs) : mTickMs(tickMs) {}

    // Starts over; the first tick compares with progress.
    void Reset(qint64 progress = -1);
    // One tick. While nothing is due (expecting false) the device is not
    // standing still, whatever its progress.
    bool Stalled(qint64 progress, bool expecting = true);

private:
    static constexpr int kLimitMs = 2000;
    int mTickMs;
    qint64 mLast = -1;
    int mStillTicks = 0;
};
