// Keys, locks, the cashier's acts, paper, power and shift.
#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

void press(Bench& bench, int key_code) {
    EXPECT_EQ(Reply{0xA9}, bench.send(0x29, {key_code}));
}

TEST(Keys, ClearAndCancelDropTheCheckOnEveryFirmware) {
    for (int firmware : {300, 301, 302, 303, 310, 400}) {
        Bench bench(firmware);
        bench.go_to_check_out();
        press(bench, 0x20);
        EXPECT_EQ(0xA0, bench.state());
        EXPECT_EQ(1, bench.model.memory().sale_number());
        press(bench, 0x28);
        EXPECT_EQ(0xC5, bench.state());
        EXPECT_EQ(0, bench.model.memory().sale_number());
        bench.reset();
        EXPECT_EQ(0xA0, bench.state());
    }
}

TEST(Keys, CancelAloneDoesNothing) {
    Bench bench;
    bench.sell();
    press(bench, 0x28);
    press(bench, 0x20);
    press(bench, 0x00);
    press(bench, 0x28);
    EXPECT_EQ(1, bench.model.memory().sale_number());
}

TEST(Keys, ClearAndCancelWithoutACheckLeaveTheRegisterIdle) {
    Bench bench;
    bench.model.ask_host();
    press(bench, 0x20);
    press(bench, 0x28);
    EXPECT_EQ(0xA0, bench.state());
}

TEST(Keys, CopyPrintsTheLastCheckAndCountsNothing) {
    Bench bench;
    press(bench, 0x2B);
    EXPECT_TRUE(bench.model.paper().lines().empty());
    bench.print_check();
    const std::size_t lines = bench.model.paper().lines().size();
    press(bench, 0x2B);
    EXPECT_EQ(2 * lines + 1, bench.model.paper().lines().size());
    EXPECT_EQ(1, bench.model.memory().checks);
    EXPECT_EQ(1, bench.model.memory().tape.count());
    bench.sell();
    press(bench, 0x2B);
    EXPECT_EQ(2 * lines + 1, bench.model.paper().lines().size());
}

TEST(Keys, KeyZeroIsHarmless) {
    Bench bench;
    bench.go_to_check_out();
    press(bench, 0x00);
    EXPECT_EQ(0xC8, bench.state());
    EXPECT_EQ(1, bench.model.memory().sale_number());
}

TEST(SimpleLock, ShutsTheCashierOutUntilAReset) {
    for (int firmware : {301, 302, 303, 310, 400}) {
        Bench bench(firmware);
        EXPECT_EQ(Reply{0xAF}, bench.send(0x10));
        EXPECT_EQ(0xCE, bench.state());
        EXPECT_FALSE(bench.model.ask_host());
        EXPECT_FALSE(bench.model.press(0x2B));
        bench.reset();
        EXPECT_EQ(0xCB, bench.state());
        EXPECT_TRUE(bench.model.ask_host());
    }
}

TEST(SimpleLock, ItsResetDoesNotPrintTheCheck) {
    Bench bench;
    bench.go_to_check_out();
    bench.send(0x10);
    bench.send(0x10);
    bench.reset();
    EXPECT_EQ(0xC8, bench.state());
    EXPECT_TRUE(bench.model.printed().empty());
    bench.reset();
    EXPECT_EQ(1u, bench.model.printed().size());
}

TEST(LockSwitch, HoldsThroughResets) {
    Bench bench(310);
    EXPECT_EQ(Reply{0xB7}, bench.send(0x36, {0}));
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_TRUE(bench.model.keyboard_locked());
    EXPECT_FALSE(bench.model.ask_host());
    EXPECT_FALSE(bench.model.cancel());
    EXPECT_FALSE(bench.model.close_shift());
    EXPECT_EQ(Reply{0xB7}, bench.send(0x36, {1}));
    EXPECT_FALSE(bench.model.keyboard_locked());
    EXPECT_TRUE(bench.model.ask_host());
}

