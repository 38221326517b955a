#include "support/timer_thread.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace test {
namespace {

class CountingTimer : public TTimerThread {
  public:
    int execute() override {
        if (++passes == stop_after) {
            terminate();
        }
        return passes;
    }

    int passes = 0;
    int stop_after = -1;
};

TEST(TimerThread, IsNotTerminatedUntilAskedTo) {
    CountingTimer timer;
    EXPECT_FALSE(timer.terminated());
    timer.terminate();
    EXPECT_TRUE(timer.terminated());
}

TEST(TimerThread, StartTakesTheRequestBack) {
    CountingTimer timer;
    timer.terminate();
    timer.start();
    EXPECT_FALSE(timer.terminated());
}

TEST(TimerThread, WaitRequestsTheEndAndReturnsAtOnce) {
    CountingTimer timer;
    timer.start();
    timer.wait();
    EXPECT_TRUE(timer.terminated());
    EXPECT_EQ(timer.passes, 0);
}

TEST(TimerThread, APassCanEndItsLoop) {
    CountingTimer timer;
    timer.stop_after = 3;
    timer.start();
    while (!timer.terminated()) {
        timer.execute();
    }
    EXPECT_EQ(timer.passes, 3);
}

TEST(TimerThread, AnotherThreadCanEndTheLoop) {
    CountingTimer timer;
    timer.start();
    std::thread stopper([&] { timer.terminate(); });
    while (!timer.terminated()) {
        std::this_thread::yield();
    }
    stopper.join();
    EXPECT_TRUE(timer.terminated());
}

TEST(TimerThread, ConstructionForgetsTheInstance) {
    CountingTimer first;
    TTimerThread::_this = &first;
    const CountingTimer second;
    EXPECT_EQ(TTimerThread::_this, nullptr);
}

TEST(TimerThread, ExecuteIsTheFirstVirtualFunction) {
    CountingTimer timer;
    TTimerThread* const base = &timer;
    int (*const* table)(TTimerThread*) = nullptr;
    std::memcpy(&table, static_cast<const void*>(base), sizeof table);
    EXPECT_EQ(table[0](base), 1);
    EXPECT_EQ(timer.passes, 1);
}

}  // namespace
}  // namespace test
