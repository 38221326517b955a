#include "virtual_register/products.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

std::vector<int> product(int code) {
    std::vector<int> block(39, 0);
    constexpr std::string_view kText = "Milk           4601234567890";
    std::copy(kText.begin(), kText.end(), block.begin());
    block[30] = 1;
    block[31] = 9;
    block[32] = 9;
    block[33] = 9;
    block[35] = 3;
    block[36] = 1;
    block[37] = code / 256;
    block[38] = code % 256;
    return block;
}

TEST(Products, AreReadAsWrittenWithBarcodesTwentyBelow) {
    Bench bench;
    EXPECT_EQ((Reply{0x89, 1, 0x01, 0x02}), bench.send(0x09, product(0x0102)));
    EXPECT_EQ(
        (Reply{0x88, 1,    'M', 'i',  'l',  'k',  ' ',  ' ',  ' ',  ' ',  ' ',  ' ',  ' ',  ' ',
               ' ',  ' ',  ' ', 0x14, 0x16, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18,
               0x19, 0x10, 0,   0,    1,    9,    9,    9,    0,    3,    1,    1,    2}),
        bench.send(0x08, {0x01, 0x02}));
}

TEST(Products, AnUnknownOneIsOneZeroByte) {
    EXPECT_EQ((Reply{0x88, 0}), Bench().send(0x08, {0, 1}));
}

TEST(Products, CodeZeroAndLettersInAPriceAreRefused) {
    Bench bench;
    EXPECT_EQ((Reply{0x89, 0, 0, 0}), bench.send(0x09, product(0)));
    std::vector<int> block = product(5);
    block[33] = '9';
    EXPECT_EQ((Reply{0x89, 0, 0, 5}), bench.send(0x09, block));
    EXPECT_EQ((Reply{0x88, 0}), bench.send(0x08, {0, 5}));
}

TEST(Products, AFullDatabaseStillTakesChanges) {
    Bench bench;
    for (int code = 1; code <= 2000; ++code) {
        ASSERT_EQ(1, bench.send(0x09, product(code)).at(1));
    }
    EXPECT_EQ((Reply{0x89, 0, 0x07, 0xD1}), bench.send(0x09, product(2001)));
    EXPECT_EQ((Reply{0x89, 1, 0x07, 0xD0}), bench.send(0x09, product(2000)));
}

}  // namespace
}  // namespace virtual_register