TEST(LockSwitch, DoesNotStopTheHostsKeys) {
    Bench bench(310);
    bench.send(0x36, {0});
    bench.sell();
    press(bench, 0x20);
    press(bench, 0x28);
    EXPECT_EQ(0, bench.model.memory().sale_number());
}

TEST(Cashier, CancelWithoutACheckTellsTheHostCodeSeven) {
    Bench bench;
    EXPECT_TRUE(bench.model.cancel());
    EXPECT_EQ((Reply{0xA1, 0, 7, 0, 0, 0, 0, 0}), bench.status());
    bench.model.ask_host();
    EXPECT_EQ((Reply{0xA1, 0, 0, 0, 0, 0, 0, 0}), bench.status());
    EXPECT_TRUE(bench.model.cancel());
    EXPECT_EQ((Reply{0xA1, 0, 7, 0, 0, 0, 0, 0}), bench.status());
}

TEST(Cashier, CancelWithACheckClearsIt) {
    Bench bench;
    bench.sell();
    EXPECT_TRUE(bench.model.cancel());
    EXPECT_EQ(0xC5, bench.state());
    EXPECT_EQ(0, bench.model.memory().sale_number());
}

TEST(Cashier, CannotAskWithAClosedCheck) {
    Bench bench;
    bench.go_to_check_out();
    EXPECT_FALSE(bench.model.ask_host());
    EXPECT_FALSE(bench.model.ask_host_by_barcode("1"));
    EXPECT_FALSE(bench.model.delete_last_line());
    EXPECT_EQ(0xC8, bench.state());
}

TEST(Cashier, CanAskWithLinesInTheCheck) {
    Bench bench;
    bench.sell();
    EXPECT_TRUE(bench.model.ask_host());
    EXPECT_EQ(0xA1, bench.state());
    EXPECT_EQ(1, bench.model.memory().sale_number());
}

TEST(Cashier, DeletingTheOnlyLineEndsTheCheck) {
    Bench bench;
    EXPECT_FALSE(bench.model.delete_last_line());
    bench.sell();
    bench.send(0x23, {10});
    EXPECT_TRUE(bench.model.delete_last_line());
    EXPECT_FALSE(bench.model.open_check().is_open());
    EXPECT_EQ(0, bench.model.open_check().discount_percent);
}

TEST(Paper, WithoutItACheckIsNotRegisteredAndStaysOpen) {
    Bench bench;
    bench.go_to_check_out();
    bench.model.paper_out();
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ((Reply{0x84, 16}), bench.send(0x04, {0x19, 0x56, 1}));
    EXPECT_EQ((Reply{0x84, 1}), bench.send(0x04, {0x15, 0x95, 1}));
    EXPECT_TRUE(bench.model.printed().empty());
    EXPECT_EQ(0, bench.model.memory().checks);
    EXPECT_EQ(0, bench.model.memory().tape.count());
    EXPECT_EQ(100000, bench.model.memory().drawer_kopecks);
}

TEST(Paper, BackInTheCashiersNextKeyPrintsTheCheck) {
    Bench bench;
    bench.go_to_check_out();
    bench.send(0x28, {0, 0, 0, 0x27, 0x10});
    bench.model.paper_out();
    bench.reset();
    EXPECT_TRUE(bench.model.press(0x0D));
    EXPECT_TRUE(bench.model.printed().empty());
    bench.model.paper_in();
    EXPECT_EQ(16, bench.model.memory().last_error());
    EXPECT_TRUE(bench.model.press(0x0D));
    ASSERT_EQ(1u, bench.model.printed().size());
    EXPECT_EQ(4003u, bench.model.printed()[0].change_kopecks);
    EXPECT_EQ(0, bench.model.memory().last_error());
    EXPECT_EQ(1, bench.model.memory().tape.count());
}

