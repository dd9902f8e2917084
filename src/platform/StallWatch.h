#pragma once
// Watches a sound device that may stop without a word: an output that was
// unplugged may simply stop taking data, an input simply fall silent. Told
// the device's progress once a tick, it says when that progress has stood
// still for two seconds. Before the first progress it waits longer: an idle
// sound server may first fill its own buffer, up to two seconds of it,
// before a new stream sees anything.
#include <QtGlobal>

class StallWatch {
public:
    explicit StallWatch(int tickMs) : mTickMs(tickMs) {}

    // Starts over; the first tick compares with progress (-1: the first
    // tick only learns where the device stands).
    void Reset(qint64 progress = -1);
    // One tick. While nothing is due (expecting false) the device is not
    // standing still, whatever its progress.
    bool Stalled(qint64 progress, bool expecting = true);

private:
    static constexpr int kLimitMs = 2000;
    static constexpr int kStartLimitMs = 5000;
    int mTickMs;
    qint64 mLast = -1;
    int mStillTicks = 0;
    bool mMoved = false;
};
