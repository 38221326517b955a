#include "virtual_register/prompt.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

constexpr const char* kNotNow = "the register does not let it happen now";

TEST(Prompt, HostBarcodeAndCancelAskTheHost) {
    Bench bench;
    EXPECT_EQ("", obey(bench.model, "host").text);
    EXPECT_EQ(0xA1, bench.state());
    EXPECT_EQ("", obey(bench.model, " barcode 4601 ").text);
    EXPECT_EQ((Reply{0xA3, 0, 0, 0, 0, 0, 4, '4', '6', '0', '1'}), bench.status());
    EXPECT_EQ("", obey(bench.model, "cancel").text);
    EXPECT_EQ((Reply{0xA1, 0, 7, 0, 0, 0, 0, 0}), bench.status());
}

TEST(Prompt, WhatALockedKeyboardDoesNotLetHappenIsSaid) {
    Bench bench(310);
    bench.send(0x36, {0});
    for (const char* line :
         {"host", "barcode 1", "cancel", "key 0", "shift open", "shift close", "sell 1 A"}) {
        EXPECT_EQ(kNotNow, obey(bench.model, line).text) << line;
    }
}

TEST(Prompt, KeysAreDecimalOrHexadecimal) {
    Bench bench;
    bench.sell();
    EXPECT_EQ("", obey(bench.model, "key 32").text);
    EXPECT_EQ("", obey(bench.model, "key 0x28").text);
    EXPECT_EQ(0xC5, bench.state());
    for (const char* line : {"key", "key x", "key 256", "key 0x", "key 1x"}) {
        EXPECT_EQ("key needs a code from 0 to 255", obey(bench.model, line).text) << line;
    }
}

TEST(Prompt, SellTypesALine) {
    Bench bench;
    EXPECT_EQ("", obey(bench.model, "sell 19.9 Хлеб белый").text);
    EXPECT_EQ(
        (Reply{0xA2, 0,    1,    0,    0,    0,    1,    0,    0,   0,    0,    0,    0,    1,
               0,    0x00, 0x07, 0xC6, 0x95, 0xAB, 0xA5, 0xA1, ' ', 0xA1, 0xA5, 0xAB, 0xEB, 0xA9}),
        bench.status());
    EXPECT_EQ("sell needs a price and a name: sell 19.99 Milk", obey(bench.model, "sell 1").text);
    EXPECT_EQ("sell needs a price and a name: sell 19.99 Milk",
              obey(bench.model, "sell x Milk").text);
}

TEST(Prompt, PaperAndPower) {
    Bench bench;
    EXPECT_EQ("no paper", obey(bench.model, "paper out").text);
    EXPECT_FALSE(bench.model.paper().present());
    EXPECT_EQ("paper is in", obey(bench.model, "paper in").text);
    EXPECT_TRUE(bench.model.paper().present());
    EXPECT_EQ("paper is in", obey(bench.model, "paper in 2").text);
    bench.print_check();
    EXPECT_EQ(2u, bench.model.paper().lines().size());
    EXPECT_EQ("paper in needs a number of lines or nothing",
              obey(bench.model, "paper in some").text);
    EXPECT_EQ("paper out, or paper in", obey(bench.model, "paper").text);
    EXPECT_EQ("switched off", obey(bench.model, "power off").text);
    EXPECT_TRUE(bench.send(0x20).empty());
    EXPECT_EQ("switched on", obey(bench.model, "power on").text);
    EXPECT_EQ(0xCB, bench.state());
    EXPECT_EQ("power off, or power on", obey(bench.model, "power up").text);
}

TEST(Prompt, ShiftOpensAndCloses) {
    Bench bench;
    EXPECT_EQ("", obey(bench.model, "shift open").text);
    EXPECT_EQ(kNotNow, obey(bench.model, "shift open").text);
    EXPECT_EQ("", obey(bench.model, "shift close").text);
    EXPECT_EQ(0xCC, bench.state());
    EXPECT_EQ("shift open, or shift close", obey(bench.model, "shift").text);
}

TEST(Prompt, StatusTellsWhatTheRegisterHolds) {
    Bench bench;
    bench.print_check();
    bench.sell();
    EXPECT_EQ(
        "firmware 303, serial 00012345, network number 1, section 1\n"
        "state line added, keyboard free, paper yes, power yes, last error 0\n"
        "shift open, tape 1, checks 1, records 1, drawer 1059.97\n"
        "open check: 1 lines, total 59.97\n"
        "indicator \"\"",
        obey(bench.model, "status").text);
}

TEST(Prompt, QuitEndsAndTheUnknownIsSaid) {
    Bench bench;
    EXPECT_TRUE(obey(bench.model, "quit").quit);
    EXPECT_FALSE(obey(bench.model, "").quit);
    EXPECT_EQ("", obey(bench.model, "   ").text);
    EXPECT_EQ("\"quti\" is unknown; help tells what can be said", obey(bench.model, "quti").text);
    EXPECT_NE(std::string::npos, obey(bench.model, "help").text.find("host "));
}

}  // namespace
}  // namespace virtual_register