TEST(Paper, BackInTheHostsKeysPrintNothing) {
    Bench bench;
    bench.go_to_check_out();
    bench.model.paper_out();
    bench.reset();
    bench.model.paper_in();
    press(bench, 0x00);
    bench.reset();
    EXPECT_TRUE(bench.model.printed().empty());
    EXPECT_EQ((Reply{0xE4, 1}), bench.send(0x25, {6}));
    bench.reset();
    bench.reset();
    EXPECT_EQ(1u, bench.model.printed().size());
}

TEST(Paper, TheCashierCanDropTheCheckInstead) {
    Bench bench;
    bench.go_to_check_out();
    bench.model.paper_out();
    bench.reset();
    bench.model.paper_in();
    EXPECT_TRUE(bench.model.press(0x20));
    EXPECT_TRUE(bench.model.press(0x28));
    EXPECT_EQ(0, bench.model.memory().sale_number());
    EXPECT_EQ(0, bench.model.memory().last_error());
    EXPECT_TRUE(bench.model.printed().empty());
}

TEST(Paper, EndingInTheMiddleOfAReceiptRegistersNothing) {
    Bench bench;
    bench.model.paper_in(3);
    bench.print_check();
    EXPECT_EQ(3u, bench.model.paper().lines().size());
    EXPECT_FALSE(bench.model.paper().present());
    EXPECT_EQ(16, bench.model.memory().last_error());
    EXPECT_TRUE(bench.model.printed().empty());
    bench.model.paper_in();
    bench.model.press(0x0D);
    EXPECT_EQ(1u, bench.model.printed().size());
}

TEST(Paper, ARollThatIsJustLongEnoughPrintsTheReceipt) {
    Bench bench;
    bench.print_check();
    const std::size_t lines = bench.model.paper().lines().size();
    bench.model.paper_in(lines);
    bench.print_check();
    EXPECT_EQ(2u, bench.model.printed().size());
    EXPECT_EQ(0, bench.model.memory().last_error());
}

TEST(Paper, FreeTextWithoutItSetsTheError) {
    Bench bench;
    bench.model.paper_out();
    EXPECT_EQ(Reply{0xB1}, bench.send(0x31, std::vector<int>(19, 0x41)));
    EXPECT_EQ(16, bench.model.memory().last_error());
    EXPECT_TRUE(bench.model.paper().lines().empty());
}

TEST(Paper, ReceiptsTakeTheirTimeAndKeepTheRegisterDeaf) {
    Settings settings;
    settings.print_us_per_line = 1000;
    Bench bench(303, settings);
    bench.go_to_check_out();
    EXPECT_EQ(Reply{0x90}, bench.send(0x7F));
    EXPECT_TRUE(bench.model.printing());
    EXPECT_TRUE(bench.send(0x20).empty());
    EXPECT_FALSE(bench.model.ask_host());
    const auto lines = static_cast<std::int64_t>(bench.model.paper().lines().size());
    bench.now_us = lines * 1000 - 1;
    EXPECT_TRUE(bench.send(0x20).empty());
    bench.now_us = lines * 1000;
    EXPECT_EQ(Reply{0xA0}, bench.send(0x20));
}

TEST(Power, OffKeepsSilent) {
    Bench bench;
    bench.model.power_off();
    EXPECT_TRUE(bench.send(0x34).empty());
    EXPECT_FALSE(bench.model.ask_host());
    EXPECT_FALSE(bench.model.press(0x20));
    bench.model.power_on();
    EXPECT_EQ((Reply{0xB4, 3, 2, 0}), bench.send(0x34));
}

TEST(Power, OnKeepsTheOpenCheckButNotTheCheckOutNorTheLocks) {
    Bench bench;
    bench.go_to_check_out();
    bench.send(0x36, {0});
    bench.send(0x10);
    bench.model.power_off();
    bench.model.power_on();
    EXPECT_EQ(0xCB, bench.state());
    EXPECT_EQ(1, bench.model.memory().sale_number());
    EXPECT_FALSE(bench.model.keyboard_locked());
    bench.reset();
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_TRUE(bench.model.printed().empty());
    EXPECT_EQ(Reply{0xB5}, bench.send(0x35));
    EXPECT_EQ(0xCA, bench.state());
}

