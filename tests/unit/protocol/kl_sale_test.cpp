#include "protocol/kl_sale.h"

#include <gtest/gtest.h>

#include "support/world.h"

namespace test {
namespace {

constexpr auto kRecord =
    "F0 F1 01 02 03 04 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 F2 F3 1A 1B 1C 1D 01 "
    "F4";

TEST(TapeRecord, HoldsEveryFieldAtItsPlace) {
    const KLSale record = DecodeKLSale(FromHex(kRecord));
    EXPECT_EQ(record.sum, 169090.6);
    EXPECT_EQ(record.amount2, 3950.1600000000003);
    EXPECT_EQ(record.amount3, 5923.95);
    EXPECT_EQ(record.amount4, 7897.74);
    EXPECT_EQ(record.signed_value, 15.0);
    EXPECT_EQ(record.number, 17);
    EXPECT_EQ(record.code_bytes, (std::array<unsigned char, 5>{0x11, 0x12, 0x13, 0x14, 0x15}));
    EXPECT_EQ(record.code, 0x1617);
    EXPECT_EQ(record.quantity, 6.683);
    EXPECT_EQ(record.kind, 28U);
    EXPECT_EQ(record.selector, 29U);
    EXPECT_TRUE(record.marked);
}

TEST(TapeRecord, KeepsTheFactorsInsteadOfDivisions) {
    // 35 and 57 hundredths, 9 thousandths: a division would give the nearer numbers.
    const KLSale record = DecodeKLSale(
        FromHex("00 00 00 00 00 23 00 00 39 00 00 23 00 00 45 00 00 00 00 00 00 00 00 00 00 00 00 "
                "09"));
    EXPECT_EQ(record.sum, 0.35000000000000003);
    EXPECT_EQ(record.amount2, 0.5700000000000001);
    EXPECT_EQ(record.amount3, 0.35000000000000003);
    EXPECT_EQ(record.amount4, 0.6900000000000001);
    EXPECT_EQ(record.quantity, 0.009000000000000001);
}

TEST(TapeRecord, GreatestNumbersAreUnsignedButTheSignedValue) {
    const KLSale record = DecodeKLSale(Bytes(31, 0xFF));
    EXPECT_EQ(record.sum, 42949672.95);
    EXPECT_EQ(record.amount2, 167772.15);
    EXPECT_EQ(record.signed_value, -1.0);
    EXPECT_EQ(record.number, 256);
    EXPECT_EQ(record.quantity, 65.535);
    EXPECT_EQ(record.kind, 255U);
    EXPECT_EQ(record.selector, 255U);
    EXPECT_EQ(record.code, 0xFFFF);
    EXPECT_FALSE(record.marked);
}

TEST(TapeRecord, NoQuantityIsOnePiece) {
    EXPECT_EQ(DecodeKLSale(Bytes(31)).quantity, 1.0);
    Bytes answer(31);
    answer[27] = 1;
    EXPECT_EQ(DecodeKLSale(answer).quantity, 0.001);
}

TEST(TapeRecord, OnlyTheByteOneIsAMark) {
    for (unsigned char byte = 0; byte < 4; ++byte) {
        Bytes answer(31);
        answer[30] = byte;
        EXPECT_EQ(DecodeKLSale(answer).marked, byte == 1);
    }
}

TEST(TapeRecord, SmallestSignedValueIsMinus128) {
    Bytes answer(31);
    answer[15] = 0x80;
    EXPECT_EQ(DecodeKLSale(answer).signed_value, -128.0);
}

bool operator==(const KLSale& a, const KLSale& b) {
    return a.sum == b.sum && a.amount2 == b.amount2 && a.amount3 == b.amount3 &&
           a.amount4 == b.amount4 && a.signed_value == b.signed_value && a.number == b.number &&
           a.quantity == b.quantity && a.kind == b.kind && a.selector == b.selector &&
           a.marked == b.marked && a.code_bytes == b.code_bytes && a.code == b.code;
}

TEST(TapeRecord, MissingBytesCountAsZero) {
    const KLSale empty = DecodeKLSale({});
    EXPECT_EQ(empty.sum, 0.0);
    EXPECT_EQ(empty.number, 1);
    EXPECT_EQ(empty.quantity, 1.0);
    EXPECT_EQ(empty.code_bytes, (std::array<unsigned char, 5>{}));
    EXPECT_FALSE(empty.marked);
    const Bytes whole = FromHex(kRecord);
    for (std::ptrdiff_t length = 0; length < 31; ++length) {
        const Bytes cut(whole.begin(), whole.begin() + length);
        Bytes filled = cut;
        filled.resize(31);
        EXPECT_TRUE(DecodeKLSale(cut) == DecodeKLSale(filled)) << length;
    }
    EXPECT_EQ(DecodeKLSale(FromHex("00 00 01")).sum, 167772.16);
    EXPECT_EQ(DecodeKLSale(FromHex("00 00 00 00 00 00 01")).amount2, 655.36);
}

}  // namespace
}  // namespace test
