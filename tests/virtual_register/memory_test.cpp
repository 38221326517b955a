#include "virtual_register/memory.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

Reply text_reply(int code, std::string_view text) {
    Reply reply{code};
    for (char letter : text) {
        reply.push_back(static_cast<std::uint8_t>(letter));
    }
    return reply;
}

TEST(Memory, SerialNumberStandsWhereEachFirmwareKeepsIt) {
    EXPECT_EQ(text_reply(0x84, "00012345"), Bench(301).send(0x04, {0x1A, 0x5C, 8}));
    EXPECT_EQ(text_reply(0x84, "00012345"), Bench(302).send(0x04, {0x1A, 0x5D, 8}));
    EXPECT_EQ(text_reply(0x84, "00012345"), Bench(303).send(0x04, {0x1A, 0x5D, 8}));
    EXPECT_EQ(text_reply(0x84, "00012345"), Bench(310).send(0x04, {0x16, 0x58, 8}));
    EXPECT_EQ(text_reply(0x95, "00012345"), Bench(400).send(0x15));
}

TEST(Memory, SaleNumberStandsWhereEachFirmwareKeepsIt) {
    const std::vector<std::pair<int, std::vector<int>>> places{{301, {0x15, 0x94, 1}},
                                                               {302, {0x15, 0x95, 1}},
                                                               {303, {0x15, 0x95, 1}},
                                                               {310, {0x09, 0x14, 1}}};
    for (const auto& [firmware, place] : places) {
        Bench bench(firmware);
        EXPECT_EQ((Reply{0x84, 0}), bench.send(0x04, place));
        bench.sell();
        bench.sell();
        EXPECT_EQ((Reply{0x84, 2}), bench.send(0x04, place));
        bench.send(0x25, {6});
        bench.reset();
        EXPECT_EQ((Reply{0x84, 2}), bench.send(0x04, place));
        bench.reset();
        EXPECT_EQ((Reply{0x84, 0}), bench.send(0x04, place));
    }
    Bench bench(400);
    bench.sell();
    EXPECT_EQ((Reply{0xB7, 1}), bench.send(0x37));
}

TEST(Memory, LastErrorStandsWhereEachFirmwareKeepsIt) {
    const std::vector<std::pair<int, std::vector<int>>> places{
        {301, {0x15, 0x0D, 1}}, {302, {0x19, 0x56, 1}}, {303, {0x19, 0x56, 1}}};
    for (const auto& [firmware, place] : places) {
        Bench bench(firmware);
        EXPECT_EQ((Reply{0x84, 0}), bench.send(0x04, place));
        bench.model.paper_out();
        bench.print_check();
        EXPECT_EQ((Reply{0x84, 16}), bench.send(0x04, place));
    }
    for (int firmware : {310, 400}) {
        Bench bench(firmware);
        EXPECT_EQ((Reply{0xB8, 0}), bench.send(0x38));
        bench.model.paper_out();
        bench.print_check();
        EXPECT_EQ((Reply{0xB8, 16}), bench.send(0x38));
    }
}

TEST(Memory, HeaderAndFooterAreReadWhereTheyStand) {
    Bench bench;
    EXPECT_EQ(Reply{0x7C}, bench.send(0x0C, {'S', 'h', 'o', 'p'}));
    EXPECT_EQ(Reply{0x7D}, bench.send(0x0D, {'B', 'y', 'e'}));
    EXPECT_EQ((Reply{0x84, 'S', 'h', 'o', 'p', 0}), bench.send(0x04, {0x00, 0x00, 5}));
    EXPECT_EQ((Reply{0x84, 'B', 'y', 'e', 0}), bench.send(0x04, {0x00, 0xC0, 4}));
    EXPECT_EQ(96u, bench.send(0x04, {0x00, 0x00, 95}).size());
    EXPECT_EQ(58u, bench.send(0x04, {0x00, 0xC0, 57}).size());
}

TEST(Memory, ZeroBytesEmptyHeaderAndFooter) {
    Bench bench;
    bench.send(0x0C, {0});
    bench.send(0x0D, {0, 0});
    EXPECT_TRUE(without_padding(bench.model.memory().header()).empty());
    EXPECT_TRUE(without_padding(bench.model.memory().footer()).empty());
}

