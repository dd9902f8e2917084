#include "platform/FrameThread.h"

namespace {
// Enough to ride over the unevenness of either side, few enough to hold
// less than a megabyte.
constexpr size_t kMostWaiting = 4;
}  // namespace

FrameThread::FrameThread(int channels, Sink sink)
    : mChannels(channels), mSink(std::move(sink)), mThread([this] { run(); })
{
}

FrameThread::~FrameThread()
{
    {
        const std::lock_guard hold(mLock);
        mStop = true;
    }
    mChanged.notify_all();
    mThread.join();
}

std::vector<int16_t> FrameThread::Spare()
{
    const std::lock_guard hold(mLock);
    if (mSpare.empty())
        return {};
    std::vector<int16_t> buffer = std::move(mSpare.back());
    mSpare.pop_back();
    buffer.clear();
    return buffer;
}

void FrameThread::Write(std::vector<int16_t> frames)
{
    std::unique_lock hold(mLock);
    mChanged.wait(hold, [this] { return mWaiting.size() < kMostWaiting || mFailure; });
    if (mFailure)
        std::rethrow_exception(mFailure);
    mWaiting.push_back(std::move(frames));
    hold.unlock();
    mChanged.notify_all();
}

void FrameThread::Drain()
{
    std::unique_lock hold(mLock);
    mChanged.wait(hold, [this] { return (mWaiting.empty() && !mBusy) || mFailure; });
    if (mFailure)
        std::rethrow_exception(mFailure);
}

void FrameThread::run()
{
    std::unique_lock hold(mLock);
    for (;;) {
        mChanged.wait(hold, [this] { return mStop || !mWaiting.empty(); });
        if (mStop)
            return;
        std::vector<int16_t> frames = std::move(mWaiting.front());
        mWaiting.pop_front();
        mBusy = true;
        hold.unlock();
        std::exception_ptr failure;
        try {
            mSink(frames.data(), static_cast<int>(frames.size() / mChannels));
        } catch (...) {
            failure = std::current_exception();
        }
        hold.lock();
        mBusy = false;
        if (failure) {
            mFailure = failure;
            mWaiting.clear();
        }
        mSpare.push_back(std::move(frames));
        mChanged.notify_all();
        if (mFailure) {
            mChanged.wait(hold, [this] { return mStop; });
            return;
        }
    }
}
