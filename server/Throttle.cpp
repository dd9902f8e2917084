#include "Throttle.h"

#include <algorithm>

Throttle::Throttle(int freeEvents, std::chrono::seconds firstWait, std::chrono::seconds longestWait, size_t maxKeys)
    : mFree(freeEvents), mFirstWait(firstWait), mLongestWait(longestWait), mMaxKeys(maxKeys)
{
}

bool Throttle::Blocked(const std::string& key)
{
    std::lock_guard lock(mMutex);
    const auto it = mEntries.find(key);
    return it != mEntries.end() && Clock::now() < it->second.until;
}

void Throttle::Count(const std::string& key)
{
    std::lock_guard lock(mMutex);
    const auto now = Clock::now();
    auto it = mEntries.find(key);
    if (it == mEntries.end()) {
        if (mEntries.size() >= mMaxKeys)
            MakeRoom(now);
        it = mEntries.emplace(key, Entry{}).first;
    }
    Entry& e = it->second;
    if (e.events > 0 && now - e.last >= mLongestWait && now >= e.until)
        e = Entry{};
    e.last = now;
    if (++e.events >= mFree) {
        const int doublings = std::min(e.events - mFree, 30);
        const auto wait = std::min<std::chrono::seconds>(mFirstWait * (int64_t{1} << doublings), mLongestWait);
        e.until = now + wait;
    }
}

void Throttle::Clear(const std::string& key)
{
    std::lock_guard lock(mMutex);
    mEntries.erase(key);
}

void Throttle::MakeRoom(Clock::time_point now)
{
    std::erase_if(mEntries, [&](const auto& kv) { return now - kv.second.last >= mLongestWait && now >= kv.second.until; });
    if (mEntries.size() < mMaxKeys)
        return;
    const auto oldest = std::min_element(mEntries.begin(), mEntries.end(),
                                         [](const auto& a, const auto& b) { return a.second.last < b.second.last; });
    mEntries.erase(oldest);
}
