#include "virtual_register/replay.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

Request request(int command, const std::vector<int>& payload = {}, int net_number = 0) {
    Request made;
    made.net_number = static_cast<std::uint8_t>(net_number);
    made.command = static_cast<std::uint8_t>(command);
    for (int byte : payload) {
        made.payload.add(static_cast<std::uint8_t>(byte));
    }
    return made;
}

// The firmware; the state, idle twice and then asking for a check; a reset; idle again.
constexpr const char* kRecording =
    "tarvo-register recording 1\n"
    "; firmware 302, serial 00012345\n"
    "line baud 57600\n"
    "0.250113 -> 0003003434  ; version\n"
    "0.251113 <- 000501B40302BA  ; version answered 3.2\n"
    "\n"
    "1.000000 -> 0003002020\n"
    "1.000001 <- 000301A0A1\n"
    "1.100000 -> 0003002020\n"
    "1.100000 <- 000301A0A1\n"
    "1.200000 -> 0003002020\n"
    "1.200000 <- 000301A1A2\n"
    "1.300000 -> 0003007F7F\n"
    "2.000000 -> 0003002020\n"
    "2.000000 <- 000301A0A1\n";

TEST(Recording, IsReadAsItWasWritten) {
    const Recording recording = read_recording(kRecording);
    EXPECT_EQ(57600, recording.baud);
    ASSERT_EQ(6u, recording.exchanges.size());
    const RecordedExchange& first = recording.exchanges[0];
    EXPECT_EQ(4u, first.line);
    EXPECT_EQ(0x34, first.request.command);
    ASSERT_TRUE(first.answer.has_value());
    EXPECT_EQ(1000, first.answer->delay_us);
    EXPECT_EQ((FrameBytes{0, 5, 1, 0xB4, 3, 2, 0xBA}), first.answer->bytes);
    EXPECT_FALSE(recording.exchanges[4].answer.has_value()) << "it met silence";
}

TEST(Recording, IsWrittenAsPeopleReadIt) {
    EXPECT_EQ("tarvo-register recording 1\n; firmware 303, serial 00012345\nline baud 9600\n",
              recording_head(9600, memory_of(303)));
    EXPECT_EQ("12.000250 -> 00040429204D  ; key 0x0020 (clear)\n",
              recorded_request(12000250, request(0x29, {0x20}, 4)));
    EXPECT_EQ("0.000000 <- 0003  ; cut\n", recorded_answer(0, FrameBytes{0, 3}, "cut"));
}

TEST(Recording, WhatIsWrongIsToldWithItsLine) {
    const std::string head = "tarvo-register recording 1\n";
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"", "line 1: not a recording of a register"},
        {"tarvo-register recording 2\n",
         "line 1: a recording of version 2; this program reads version 1"},
        {head, "line 2: nothing is recorded"},
        {head + "line baud 19200\n", "line 2: no register has this speed"},
        {head + "line baud\n", "line 2: \"baud\" has no value"},
        {head + "soon -> 0003002020\n", "line 2: a line begins with its time: 0.250113"},
        {head + "1.5 -> 0003002020\n", "line 2: a line begins with its time: 0.250113"},
        {head + "1.000000 -> 0003002021\n", "line 2: what the host sent is no whole frame"},
        {head + "1.000000 -> 000300202000\n", "line 2: what the host sent is no whole frame"},
        {head + "1.000000 -> 000\n", "line 2: bytes are written with two digits each"},
        {head + "1.000000 -> 0003002020 00\n", "line 2: \"00\" is too much"},
        {head + "1.000000 = 0003002020\n", "line 2: behind the time stands -> or <-"},
        {head + "1.000000 <- 0003002020\n", "line 2: an answer to nothing"},
        {head + "1.000000 -> 0003002020\n0.999999 <- 000301A0A1\n",
         "line 3: an answer before its request"},
        {head + "1.000000 -> 0003002020\n1.000000 <- 00\n1.000000 <- 00\n",
         "line 4: an answer to nothing"},
    };
    for (const auto& [text, said] : wrong) {
        try {
            read_recording(text);
            ADD_FAILURE() << said;
        } catch (const RecordingError& error) {
            EXPECT_EQ(said, error.what());
        }
    }
}

