// A check from its first line to the tape.
#include "virtual_register/check.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

std::vector<int> statistics(Bench& bench) {
    return bench.send(0x0A);
}

TEST(Check, IsRegisteredAtTheResetInCheckOutAndNotBefore) {
    Bench bench;
    EXPECT_EQ((Reply{0x8A, 0, 1, 0, 0, 0, 0, 0x00, 0x00, 0x01, 0x86, 0xA0}), statistics(bench));
    bench.sell();
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ((Reply{0xE4, 1}), bench.send(0x25, {6}));
    EXPECT_EQ(0xC0, bench.state());
    bench.reset();
    EXPECT_EQ(0xC8, bench.state());
    EXPECT_EQ((Reply{0x8A, 0, 1, 0, 0, 0, 0, 0x00, 0x00, 0x01, 0x86, 0xA0}), statistics(bench));
    EXPECT_TRUE(bench.model.printed().empty());
    EXPECT_TRUE(bench.model.paper().lines().empty());
    EXPECT_EQ(1, bench.model.memory().sale_number());

    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ((Reply{0x8A, 0, 1, 0, 1, 0, 1, 0x00, 0x00, 0x01, 0x9E, 0x0D}), statistics(bench));
    EXPECT_EQ(0, bench.model.memory().sale_number());
    ASSERT_EQ(1u, bench.model.printed().size());
    const PrintedCheck& check = bench.model.printed()[0];
    EXPECT_EQ(1, check.tape_number);
    EXPECT_EQ(1, check.number);
    EXPECT_EQ(CheckType::sale, check.type);
    ASSERT_EQ(1u, check.lines.size());
    EXPECT_EQ("Milk", check.lines[0].printed_name());
    EXPECT_EQ("1234567890123", check.lines[0].barcode.text());
    EXPECT_EQ(1999u, check.lines[0].price_kopecks);
    EXPECT_EQ(3000u, check.lines[0].quantity_thousandths);
    EXPECT_EQ(5997u, check.lines[0].amount_kopecks);
    EXPECT_EQ(2, check.lines[0].department);
    EXPECT_EQ(1, check.lines[0].code);
    EXPECT_EQ(5997u, check.total_kopecks);
    EXPECT_EQ(5997u, check.cash_kopecks);
    EXPECT_EQ(0u, check.change_kopecks);
    EXPECT_FALSE(bench.model.paper().lines().empty());
}

TEST(Check, ASecondResetPrintsNothingMore) {
    Bench bench;
    bench.print_check();
    bench.reset();
    bench.reset();
    EXPECT_EQ(1u, bench.model.printed().size());
    EXPECT_EQ(1u, bench.model.checks_registered());
}

TEST(Check, RecordsOnTheTapeGrowByItsLines) {
    Bench bench;
    for (int i = 0; i < 4; ++i) {
        bench.sell();
        bench.reset();
    }
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    EXPECT_EQ(4, statistics(bench)[6]);
    EXPECT_EQ(1, statistics(bench)[4]);
}

TEST(Check, RoundsAWeighedAmountHalfUp) {
    Bench bench;
    bench.send(0x21, Bench::sale("Tea", {1}, 500, true));
    bench.send(0x21, Bench::sale("Tea", {1}, 499, true));
    bench.send(0x21, Bench::sale("Tea", {1, 0, 0, 0}, 1500, true));
    EXPECT_EQ(1u, bench.model.open_check().lines[0].amount_kopecks);
    EXPECT_EQ(0u, bench.model.open_check().lines[1].amount_kopecks);
    EXPECT_EQ(1500u, bench.model.open_check().lines[2].amount_kopecks);
    EXPECT_EQ(1500u, bench.model.open_check().lines[2].quantity_thousandths);
}

TEST(Check, NoPiecesAreOnePieceAndNoWeightIsNone) {
    Bench bench;
    bench.send(0x21, Bench::sale("Egg", {5}, 0));
    bench.send(0x21, Bench::sale("Nothing", {}, 0, true));
    EXPECT_EQ(1000u, bench.model.open_check().lines[0].quantity_thousandths);
    EXPECT_EQ(5u, bench.model.open_check().lines[0].amount_kopecks);
    EXPECT_EQ(0u, bench.model.open_check().lines[1].quantity_thousandths);
    EXPECT_EQ(0u, bench.model.open_check().lines[1].amount_kopecks);
}

