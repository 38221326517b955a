#include "virtual_register/scenario.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

using Texts = std::vector<std::string>;

// A register whose every request goes through a scenario.
class Stage : public Bench {
  public:
    explicit Stage(const std::string& text, int firmware = 303) : Bench(firmware), scenario(text) {}

    // The bytes that come back; empty for silence.
    Reply exchange(int command, const std::vector<int>& payload = {}) {
        Request request;
        request.command = static_cast<std::uint8_t>(command);
        for (int byte : payload) {
            request.payload.add(static_cast<std::uint8_t>(byte));
        }
        last = scenario.handle(model, request, now_us);
        return last.bytes ? Reply(last.bytes->begin(), last.bytes->end()) : Reply();
    }
    Reply sale() { return exchange(0x21, Bench::sale("Milk", {1, 9, 9, 9}, 3)); }
    std::size_t lines() const { return model.open_check().lines.size(); }

    Scenario scenario;
    Scenario::Exchange last;
};

const Reply kSaleTaken{0, 4, 1, 0xC1, 0, 0xC2};

TEST(Scenario, WithoutLinesNothingHappens) {
    Stage stage("\n   \n# only a remark\n");
    EXPECT_EQ(kSaleTaken, stage.sale());
    EXPECT_EQ(0, stage.last.delay_us);
    EXPECT_TRUE(stage.last.remarks.empty());
    EXPECT_EQ(std::nullopt, stage.scenario.next_us());
}

TEST(Scenario, ALostAnswerFollowsADoneRequest) {
    Stage stage("when sale 2 lose answer  # the host must ask\n");
    EXPECT_EQ(kSaleTaken, stage.sale());
    EXPECT_TRUE(stage.sale().empty());
    EXPECT_EQ(2u, stage.lines());
    ASSERT_TRUE(stage.last.answer.has_value());
    EXPECT_EQ((Texts{"line 1: when sale 2 lose answer"}), stage.last.remarks);
    EXPECT_EQ(kSaleTaken, stage.sale());
}

TEST(Scenario, ALostRequestIsNotHeard) {
    Stage stage("when sale lose request");
    EXPECT_TRUE(stage.sale().empty());
    EXPECT_FALSE(stage.last.answer.has_value());
    EXPECT_EQ(0u, stage.lines());
    EXPECT_EQ(kSaleTaken, stage.sale());
}

TEST(Scenario, DelaysOfSeveralLinesAddUp) {
    Stage stage("when sale delay 250ms\nwhen any delay 1.5s\n");
    EXPECT_EQ(kSaleTaken, stage.sale());
    EXPECT_EQ(1750000, stage.last.delay_us);
    EXPECT_EQ(2u, stage.last.remarks.size());
}

TEST(Scenario, AnAnswerIsCut) {
    Stage stage("when sale 1 cut 3\nwhen sale 2 cut 0\nwhen sale 3 cut 99\n");
    EXPECT_EQ((Reply{0, 4, 1}), stage.sale());
    EXPECT_EQ(Reply(), stage.sale());
    EXPECT_TRUE(stage.last.bytes.has_value());
    EXPECT_EQ(kSaleTaken, stage.sale());
}

TEST(Scenario, AnAnswerIsGarbledAtItsEndUnlessToldWhere) {
    Stage stage("when sale 1 garble\nwhen sale 2 garble 5\nwhen sale 3 garble 99\n");
    EXPECT_EQ((Reply{0, 4, 1, 0xC1, 0, 0x3D}), stage.sale());
    EXPECT_EQ((Reply{0, 4, 1, 0xC1, 0xFF, 0xC2}), stage.sale());
    EXPECT_EQ((Reply{0, 4, 1, 0xC1, 0, 0x3D}), stage.sale());
}

TEST(Scenario, ARefusedRequestDoesNothing) {
    Stage stage("when 0x21 2-3 refuse 3\n");
    EXPECT_EQ(kSaleTaken, stage.sale());
    EXPECT_EQ((Reply{0, 4, 1, 0xC1, 3, 0xC5}), stage.sale());
    EXPECT_EQ((Reply{0, 4, 1, 0xC1, 3, 0xC5}), stage.sale());
    EXPECT_EQ(1u, stage.lines());
    EXPECT_EQ(kSaleTaken, stage.sale());
}

