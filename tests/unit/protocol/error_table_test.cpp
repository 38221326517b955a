#include <gtest/gtest.h>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace test {
namespace {

TEST(ErrorTable, KeepsRunsOfBlanksAsTexts) {
    const char* const texts[] = {"  ", "   ", " ", "   ", "     ", "  ", "  ", "   "};
    static_assert(sizeof texts == sizeof err_msg);
    for (int code = 0; code < 8; ++code) {
        EXPECT_STREQ(err_msg[code], texts[code]) << code;
    }
}

TEST(ErrorTable, CountIsEight) {
    EXPECT_EQ(err_msg_count, 8);
}

}  // namespace
}  // namespace test
