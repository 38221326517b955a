#include "support/payload.h"

#include <gtest/gtest.h>

namespace test {
namespace {

const Bytes kAnswer{0x01, 0xA0, 0x03, 0xFF, 0x41};

TEST(PayloadView, ReadsBigEndianNumbers) {
    const PayloadView in(kAnswer);
    EXPECT_EQ(in.Byte(0), 0x01);
    EXPECT_EQ(in.Byte(3), 0xFF);
    EXPECT_EQ(in.Byte(4), 0x41);
    EXPECT_EQ(in.Be16(0), 0x01A0);
    EXPECT_EQ(in.Be16(3), 0xFF41);
    EXPECT_EQ(in.Be24(1), 0x00A003FFU);
    EXPECT_EQ(in.Be32(0), 0x01A003FFU);
    EXPECT_EQ(in.Be32(1), 0xA003FF41U);
}

TEST(PayloadView, MissingBytesReadAsZero) {
    const PayloadView in(kAnswer);
    EXPECT_EQ(in.Byte(5), 0);
    EXPECT_EQ(in.Byte(1000), 0);
    EXPECT_EQ(in.Be16(4), 0x4100);
    EXPECT_EQ(in.Be16(5), 0);
    EXPECT_EQ(in.Be24(3), 0x00FF4100U);
    EXPECT_EQ(in.Be32(4), 0x41000000U);

    const Bytes nothing;
    EXPECT_EQ(PayloadView(nothing).Byte(0), 0);
    EXPECT_EQ(PayloadView(nothing).Be32(0), 0U);
}

TEST(PayloadView, FieldHasItsFullWidth) {
    const PayloadView in(kAnswer);
    EXPECT_EQ(in.Field(1, 2), (Bytes{0xA0, 0x03}));
    EXPECT_EQ(in.Field(3, 4), (Bytes{0xFF, 0x41, 0x00, 0x00}));
    EXPECT_EQ(in.Field(9, 2), (Bytes{0x00, 0x00}));
    EXPECT_EQ(in.Field(0, 0), Bytes{});
}

TEST(PayloadView, TextEndsWhereTheBytesEnd) {
    const Bytes answer{'a', 'b', 0x00, 'd'};
    const PayloadView in(answer);
    EXPECT_EQ(in.Text(0, 2), "ab");
    EXPECT_EQ(in.Text(1, 3), std::string("b\0d", 3));
    EXPECT_EQ(in.Text(3, 40), "d");
    EXPECT_EQ(in.Text(4, 1), "");
    EXPECT_EQ(in.Text(200, 1), "");
    EXPECT_EQ(in.Text(0, 0), "");
    EXPECT_EQ(in.TextToEnd(1), std::string("b\0d", 3));
    EXPECT_EQ(in.TextToEnd(3), "d");
    EXPECT_EQ(in.TextToEnd(4), "");
}

}  // namespace
}  // namespace test
