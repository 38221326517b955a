#include "virtual_register/firmware.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

TEST(Firmware, EachMakeAnswersItsVersion) {
    EXPECT_EQ((Reply{0xB4, 3, 0}), Bench(300).send(0x34));
    EXPECT_EQ((Reply{0xB4, 2, 11}), Bench(301).send(0x34));
    EXPECT_EQ((Reply{0xB4, 3, 2}), Bench(302).send(0x34));
    EXPECT_EQ((Reply{0xB4, 3, 2, 0}), Bench(303).send(0x34));
    EXPECT_EQ((Reply{0xB4, 3, 10}), Bench(310).send(0x34));
    EXPECT_EQ((Reply{0xB4, 3, 12}), Bench(312).send(0x34));
    EXPECT_EQ((Reply{0xB4, 3, 4}), Bench(400).send(0x34));
}

TEST(Firmware, ThereIsNoOther) {
    EXPECT_EQ(nullptr, find_firmware(0));
    EXPECT_EQ(nullptr, find_firmware(304));
    EXPECT_EQ(nullptr, find_firmware(399));
    EXPECT_THROW(memory_of(304), std::invalid_argument);
}

// Which makes answer a command with a payload of the right length.
std::vector<int> makes_that_answer(int command, const std::vector<int>& payload) {
    std::vector<int> makes;
    for (int firmware : {300, 301, 302, 303, 310, 312, 400}) {
        if (!Bench(firmware).send(command, payload).empty()) {
            makes.push_back(firmware);
        }
    }
    return makes;
}

TEST(Firmware, CommandsComeAndGo) {
    EXPECT_EQ((std::vector<int>{302, 303, 310, 312, 400}), makes_that_answer(0x03, {}));
    EXPECT_EQ((std::vector<int>{400}), makes_that_answer(0x15, {}));
    EXPECT_EQ((std::vector<int>{302, 303, 310, 312, 400}),
              makes_that_answer(0x27, std::vector<int>(20)));
    EXPECT_EQ((std::vector<int>{301, 302, 303}), makes_that_answer(0x28, {0, 0, 0, 0, 0}));
    EXPECT_EQ((std::vector<int>{303, 310, 312, 400}), makes_that_answer(0x36, {0}));
    EXPECT_EQ((std::vector<int>{400}), makes_that_answer(0x37, {}));
    EXPECT_EQ((std::vector<int>{310, 312, 400}), makes_that_answer(0x38, {}));
    EXPECT_EQ((std::vector<int>{300, 301, 302, 303, 310, 312}),
              makes_that_answer(0x02, {0x00, 0x12, 1}));
    EXPECT_EQ((std::vector<int>{400}), makes_that_answer(0x02, {0, 0, 0x00, 0x12, 1}));
    EXPECT_TRUE(makes_that_answer(0x02, {0, 0x00, 0x12, 1}).empty());
}

TEST(Firmware, EveryOtherCommandIsAnsweredByAllWithItsCode) {
    const std::vector<std::pair<std::vector<int>, int>> commands{
        {{0x04, 0, 0, 1}, 0x84}, {{0x06}, 0x86},       {{0x0A}, 0x8A},
        {{0x0B, 7, 1}, 0x7B},    {{0x0C, 0}, 0x7C},    {{0x0D, 0, 0}, 0x7D},
        {{0x10}, 0xAF},          {{0x12, 0, 0}, 0x8B}, {{0x23, 5}, 0xB4},
        {{0x24, 1, 0, 0}, 0xB5}, {{0x25, 6}, 0xE4},    {{0x26, 0, 0, 0, 0, 0, 1}, 0xB6},
        {{0x29, 0}, 0xA9},       {{0x2A}, 0xAA},       {{0x30, 1}, 0xB0},
        {{0x34}, 0xB4},          {{0x35}, 0xB5},       {{0x7F}, 0x90},
        {{0x08, 0, 1}, 0x88}};
    for (int firmware : {300, 301, 302, 303, 310, 312, 400}) {
        for (const auto& [bytes, code] : commands) {
            const Reply reply =
                Bench(firmware).send(bytes[0], std::vector<int>(bytes.begin() + 1, bytes.end()));
            ASSERT_FALSE(reply.empty()) << firmware << " command " << bytes[0];
            EXPECT_EQ(code, reply[0]) << firmware << " command " << bytes[0];
        }
        const std::vector<int> eighteen(18, 0x20);
        EXPECT_EQ(Reply{0x87}, Bench(firmware).send(0x07, eighteen));
        EXPECT_EQ(Reply{0x91}, Bench(firmware).send(0x7E, eighteen));
        EXPECT_EQ(Reply{0xB1}, Bench(firmware).send(0x31, std::vector<int>(19, 0x20)));
        EXPECT_EQ(Reply{0xB2}, Bench(firmware).send(0x32, std::vector<int>(10, 0x20)));
        EXPECT_EQ(0x89, Bench(firmware).send(0x09, std::vector<int>(39)).at(0));
        EXPECT_EQ(0xC1, Bench(firmware).send(0x21, std::vector<int>(41)).at(0));
    }
}

TEST(Firmware, WrongLengthsAndUnknownCommandsAreNotAnswered) {
    Bench bench(400);
    EXPECT_TRUE(bench.send(0x01).empty());
    EXPECT_TRUE(bench.send(0x22).empty());
    EXPECT_TRUE(bench.send(0xFF).empty());
    EXPECT_TRUE(bench.send(0x21, std::vector<int>(40)).empty());
    EXPECT_TRUE(bench.send(0x21, std::vector<int>(42)).empty());
    EXPECT_TRUE(bench.send(0x29).empty());
    EXPECT_TRUE(bench.send(0x20, {0}).empty());
    EXPECT_TRUE(bench.send(0x24, {1, 0}).empty());
}

TEST(Firmware, OnlyItsOwnNumberAndZeroCallARegister) {
    Settings settings;
    settings.net_number = 5;
    Bench bench(303, settings);
    EXPECT_FALSE(bench.send(0x34, {}, 0).empty());
    EXPECT_FALSE(bench.send(0x34, {}, 5).empty());
    EXPECT_TRUE(bench.send(0x34, {}, 4).empty());
    EXPECT_TRUE(bench.send(0x34, {}, 255).empty());
}

TEST(Firmware, AnOldCheckHoldsNineteenLinesAndANewOneTwoHundredFiftyFive) {
    for (const auto& [firmware, lines] : std::vector<std::pair<int, int>>{
             {301, 19}, {302, 19}, {303, 255}, {310, 255}, {400, 255}}) {
        Bench bench(firmware);
        for (int i = 0; i < lines; ++i) {
            EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {1}, 0)));
        }
        EXPECT_EQ((Reply{0xC1, 2}), bench.send(0x21, Bench::sale("A", {1}, 0)));
        EXPECT_EQ(lines, bench.model.memory().sale_number());
        EXPECT_EQ((Reply{0xA7, 0, 1, 0, 0, lines}), bench.status());
    }
}

}  // namespace
}  // namespace virtual_register
