// What each state tells, byte by byte.
#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

SaleLine cheese() {
    SaleLine line;
    line.name.add("Cheese");
    line.price_kopecks = 54990;
    line.quantity_thousandths = 345;
    line.amount_kopecks = 18972;
    line.code = 0x0102;
    line.department = 4;
    line.weighed = true;
    return line;
}

TEST(Status, SwitchedOnTellsTapeChecksAndSection) {
    Bench bench;
    EXPECT_EQ((Reply{0xCB, 0, 1, 0, 0, 0}), bench.status());
    bench.print_check();
    bench.model.power_off();
    bench.model.power_on();
    EXPECT_EQ((Reply{0xCB, 0, 1, 0, 1, 0}), bench.status());
}

TEST(Status, IdleAndReadyAndKeyLockTellNothing) {
    Bench bench;
    bench.reset();
    EXPECT_EQ(Reply{0xA0}, bench.status());
    bench.send(0x10);
    EXPECT_EQ(Reply{0xCE}, bench.status());
    bench.reset();
    bench.sell();
    bench.send(0x25, {6});
    EXPECT_EQ(Reply{0xC0}, bench.status());
}

TEST(Status, AskingTheHostTellsWhatTheCashierEntered) {
    Bench bench;
    EXPECT_TRUE(bench.model.ask_host());
    EXPECT_EQ((Reply{0xA1, 0, 0, 0, 0, 0, 0, 0}), bench.status());
    Query query;
    query.code = 0x0304;
    query.department = 5;
    query.weighed = true;
    query.quantity = 1500;
    query.marked = true;
    EXPECT_TRUE(bench.model.ask_host(query));
    EXPECT_EQ((Reply{0xA1, 3, 4, 5, 1, 0x05, 0xDC, 1}), bench.status());
}

TEST(Status, AskingByBarcodeTellsIt) {
    Bench bench;
    EXPECT_TRUE(bench.model.ask_host_by_barcode("4601"));
    EXPECT_EQ((Reply{0xA3, 0, 0, 0, 0, 0, 4, '4', '6', '0', '1'}), bench.status());
}

TEST(Status, LineAddedTellsTheLine) {
    Bench bench;
    bench.send(0x21, Bench::sale("Milk", {1, 9, 9, 9}, 3));
    EXPECT_EQ((Reply{0xA2, 0, 1, 0, 0,    0,    2,    0,   0,   0,   1,
                     0,    0, 3, 0, 0x00, 0x07, 0xCF, 'M', 'i', 'l', 'k'}),
              bench.status());
}

TEST(Status, OnePieceIsToldAsOneAndTheSecondLineAsIndexOne) {
    Bench bench;
    bench.sell();
    bench.send(0x21, Bench::sale("Egg", {5}, 0));
    EXPECT_EQ((Reply{0xA2, 0, 1, 0, 0, 1, 2, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 5, 'E', 'g', 'g'}),
              bench.status());
}

TEST(Status, TypedLineIsToldLikeAnyOther) {
    Bench bench;
    EXPECT_TRUE(bench.model.enter_line(cheese()));
    EXPECT_EQ((Reply{0xA2, 0,    1, 0,    0,    0,    4,   0,   0,   1,   2,   1,
                     0x01, 0x59, 0, 0x00, 0xD6, 0xCE, 'C', 'h', 'e', 'e', 's', 'e'}),
              bench.status());
}

TEST(Status, DeletedLineTellsItsNumberFromOne) {
    Bench bench;
    bench.sell();
    bench.sell();
    EXPECT_TRUE(bench.model.delete_last_line());
    EXPECT_EQ((Reply{0xC4, 0, 1, 0, 0,    2,    2,    0,   0,   0,   1,
                     0,    0, 3, 0, 0x00, 0x07, 0xCF, 'M', 'i', 'l', 'k'}),
              bench.status());
    EXPECT_EQ(1, bench.model.memory().sale_number());
}

TEST(Status, ClearedCheckTellsHowManyLinesItHad) {
    Bench bench;
    bench.sell();
    bench.sell();
    bench.send(0x03);
    EXPECT_EQ((Reply{0xC5, 0, 1, 0, 0, 2, 0}), bench.status());
}

TEST(Status, FreePriceLineIsToldBeforeItIsInTheCheck) {
    Bench bench;
    EXPECT_TRUE(bench.model.enter_free_line(cheese()));
    EXPECT_EQ(
        (Reply{0xC6, 0, 1, 0, 0, 0, 0, 4, 0, 0, 1, 0x01, 0x59, 0x00, 0xD6, 0xCE, 0x00, 0x4A, 0x1C}),
        bench.status());
    EXPECT_EQ(0, bench.model.memory().sale_number());
}

