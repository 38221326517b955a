#include "kkm/trace_story.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kkm {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kLine =
    "Info: TrySendSale ;title = Tea ;barcode = 123; code = 1; count = 2; price = 4250; section = "
    "3\n";

StoryCheck OnlyCheck(const std::string& trace) {
    const auto events = TellTrace(trace);
    EXPECT_EQ(events.size(), 1U);
    return events.empty() ? StoryCheck() : events.front().check;
}

TEST(TraceStory, ConnectionsAreTold) {
    const auto events = TellTrace(
        "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"
        "TTarvoVesk::Connect: getKKMVersion: 303\n"
        "Connect - OK\n"
        "Disconnect - OK"
        "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"
        "TTarvoVesk::Connect: error getKKMVersion\n");
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].kind, StoryEvent::Kind::connected);
    EXPECT_EQ(events[0].text, ", firmware 303");
    EXPECT_EQ(events[1].kind, StoryEvent::Kind::disconnected);
    EXPECT_EQ(events[2].kind, StoryEvent::Kind::not_connected);
    EXPECT_EQ(events[2].text, ", nobody at 9600 baud");
}

TEST(TraceStory, PrintedCheckIsToldThoughItsTextsRunTogether) {
    const StoryCheck check = OnlyCheck(std::string("Info:query ks_salecode") + kLine +
                                       "Info:TrySendSale-ok\n"
                                       "Info: TrySendDiscount = -5%\n"
                                       "Info: TrySendCheckType type check = 1\n"
                                       "Info: TrySendCheckCash checkCash = 50000\n"
                                       "Info: TestCheckPrint - ok\n");
    EXPECT_EQ(check.outcome, StoryOutcome::printed);
    ASSERT_EQ(check.lines.size(), 1U);
    EXPECT_EQ(check.lines[0].name, "Tea");
    EXPECT_EQ(check.lines[0].price, 42.5);
    EXPECT_EQ(check.lines[0].quantity, "2");
    EXPECT_EQ(check.lines[0].section, 3);
    EXPECT_TRUE(check.lines[0].taken);
    EXPECT_EQ(check.discount, -5);
    EXPECT_EQ(check.type, "return");
    EXPECT_EQ(check.cash, 500);
    EXPECT_THAT(check.repeated, IsEmpty());
}

TEST(TraceStory, RepeatedStepsAreNamed) {
    const StoryCheck check = OnlyCheck(std::string(kLine) +
                                       "Error: ???\n"
                                       "Warning: 3try send for sale 1\n"
                                       "Warning: 2 lcount 4 sale number 1\n"
                                       "Warning: TrySendCheckType try 7\n"
                                       "Info: TestCheckPrint - ok\n");
    EXPECT_THAT(check.repeated, ElementsAre("line 1: 3 attempts", "the name of line 1: 2 attempts",
                                            "the closing: 7 attempts"));
    EXPECT_THAT(check.troubles, ElementsAre("an exchange failed"));
}

TEST(TraceStory, FailureBeforeTheClosingIsNotPrinted) {
    const StoryCheck check = OnlyCheck(std::string(kLine) +
                                       "Error: TrySendSale in  send 1\n"
                                       "Error Interface\n"
                                       "Error: unlockKey  Error\n");
    EXPECT_EQ(check.outcome, StoryOutcome::failed);
    EXPECT_EQ(check.error, 2);
    EXPECT_EQ(check.reason, "a line was not taken in 20 attempts");
    EXPECT_THAT(check.troubles, ElementsAre("the keyboard could not be unlocked"));
}

TEST(TraceStory, DeadLineBehindTheClosingIsUnknown) {
    const std::string closed = std::string(kLine) + "Info: TrySendCheckType type check = 0\n";
    for (const char* end : {"Error: TestCheckPrint - !readed\nError Interface\n",
                            "Error: TestCheckPrint <> iPaperAbsentError Interface\n",
                            "Error: unknown error in print check\n"}) {
        EXPECT_EQ(OnlyCheck(closed + end).outcome, StoryOutcome::unknown) << end;
    }
    for (const char* end : {"Error:  echNoCashError Interface\n",
                            "Error: TestCheckPrint iPaperAbsentError Interface\n"}) {
        EXPECT_EQ(OnlyCheck(closed + end).outcome, StoryOutcome::failed) << end;
    }
}

TEST(TraceStory, RefusalsHaveTheirCodes) {
    const std::pair<const char*, int> refusals[] = {
        {"Warning: echRegKass - Exit", 6},
        {"Warning: echCancelCheck - Exit", 34},
        {"Error: e.m_code == errMoney\n", 14},
        {"Error:  echNoCash", 20},
    };
    for (const auto& [text, code] : refusals) {
        const StoryCheck check = OnlyCheck(std::string(text) + "Error Interface\n");
        EXPECT_EQ(check.error, code);
        EXPECT_EQ(check.outcome, StoryOutcome::failed);
    }
}

TEST(TraceStory, NameThatLooksLikeATraceIsAName) {
    const auto check = OnlyCheck(
        "Info: TrySendSale ;title = Error Interface ;barcode = 1; code = 1; count = 1; price = 1; "
        "section = 1\n");
    EXPECT_EQ(check.lines.at(0).name, "Error Interface");
    EXPECT_EQ(check.outcome, StoryOutcome::unfinished);
}

TEST(TraceStory, NameIsANameWhereverItStands) {
    const std::string name = "Info: TestCheckPrint - ok";
    const auto check = OnlyCheck("Info: TrySendSale ;title = " + name +
                                 " ;barcode = 1; code = 1; count = 1; price = 1; section = 1\n"
                                 "Info: TrySendSaleTitle " +
                                 name +
                                 "number sale 1\n"
                                 "Info: line number   0 'Error Interface'\n"
                                 "Info: TrySendSaleTitle-ok\nInfo:TrySendSale-ok\n");
    EXPECT_EQ(check.lines.at(0).name, name);
    EXPECT_TRUE(check.lines.at(0).taken);
    EXPECT_EQ(check.outcome, StoryOutcome::unfinished);
}

TEST(TraceStory, ForeignTextTellsNothing) {
    EXPECT_TRUE(TellTrace("").empty());
    EXPECT_TRUE(TellTrace(std::string("\0\xFF hello\nworld", 15)).empty());
}

}  // namespace
}  // namespace kkm