TEST(Scenario, ARefusalDoesNotOutliveARegisterThatIsOff) {
    Stage stage("when sale refuse 3\n");
    stage.model.power_off();
    EXPECT_TRUE(stage.sale().empty());
    stage.model.power_on();
    EXPECT_EQ(kSaleTaken, stage.sale());
}

TEST(Scenario, ABusyRegisterShowsItsStateLate) {
    Stage stage("when sale busy 1\n");
    stage.sale();
    EXPECT_EQ(0xCB, stage.exchange(0x20).at(3));
    EXPECT_EQ(0xA2, stage.exchange(0x20).at(3));
}

TEST(Scenario, AnActComesBeforeTheRegisterObeysOrAfter) {
    Stage before("when sale 2 power off\n");
    before.sale();
    EXPECT_TRUE(before.sale().empty());
    EXPECT_EQ(1u, before.lines());
    EXPECT_EQ((Texts{"line 1: when sale 2 power off (switched off)"}), before.last.remarks);
    Stage after("when sale 2 then power off\n");
    after.sale();
    EXPECT_EQ(kSaleTaken, after.sale());
    EXPECT_EQ(2u, after.lines());
    EXPECT_TRUE(after.exchange(0x20).empty());
}

TEST(Scenario, PaperRunsOutInTheMiddleOfAReceipt) {
    Stage stage("when close-check paper in 4\n");
    stage.sale();
    stage.exchange(0x7F);
    stage.exchange(0x25, {6});
    stage.exchange(0x7F);
    stage.exchange(0x7F);
    EXPECT_EQ(4u, stage.model.paper().lines().size());
    EXPECT_EQ(0u, stage.model.checks_registered());
    EXPECT_EQ(16, stage.model.memory().last_error());
}

TEST(Scenario, AlwaysIsEveryTime) {
    Stage stage("when status always lose answer\n");
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(stage.exchange(0x20).empty());
    }
    EXPECT_FALSE(stage.sale().empty());
}

TEST(Scenario, AnyCountsWhateverComes) {
    Stage stage("when any 3 lose answer\n");
    EXPECT_FALSE(stage.exchange(0x20).empty());
    EXPECT_FALSE(stage.sale().empty());
    EXPECT_TRUE(stage.exchange(0x20).empty());
}

TEST(Scenario, TimesCountFromTheFirstRequest) {
    Stage stage("at 2s key 0x28\nat 500ms key 0x20\nat 3s host\n");
    EXPECT_TRUE(stage.scenario.act(stage.model, 9000000).empty());
    EXPECT_EQ(std::nullopt, stage.scenario.next_us());
    stage.now_us = 10000000;
    stage.sale();
    EXPECT_EQ(10500000, stage.scenario.next_us());
    EXPECT_TRUE(stage.scenario.act(stage.model, 10499999).empty());
    EXPECT_EQ((Texts{"line 2: at 500ms key 0x20", "line 1: at 2s key 0x28"}),
              stage.scenario.act(stage.model, 12000000));
    EXPECT_EQ(0u, stage.lines());
    EXPECT_EQ(13000000, stage.scenario.next_us());
    stage.scenario.act(stage.model, 13000000);
    EXPECT_EQ(State::sale_code, stage.model.state());
    EXPECT_EQ(std::nullopt, stage.scenario.next_us());
}

TEST(Scenario, WhatIsDueComesBeforeTheNextRequestIsObeyed) {
    Stage stage("at 0s power off\nat 1s power on\n");
    EXPECT_TRUE(stage.sale().empty());
    stage.now_us = 1000000;
    EXPECT_EQ(kSaleTaken, stage.sale());
}

TEST(Scenario, WhatTheRegisterDoesNotLetHappenIsRemarked) {
    Stage stage("at 0s shift close\n");
    stage.sale();
    EXPECT_EQ((Texts{"line 1: at 0s shift close (the register does not let it happen now)"}),
              stage.last.remarks);
}

