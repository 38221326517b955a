#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kkm/register_state.h"

namespace kkm {
namespace {

std::string Text(int code, const Bytes& data) {
    return FiguresAsText(FiguresOfState(code, data));
}

TEST(States, LineAddedShowsItsFigures) {
    EXPECT_EQ(Text(0xA2, {0x00, 0x01, 0x00, 0x8F, 0x00, 0x02, 0x00, 0x05, 0x00, 0x01, 0x01,
                          0x05, 0xDC, 0x00, 0x00, 0x10, 0x9A, 0x95, 0xAB, 0xA5, 0xA1}),
              "document    1\n"
              "position    144\n"
              "sale        1\n"
              "department  2\n"
              "attribute   0\n"
              "per cent    5\n"
              "goods code  1\n"
              "quantity    1.500 kg\n"
              "marked      no\n"
              "price       42.50\n"
              "name        Хлеб\n"
              "sum         66.94\n");
}

TEST(States, CheckOutShowsADiscountByItsSign) {
    const Bytes data = {0x00, 0x01, 0x00, 0x8F, 0x02, 0x06, 0x00, 0x00, 0x00, 0x07,
                        0xD7, 0x38, 0x00, 0x05, 0x00, 0x00, 0x00, 0x00, 0x64};
    EXPECT_EQ(Text(0xC8, data),
              "document  1\n"
              "position  144\n"
              "lines     2\n"
              "kind      6\n"
              "section   1\n"
              "amount    5138.48\n"
              "per cent  -5\n"
              "discount  -1.00\n");
}

TEST(States, AmountsOfFourBytesNeverTurnNegative) {
    const Bytes data = {0,    1,    0, 9, 2, 1,    0,    0,    0xFF, 0xFF,
                        0xFF, 0xFF, 1, 5, 0, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_THAT(Text(0xC8, data), testing::HasSubstr("amount    42949672.95\n"));
    EXPECT_THAT(Text(0xC8, data), testing::HasSubstr("discount  42949672.95\n"));
}

TEST(States, NoQuantityWhileGoodsAreEnteredIsOnePiece) {
    EXPECT_THAT(Text(0xA1, {0, 7, 1, 1, 0, 0, 1}), testing::HasSubstr("quantity    1\n"));
    EXPECT_THAT(Text(0xA3, {1, 0, 0, 3, 0, 2, '4', '6'}), testing::HasSubstr("bar code    46\n"));
}

TEST(States, AskingForACheckShowsWhereItWillStand) {
    const RegisterCounters counters{7, 143, 300};
    EXPECT_EQ(
        FiguresAsText(StateAsFigures({{9600, 0xA3, {1, 0, 0, 3, 0, 2, '4', '6'}}, counters, 2, 5})),
        "state         0xA3 ks_salebarcode: asks for a check, by a bar code\n"
        "baud          9600\n"
        "  department  1\n"
        "  quantity    3\n"
        "  marked      no\n"
        "  bar code    46\n"
        "  document    7\n"
        "  position    144\n"
        "  sale        2\n"
        "  section     5\n");
    EXPECT_THAT(
        FiguresAsText(StateAsFigures({{9600, 0xA1, {}}, {}})),
        testing::Not(testing::AnyOf(testing::HasSubstr("position"), testing::HasSubstr("sale "))));
}

TEST(States, OnlyALineThatWasAddedHasASum) {
    const Bytes pieces = {0, 1, 0, 1, 0, 2, 0, 0, 0, 1, 0, 0, 3, 0, 0, 0x10, 0x9A};
    EXPECT_THAT(Text(0xA2, pieces), testing::HasSubstr("sum         127.50\n"));
    EXPECT_THAT(Text(0xC4, pieces), testing::Not(testing::HasSubstr("sum ")));
}

// The driver's odd order of bytes: the third counts 2^24, the first two count nothing.
TEST(States, KeepsTheOddAmountOfADiscountCard) {
    const Bytes data = {0, 1, 0, 9, 2, 1, 5, 6, 1, 3, 4, 2, '4', '6'};
    EXPECT_EQ(Text(0xCA, data),
              "document  1\n"
              "position  9\n"
              "lines     2\n"
              "kind      1\n"
              "amount    167779.88\n"
              "card      46\n");
}

TEST(States, WeightIsThereWhenAByteIsNotZero) {
    EXPECT_EQ(Text(0xCD, {0, 0, 4}), "weighed  yes\n");
    EXPECT_EQ(Text(0xCD, {0, 0}), "weighed  no\n");
}

TEST(States, MissingBytesReadAsZero) {
    for (int code = 0; code < 256; ++code) {
        EXPECT_EQ(FiguresOfState(code, {}).size(), FiguresOfState(code, Bytes(255, 0)).size())
            << code;
    }
    EXPECT_EQ(Text(0xCC, {0x01}), "document  256\n");
}

TEST(States, UnknownCodeHasNoName) {
    EXPECT_EQ(StateOfCode(0xC1), nullptr);
    EXPECT_STREQ(StateOfCode(0xCE)->name, "ks_keylock");
    EXPECT_EQ(FiguresAsText(StateAsFigures({{57600, 0xE8, {}}, {}})),
              "state  0xE8 unknown\nbaud   57600\n");
}

}  // namespace
}  // namespace kkm
