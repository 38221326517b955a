#include "kkm/figures.h"

#include <gtest/gtest.h>

namespace kkm {
namespace {

const std::vector<Figure> kFigures = {
    TextFigure("device", "register", "/dev/ttyUSB0"),
    NumberFigure("checks", "checks", 31),
    MoneyFigure("grand_total", "grand total", 1539.4200000000001),
    FlagFigure("shift_open", "shift", true, "open", "closed"),
};

TEST(Figures, TextStandsInColumns) {
    EXPECT_EQ(FiguresAsText(kFigures),
              "register     /dev/ttyUSB0\n"
              "checks       31\n"
              "grand total  1539.42\n"
              "shift        open\n");
}

TEST(Figures, JsonKeepsOrderAndTypes) {
    EXPECT_EQ(FiguresAsJson(kFigures),
              "{\n"
              "  \"device\": \"/dev/ttyUSB0\",\n"
              "  \"checks\": 31,\n"
              "  \"grand_total\": 1539.42,\n"
              "  \"shift_open\": true\n"
              "}\n");
}

TEST(Figures, FlagHasAWordForNo) {
    EXPECT_EQ(FiguresAsText({FlagFigure("a", "shift", false, "open", "closed")}),
              "shift  closed\n");
}

TEST(Figures, MoneyHasTwoDigits) {
    EXPECT_EQ(MoneyText(0), "0.00");
    EXPECT_EQ(MoneyText(1234.5), "1234.50");
    EXPECT_EQ(MoneyText(-0.05), "-0.05");
}

}  // namespace
}  // namespace kkm
