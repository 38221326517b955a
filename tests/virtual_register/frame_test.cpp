#include "virtual_register/frame.h"

#include <gtest/gtest.h>

#include <vector>

namespace virtual_register {
namespace {

std::vector<Request> parse(FrameParser& parser, const std::vector<int>& bytes) {
    std::vector<Request> found;
    for (int byte : bytes) {
        parser.add(static_cast<std::uint8_t>(byte));
        while (const auto request = parser.next()) {
            found.push_back(*request);
        }
    }
    return found;
}

std::vector<Request> parse(const std::vector<int>& bytes) {
    FrameParser parser;
    return parse(parser, bytes);
}

TEST(Frame, AnswerHasStartLengthNumberCodePayloadAndSum) {
    const FrameBytes frame = build_frame({0xB4, {3, 2, 0}}, 1);
    EXPECT_EQ((FrameBytes{0x00, 0x06, 0x01, 0xB4, 0x03, 0x02, 0x00, 0xBA}), frame);
}

TEST(Frame, LongestAnswerHasLengthByte200) {
    Answer answer;
    answer.code = 0x84;
    for (int i = 0; i < 300; ++i) {
        answer.payload.add(0xFF);
    }
    const FrameBytes frame = build_frame(answer, 0);
    EXPECT_EQ(200, frame[1]);
    EXPECT_EQ(202u, frame.size());
}

TEST(FrameParser, FindsARequestWithoutPayload) {
    const auto found = parse({0x00, 0x03, 0x00, 0x34, 0x34});
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ(0, found[0].net_number);
    EXPECT_EQ(0x34, found[0].command);
    EXPECT_TRUE(found[0].payload.empty());
}

TEST(FrameParser, SumCoversTheNetworkNumber) {
    const auto found = parse({0x00, 0x03, 0x05, 0x34, 0x39});
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ(5, found[0].net_number);
    EXPECT_TRUE(parse({0x00, 0x03, 0x05, 0x34, 0x34}).empty());
}

TEST(FrameParser, TakesThePayload) {
    const auto found = parse({0x00, 0x05, 0x00, 0x0B, 0x07, 0x01, 0x13});
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ((RequestPayload{0x07, 0x01}), found[0].payload);
}

TEST(FrameParser, FindsTwoRequestsOneAfterTheOther) {
    const auto found = parse({0x00, 0x03, 0x00, 0x34, 0x34, 0x00, 0x03, 0x00, 0x20, 0x20});
    ASSERT_EQ(2u, found.size());
    EXPECT_EQ(0x20, found[1].command);
}

TEST(FrameParser, FindsARequestAfterGarbage) {
    for (const std::vector<int>& garbage : {std::vector<int>{0xFF},
                                            {0x00},
                                            {0x00, 0x00},
                                            {0x00, 0x02},
                                            {0x31, 0x32, 0x33},
                                            {0x00, 0x03, 0x01, 0x34, 0x36},
                                            {0x00, 0x03, 0x00}}) {
        std::vector<int> bytes = garbage;
        bytes.insert(bytes.end(), {0x00, 0x03, 0x00, 0x20, 0x20});
        const auto found = parse(bytes);
        ASSERT_EQ(1u, found.size());
        EXPECT_EQ(0x20, found[0].command);
    }
}

TEST(FrameParser, ForgetsAnUnfinishedFrameWhenTheLineWasSilent) {
    FrameParser parser;
    EXPECT_TRUE(parse(parser, {0x00, 0x29, 0x00, 0x21, 0x41}).empty());
    parser.line_was_silent();
    EXPECT_EQ(1u, parse(parser, {0x00, 0x03, 0x00, 0x20, 0x20}).size());
}

// Nothing is escaped on the line: bytes of a broken frame can look like the head of a long one.
TEST(FrameParser, ABrokenFrameIsOverWhenTheLineWasSilent) {
    FrameParser parser;
    EXPECT_TRUE(parse(parser, {0x00, 0x03, 0x00, 0x34, 0x35}).empty());
    parser.line_was_silent();
    EXPECT_EQ(1u, parse(parser, {0x00, 0x03, 0x00, 0x20, 0x20}).size());
}

TEST(FrameParser, LivesThroughEveryByteValueInEveryPlace) {
    FrameParser parser;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            parse(parser, {0, first, second});
        }
    }
    parser.line_was_silent();
    EXPECT_EQ(1u, parse(parser, {0x00, 0x03, 0x00, 0x20, 0x20}).size());
}

TEST(FrameParser, TakesTheLongestRequest) {
    std::vector<int> bytes{0x00, 0xFF, 0x00, 0x0C};
    for (int i = 0; i < 252; ++i) {
        bytes.push_back(0x01);
    }
    bytes.push_back((0x0C + 252) % 256);
    const auto found = parse(bytes);
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ(252u, found[0].payload.size());
}

}  // namespace
}  // namespace virtual_register
