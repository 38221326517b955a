#include "protocol/sale_block.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/world.h"

namespace test {
namespace {

// Bytes `first` to `last` of a block.
std::string Slice(const Bytes& block, std::ptrdiff_t first, std::ptrdiff_t last) {
    return Hex(Bytes(block.begin() + first, block.begin() + last + 1));
}

Bytes NamedLine(const std::string& name, const std::string& barcode = "") {
    status_info line;
    line.name = name;
    line.text = barcode;
    return MakeSaleBlock(line);
}

Bytes NamedProduct(const std::string& name, const std::string& barcode = "") {
    dbsale product;
    product.name = name;
    product.text = barcode;
    return MakeProductBlock(product);
}

struct NameCase {
    const char* name;
    const char* bytes_0_to_16;
};

TEST(SaleBlock, HoldsEveryFieldAtItsPlace) {
    status_info line;
    line.name = "Milk";
    line.text = "4607";
    line.price = 1234;
    line.department = 15;
    line.weighted = true;
    line.code = 0x0102;
    line.quantity = 1.5;
    EXPECT_EQ(Hex(MakeSaleBlock(line)),
              "4D 69 6C 6B 20 20 20 20 20 20 20 20 20 20 20 34 36 30 37 00 00 00 00 00 00 00 00 00 "
              "00 00 00 01 02 03 04 0F 01 01 02 05 DC");
}

TEST(SaleBlock, EmptyLineIsAllZeros) {
    EXPECT_EQ(MakeSaleBlock(status_info()), Bytes(41));
}

TEST(SaleBlock, FieldsThatTheRegisterFillsAreNotSent) {
    status_info line;
    line.number = line.position = 0xFFFF;
    line.section = line.saleNumber = line.reply = line.attr = line.percent = 0xFF;
    line.sum = line.amount = 0xFFFFFFFF;
    line.kind = line.discountSum = line.discountPercent = -1;
    line.marked = true;
    line.text2 = line.text4 = "XXXX";
    line.data = {1, 2};
    EXPECT_EQ(MakeSaleBlock(line), Bytes(41));
}

TEST(SaleBlock, NameIsPaddedToSixteenCharacters) {
    const NameCase cases[] = {
        {"", "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
        {"A", "41 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00"},
        {"ABCDEFGHIJKLMNO", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 20 00"},
        {"ABCDEFGHIJKLMNOP", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00"},
        {"ABCDEFGHIJKLMNOPQRST", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00"},
        {"\x8C\xAE\xAB\xAE\xAA\xAE", "8C AE AB AE AA AE 20 20 20 20 20 20 20 20 20 20 00"},
    };
    for (const NameCase& c : cases) {
        EXPECT_EQ(Slice(NamedLine(c.name), 0, 16), c.bytes_0_to_16) << c.name;
    }
}

TEST(SaleBlock, BarcodeTakesTheSixteenthByteOfTheName) {
    EXPECT_EQ(Slice(NamedLine("ABCDEFGHIJKLMNOPQRST", "46"), 0, 17),
              "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 34 36 00");
    EXPECT_EQ(Slice(NamedLine("A", "4"), 13, 16), "20 20 34 00");
    EXPECT_EQ(Slice(NamedLine("", "46"), 0, 17),
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 34 36 00");
}

TEST(SaleBlock, BarcodeEndsBeforeThePrice) {
    const NameCase cases[] = {
        {"460712345678", "34 36 30 37 31 32 33 34 35 36 37 38 00 00 00"},
        {"4607123456789", "34 36 30 37 31 32 33 34 35 36 37 38 39 00 00"},
        {"46071234567890123", "34 36 30 37 31 32 33 34 35 36 37 38 39 00 00"},
    };
    for (const NameCase& c : cases) {
        EXPECT_EQ(Slice(NamedLine("", c.name), 15, 29), c.bytes_0_to_16);
    }
}

TEST(SaleBlock, PriceIsSevenDigitsRightAligned) {
    const std::pair<std::uint32_t, const char*> cases[] = {
        {0, "00 00 00 00 00 00 00"},          {1, "00 00 00 00 00 00 01"},
        {1234, "00 00 00 01 02 03 04"},       {305, "00 00 00 00 03 00 05"},
        {123456, "00 01 02 03 04 05 06"},     {9999999, "09 09 09 09 09 09 09"},
        {12345678, "02 03 04 05 06 07 08"},   {123456789, "03 04 05 06 07 08 09"},
        {4294967295, "04 09 06 07 02 09 05"}, {1000000000, "00 00 00 00 00 00 00"},
    };
    for (const auto& [price, digits] : cases) {
        status_info line;
        line.price = price;
        const Bytes block = MakeSaleBlock(line);
        EXPECT_EQ(Slice(block, 28, 34), digits) << price;
        EXPECT_EQ(block[27], 0);
        EXPECT_EQ(block[35], 0);
    }
}

std::string CountOf(double quantity, bool weighted) {
    status_info line;
    line.quantity = quantity;
    line.weighted = weighted;
    return Slice(MakeSaleBlock(line), 39, 40);
}

struct CountCase {
    double quantity;
    const char* bytes;
};

TEST(SaleBlock, PiecesAreCutTowardZero) {
    const CountCase cases[] = {{0, "00 00"},     {0.999, "00 00"}, {2, "00 02"},
                               {2.999, "00 02"}, {255, "00 FF"},   {256, "01 00"},
                               {999, "03 E7"},   {65535, "FF FF"}, {65536, "00 00"}};
    for (const CountCase& c : cases) {
        EXPECT_EQ(CountOf(c.quantity, false), c.bytes) << c.quantity;
    }
}

TEST(SaleBlock, KeepsOnePieceSentAsZero) {
    EXPECT_EQ(CountOf(1, false), "00 00");
    EXPECT_EQ(CountOf(1.999, false), "00 00");
    EXPECT_EQ(CountOf(0.001, true), "00 01");  // one thousandth is one
}

TEST(SaleBlock, ThousandthsAreRoundedHalfUp) {
    const CountCase cases[] = {{0.0015, "00 02"},  {0.0014999, "00 01"}, {0.0005, "00 01"},
                               {0.00049, "00 00"}, {0, "00 00"},         {1, "03 E8"},
                               {1.2345, "04 D3"},  {0.35F, "01 5E"},     {65.535, "FF FF"},
                               {0.0025F, "00 02"}};
    for (const CountCase& c : cases) {
        EXPECT_EQ(CountOf(c.quantity, true), c.bytes) << c.quantity;
    }
}

TEST(SaleBlock, KeepsTheSignedDivisionOfNegativeCounts) {
    const CountCase pieces[] = {{-1, "00 FF"},   {-1.9, "00 FF"}, {-0.9, "00 00"},
                                {-255, "00 01"}, {-256, "FF 00"}, {-300, "FF D4"}};
    for (const CountCase& c : pieces) {
        EXPECT_EQ(CountOf(c.quantity, false), c.bytes) << c.quantity;
    }
    const CountCase weights[] = {{-1.5, "FB 24"}, {-0.0015, "00 FF"}, {-0.001, "00 FF"}};
    for (const CountCase& c : weights) {
        EXPECT_EQ(CountOf(c.quantity, true), c.bytes) << c.quantity;
    }
}

TEST(SaleBlock, QuantityThatNoIntegerHoldsIsSentAsZero) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double quantity : {std::nan(""), infinity, -infinity, 1e300, -1e300}) {
        EXPECT_EQ(CountOf(quantity, false), "00 00");
        EXPECT_EQ(CountOf(quantity, true), "00 00");
    }
}

TEST(SaleBlock, CountIsTheWholeNumberBehindTheTwoBytes) {
    EXPECT_EQ(QuantityCount(1, false), 0);
    EXPECT_EQ(QuantityCount(70000, false), 70000);
    EXPECT_EQ(QuantityCount(-1, false), -1);
    EXPECT_EQ(QuantityCount(70.0005, true), 70001);
    EXPECT_EQ(QuantityCount(-2.5, true), -2500);
}

TEST(ProductBlock, HoldsEveryFieldAtItsPlace) {
    dbsale product;
    product.name = "Milk";
    product.text = "4607";
    product.price = 1234;
    product.department = 15;
    product.weighted = 1;
    product.code = 0x01020304;
    EXPECT_EQ(Hex(MakeProductBlock(product)),
              "4D 69 6C 6B 20 20 20 20 20 20 20 20 20 20 20 34 36 30 37 00 00 00 00 00 00 00 00 00 "
              "00 00 01 02 03 04 00 0F 01 03 04");
}

TEST(ProductBlock, NameIsPaddedEvenWhenItIsEmpty) {
    const NameCase cases[] = {
        {"", "20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00"},
        {"A", "41 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00"},
        {"ABCDEFGHIJKLMNO", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 20 00"},
        {"ABCDEFGHIJKLMNOP", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00"},
        {"ABCDEFGHIJKLMNOPQRST", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00"},
    };
    for (const NameCase& c : cases) {
        EXPECT_EQ(Slice(NamedProduct(c.name), 0, 16), c.bytes_0_to_16) << c.name;
    }
}

TEST(ProductBlock, BarcodeStartsInTheNameAndEndsBeforeThePrice) {
    EXPECT_EQ(Slice(NamedProduct("ABCDEFGHIJKLMNOP", "46071234567890123"), 14, 29),
              "4F 34 36 30 37 31 32 33 34 35 36 37 38 39 00 00");
}

TEST(ProductBlock, KeepsThePriceOneByteBeforeThatOfASaleLine) {
    const std::pair<std::uint32_t, const char*> cases[] = {{0, "00 00 00 00 00 00 00"},
                                                           {7, "00 00 00 00 00 07 00"},
                                                           {1234, "00 00 01 02 03 04 00"},
                                                           {999999, "09 09 09 09 09 09 00"}};
    for (const auto& [price, digits] : cases) {
        dbsale product;
        product.price = price;
        EXPECT_EQ(Slice(MakeProductBlock(product), 28, 34), digits);
    }
}

TEST(ProductBlock, PriceOfSevenDigitsDoesNotFit) {
    EXPECT_TRUE(ProductPriceFits(0));
    EXPECT_TRUE(ProductPriceFits(999999));
    EXPECT_FALSE(ProductPriceFits(1000000));
    EXPECT_FALSE(ProductPriceFits(4294967295));
}

// "found name text price department weighted code"
std::string Product(const std::string& answer) {
    const dbsale product = DecodeProduct(FromHex(answer));
    return '[' + product.name + "][" + product.text + "] " + std::to_string(product.price) + ' ' +
           std::to_string(product.department) + ' ' + std::to_string(product.weighted) + ' ' +
           std::to_string(product.code);
}

constexpr auto kAnswer =
    "01 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 10 11 12 13 14 15 16 17 18 19 1A 1B FF 01 02 "
    "03 04 05 06 FF 0F 02 01 02";

TEST(ProductAnswer, HoldsEveryFieldAtItsPlace) {
    EXPECT_EQ(Product(kAnswer), "[ABCDEFGHIJKLMN][0123456789:;] 123456 15 1 258");
}

TEST(ProductAnswer, RecordThatDoesNotExistIsEmpty) {
    EXPECT_EQ(Product(""), "[][] 0 0 0 0");
    EXPECT_EQ(Product("00"), "[][] 0 0 0 0");
    EXPECT_EQ(Product("00" + std::string(kAnswer).substr(2)), "[][] 0 0 0 0");
}

TEST(ProductAnswer, AnyNonZeroByteSaysThatTheRecordExists) {
    EXPECT_EQ(Product("80 41 42"), "[AB][] 0 0 0 0");
}

TEST(ProductAnswer, MissingBytesCountAsZeroAndTextsAreClamped) {
    const std::pair<std::size_t, const char*> cases[] = {
        {1, "[][] 0 0 0 0"},
        {2, "[A][] 0 0 0 0"},
        {15, "[ABCDEFGHIJKLMN][] 0 0 0 0"},
        {16, "[ABCDEFGHIJKLMN][] 0 0 0 0"},
        {17, "[ABCDEFGHIJKLMN][0] 0 0 0 0"},
        {28, "[ABCDEFGHIJKLMN][0123456789:;] 0 0 0 0"},
        {30, "[ABCDEFGHIJKLMN][0123456789:;] 100000 0 0 0"},
        {34, "[ABCDEFGHIJKLMN][0123456789:;] 123450 0 0 0"},
        {36, "[ABCDEFGHIJKLMN][0123456789:;] 123456 0 0 0"},
        {37, "[ABCDEFGHIJKLMN][0123456789:;] 123456 15 0 0"},
        {38, "[ABCDEFGHIJKLMN][0123456789:;] 123456 15 1 0"},
        {39, "[ABCDEFGHIJKLMN][0123456789:;] 123456 15 1 256"},
    };
    for (const auto& [length, fields] : cases) {
        EXPECT_EQ(Product(std::string(kAnswer).substr(0, length * 3)), fields) << length;
    }
}

TEST(ProductAnswer, CharactersAboveTheDigitsWrap) {
    const std::string gap = "01 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 ";
    EXPECT_EQ(Product(gap + "DF E0"), "[              ][\xFF" + std::string(1, '\0') + "] 0 0 0 0");
}

TEST(ProductAnswer, EveryByteOfAPriceCountsAsADigit) {
    const std::string gap = std::string(kAnswer).substr(0, 29 * 3);
    EXPECT_EQ(Product(gap + "FF 00 00 00 00 0A"), "[ABCDEFGHIJKLMN][0123456789:;] 25500010 0 0 0");
}

}  // namespace
}  // namespace test
