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
    EXPECT_EQ(FromOem(text), text);
    EXPECT_EQ(FromOem(""), "");
}

std::string Field(const std::string& text, std::size_t width) {
    std::string field(width + 2, '|');
    PutOemText(text, reinterpret_cast<unsigned char*>(field.data()) + 1, width);
    return field;
}

TEST(OemText, FieldIsPaddedWithSpacesOrCut) {
    EXPECT_EQ(Field("tea", 5), "|tea  |");
    EXPECT_EQ(Field("", 3), "|   |");
    EXPECT_EQ(Field("bread", 5), "|bread|");
    EXPECT_EQ(Field("breads", 5), "|bread|");
    EXPECT_EQ(Field("tea", 0), "||");
    EXPECT_EQ(Field(std::string("\xCF\0\xFF", 3), 4), std::string("|\xCF\0\xFF |", 6));
}

TEST(OemText, TheSystemHasNoTextForItsLastError) {
    errno = ENOENT;
    EXPECT_EQ(GetLastErrorMsg(), "");
}

}  // namespace
}  // namespace test