TEST(Check, LongNameReplacesTheShortOnePieceByPiece) {
    Bench bench;
    bench.send(0x21, Bench::sale("Bread white sli", {1}, 0));
    std::vector<int> piece{0, 0};
    for (char letter : std::string("Bread white sliced")) {
        piece.push_back(letter);
    }
    EXPECT_EQ(Reply{0x97}, bench.send(0x27, piece));
    EXPECT_EQ("Bread white sliced", bench.model.open_check().lines[0].printed_name());
    piece = {0, 1};
    for (char letter : std::string(" 400 g            ")) {
        piece.push_back(letter);
    }
    bench.send(0x27, piece);
    bench.send(0x27, piece);
    EXPECT_EQ("Bread white sliced 400 g", bench.model.open_check().lines[0].printed_name());
}

TEST(Check, ANameForALineThatIsNotThereIsAnsweredAndForgotten) {
    Bench bench;
    bench.sell();
    std::vector<int> piece(20, 'X');
    piece[0] = 1;
    piece[1] = 0;
    EXPECT_EQ(Reply{0x97}, bench.send(0x27, piece));
    piece[0] = 0;
    piece[1] = 4;
    EXPECT_EQ(Reply{0x97}, bench.send(0x27, piece));
    EXPECT_EQ("Milk", bench.model.open_check().lines[0].printed_name());
}

TEST(Check, PriceAboveTheLimitIsRefusedWithOne) {
    Settings settings;
    settings.price_max_kopecks = 1999;
    Bench bench(303, settings);
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {1, 9, 9, 9}, 0)));
    EXPECT_EQ((Reply{0xC1, 1}), bench.send(0x21, Bench::sale("B", {2, 0, 0, 0}, 0)));
    EXPECT_EQ((Reply{0xA7, 0, 1, 0, 0, 1}), bench.status());
    EXPECT_EQ(1, bench.model.memory().sale_number());
}

TEST(Check, TheFirstMakeTakesSixDigitsOfPrice) {
    Bench bench(300);
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {9, 9, 9, 9, 9, 9}, 0)));
    EXPECT_EQ((Reply{0xC1, 1}), bench.send(0x21, Bench::sale("A", {1, 0, 0, 0, 0, 0, 0}, 0)));
}

TEST(Check, SumsAboveThirtyTwoBitsAreRefusedWithThree) {
    Bench bench;
    EXPECT_EQ((Reply{0xC1, 3}), bench.send(0x21, Bench::sale("A", {9, 9, 9, 9, 9, 9, 9}, 430)));
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {9, 9, 9, 9, 9, 9, 9}, 429)));
    EXPECT_EQ((Reply{0xC1, 0}), bench.send(0x21, Bench::sale("A", {4, 9, 6, 7, 7, 2, 4}, 0)));
    EXPECT_EQ((Reply{0xC1, 3}), bench.send(0x21, Bench::sale("A", {1, 0, 0}, 10)));
}

TEST(Check, PriceDigitsAboveNineAreRefused) {
    Bench bench;
    EXPECT_EQ((Reply{0xC1, 3}), bench.send(0x21, Bench::sale("A", {'1', '0'}, 0)));
    EXPECT_EQ(0, bench.model.memory().sale_number());
}

TEST(Check, AClosedCheckTakesNoMoreLines) {
    Bench bench;
    bench.go_to_check_out();
    EXPECT_EQ((Reply{0xC1, 4}), bench.send(0x21, Bench::sale("A", {1}, 0)));
    EXPECT_EQ(1, bench.model.memory().sale_number());
}

TEST(Check, AsManyLinesAsItsMemoryHoldsAreRegistered) {
    Bench bench(301);
    for (int i = 0; i < 19; ++i) {
        bench.sell();
    }
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    EXPECT_EQ(19, bench.model.memory().tape.count());
}

}  // namespace
}  // namespace virtual_register
