#include "engine/check.h"

#include <gtest/gtest.h>

namespace test {
namespace {

sale Line(std::uint32_t price, float count) {
    sale line;
    line.price = price;
    line.count = count;
    return line;
}

double SumOf(std::uint32_t price, float count, int discount = 0) {
    TCheck check;
    check.sales = {Line(price, count)};
    check.discount = discount;
    return check.sum();
}

TEST(Check, StartsEmpty) {
    const TCheck check;
    EXPECT_TRUE(check.sales.empty());
    EXPECT_EQ(check.mode, 0);
    EXPECT_EQ(check.discount, 0);
    EXPECT_EQ(check.cash, 0U);
    EXPECT_EQ(check.sum(), 0.0);
}

TEST(Check, ModesAreSaleReturnAndCredit) {
    EXPECT_EQ(mode_sale, 0);
    EXPECT_EQ(mode_return, 1);
    EXPECT_EQ(mode_credit, 2);
}

TEST(Check, ClearResetsLinesModeDiscountAndCash) {
    TCheck check;
    check.sales = {Line(100, 1)};
    check.mode = 2;
    check.discount = -5;
    check.cash = 1000;
    check.clear();
    EXPECT_TRUE(check.sales.empty());
    EXPECT_EQ(check.mode, 0);
    EXPECT_EQ(check.discount, 0);
    EXPECT_EQ(check.cash, 0U);
}

TEST(CheckSum, AddsTheLines) {
    TCheck check;
    check.sales = {Line(1999, 3), Line(250, 2), Line(1, 1)};
    EXPECT_EQ(check.sum(), 6498.0);
}

TEST(CheckSum, LineAmountIsRoundedHalfUp) {
    EXPECT_EQ(SumOf(5, 0.5F), 3.0);
    EXPECT_EQ(SumOf(249, 0.01F), 2.0);
    EXPECT_EQ(SumOf(7, 0.25F), 2.0);
}

TEST(CheckSum, EachLineIsRoundedBeforeItIsAdded) {
    TCheck check;
    check.sales = {Line(5, 0.5F), Line(5, 0.5F)};
    EXPECT_EQ(check.sum(), 6.0);
}

TEST(CheckSum, KeepsTheProductInSinglePrecision) {
    EXPECT_EQ(SumOf(1'234'567, 64.999F), 80'245'624.0);  // 80245621 in double precision
    EXPECT_EQ(SumOf(16'777'217, 1), 16'777'216.0);       // the price itself does not fit
    EXPECT_EQ(SumOf(1500, 0.009F), 13.0);                // 13.5 kopecks, seen as 13.499999
}

TEST(CheckSum, DiscountIsTakenFromEachLine) {
    EXPECT_EQ(SumOf(1999, 3, -10), 5397.0);
    TCheck check;
    check.sales = {Line(1999, 3), Line(1999, 3)};
    check.discount = -10;
    EXPECT_EQ(check.sum(), 10'794.0);
}

TEST(CheckSum, SurchargeIsAdded) {
    EXPECT_EQ(SumOf(1999, 3, 10), 6597.0);
    EXPECT_EQ(SumOf(100, 1, 99), 199.0);
}

TEST(CheckSum, EveryPercentageCounts) {
    for (int percent = -99; percent <= 99; ++percent) {
        EXPECT_EQ(SumOf(10'000, 1, percent), 10'000 + 100 * percent);
    }
}

TEST(CheckSum, DiscountPartIsRoundedHalfUpOnEitherSideOfZero) {
    EXPECT_EQ(SumOf(5, 1, -50), 3.0);  // -2.5 is -2
    EXPECT_EQ(SumOf(5, 1, 50), 8.0);   // 2.5 is 3
    EXPECT_EQ(SumOf(1, 1, -51), 0.0);  // -0.51 is -1
    EXPECT_EQ(SumOf(1, 1, -50), 1.0);  // -0.5 is 0
    EXPECT_EQ(SumOf(1, 1, 49), 1.0);
}

TEST(CheckSum, NegativeLineIsCutTowardZero) {
    EXPECT_EQ(SumOf(150, -2), -300.0);
    EXPECT_EQ(SumOf(17, -0.1F), -1.0);  // -1.7
    EXPECT_EQ(SumOf(150, -2, -10), -270.0);
}

TEST(CheckSum, DiscountProductWrapsAtThirtyTwoBits) {
    // 50 * 1000000000 leaves -1539607552 in 32 bits.
    EXPECT_EQ(SumOf(1'000'000'000, 1, 50), 984'603'924.0);
}

TEST(CheckSum, AmountsReachFourThousandMillion) {
    EXPECT_EQ(SumOf(4'294'967'040U, 1), 4'294'967'040.0);
    TCheck check;
    check.sales = {Line(4'294'967'040U, 1), Line(4'294'967'040U, 1)};
    EXPECT_EQ(check.sum(), 8'589'934'080.0);
}

TEST(CheckSum, DiscountOfAnAmountAboveTwoThousandMillion) {
    // 1 * 4294967040 is -256 in 32 bits, a hundredth of it -2.56.
    EXPECT_EQ(SumOf(4'294'967'040U, 1, 1), 4'294'967'037.0);
}

}  // namespace
}  // namespace test
