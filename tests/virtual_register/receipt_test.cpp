#include "virtual_register/receipt.h"

#include <gtest/gtest.h>

#include "bench.h"
#include "virtual_register/cp866.h"

namespace virtual_register {
namespace {

std::vector<int> bytes(const std::string& utf8) {
    std::vector<int> values;
    for (char letter : to_cp866(utf8)) {
        values.push_back(static_cast<std::uint8_t>(letter));
    }
    return values;
}

std::string paper(const Bench& bench) {
    std::string text;
    for (const PaperLine& line : bench.model.paper().lines()) {
        text += render(line) + '\n';
    }
    return text;
}

TEST(Receipt, ShowsGoodsDiscountTotalAndChange) {
    Bench bench;
    bench.send(0x21, Bench::sale(to_cp866("Хлеб белый наре"), {1, 9, 9, 9}, 3));
    std::vector<int> piece{0, 0};
    for (int byte : bytes("Хлеб белый нарезно")) {
        piece.push_back(byte);
    }
    bench.send(0x27, piece);
    piece = {0, 1};
    for (int byte : bytes("й бородинский     ")) {
        piece.push_back(byte);
    }
    bench.send(0x27, piece);
    bench.send(0x21, Bench::sale(to_cp866("Сыр"), {5, 4, 9, 9, 0}, 345, true));
    bench.send(0x23, {0xF6});
    bench.reset();
    bench.send(0x25, {6});
    bench.reset();
    bench.send(0x28, {0, 0, 0, 0xC3, 0x50});
    bench.reset();
    EXPECT_EQ(
        "        МАГАЗИН\n"
        "       \"У ДОМА\"\n"
        "КАССА 00012345\n"
        "ЧЕК 1     15.06.08 12:05\n"
        "ПРОДАЖА          СМЕНА 1\n"
        "Хлеб белый нарезной боро\n"
        "динский\n"
        "3 x 19.99         =59.97\n"
        "Сыр\n"
        "0.345 x 549.90   =189.72\n"
        "СКИДКА -10%       -24.97\n"
        "ИТОГО            =224.72\n"
        "НАЛИЧНЫМИ         500.00\n"
        "СДАЧА             275.28\n"
        "        СПАСИБО\n"
        "      ЗА ПОКУПКУ!\n"
        "- - - - - - - - - - - -\n",
        paper(bench));
}

TEST(Receipt, ACopySaysSo) {
    Bench bench;
    bench.print_check(2);
    bench.model.paper().tear_off();
    bench.send(0x29, {0x2B});
    EXPECT_EQ(
        "        МАГАЗИН\n"
        "       \"У ДОМА\"\n"
        "КАССА 00012345\n"
        "ЧЕК 1     15.06.08 12:05\n"
        "КРЕДИТ           СМЕНА 1\n"
        "К О П И Я\n"
        "Milk\n"
        "3 x 19.99         =59.97\n"
        "ИТОГО             =59.97\n"
        "        СПАСИБО\n"
        "      ЗА ПОКУПКУ!\n"
        "- - - - - - - - - - - -\n",
        paper(bench));
}

TEST(Receipt, ShowsSurchargeCardAndSumsThatDoNotFitOneLine) {
    Bench bench;
    bench.send(0x0C, {0});
    bench.send(0x0D, {0, 0});
    bench.send(0x21, Bench::sale("Gold", {9, 9, 9, 9, 9, 9, 9}, 300));
    bench.send(0x24, {1, 0, 5, '7', '7', '1', '2', 0});
    bench.send(0x23, {5});
    bench.reset();
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    EXPECT_EQ(
        "КАССА 00012345\n"
        "ЧЕК 1     15.06.08 12:05\n"
        "ПРОДАЖА          СМЕНА 1\n"
        "Gold\n"
        "300 x 99999.99\n"
        "            =29999997.00\n"
        "НАДБАВКА 5%   1499999.85\n"
        "КАРТА 7712\n"
        "ИТОГО       =31499996.85\n"
        "НАЛИЧНЫМИ    31499996.85\n"
        "- - - - - - - - - - - -\n",
        paper(bench));
}

TEST(Receipt, EveryTypeHasItsWord) {
    const std::vector<std::pair<int, std::string>> words{{6, "ПРОДАЖА"}, {1, "ВОЗВРАТ"},
                                                         {2, "КРЕДИТ"},  {3, "ВНЕСЕНИЕ"},
                                                         {4, "ВЫПЛАТА"}, {5, "СЛУЖЕБНЫЙ"}};
    for (const auto& [type, word] : words) {
        Bench bench;
        bench.print_check(type);
        EXPECT_NE(std::string::npos, paper(bench).find("\n" + word + " ")) << type;
    }
}

TEST(Receipt, TheShiftReportTellsTheCounters) {
    Bench bench;
    bench.print_check();
    bench.model.paper().tear_off();
    EXPECT_TRUE(bench.model.close_shift());
    EXPECT_EQ(
        "        МАГАЗИН\n"
        "       \"У ДОМА\"\n"
        "КАССА 00012345\n"
        "ОТЧЕТ С ГАШЕНИЕМ\n"
        "СМЕНА 1   15.06.08 12:05\n"
        "ЧЕКОВ                  1\n"
        "ОБОРОТ             59.97\n"
        "В КАССЕ          1059.97\n"
        "- - - - - - - - - - - -\n",
        paper(bench));
}

TEST(FreePrinting, NormalAndWideLinesAndFeeding) {
    Bench bench;
    std::vector<int> normal{0};
    for (int byte : bytes("Привет          ")) {
        normal.push_back(byte);
    }
    normal.insert(normal.end(), {0, 0});
    EXPECT_EQ(Reply{0xB1}, bench.send(0x31, normal));
    EXPECT_EQ(Reply{0xB2}, bench.send(0x32, {0, 'A', 'B', ' ', ' ', ' ', ' ', ' ', 0, 0}));
    EXPECT_EQ(Reply{0xB0}, bench.send(0x30, {40}));
    EXPECT_EQ("Привет\nA B\n~~~ 40 empty lines ~~~\n", paper(bench));
}

}  // namespace
}  // namespace virtual_register
