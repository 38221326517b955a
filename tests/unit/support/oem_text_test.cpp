#include "support/oem_text.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace test {
namespace {

TEST(OemText, KeepsTheTargetOfAConversionUntouched) {
    char src[] = "\xCF\xF0\xE8";
    char dst[] = "left";
    CharToOem(src, dst);
    EXPECT_STREQ(dst, "left");
    OemToChar(src, dst);
    EXPECT_STREQ(dst, "left");
    EXPECT_STREQ(src, "\xCF\xF0\xE8");
}

TEST(OemText, TextsTravelInTheHostsOwnBytes) {
    const std::string text("A\x00\x8F\xFF z", 6);
    EXPECT_EQ(ToOem(text), text);
    EXPECT_EQ(FromOem(text), text);
    EXPECT_EQ(ToOem(""), "");
    EXPECT_EQ(FromOem(""), "");
}

TEST(OemText, TheSystemHasNoTextForItsLastError) {
    errno = ENOENT;
    EXPECT_EQ(GetLastErrorMsg(), "");
}

}  // namespace
}  // namespace test
