#include "support/row_data.h"

#include <gtest/gtest.h>

#include <exception>
#include <set>
#include <typeinfo>

#include "support/world.h"

namespace test {
namespace {

CRowData Row(const std::string& hex) {
    return CRowData(FromHex(hex));
}

// Lengths up to 9 bytes that the decoder accepts. The others must throw the plain exception.
template <typename Decode>
std::set<std::size_t> Accepted(Decode decode) {
    std::set<std::size_t> lengths;
    for (std::size_t length = 0; length <= 9; ++length) {
        try {
            decode(CRowData(Bytes(length, 0x11)));
            lengths.insert(length);
        } catch (const std::exception& e) {
            EXPECT_EQ(typeid(e), typeid(std::exception)) << length;
        }
    }
    return lengths;
}

using Lengths = std::set<std::size_t>;

TEST(RowData, EachDecoderAcceptsItsOwnLengths) {
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsByte(); }),
              (Lengths{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsBool(); }), (Lengths{1}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsWord(); }), (Lengths{2}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsDWord(); }), (Lengths{0, 1, 2, 3, 4}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsInt64(); }), (Lengths{0, 1, 2, 3, 4}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsULong(); }), (Lengths{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsDouble5b(); }), (Lengths{5}));
    EXPECT_EQ(Accepted([](const CRowData& row) { row.AsStr(); }),
              (Lengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(RowData, ByteIsTheFirstOne) {
    EXPECT_EQ(Row("F7").AsByte(), 0xF7);
    EXPECT_EQ(Row("07 D7 01").AsByte(), 0x07);
}

TEST(RowData, EveryByteButZeroIsTrue) {
    EXPECT_FALSE(Row("00").AsBool());
    EXPECT_TRUE(Row("01").AsBool());
    EXPECT_TRUE(Row("80").AsBool());
}

TEST(RowData, WordIsBigEndian) {
    EXPECT_EQ(Row("07 D7").AsWord(), 2007);
    EXPECT_EQ(Row("FF FF").AsWord(), 65535);
}

TEST(RowData, DoubleWordIsBigEndian) {
    EXPECT_EQ(Row("01 02 03 04").AsDWord(), 0x01020304U);
    EXPECT_EQ(Row("01 02 03").AsDWord(), 0x010203U);
    EXPECT_EQ(Row("FF FF FF FF").AsDWord(), 4294967295U);
    EXPECT_EQ(Row("").AsDWord(), 0U);
}

TEST(RowData, WideIntegerHasNoSign) {
    EXPECT_EQ(Row("FF FF FF FF").AsInt64(), 4294967295);
    EXPECT_EQ(Row("80 00 00 00").AsInt64(), 2147483648);
    EXPECT_EQ(Row("01 02").AsInt64(), 258);
    EXPECT_EQ(Row("").AsInt64(), 0);
}

TEST(RowData, KeepsTheOddWeightsOfULong) {
    EXPECT_EQ(Row("").AsULong(), 0U);
    EXPECT_EQ(Row("12").AsULong(), 0x12U);
    EXPECT_EQ(Row("12 34").AsULong(), 0x1234U);
    EXPECT_EQ(Row("01 02 03").AsULong(), 0x01000203U);
    EXPECT_EQ(Row("01 02 03 04").AsULong(), 0x02000304U);
    EXPECT_EQ(Row("01 02 03 04 05").AsULong(), 0x03000405U);
    EXPECT_EQ(Row("01 02 03 04 05 06").AsULong(), 0x04000506U);
    // The first two of five share a place, which then leaves the 32 bits.
    EXPECT_EQ(Row("F1 0E 00 00 00").AsULong(), 0U);
    EXPECT_EQ(Row("00 00 00 00 27 10").AsULong(), 0x00002710U);
}

TEST(RowData, MoneyIsInHundredths) {
    EXPECT_DOUBLE_EQ(Row("00 00 00 30 39").AsDouble5b(), 123.45);
    EXPECT_EQ(Row("00 00 00 00 00").AsDouble5b(), 0.0);
    EXPECT_EQ(Row("00 FF FF FF FF").AsDouble5b(), 42949672.95);
}

TEST(RowData, KeepsMoneyWithoutItsFirstByte) {
    EXPECT_DOUBLE_EQ(Row("FF 00 00 30 39").AsDouble5b(), 123.45);
}

TEST(RowData, KeepsMultiplyingMoneyByAHundredth) {
    // 35 / 100 would be the double next to 0.35, the product is one step above it.
    EXPECT_EQ(Row("00 00 00 00 23").AsDouble5b(), 0x1.6666666666667p-2);
}

TEST(RowData, TextKeepsEveryByte) {
    EXPECT_EQ(Row("41 00 42").AsStr(), std::string("A\0B", 3));
    EXPECT_EQ(Row("FF 0A").AsStr(), "\xFF\n");
    EXPECT_EQ(Row("").AsStr(), "");
}

TEST(RowData, IsEmptyUntilBytesAreAssigned) {
    CRowData row;
    EXPECT_EQ(row.bytes(), Bytes{});
    row.assign({0x01, 0x02});
    EXPECT_EQ(row.AsWord(), 0x0102);
    row.assign({0x03});
    EXPECT_EQ(row.bytes(), Bytes{0x03});
}

}  // namespace
}  // namespace test
