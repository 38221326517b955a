#include "engine/probe.h"

#include "unit/engine/engine_test.h"

namespace test {
namespace {

// Each failing read takes as long as the test says; the clock itself moves a microsecond a look.
class ProbeTest : public WorldTest {
  protected:
    bool ReadUntil(Micros read_us, int succeeds_at = 0) {
        return Probe(
            [&] {
                world.Advance(read_us);
                if (++reads != succeeds_at) {
                    throw 1;
                }
            },
            [] { return true; });
    }

    int reads = 0;
};

TEST_F(ProbeTest, EndsWithTheFirstReadThatReturns) {
    EXPECT_TRUE(ReadUntil(20'000, 1));
    EXPECT_EQ(reads, 1);
}

TEST_F(ProbeTest, ReadsOnAfterFailures) {
    EXPECT_TRUE(ReadUntil(20'000, 1000));
    EXPECT_EQ(reads, 1000);
}

TEST_F(ProbeTest, GivesUpWhenThirtySecondsHavePassed) {
    EXPECT_FALSE(ReadUntil(30'000'000));
    EXPECT_EQ(reads, 1);
}

TEST_F(ProbeTest, ReadsOnAMillisecondBefore) {
    EXPECT_FALSE(ReadUntil(29'999'000));
    EXPECT_EQ(reads, 2);
}

TEST_F(ProbeTest, MakesOneReadHoweverLongItTakes) {
    EXPECT_TRUE(ReadUntil(40'000'000, 1));
}

TEST_F(ProbeTest, WaitsForNothingBetweenReads) {
    ReadUntil(1'000'000);
    EXPECT_EQ(reads, 30);
    EXPECT_TRUE(world.Log().empty());
}

TEST_F(ProbeTest, EndsWhenTheCallerDoesNotWantToGoOn) {
    int asked = 0;
    EXPECT_FALSE(Probe([&] { throw ++reads; }, [&] { return ++asked < 3; }));
    EXPECT_EQ(reads, 3);
    EXPECT_EQ(asked, 3);
}

TEST_F(ProbeTest, DoesNotAskTheCallerAfterSuccess) {
    EXPECT_TRUE(Probe([] {}, [] { return false; }));
}

}  // namespace
}  // namespace test
