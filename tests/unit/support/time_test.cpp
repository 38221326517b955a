#include "support/time.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "support/world.h"

namespace test {
namespace {

class TimeTest : public testing::Test {
  protected:
    TimeTest() { world.Reset(); }

    // Microseconds of virtual time that the wait took. Every look at the clock takes one.
    Micros TimeOf(unsigned ms) {
        const Micros before = world.Now();
        Sleep(ms);
        return world.Now() - before;
    }

    World& world = World::Get();
};

using Log = std::vector<std::string>;

TEST_F(TimeTest, SleepsTheMilliseconds) {
    EXPECT_NEAR(static_cast<double>(TimeOf(50)), 50'000, 5);
    EXPECT_EQ(world.Log(), Log{"sleep 50"});
}

TEST_F(TimeTest, SleepOfZeroIsStillHandedToTheSystem) {
    Sleep(0);
    EXPECT_EQ(world.Log(), Log{"sleep 0"});
}

TEST_F(TimeTest, SleepLongerThanThirtyTwoBitsOfMicrosecondsIsNotCutShort) {
    EXPECT_NEAR(static_cast<double>(TimeOf(4'294'968)), 4'294'968'000.0, 5);
    EXPECT_NEAR(static_cast<double>(TimeOf(4'294'967'295)), 4'294'967'295'000.0, 5);
}

TEST_F(TimeTest, SignalDoesNotShortenASleep) {
    world.InterruptSleep(4, EINTR);
    EXPECT_NEAR(static_cast<double>(TimeOf(10)), 10'000, 5);
    EXPECT_EQ(world.Log().size(), 2U);
}

TEST_F(TimeTest, ManySignalsDoNotShortenOrStretchASleep) {
    for (int i = 0; i < 20; ++i) {
        world.InterruptSleep(3, EINTR);
    }
    EXPECT_NEAR(static_cast<double>(TimeOf(100)), 100'000, 50);
    EXPECT_EQ(world.Log().size(), 21U);
}

TEST_F(TimeTest, SignalAtTheVeryEndAddsNoSleep) {
    world.InterruptSleep(10, EINTR);
    EXPECT_NEAR(static_cast<double>(TimeOf(10)), 10'000, 5);
    EXPECT_EQ(world.Log(), Log{"sleep 10"});
}

TEST_F(TimeTest, SignalInALongSleepLosesNothing) {
    world.InterruptSleep(1'000'000, EINTR);
    EXPECT_NEAR(static_cast<double>(TimeOf(5'000'000)), 5'000'000'000.0, 5);
}

TEST_F(TimeTest, SleepThatTheSystemRefusesIsNotRepeated) {
    world.InterruptSleep(2, EINVAL);
    EXPECT_NEAR(static_cast<double>(TimeOf(10)), 2'000, 5);
    EXPECT_EQ(world.Log(), Log{"sleep 10"});
}

TEST_F(TimeTest, OldErrorNumberIsNotMistakenForASignal) {
    errno = EINTR;
    EXPECT_NEAR(static_cast<double>(TimeOf(10)), 10'000, 5);
    EXPECT_EQ(world.Log(), Log{"sleep 10"});
}

TEST_F(TimeTest, ClockCountsWholeUnitsOfTheMonotonicClock) {
    world.Advance(2'345'678);  // on top of 1000 seconds
    EXPECT_EQ(MonotonicUs(), 1'002'345'679U);
    EXPECT_EQ(MonotonicMs(), 1'002'345U);
    world.Advance(999);
    EXPECT_EQ(MonotonicMs(), 1'002'346U);
}

TEST_F(TimeTest, StopwatchCountsFromItsBeginning) {
    world.Advance(999'999);  // so that the seconds turn over in between
    const Stopwatch watch;
    world.Advance(5'000'250);
    EXPECT_EQ(watch.ElapsedUs(), 5'000'251U);  // the look at the clock takes the last one
}

TEST_F(TimeTest, ClockOutlivesThirtyTwoBitsOfMilliseconds) {
    world.Advance(5'000'000'000'000);
    EXPECT_EQ(MonotonicMs(), 5'001'000'000U);
}

TEST_F(TimeTest, KeepsTheTickCountAtZero) {
    EXPECT_EQ(GetTickCount(), 0U);
    world.Advance(5'000'000);
    EXPECT_EQ(GetTickCount(), 0U);
}

}  // namespace
}  // namespace test
