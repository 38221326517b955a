#include "support/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "VeskTarvoM5/VeskTarvoM5.h"

// The name under which hosts reach it.
int ExportedRound(double x) __asm__("_Z5roundd");

namespace test {
namespace {

using Digits = std::vector<unsigned char>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(SplitDouble, CutsTowardZero) {
    struct Row {
        double x;
        std::int64_t whole;
        double fraction;
    };
    const Row rows[] = {
        {0.0, 0, 0.0},
        {2.75, 2, 0.75},
        {-2.75, -2, -0.75},
        {0.5, 0, 0.5},
        {-0.5, 0, -0.5},
        {4294967296.25, 4294967296, 0.25},
        {9223372036854774784.0, 9223372036854774784, 0.0},
        {-9223372036854775808.0, INT64_MIN, 0.0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(SplitDouble(row.x).whole, row.whole) << row.x;
        EXPECT_EQ(SplitDouble(row.x).fraction, row.fraction) << row.x;
    }
}

TEST(SplitDouble, NumberThatNoIntegerHoldsIsTheSmallestInteger) {
    for (const double x : {9223372036854775808.0, -9223372036854777856.0, 1e300, -1e300, kInfinity,
                           -kInfinity, kNaN}) {
        EXPECT_EQ(SplitDouble(x).whole, INT64_MIN) << x;
        EXPECT_EQ(SplitDouble(x).fraction, 0.0) << x;
    }
}

TEST(ToKopecks, RoundsHalfUp) {
    EXPECT_EQ(ToKopecks(0), 0);
    EXPECT_EQ(ToKopecks(0.01), 1);
    EXPECT_EQ(ToKopecks(0.004), 0);
    EXPECT_EQ(ToKopecks(0.005), 1);
    EXPECT_EQ(ToKopecks(0.125), 13);
    EXPECT_EQ(ToKopecks(19.99), 1999);
    EXPECT_EQ(ToKopecks(99999.99), 9999999);
}

TEST(ToKopecks, HoldsMoreThanThirtyTwoBits) {
    EXPECT_EQ(ToKopecks(42949672.95), 4294967295);
    EXPECT_EQ(ToKopecks(42949673.96), 4294967396);
}

TEST(ToKopecks, KeepsMultiplyingByHundredInsteadOfDividing) {
    // 0.235 * 100 is exactly 23.5, 0.235 / 0.01 lies just below it.
    EXPECT_EQ(ToKopecks(0.235), 24);
    EXPECT_EQ(ToKopecks(0.595), 60);
    // 1.005 * 100 lies just below 100.5.
    EXPECT_EQ(ToKopecks(1.005), 100);
}

TEST(ToKopecks, NegativeSumIsCutTowardZero) {
    EXPECT_EQ(ToKopecks(-0.01), -1);
    EXPECT_EQ(ToKopecks(-0.025), -2);
    EXPECT_EQ(ToKopecks(-0.0299), -2);
}

TEST(ToKopecks, NumberThatNoIntegerHoldsIsTheSmallestInteger) {
    for (const double x : {1e300, -1e300, kInfinity, -kInfinity, kNaN}) {
        EXPECT_EQ(ToKopecks(x), INT64_MIN) << x;
    }
}

TEST(Round, PositiveNumbersAreRoundedHalfUp) {
    EXPECT_EQ(RoundHalfUp(2.5), 3);
    EXPECT_EQ(RoundHalfUp(2.49), 2);
    EXPECT_EQ(RoundHalfUp(0.0), 0);
    EXPECT_EQ(RoundHalfUp(0.5), 1);
    EXPECT_EQ(RoundHalfUp(0.49999999999999994), 0);
    EXPECT_EQ(RoundHalfUp(2147483646.5), 2147483647);
}

TEST(Round, KeepsCuttingNegativeNumbersTowardZero) {
    EXPECT_EQ(RoundHalfUp(-1.7), -1);
    EXPECT_EQ(RoundHalfUp(-2.5), -2);
    EXPECT_EQ(RoundHalfUp(-0.9), 0);
    EXPECT_EQ(RoundHalfUp(-3.0), -3);
}

TEST(Round, KeepsTheLowThirtyTwoBits) {
    EXPECT_EQ(RoundHalfUp(2147483647.5), -2147483647 - 1);
    EXPECT_EQ(RoundHalfUp(4294967294.5), -1);
    EXPECT_EQ(RoundHalfUp(4294967295.5), 0);
    EXPECT_EQ(RoundHalfUp(-4294967306.7), -10);
}

TEST(Round, KeepsAddingOneBeyondThirtyTwoBits) {
    // The whole number exceeds its own low 32 bits by far more than a half.
    EXPECT_EQ(RoundHalfUp(4294967296.0), 1);
    EXPECT_EQ(RoundHalfUp(4294967306.2), 11);
}

TEST(Round, IsDefinedForWhatNoIntegerHolds) {
    EXPECT_EQ(RoundHalfUp(kNaN), 0);
    EXPECT_EQ(RoundHalfUp(-kInfinity), 0);
    EXPECT_EQ(RoundHalfUp(-1e300), 0);
    EXPECT_EQ(RoundHalfUp(kInfinity), 1);
    EXPECT_EQ(RoundHalfUp(1e300), 1);
}

TEST(Round, IsTheFunctionThatHostsFindAsRound) {
    EXPECT_EQ(ExportedRound(2.5), 3);
    EXPECT_EQ(ExportedRound(-2.5), -2);
}

TEST(RoundDiscount, RoundsHalfUpOnEitherSideOfZero) {
    EXPECT_EQ(RoundDiscount(0.0), 0);
    EXPECT_EQ(RoundDiscount(0.5), 1);
    EXPECT_EQ(RoundDiscount(0.49), 0);
    EXPECT_EQ(RoundDiscount(2.5), 3);
    EXPECT_EQ(RoundDiscount(2.49), 2);
    EXPECT_EQ(RoundDiscount(599.7), 600);
    EXPECT_EQ(RoundDiscount(-599.7), -600);
    EXPECT_EQ(RoundDiscount(-599.3), -599);
    EXPECT_EQ(RoundDiscount(-2.5), -2);
    EXPECT_EQ(RoundDiscount(-2.500001), -3);
    EXPECT_EQ(RoundDiscount(-0.5), 0);
    EXPECT_EQ(RoundDiscount(-0.75), -1);
    EXPECT_EQ(RoundDiscount(-3.0), -3);
}

TEST(ULtoHex, GivesDecimalDigitsAsNumbers) {
    EXPECT_EQ(ULtoHex(305), (Digits{3, 0, 5}));
    EXPECT_EQ(ULtoHex(7), (Digits{7}));
    EXPECT_EQ(ULtoHex(10), (Digits{1, 0}));
    EXPECT_EQ(ULtoHex(4294967295UL), (Digits{4, 2, 9, 4, 9, 6, 7, 2, 9, 5}));
}

TEST(ULtoHex, KeepsZeroWithoutDigits) {
    EXPECT_EQ(ULtoHex(0), Digits{});
}

Digits Field(std::uint32_t n, std::size_t size) {
    Digits field(size + 2, 0xEE);
    PutDigits(n, field.data() + 1, size);
    return field;
}

TEST(PutDigits, AlignsToTheRightAndZeroesTheRest) {
    EXPECT_EQ(Field(1234, 7), (Digits{0xEE, 0, 0, 0, 1, 2, 3, 4, 0xEE}));
    EXPECT_EQ(Field(0, 3), (Digits{0xEE, 0, 0, 0, 0xEE}));
    EXPECT_EQ(Field(987, 3), (Digits{0xEE, 9, 8, 7, 0xEE}));
}

TEST(PutDigits, NumberThatIsTooLongKeepsItsLastDigits) {
    EXPECT_EQ(Field(12345, 3), (Digits{0xEE, 3, 4, 5, 0xEE}));
    EXPECT_EQ(Field(4294967295U, 6), (Digits{0xEE, 9, 6, 7, 2, 9, 5, 0xEE}));
}

}  // namespace
}  // namespace test
