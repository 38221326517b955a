#include "kkm/terminal.h"

#include <gtest/gtest.h>

namespace kkm {
namespace {

TEST(Terminal, TerminalIsLiveAndColoured) {
    EXPECT_TRUE(JudgeTerminal(true, nullptr, "xterm").live);
    EXPECT_TRUE(JudgeTerminal(true, nullptr, "xterm").colour);
}

TEST(Terminal, FileIsNeither) {
    EXPECT_FALSE(JudgeTerminal(false, nullptr, "xterm").live);
    EXPECT_FALSE(JudgeTerminal(false, nullptr, "xterm").colour);
}

TEST(Terminal, NoColorTakesTheColoursOnly) {
    EXPECT_TRUE(JudgeTerminal(true, "1", "xterm").live);
    EXPECT_FALSE(JudgeTerminal(true, "1", "xterm").colour);
    EXPECT_TRUE(JudgeTerminal(true, "", "xterm").colour);
}

TEST(Terminal, DumbTerminalIsAFile) {
    EXPECT_FALSE(JudgeTerminal(true, nullptr, "dumb").live);
    EXPECT_FALSE(JudgeTerminal(true, nullptr, nullptr).live);
    EXPECT_FALSE(JudgeTerminal(true, nullptr, nullptr).colour);
}

}  // namespace
}  // namespace kkm