class ReplayTest : public testing::Test {
  protected:
    // The line of the recording that answers; 0 when nothing does.
    std::size_t answered_by(const Request& asked) {
        last = replay.next(asked);
        return last.exchange == nullptr ? 0 : last.exchange->line;
    }

    const Request version = request(0x34);
    const Request status = request(0x20);
    const Request reset = request(0x7F);
    Replay replay{read_recording(kRecording)};
    Replay::Outcome last;
};

TEST_F(ReplayTest, AnswersTheSameConversation) {
    EXPECT_FALSE(replay.finished());
    EXPECT_EQ(4u, answered_by(version));
    EXPECT_EQ(7u, answered_by(status));
    EXPECT_EQ(9u, answered_by(status));
    EXPECT_EQ(11u, answered_by(status));
    EXPECT_EQ(13u, answered_by(reset));
    EXPECT_FALSE(replay.finished());
    EXPECT_EQ(14u, answered_by(status));
    EXPECT_TRUE(replay.finished());
    EXPECT_EQ(6u, replay.done());
    EXPECT_EQ(6u, replay.all());
}

TEST_F(ReplayTest, AHostThatLooksLessOftenIsFollowed) {
    answered_by(version);
    EXPECT_EQ(7u, answered_by(status));
    EXPECT_EQ(13u, answered_by(reset));
    EXPECT_EQ(2u, last.passed_over);
}

TEST_F(ReplayTest, AHostThatLooksMoreOftenSeesTheLastStateAgain) {
    answered_by(version);
    for (int i = 0; i < 3; ++i) {
        answered_by(status);
    }
    EXPECT_EQ(4u, answered_by(version));
    EXPECT_EQ(11u, answered_by(status));
    EXPECT_EQ(13u, answered_by(reset));
    answered_by(status);
    EXPECT_EQ(14u, answered_by(status));
    EXPECT_TRUE(replay.finished());
}

TEST_F(ReplayTest, AFirstLookMayNotBeLeftOut) {
    EXPECT_EQ(0u, answered_by(status));
    EXPECT_EQ("came \"status\" where line 4 of the recording has \"version\"", last.mismatch);
    answered_by(version);
    EXPECT_EQ(0u, answered_by(reset));
    EXPECT_EQ("came \"reset status\" where line 7 of the recording has \"status\"", last.mismatch);
}

TEST_F(ReplayTest, SomethingElseIsAMismatch) {
    answered_by(version);
    answered_by(status);
    EXPECT_EQ(0u, answered_by(request(0x25, {6})));
    EXPECT_EQ("came \"close check type 6\" where line 9 of the recording has \"status\"",
              last.mismatch);
    EXPECT_EQ(0u, answered_by(request(0x20, {}, 1))) << "another network number";
    EXPECT_EQ(2u, replay.done());
}

TEST_F(ReplayTest, AReadIsNotRepeatedAcrossAChange) {
    answered_by(version);
    answered_by(status);
    answered_by(reset);
    EXPECT_EQ(0u, answered_by(version));
}

TEST_F(ReplayTest, NothingMayFollowTheEndButAnotherLook) {
    answered_by(version);
    answered_by(status);
    answered_by(reset);
    answered_by(status);
    EXPECT_EQ(14u, answered_by(status));
    EXPECT_EQ(0u, answered_by(reset));
    EXPECT_EQ("came \"reset status\" behind the end of the recording", last.mismatch);
}

TEST(Replay, LooksLeftOverAtTheEndNeedNotCome) {
    Replay replay(
        read_recording("tarvo-register recording 1\n0.000000 -> 0003002020\n"
                       "1.000000 -> 0003002020\n"));
    EXPECT_FALSE(replay.finished());
    replay.next(request(0x20));
    EXPECT_TRUE(replay.finished());
}

}  // namespace
}  // namespace virtual_register
