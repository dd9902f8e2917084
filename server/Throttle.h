#pragma once
// Counts events by key (failed guesses, sign-ups) and, once a number of free
// ones have come, makes the key wait: the wait doubles with each further
// event up to a longest wait. A key that has been quiet for the longest wait starts afresh.
// Bounded: when full, quiet keys go first, then the oldest.
#include <chrono>
#include <mutex>
#include <string>
#include <unordered_map>

class Throttle {
public:
    using Clock = std::chrono::steady_clock;
    Throttle(int freeEvents, std::chrono::seconds firstWait, std::chrono::seconds longestWait,
             size_t maxKeys = 100000);

    // True while the key has to wait.
    bool Blocked(const std::string& key);
    void Count(const std::string& key);
    void Clear(const std::string& key);

private:
    struct Entry {
        int events = 0;
        Clock::time_point last, until;
    };
    void MakeRoom(Clock::time_point now);

    const int mFree;
    const std::chrono::seconds mFirstWait, mLongestWait;
    const size_t mMaxKeys;
    std::mutex mMutex;
    std::unordered_map<std::string, Entry> mEntries;
};
