#include "virtual_register/tape.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

TEST(Tape, ARecordHasThirtyOneBytes) {
    Bench bench;
    bench.send(0x21, Bench::sale("Milk", {1, 9, 9, 9}, 3));
    bench.send(0x21, Bench::sale("Cheese", {5, 4, 9, 9, 0}, 345, true));
    bench.send(0x23, {0xF6});
    bench.reset();
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    EXPECT_EQ(
        (Reply{0x8B, 0, 1,    0x00, 0x00, 0x15, 0x15, 0x00, 0x07, 0xCF, 0x00, 0x02, 0x58, 0, 0, 0,
               0xF6, 0, 0x45, 0x67, 0x89, 0x01, 0x23, 0,    1,    2,    0,    0x0B, 0xB8, 0, 0, 0}),
        bench.send(0x12, {0, 0}));
    EXPECT_EQ(
        (Reply{0x8B, 0, 1,    0x00, 0x00, 0x42, 0xB3, 0x00, 0xD6, 0xCE, 0x00, 0x07, 0x69, 0, 0, 0,
               0xF6, 1, 0x45, 0x67, 0x89, 0x01, 0x23, 0,    1,    2,    1,    0x01, 0x59, 0, 0, 0}),
        bench.send(0x12, {0, 1}));
}

TEST(Tape, AMissingRecordIsOneByte) {
    Bench bench;
    EXPECT_EQ((Reply{0x8B, 0}), bench.send(0x12, {0, 0}));
    bench.print_check();
    EXPECT_EQ(32u, bench.send(0x12, {0, 0}).size());
    EXPECT_EQ((Reply{0x8B, 0}), bench.send(0x12, {0, 1}));
    EXPECT_EQ((Reply{0x8B, 0}), bench.send(0x12, {0xFF, 0xFF}));
}

TEST(Tape, QuantitiesAboveSixteenBitsOfThousandthsAreKeptAsTheMost) {
    Bench bench;
    bench.send(0x21, Bench::sale("A", {1}, 65));
    bench.send(0x21, Bench::sale("A", {1}, 66));
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    EXPECT_EQ(65000, bench.model.memory().tape.find(0)->quantity_thousandths);
    EXPECT_EQ(65535, bench.model.memory().tape.find(1)->quantity_thousandths);
}

TEST(Tape, DecodesWhatItEncodes) {
    Bench bench;
    bench.print_check(2);
    const TapeRecord& record = *bench.model.memory().tape.find(0);
    const auto again = TapeRecord::decode(record.encode());
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(record.encode(), again->encode());
    EXPECT_EQ(5997u, again->amount_kopecks);
    EXPECT_FALSE(TapeRecord::decode({0}).has_value());
}

TEST(Tape, KeepsTheLast65536Records) {
    Tape tape;
    TapeRecord record;
    for (std::uint32_t i = 0; i < 65537; ++i) {
        record.amount_kopecks = i;
        tape.add(record);
    }
    EXPECT_EQ(1, tape.count());
    EXPECT_EQ(65536u, tape.find(0)->amount_kopecks);
    EXPECT_EQ(1u, tape.find(1)->amount_kopecks);
    EXPECT_EQ(65535u, tape.find(65535)->amount_kopecks);
}

TEST(Tape, ABarcodeOfFewDigitsIsPaddedWithZeros) {
    PrintedCheck check;
    check.lines.resize(1);
    check.lines[0].barcode.add(std::string_view("42\0\0", 4));
    EXPECT_EQ((Bytes<5>{0, 0, 0, 0, 0x42}), make_tape_record(check, 0).barcode_digits);
}

}  // namespace
}  // namespace virtual_register
