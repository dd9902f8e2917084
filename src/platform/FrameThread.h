#pragma once
// Hands frames to a sink that runs on a thread of its own (an encoder), so
// that whatever makes the frames (a decoder, a CD
// drive) goes on with the next ones meanwhile: on two cores the two halves
// of the work take the time of the longer one, not of both. Buffers change
// hands instead of being copied, and at most a few wait, so memory stays
// small however long the sound.
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

class FrameThread {
public:
    // sink(frames, count) takes interleaved frames of this many channels.
    using Sink = std::function<void(const int16_t* frames, int count)>;
    FrameThread(int channels, Sink sink);
    // Stops the thread; frames still waiting are dropped.
    ~FrameThread();
    FrameThread(const FrameThread&) = delete;
    FrameThread& operator=(const FrameThread&) = delete;

    // An empty buffer to fill, one the sink is done with when there is one.
    std::vector<int16_t> Spare();
    // Hands interleaved frames over; waits while the sink is far behind.
    // Throws the sink's failure on an earlier buffer, if there was one.
    void Write(std::vector<int16_t> frames);
    // Returns once the sink has taken every frame handed over, or throws its failure.
    void Drain();

private:
    void run();

    int mChannels;
    Sink mSink;
    std::mutex mLock;
    std::condition_variable mChanged;
    std::deque<std::vector<int16_t>> mWaiting;
    std::vector<std::vector<int16_t>> mSpare;
    bool mBusy = false;  // the sink holds a buffer
    bool mStop = false;
    std::exception_ptr mFailure;
    std::thread mThread;  // last: starts once the rest is made
};
