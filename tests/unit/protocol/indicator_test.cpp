#include <algorithm>

#include "support/fault.h"
#include "support/fixtures.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

class IndicatorTest : public TarvoTest {};

struct InfoCase {
    const char* text;
    unsigned char value;
    int mode;
    const char* request;
};

TEST_F(IndicatorTest, LineIsSixteenCharactersValueAndMode) {
    const InfoCase cases[] = {
        {"", 0, 2, "07 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00 02"},
        {"A", 16, 2, "07 41 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 10 02"},
        {"ABCDEFGHIJKLMNO", 255, 1, "07 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 20 FF 01"},
        {"ABCDEFGHIJKLMNOP", 1, 0, "07 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 01 00"},
        {"ABCDEFGHIJKLMNOPQRST", 0, 2, "07 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00 02"},
        {"\x8F\xE0", 0, 2, "07 8F E0 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00 02"},
    };
    line.Always(0x07, Frame(0x87));
    for (const InfoCase& c : cases) {
        world.ClearLog();
        kkm.showInfo(c.text, c.value, static_cast<kkm_indicator>(c.mode));
        EXPECT_EQ(world.Steps(), (Strings{c.request, "sleep 100"}));
        EXPECT_EQ(world.Log().back(), "sleep 100");
    }
}

TEST_F(IndicatorTest, KeepsTheResetTextForAnotherAnswerToALine) {
    const auto show = [&] { kkm.showInfo("A", 0, indicator_line); };
    for (const unsigned char code : Bytes{0x86, 0x88, 0x91}) {
        line.Answer(0x07, Frame(code));
        EXPECT_EQ(FaultOf(show), "2 CTarvoOnline::reset_status_info(pac.cmd!=kkm_reset_info)");
    }
    EXPECT_EQ(FaultOf(show), kSilenceFault);
    EXPECT_EQ(std::count(world.Log().begin(), world.Log().end(), "sleep 100"), 0);
}

struct PrintCase {
    bool wide;
    unsigned char value;
    const char* text;
    const char* request;
};

TEST_F(IndicatorTest, PrintedLineFillsItsWidth) {
    const PrintCase cases[] = {
        {false, 0, "", "31 00 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00 00"},
        {false, 5, "AB", "31 00 41 42 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00 05"},
        {false, 255, "ABCDEFGHIJKLMNO",
         "31 00 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 20 00 FF"},
        {false, 1, "ABCDEFGHIJKLMNOP",
         "31 00 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00 01"},
        {false, 1, "ABCDEFGHIJKLMNOPQ",
         "31 00 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00 01"},
        {true, 0, "", "32 00 20 20 20 20 20 20 20 00 00"},
        {true, 2, "\x8F\xE0", "32 00 8F E0 20 20 20 20 20 00 02"},
        {true, 3, "ABCDEF", "32 00 41 42 43 44 45 46 20 00 03"},
        {true, 3, "ABCDEFG", "32 00 41 42 43 44 45 46 47 00 03"},
        {true, 4, "ABCDEFGHIJ", "32 00 41 42 43 44 45 46 47 00 04"},
    };
    line.Always(0x31, Frame(0xB1)).Always(0x32, Frame(0xB2));
    for (const PrintCase& c : cases) {
        world.ClearLog();
        kkm.printStr(c.wide, c.value, c.text);
        EXPECT_EQ(world.Steps(), (Strings{c.request, "sleep 100"}));
    }
}

TEST_F(IndicatorTest, KeepsThePauseBetweenSendingALineAndReadingItsAnswer) {
    line.Answer(0x32, Frame(0xB2));
    kkm.printStr(true, 0, "");
    const Strings begin(world.Log().begin(), world.Log().begin() + 6);
    EXPECT_EQ(begin,
              (Strings{"sleep 10", "flush", "write 00 0D 00 32 00 20 20 20 20 20 20 20 00 00 12",
                       "sleep 100", "sleep 10", "wait 400"}));
    EXPECT_NE(world.Log().back(), "sleep 100");
}

TEST_F(IndicatorTest, OtherAnswerToAPrintedLineIsCode2) {
    line.Answer(0x31, Frame(0xB2)).Answer(0x31, Frame(0xB0));
    line.Answer(0x32, Frame(0xB1)).Answer(0x32, Frame(0xB3));
    for (const bool wide : {false, false, true, true}) {
        EXPECT_EQ(FaultOf([&] { kkm.printStr(wide, 0, "A"); }), "2 CTarvo::printstr - error");
    }
    EXPECT_EQ(FaultOf([&] { kkm.printStr(false, 0, "A"); }), kSilenceFault);
}

}  // namespace
}  // namespace test
