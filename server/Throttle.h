#pragma once
// Counts events by key (failed guesses, sign-ups) and, once a number of free
// ones have come, makes the key wait: the wait doubles with each further
// event up to a longest wait. A key that has been quiet for the longest wait
// starts afresh. The counts live in the store, so that every service process
// sharing it holds the same limits; quiet keys are forgotten now and then.
#include <atomic>
#include <chrono>
#include <string>

class Store;

class Throttle {
public:
    // kind: the name the store keeps this limit's counts under.
    Throttle(Store& store, std::string kind, int freeEvents, std::chrono::seconds firstWait,
             std::chrono::seconds longestWait);

    // True while the key has to wait.
    bool Blocked(const std::string& key);
    void Count(const std::string& key);
    void Clear(const std::string& key);

private:
    Store& mStore;
    const std::string mKind;
    const int mFree;
    const int64_t mFirstWaitMs, mLongestWaitMs;
    std::atomic<unsigned> mCounted{0};
};
