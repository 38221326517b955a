#include "companion/check.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace kkmcheck;

namespace {

Check OneLine(double price, double quantity, int discount = 0) {
    Check check;
    check.lines.push_back({"Milk", price, quantity, 1});
    check.discount = discount;
    return check;
}

std::int64_t Sum(double price, double quantity, int discount = 0) {
    return ExpectedRecords(OneLine(price, quantity, discount)).at(0).sum_kopecks;
}

}  // namespace

TEST(CompanionCheck, PiecesCostTheirPriceEach) {
    EXPECT_EQ(Sum(25.5, 2), 5100);
    EXPECT_EQ(Sum(0.01, 65535), 65535);
}

TEST(CompanionCheck, WeighedGoodsAreRoundedHalfUpToKopecks) {
    EXPECT_EQ(Sum(60, 0.345), 2070);
    EXPECT_EQ(Sum(0.01, 0.5), 1);
    EXPECT_EQ(Sum(0.01, 0.499), 0);
    EXPECT_EQ(Sum(19.99, 1.234), 2467);
}

TEST(CompanionCheck, WeightsAreKeptInThousandths) {
    EXPECT_EQ(ExpectedRecords(OneLine(1, 0.3456))[0].quantity_thousandths, 346);
    EXPECT_EQ(ExpectedRecords(OneLine(1, 3))[0].quantity_thousandths, 3000);
}

TEST(CompanionCheck, KeepsTheDriversReadingOfNoWeightAsOnePiece) {
    EXPECT_EQ(ExpectedRecords(OneLine(15, 0.0004))[0].quantity_thousandths, 1000);
    EXPECT_EQ(Sum(15, 0.0004), 0);
}

TEST(CompanionCheck, DiscountsFallOnEachLineHalfUpOnEitherSideOfZero) {
    EXPECT_EQ(Sum(19.99, 3, -10), 5397);
    EXPECT_EQ(Sum(0.05, 1, -50), 3);
    EXPECT_EQ(Sum(0.05, 1, 50), 8);
    EXPECT_EQ(Sum(100, 1, 99), 19900);
}

TEST(CompanionCheck, TheTotalIsTheSumOfTheLines) {
    Check check = OneLine(25.5, 2, -5);
    check.lines.push_back({"Tea", 199.99, 1, 1});
    EXPECT_EQ(TotalKopecks(check), 4845 + 18999);
}

TEST(CompanionCheck, RecordsBearTheModeAsTheirKind) {
    Check check = OneLine(1, 1);
    EXPECT_EQ(ExpectedRecords(check)[0].kind, 0);
    check.mode = Mode::refund;
    EXPECT_EQ(ExpectedRecords(check)[0].kind, 1);
    check.mode = Mode::credit;
    EXPECT_EQ(ExpectedRecords(check)[0].kind, 2);
}

TEST(CompanionCheck, WhatIsNoCheckIsRefused) {
    EXPECT_THROW(Examine(Check{}), BadCheck);
    EXPECT_THROW(Examine(OneLine(0, 1)), BadCheck);
    EXPECT_THROW(Examine(OneLine(1, 0)), BadCheck);
    EXPECT_THROW(Examine(OneLine(1, -1)), BadCheck);
    EXPECT_THROW(Examine(OneLine(std::nan(""), 1)), BadCheck);
    EXPECT_THROW(Examine(OneLine(1, std::numeric_limits<double>::infinity())), BadCheck);
    EXPECT_THROW(Examine(OneLine(1, 1, 100)), BadCheck);
    Check check = OneLine(1, 1);
    check.cash = -1;
    EXPECT_THROW(Examine(check), BadCheck);
    check.cash = 0;
    check.mode = static_cast<Mode>(3);
    EXPECT_THROW(Examine(check), BadCheck);
    EXPECT_NO_THROW(Examine(OneLine(1, 1, -99)));
}

TEST(CompanionCheck, WhatSumsCannotHoldIsRefused) {
    EXPECT_THROW(Examine(OneLine(1e9, 1e6)), BadCheck);
    EXPECT_THROW(Examine(OneLine(1e9, 1.001)), BadCheck);
    EXPECT_THROW(Examine(OneLine(1e7, 1e3, std::numeric_limits<int>::min())), BadCheck);
    EXPECT_THROW(Examine(OneLine(1, 1, std::numeric_limits<int>::max())), BadCheck);
    Check check = OneLine(1e9, 1);
    EXPECT_NO_THROW(Examine(check));
    EXPECT_EQ(TotalKopecks(check), 100000000000);
    check.lines.push_back(check.lines[0]);
    EXPECT_THROW(Examine(check), BadCheck);
    EXPECT_NO_THROW(Examine(OneLine(1e3, 1e6, 99)));
    EXPECT_EQ(Sum(1e3, 1e6, 99), 199000000000);
}

TEST(CompanionCheck, EveryFieldBelongsToTheContent) {
    const Check check = OneLine(1, 1);
    EXPECT_EQ(check, OneLine(1, 1));
    for (int field = 0; field < 7; ++field) {
        Check other = check;
        switch (field) {
            case 0:
                other.lines[0].name = "Milk ";
                break;
            case 1:
                other.lines[0].price = 1.01;
                break;
            case 2:
                other.lines[0].quantity = 2;
                break;
            case 3:
                other.lines[0].section = 2;
                break;
            case 4:
                other.mode = Mode::refund;
                break;
            case 5:
                other.discount = 1;
                break;
            default:
                other.cash = 5;
                break;
        }
        EXPECT_FALSE(check == other) << field;
    }
}