TEST(Status, CheckOutTellsTheTotal) {
    Bench bench;
    bench.go_to_check_out(2);
    EXPECT_EQ((Reply{0xC8, 0, 1, 0, 0, 1, 2, 0, 0, 0x00, 0x00, 0x17, 0x6D, 1, 0, 0, 0, 0, 0, 0}),
              bench.status());
}

TEST(Status, CheckOutTellsADiscountWithSignZero) {
    Bench bench;
    bench.sell();
    bench.send(0x23, {0xF6});  // -10 %
    bench.reset();
    bench.send(0x25, {6});
    bench.reset();
    EXPECT_EQ((Reply{0xC8, 0,    1,    0, 0,  1, 6,    0,    0,    0x00,
                     0x00, 0x15, 0x15, 0, 10, 0, 0x00, 0x00, 0x02, 0x58}),
              bench.status());
}

TEST(Status, CheckOutTellsASurchargeWithSignOne) {
    Bench bench;
    bench.sell();
    bench.send(0x23, {10});
    bench.reset();
    bench.send(0x25, {6});
    bench.reset();
    EXPECT_EQ((Reply{0xC8, 0,    1,    0, 0,  1, 6,    0,    0,    0x00,
                     0x00, 0x19, 0xC5, 1, 10, 0, 0x00, 0x00, 0x02, 0x58}),
              bench.status());
}

TEST(Status, TypedDiscountIsTold) {
    Bench bench;
    bench.sell();
    EXPECT_TRUE(bench.model.enter_discount(-10));
    EXPECT_EQ((Reply{0xC9, 0, 1, 0, 0, 1, 6, 0, 0x00, 0x00, 0x15, 0x15, 0, 10}), bench.status());
    EXPECT_TRUE(bench.model.enter_discount(10));
    EXPECT_EQ((Reply{0xC9, 0, 1, 0, 0, 1, 6, 0, 0x00, 0x00, 0x19, 0xC5, 1, 10}), bench.status());
}

TEST(Status, DiscountCardTellsAmountAndNumber) {
    Bench bench;
    bench.sell();
    bench.send(0x24, {1, 3, 4, '7', '7', '1', 0});
    EXPECT_EQ((Reply{0xCA, 0, 1, 0, 0, 1, 6, 0, 0x00, 0x00, 0x17, 0x6D, 3, '7', '7', '1'}),
              bench.status());
    EXPECT_EQ(3, bench.model.open_check().card_kind);
}

TEST(Status, ClosedShiftTellsTheNewTape) {
    Bench bench;
    bench.print_check();
    EXPECT_TRUE(bench.model.close_shift());
    EXPECT_EQ((Reply{0xCC, 0, 2}), bench.status());
    bench.reset();
    EXPECT_EQ(Reply{0xA0}, bench.status());
}

TEST(Status, WeightIsZeroUntilTheHostTellsOne) {
    Bench bench;
    EXPECT_TRUE(bench.model.ask_weight());
    EXPECT_EQ((Reply{0xCD, 0, 0, 0, 0, 0, 0}), bench.status());
    EXPECT_EQ(Reply{0xB6}, bench.send(0x26, {0, 0, 1, 5, 0, 0}));
    EXPECT_EQ((Reply{0xCD, 0, 0, 1, 5, 0, 0}), bench.status());
}

TEST(Status, SectionStandsInSwitchedOnAndCheckOut) {
    Identity identity;
    identity.section = 7;
    Model model{Memory(identity)};
    Request request;
    request.command = 0x20;
    EXPECT_EQ((AnswerPayload{0, 1, 0, 0, 6}), model.handle(request, 0)->payload);
}

TEST(Status, ABusyRegisterShowsEachStateLate) {
    Bench bench;
    bench.reset();
    bench.model.set_states_late(2);
    bench.sell();
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ(0xA2, bench.state());
    bench.model.set_states_late(0);
    bench.reset();
    EXPECT_EQ(0xA0, bench.state());
}

TEST(Status, ACommandRepeatedToABusyRegisterDoesNotDelayItAgain) {
    Bench bench;
    bench.sell();
    bench.reset();
    bench.model.set_states_late(2);
    bench.send(0x23, {5});
    EXPECT_EQ(0xA0, bench.state());
    bench.send(0x23, {5});
    EXPECT_EQ(0xA0, bench.state());
    EXPECT_EQ(0xC0, bench.state());
}

}  // namespace
}  // namespace virtual_register