TEST(Scenario, QuitEndsTheRegister) {
    Stage stage("when sale 2 then quit\n");
    stage.sale();
    EXPECT_FALSE(stage.scenario.quits());
    EXPECT_EQ(kSaleTaken, stage.sale());
    EXPECT_TRUE(stage.scenario.quits());
}

TEST(Scenario, WhatNeverCameAboutIsTold) {
    Stage stage("when sale 1 delay 1s\nwhen sale  2-3  lose answer # never\nat 5s host\n");
    stage.sale();
    EXPECT_EQ((Texts{"line 2: when sale 2-3 lose answer", "line 3: at 5s host"}),
              stage.scenario.unmet());
    stage.sale();
    EXPECT_EQ((Texts{"line 3: at 5s host"}), stage.scenario.unmet());
}

TEST(Scenario, AMistakeIsToldWithItsLine) {
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"if sale lose answer", "a line begins with when or at, not with \"if\""},
        {"when", "when needs a command and what happens"},
        {"when sale", "what happens is missing"},
        {"when sale 2", "what happens is missing"},
        {"when sale then", "what happens is missing"},
        {"when sale 0 lose answer", "\"0\" is never; count from 1, and upwards"},
        {"when sale 3-2 lose answer", "\"3-2\" is never; count from 1, and upwards"},
        {"when sale lose", "lose the request or the answer?"},
        {"when sale lose paper", "lose the request or the answer?"},
        {"when sale lose answer now", "\"now\" is too much"},
        {"when sale delay", "delay needs a time"},
        {"when sale delay 5", "\"5\" is no time; write 300ms or 2.5s"},
        {"when sale delay -1s", "\"-1s\" is no time; write 300ms or 2.5s"},
        {"when sale delay nans", "\"nans\" is no time; write 300ms or 2.5s"},
        {"when sale delay 86401s", "\"86401s\" is no time; write 300ms or 2.5s"},
        {"when sale cut", "cut needs a number from 0 to 257"},
        {"when sale garble 0", "garble needs a number from 1 to 257"},
        {"when sale refuse 256", "refuse needs a number from 0 to 255"},
        {"when sale busy some", "busy needs a number from 0 to 1000000"},
        {"when status refuse 1", "only one command can be refused, and status never is"},
        {"when any refuse 1", "only one command can be refused, and status never is"},
        {"when sale key", "key needs a code from 0 to 255"},
        {"when sale dance", "\"dance\" is unknown"},
        {"when sale 1. lose answer", "\"1.\" is unknown"},
        {"when sale quit now", "\"now\" is too much"},
        {"at", "at needs a time and what happens"},
        {"at noon host", "\"noon\" is no time; write 300ms or 2.5s"},
        {"at 1s", "what happens is missing"},
        {"at 1s lose answer", "\"lose\" is unknown"},
    };
    for (const auto& [line, said] : wrong) {
        try {
            const Scenario scenario("# first\n" + line + "\n");
            ADD_FAILURE() << line;
        } catch (const ScenarioError& error) {
            EXPECT_EQ("line 2: " + said, error.what());
        }
    }
}

TEST(Scenario, AnUnknownCommandIsAnsweredWithThoseThereAre) {
    try {
        const Scenario scenario("when sael lose answer");
        ADD_FAILURE();
    } catch (const ScenarioError& error) {
        const std::string said = error.what();
        EXPECT_EQ(0u, said.find("line 1: \"sael\" is no command; there are: any read-eeprom "));
        EXPECT_NE(std::string::npos, said.find(" close-check "));
    }
}

TEST(Scenario, AHashWithinAWordIsNoRemark) {
    Stage stage("at 0s sell 1.50 A#1 B # tea\n");
    stage.exchange(0x20);
    ASSERT_EQ(1u, stage.lines());
    EXPECT_EQ("A#1 B", stage.model.open_check().lines[0].name.text());
}

}  // namespace
}  // namespace virtual_register