TEST(Power, OnEmptiesTheIndicator) {
    Bench bench;
    std::vector<int> text(18, 'A');
    text[16] = 16;
    text[17] = 2;
    bench.send(0x07, text);
    EXPECT_EQ("AAAAAAAAAAAAAAAA", bench.model.indicator());
    EXPECT_EQ(16, bench.model.indicator_value());
    EXPECT_EQ(2, bench.model.indicator_mode());
    bench.model.power_off();
    bench.model.power_on();
    EXPECT_EQ("", bench.model.indicator());
}

TEST(Indicator, AMessageLeavesTheStateAlone) {
    Bench bench;
    bench.model.ask_host();
    EXPECT_EQ(Reply{0x91}, bench.send(0x7E, std::vector<int>(18, 'B')));
    EXPECT_EQ(0xA1, bench.state());
    EXPECT_EQ("BBBBBBBBBBBBBBBB", bench.model.indicator());
}

TEST(Shift, TheFirstCheckOpensIt) {
    Bench bench;
    EXPECT_EQ((Reply{0x82, 0x55}), bench.send(0x02, {0x05, 0x29, 1}));
    bench.print_check();
    EXPECT_EQ((Reply{0x82, 0xAA}), bench.send(0x02, {0x05, 0x29, 1}));
}

TEST(Shift, ClosingChargesTheTurnoverAndBeginsANewTape) {
    Bench bench;
    bench.print_check(6);
    bench.print_check(1);
    bench.print_check(2);
    EXPECT_EQ((Reply{0x82, 0, 0, 0, 0, 0, 0, 0, 0}), bench.send(0x02, {0x04, 0xF7, 8}));
    EXPECT_TRUE(bench.model.close_shift());
    // The sale and the credit, 59.97 each; a refund takes nothing off.
    EXPECT_EQ((Reply{0x82, 0, 0, 0, 0, 0, 0, 0x2E, 0xDA}), bench.send(0x02, {0x04, 0xF7, 8}));
    EXPECT_EQ((Reply{0x8A, 0, 2, 0, 0, 0, 0, 0x00, 0x00, 0x01, 0x86, 0xA0}), bench.send(0x0A));
    EXPECT_EQ((Reply{0x82, 0x55}), bench.send(0x02, {0x05, 0x29, 1}));
    EXPECT_FALSE(bench.model.close_shift());
    EXPECT_TRUE(bench.model.open_shift());
    EXPECT_FALSE(bench.model.open_shift());
}

TEST(Shift, CannotBeClosedWithAnOpenCheckOrWithoutPaper) {
    Bench bench;
    bench.print_check();
    bench.sell();
    EXPECT_FALSE(bench.model.close_shift());
    bench.send(0x03);
    bench.model.paper_out();
    EXPECT_FALSE(bench.model.close_shift());
    EXPECT_EQ(16, bench.model.memory().last_error());
    bench.model.paper_in();
    EXPECT_TRUE(bench.model.close_shift());
}

TEST(Shift, ItsBeginningStandsInTheMemoryForTheTape) {
    Settings settings;
    settings.clock_start_s = 1205590425;  // 15.03.2008 14:13:45
    Bench bench(303, settings);
    EXPECT_TRUE(bench.model.open_shift());
    EXPECT_EQ((Reply{0x82, 0x15, 0x03, 0x08}), bench.send(0x02, {0x05, 0x15, 3}));
    EXPECT_EQ((Reply{0x82, 0x5C}), bench.send(0x02, {0x37, 0x00, 1}));
    EXPECT_EQ((Reply{0x82, 3, 45}), bench.send(0x02, {0x37, 0x01, 2}));
}

}  // namespace
}  // namespace virtual_register