TEST(Memory, ALongHeaderDoesNotRunIntoItsNeighbours) {
    Bench bench;
    bench.send(0x0C, std::vector<int>(200, 'H'));
    bench.send(0x0D, std::vector<int>(200, 'F'));
    EXPECT_EQ(std::string(95, 'H'), bench.model.memory().header());
    EXPECT_EQ(std::string(57, 'F'), bench.model.memory().footer());
    EXPECT_EQ((Reply{0x84, 'H', 0}), bench.send(0x04, {0x00, 94, 2}));
    EXPECT_EQ((Reply{0x84, 'F', 0}), bench.send(0x04, {0x00, 0xC0 + 56, 2}));
}

TEST(Memory, TaxSettingsStandThirtySixBytesApart) {
    Identity identity;
    for (std::size_t i = 0; i < identity.taxes.size(); ++i) {
        identity.taxes[i] = static_cast<std::uint8_t>(100 + i);
    }
    Bench bench;
    bench.model = Model(Memory(identity));
    EXPECT_EQ((Reply{0x82, 100}), bench.send(0x02, {0x02, 0xA2, 1}));  // 674
    EXPECT_EQ((Reply{0x82, 101}), bench.send(0x02, {0x02, 0xC6, 1}));  // 710
    EXPECT_EQ((Reply{0x82, 116}), bench.send(0x02, {0x04, 0xE2, 1}));  // 1250
}

TEST(Memory, SectionIsKeptLessOne) {
    Identity identity;
    identity.section = 7;
    identity.firmware = 400;
    Bench bench;
    bench.model = Model(Memory(identity));
    EXPECT_EQ((Reply{0x82, 6}), bench.send(0x02, {0, 0, 0x00, 0x12, 1}));
}

TEST(Memory, PastTheEndReadsAllOnes) {
    Bench bench(400);
    EXPECT_EQ((Reply{0x82, 0, 0xFF}), bench.send(0x02, {0, 0, 0x3F, 0xFF, 2}));
    EXPECT_EQ((Reply{0x82, 0xFF}), bench.send(0x02, {0, 0xFF, 0xFF, 0xFF, 1}));
    EXPECT_EQ((Reply{0x84, 0, 0xFF}), bench.send(0x04, {0x1F, 0xFF, 2}));
}

TEST(Memory, AnAnswerHoldsNoMoreThanAFrameDoes) {
    EXPECT_EQ(198u, Bench().send(0x04, {0, 0, 255}).size());
    EXPECT_EQ(1u, Bench().send(0x04, {0, 0, 0}).size());
}

TEST(Memory, ParametersAreKept) {
    Bench bench;
    EXPECT_EQ(Reply{0x7B}, bench.send(0x0B, {7, 1}));
    EXPECT_EQ(1, bench.model.memory().parameter(7));
    bench.send(0x0B, {255, 9});
    EXPECT_EQ(9, bench.model.memory().parameter(255));
    EXPECT_EQ(1, bench.model.memory().parameter(7));
}

TEST(Clock, TellsSecondsFirstAndTheYearInTwoBytes) {
    Settings settings;
    settings.clock_start_s = 1213533870;  // 15.06.2008 12:44:30
    Bench bench(303, settings);
    bench.now_us = 60000000;
    EXPECT_EQ((Reply{0x86, 0x1E, 0x2D, 0x0C, 0x0F, 0x06, 0x07, 0xD8}), bench.send(0x06));
}

TEST(Statistics, WordsGoRound) {
    Bench bench;
    bench.model.memory().checks = 65535;
    bench.model.memory().tape.start(65535);
    bench.print_check();
    EXPECT_EQ((Reply{0x8A, 0, 1, 0, 0, 0, 0, 0x00, 0x00, 0x01, 0x9E, 0x0D}), bench.send(0x0A));
    EXPECT_EQ(32u, bench.send(0x12, {0xFF, 0xFF}).size());
}

}  // namespace
}  // namespace virtual_register
