// Discounts, closing, cash, clearing: what comes after the goods.
#include <gtest/gtest.h>

#include "bench.h"
#include "virtual_register/check.h"

namespace virtual_register {
namespace {

TEST(Discount, FallsOnEachLineRoundedHalfUp) {
    Bench bench;
    bench.send(0x21, Bench::sale("A", {1, 9, 9, 9}, 3));
    bench.send(0x21, Bench::sale("B", {5}, 0));
    EXPECT_EQ(Reply{0xB4}, bench.send(0x23, {0xF6}));  // -10 %
    EXPECT_EQ(0xC0, bench.state());
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    const PrintedCheck& check = bench.model.printed().at(0);
    EXPECT_EQ(-10, check.discount_percent);
    EXPECT_EQ(-600, check.discount_kopecks);  // -599.7 and -0.5
    EXPECT_EQ(5402u, check.total_kopecks);
    EXPECT_EQ(5397u, bench.model.memory().tape.find(0)->amount_kopecks);
    EXPECT_EQ(5u, bench.model.memory().tape.find(1)->amount_kopecks);
}

TEST(Discount, HalfAKopeckGoesUp) {
    EXPECT_EQ(-600, percent_of(5997, -10));
    EXPECT_EQ(-2, percent_of(5, -50));
    EXPECT_EQ(3, percent_of(5, 50));
    EXPECT_EQ(0, percent_of(1, 49));
    EXPECT_EQ(1, percent_of(1, 50));
    EXPECT_EQ(0, percent_of(1, -50));
    EXPECT_EQ(-1, percent_of(1, -51));
    EXPECT_EQ(-4252017622, percent_of(4294967295, -99));
}

TEST(Discount, ARepeatedOneReplacesTheEarlier) {
    Bench bench;
    bench.sell();
    bench.send(0x23, {10});
    bench.send(0x23, {10});
    EXPECT_EQ(600, bench.model.open_check().discount_kopecks());
    bench.send(0x23, {0xFB});
    EXPECT_EQ(-300, bench.model.open_check().discount_kopecks());
}

TEST(Discount, OneThatCannotBeIsAnsweredAndLeavesTheState) {
    Bench bench;
    bench.reset();
    EXPECT_EQ(Reply{0xB4}, bench.send(0x23, {10}));
    EXPECT_EQ(0xA0, bench.state());
    bench.sell();
    for (int percent : {100, 127, 0x80, 256 - 100}) {
        EXPECT_EQ(Reply{0xB4}, bench.send(0x23, {percent}));
        EXPECT_EQ(0xA2, bench.state());
    }
    bench.send(0x23, {256 - 99});
    EXPECT_EQ(0xC0, bench.state());
    bench.send(0x25, {6});
    bench.reset();
    EXPECT_EQ(Reply{0xB4}, bench.send(0x23, {10}));
    EXPECT_EQ(0xC8, bench.state());
    EXPECT_EQ(-99, bench.model.open_check().discount_percent);
}

TEST(Discount, ASurchargePastThirtyTwoBitsIsNotGiven) {
    Bench bench;
    bench.send(0x21, Bench::sale("A", {9, 9, 9, 9, 9, 9, 9}, 429));
    bench.reset();
    bench.send(0x23, {1});
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ(0, bench.model.open_check().discount_percent);
}

TEST(DiscountCard, AnEmptyOneOnlyBeginsTotals) {
    Bench bench;
    bench.sell();
    bench.reset();
    EXPECT_EQ(Reply{0xB5}, bench.send(0x24, {1, 0, 0}));
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_TRUE(bench.model.open_check().card_number.empty());
    EXPECT_EQ(0, bench.model.open_check().discount_kopecks());
}

TEST(DiscountCard, WithoutACheckItIsAnsweredAndForgotten) {
    Bench bench;
    bench.reset();
    EXPECT_EQ(Reply{0xB5}, bench.send(0x24, {1, 0, 3, '7', '7', 0}));
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_TRUE(bench.model.open_check().card_number.empty());
}

TEST(CloseCheck, NeedsLinesAndAKnownType) {
    Bench bench;
    EXPECT_EQ((Reply{0xE4, 0}), bench.send(0x25, {6}));
    bench.sell();
    EXPECT_EQ((Reply{0xE4, 0}), bench.send(0x25, {0}));
    EXPECT_EQ((Reply{0xE4, 0}), bench.send(0x25, {7}));
    EXPECT_EQ((Reply{0xE4, 1}), bench.send(0x25, {5}));
}

TEST(CloseCheck, CanBeRepeatedUntilTheCheckIsPrinted) {
    Bench bench;
    bench.go_to_check_out();
    EXPECT_EQ((Reply{0xE4, 1}), bench.send(0x25, {6}));
    EXPECT_EQ(0xC0, bench.state());
    EXPECT_EQ((Reply{0xE4, 1}), bench.send(0x25, {2}));
    bench.reset();
    EXPECT_EQ(0xC8, bench.state());
    bench.reset();
    ASSERT_EQ(1u, bench.model.printed().size());
    EXPECT_EQ(CheckType::credit, bench.model.printed()[0].type);
    EXPECT_EQ((Reply{0xE4, 0}), bench.send(0x25, {6}));
}

TEST(CloseCheck, ARefundBeyondTheDrawerIsRefused) {
    Identity identity;
    identity.drawer_kopecks = 5996;
    Bench bench;
    bench.model = Model(Memory(identity));
    bench.sell();
    EXPECT_EQ((Reply{0xE4, 0}), bench.send(0x25, {1}));
    EXPECT_EQ((Reply{0xE4, 0}), bench.send(0x25, {4}));
    bench.model.memory().drawer_kopecks = 5997;
    EXPECT_EQ((Reply{0xE4, 1}), bench.send(0x25, {1}));
}

TEST(CloseCheck, EachTypeMovesTheDrawerAndMarksTheTapeItsOwnWay) {
    struct Row {
        int type;
        int drawer;
        int kind;
        int payment;
    };
    for (const Row& row : {Row{6, 105997, 0, 0}, Row{1, 94003, 1, 0}, Row{2, 100000, 2, 1},
                           Row{3, 105997, 3, 0}, Row{4, 94003, 4, 0}, Row{5, 100000, 5, 0}}) {
        Bench bench;
        bench.print_check(row.type);
        EXPECT_EQ(row.drawer, bench.model.memory().drawer_kopecks) << row.type;
        EXPECT_EQ(row.kind, bench.send(0x12, {0, 0}).at(29)) << row.type;
        EXPECT_EQ(row.payment, bench.send(0x12, {0, 0}).at(30)) << row.type;
    }
}

TEST(Cash, GivesChange) {
    Bench bench;
    bench.go_to_check_out();
    EXPECT_EQ((Reply{0xE8, 0}), bench.send(0x28, {0, 0x00, 0x00, 0x27, 0x10}));  // 100.00
    EXPECT_EQ(0xC8, bench.state());
    bench.reset();
    const PrintedCheck& check = bench.model.printed().at(0);
    EXPECT_EQ(10000u, check.cash_kopecks);
    EXPECT_EQ(4003u, check.change_kopecks);
    EXPECT_EQ(105997, bench.model.memory().drawer_kopecks);
}

TEST(Cash, BelowTheTotalIsRefusedWithOne) {
    Bench bench;
    bench.go_to_check_out();
    EXPECT_EQ((Reply{0xE8, 1}), bench.send(0x28, {0, 0x00, 0x00, 0x17, 0x6C}));
    EXPECT_EQ((Reply{0xE8, 0}), bench.send(0x28, {0, 0x00, 0x00, 0x17, 0x6D}));
}

TEST(Cash, OutsideTheCheckOutIsRefusedWithTwo) {
    Bench bench;
    EXPECT_EQ((Reply{0xE8, 2}), bench.send(0x28, {0, 0, 1, 0, 0}));
    bench.sell();
    bench.send(0x25, {6});
    EXPECT_EQ((Reply{0xE8, 2}), bench.send(0x28, {0, 0, 1, 0, 0}));
}

TEST(Cash, IsNotUsedByRefundAndCredit) {
    for (int type : {1, 2}) {
        Bench bench;
        bench.go_to_check_out(type);
        EXPECT_EQ((Reply{0xE8, 0}), bench.send(0x28, {0, 0, 0, 0, 1}));
        bench.reset();
        ASSERT_EQ(1u, bench.model.printed().size());
        EXPECT_EQ(type == 1 ? 5997u : 0u, bench.model.printed()[0].cash_kopecks);
        EXPECT_EQ(0u, bench.model.printed()[0].change_kopecks);
    }
}

TEST(ClearCheck, LeavesNoTrace) {
    for (bool closed : {false, true}) {
        Bench bench;
        closed ? bench.go_to_check_out() : bench.sell();
        EXPECT_EQ(Reply{0x83}, bench.send(0x03));
        EXPECT_EQ(0xC5, bench.state());
        bench.reset();
        EXPECT_EQ(0xA0, bench.state());
        EXPECT_EQ(0, bench.model.memory().sale_number());
        EXPECT_EQ(0, bench.model.memory().tape.count());
        EXPECT_EQ(0, bench.model.memory().checks);
        EXPECT_TRUE(bench.model.paper().lines().empty());
    }
}

TEST(ClearCheck, WithNothingToClearChangesNothing) {
    Bench bench;
    EXPECT_TRUE(bench.model.ask_host());
    EXPECT_EQ(Reply{0x83}, bench.send(0x03));
    EXPECT_EQ(0xA1, bench.state());
}

TEST(ClearCheck, DropsALineThatIsBeingTyped) {
    Bench bench;
    EXPECT_TRUE(bench.model.enter_free_line(SaleLine{}));
    bench.send(0x03);
    EXPECT_EQ((Reply{0xC5, 0, 1, 0, 0, 0, 0}), bench.status());
}

TEST(ClearCheck, ForgetsDiscountAndCard) {
    Bench bench;
    bench.sell();
    bench.send(0x23, {10});
    bench.send(0x24, {1, 2, 2, '5', 0});
    bench.send(0x03);
    bench.sell();
    EXPECT_EQ(0, bench.model.open_check().discount_percent);
    EXPECT_EQ(0, bench.model.open_check().card_kind);
    EXPECT_TRUE(bench.model.open_check().card_number.empty());
    EXPECT_EQ(OpenCheck::Stage::lines, bench.model.open_check().stage);
}

TEST(QuerySale, WithoutACheckMakesTheRegisterAsk) {
    Bench bench;
    EXPECT_EQ(Reply{0xB5}, bench.send(0x35));
    EXPECT_EQ((Reply{0xA1, 0, 0, 0, 0, 0, 0, 0}), bench.status());
}

TEST(QuerySale, InAnOpenCheckAsksForABarcodeThenForACard) {
    Bench bench;
    bench.sell();
    EXPECT_EQ(Reply{0xB5}, bench.send(0x35));
    EXPECT_EQ((Reply{0xA3, 0, 0, 0, 0, 0, 0}), bench.status());
    bench.reset();
    bench.send(0x24, {1, 0, 0});
    bench.reset();
    EXPECT_EQ(Reply{0xB5}, bench.send(0x35));
    EXPECT_EQ(0xCA, bench.state());
}

TEST(QuerySale, FirmwareWithoutAClearCommandAsksForACardAtOnce) {
    Bench bench(301);
    bench.sell();
    EXPECT_EQ(Reply{0xB5}, bench.send(0x35));
    EXPECT_EQ(0xCA, bench.state());
}

TEST(CancelCheckOut, GoesBackToTheGoods) {
    Bench bench;
    bench.go_to_check_out();
    EXPECT_EQ(Reply{0xAA}, bench.send(0x2A));
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {1}, 0)));
    EXPECT_EQ(Reply{0xAA}, bench.send(0x2A));
    EXPECT_EQ(0xA2, bench.state());
}

TEST(Refusal, HitsTheNthRequestOnly) {
    Bench bench;
    bench.model.refuse(Command::sale, 2, 9);
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {1}, 0)));
    EXPECT_EQ((Reply{0xC1, 9}), bench.send(0x21, Bench::sale("B", {1}, 0)));
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("C", {1}, 0)));
    EXPECT_EQ(2, bench.model.memory().sale_number());
}

}  // namespace
}  // namespace virtual_register
