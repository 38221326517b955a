// The flags of a cooperative loop.
#pragma once

#include <atomic>
#include <cstdint>

// Holds the body of a loop and the flags that end it. No thread is created: whoever runs the loop
// calls execute() until terminated(). The stop flag may be set from a callback or another thread.
class TTimerThread {
  public:
    TTimerThread() { _this = nullptr; }
    TTimerThread(const TTimerThread&) = delete;
    TTimerThread& operator=(const TTimerThread&) = delete;

    // One pass of the loop. A result other than 0 ends it.
    virtual int execute() = 0;
    virtual ~TTimerThread() { wait(); }

    void start() { stop_requested_ = false; }
    void terminate() { stop_requested_ = true; }
    // Requests the end and waits while a pass is marked as running, which nothing does today.
    void wait();
    bool terminated() const { return stop_requested_ && !running_; }

    static TTimerThread* _this;

  private:
    [[maybe_unused]] std::int32_t interval_ = 0;
    [[maybe_unused]] std::int32_t handle_ = 0;
    std::atomic<bool> running_{false};
    std::atomic<bool> stop_requested_{false};
};
