#include "kkm/progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace kkm {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr Terminal kFile{false, false};
constexpr Terminal kTerminal{true, true};
constexpr Terminal kWithoutColour{true, false};

TEST(Progress, FileGetsOnePlainLineWhenAStepBegins) {
    std::ostringstream to;
    Progress progress(to, kFile);
    progress.Step("one");
    EXPECT_EQ(to.str(), "  one\n");
    progress.Note("two");
    progress.Step("three");
    progress.Failed();
    progress.Step("four");
    progress.Erase();
    EXPECT_EQ(to.str(), "  one\n  two\n  three\n  four\n");
}

TEST(Progress, TerminalSeesTheSecondsPass) {
    EXPECT_EQ(TickerLine("sending", std::chrono::seconds(12)), "  sending ... 12 s");
}

TEST(Progress, TerminalSeesHowAStepEnded) {
    std::ostringstream to;
    Progress progress(to, kTerminal);
    progress.Step("one");
    progress.Step("two");
    progress.Failed();
    EXPECT_THAT(to.str(), StartsWith("\r\033[K  one ... 0 s"));
    EXPECT_THAT(to.str(), HasSubstr("\r\033[K  one ... 0 s \033[32mok\033[0m\n"));
    EXPECT_THAT(to.str(), EndsWith("\r\033[K  two ... 0 s \033[31mfailed\033[0m\n"));
}

TEST(Progress, TerminalWithoutColourGetsTheWordsAlone) {
    std::ostringstream to;
    Progress progress(to, kWithoutColour);
    progress.Step("one");
    progress.Done();
    EXPECT_THAT(to.str(), EndsWith("\r\033[K  one ... 0 s ok\n"));
    EXPECT_THAT(to.str(), Not(HasSubstr("\033[3")));
}

TEST(Progress, RunningStepIsErasedAtTheEnd) {
    std::ostringstream to;
    {
        Progress progress(to, kTerminal);
        progress.Step("one");
    }
    EXPECT_THAT(to.str(), EndsWith("\r\033[K"));
}

TEST(Progress, EndWithoutAStepSaysNothing) {
    std::ostringstream to;
    Progress progress(to, kTerminal);
    progress.Done();
    progress.Failed();
    progress.Erase();
    EXPECT_EQ(to.str(), "");
}

TEST(ProgressBar, ShowsShareAndRemainingTime) {
    EXPECT_EQ(BarLine("reading", 5, 20, std::chrono::milliseconds(1000)),
              "reading [#####...............] 5 of 20, 3 s left");
    EXPECT_EQ(BarLine("reading", 20, 20, std::chrono::milliseconds(1000)),
              "reading [####################] 20 of 20");
    EXPECT_EQ(BarLine("reading", 0, 0, std::chrono::milliseconds(0)),
              "reading [####################] 0 of 0");
}

TEST(ProgressBar, IsSeenByTerminalsOnly) {
    std::ostringstream to;
    { ProgressBar(to, Terminal{}, "reading", 2).Advance(); }
    EXPECT_EQ(to.str(), "");
    { ProgressBar(to, kTerminal, "reading", 2).Advance(); }
    EXPECT_THAT(to.str(), testing::HasSubstr("\r\033[Kreading [##########..........] 1 of 2"));
    EXPECT_THAT(to.str(), EndsWith("\r\033[K"));
}

}  // namespace
}  // namespace kkm
