#include "Throttle.h"

#include "Store.h"

#include <algorithm>

namespace {
constexpr unsigned kCountsBetweenPrunes = 1000;

int64_t Ms(std::chrono::seconds s)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(s).count();
}
}  // namespace

Throttle::Throttle(Store& store, std::string kind, int freeEvents, std::chrono::seconds firstWait,
                   std::chrono::seconds longestWait)
    : mStore(store), mKind(std::move(kind)), mFree(freeEvents), mFirstWaitMs(Ms(firstWait)),
      mLongestWaitMs(Ms(longestWait))
{
}

bool Throttle::Blocked(const std::string& key)
{
    const auto tally = mStore.TallyOf(mKind, key);
    return tally && Store::NowMs() < tally->untilMs;
}

void Throttle::Count(const std::string& key)
{
    const int64_t now = Store::NowMs();
    mStore.CountTally(mKind, key, [&](Tally& t) {
        if (t.events > 0 && now - t.lastMs >= mLongestWaitMs && now >= t.untilMs)
            t = Tally{};
        t.lastMs = now;
        if (++t.events >= mFree) {
            const int64_t doublings = std::min<int64_t>(t.events - mFree, 30);
            t.untilMs = now + std::min(mFirstWaitMs * (int64_t{1} << doublings), mLongestWaitMs);
        }
    });
    if (++mCounted % kCountsBetweenPrunes == 0)
        mStore.PruneTallies(mKind, now - mLongestWaitMs);
}

void Throttle::Clear(const std::string& key)
{
    mStore.ClearTally(mKind, key);
}
