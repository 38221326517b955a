// Code page, calendar, money, records of text files.
#include <gtest/gtest.h>

#include <stdexcept>

#include "virtual_register/calendar.h"
#include "virtual_register/cp866.h"
#include "virtual_register/receipt.h"
#include "virtual_register/text_record.h"

namespace virtual_register {
namespace {

TEST(CodePage, RussianLettersGoBothWays) {
    EXPECT_EQ("\x8C\xAE\xAB\xAE\xAA\xAE \xF0\xF1\xFC", to_cp866("Молоко Ёё№"));
    EXPECT_EQ("Молоко Ёё№", to_utf8("\x8C\xAE\xAB\xAE\xAA\xAE \xF0\xF1\xFC"));
    EXPECT_EQ("Аявп", to_utf8("\x80\xEF\xA2\xAF"));
    EXPECT_EQ("рЯ", to_utf8("\xE0\x9F"));
}

TEST(CodePage, FramesAndSigns) {
    EXPECT_EQ("░▒▓│┤╡╢╖╕╣║╗╝╜╛┐", to_utf8("\xB0\xB1\xB2\xB3\xB4\xB5\xB6\xB7\xB8\xB9\xBA\xBB\xBC"
                                          "\xBD\xBE\xBF"));
    EXPECT_EQ("└┴┬├─┼╞╟╚╔╩╦╠═╬╧", to_utf8("\xC0\xC1\xC2\xC3\xC4\xC5\xC6\xC7\xC8\xC9\xCA\xCB\xCC"
                                          "\xCD\xCE\xCF"));
    EXPECT_EQ("╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀", to_utf8("\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD7\xD8\xD9\xDA\xDB\xDC"
                                          "\xDD\xDE\xDF"));
    EXPECT_EQ("ЄєЇїЎў°∙·√№¤■\u00A0",
              to_utf8("\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF"));
}

TEST(CodePage, EveryByteFromTheUpperHalfComesBack) {
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        EXPECT_EQ(one, to_cp866(to_utf8(one))) << byte;
    }
}

TEST(CodePage, ControlCharactersCannotSteerATerminal) {
    EXPECT_EQ("a.[31m..", to_utf8("a\x1B[31m\x7F\n"));
}

TEST(CodePage, LostLettersAndBrokenSequencesBecomeQuestionMarks) {
    EXPECT_EQ("?", to_cp866("€"));
    EXPECT_EQ("?", to_cp866("\U0001F600"));
    EXPECT_EQ("?A", to_cp866("\xD0"
                             "A"));
    EXPECT_EQ("?", to_cp866("\xD0"));
    EXPECT_EQ("?", to_cp866("\x80"));
}

TEST(Calendar, KnowsLeapYears) {
    const CalendarTime leap = calendar_time(1204243200);  // 29.02.2008
    EXPECT_EQ(2008, leap.year);
    EXPECT_EQ(2, leap.month);
    EXPECT_EQ(29, leap.day);
    const CalendarTime first = calendar_time(0);
    EXPECT_EQ(1970, first.year);
    EXPECT_EQ(1, first.month);
    EXPECT_EQ(1, first.day);
    const CalendarTime before = calendar_time(-1);
    EXPECT_EQ(1969, before.year);
    EXPECT_EQ(31, before.day);
    EXPECT_EQ(59, before.second);
    EXPECT_EQ(951782400, seconds_of({2000, 2, 29, 0, 0, 0}));
    EXPECT_EQ(4107542400, seconds_of({2100, 3, 1, 0, 0, 0}));
    EXPECT_EQ(1213531530, seconds_of({2008, 6, 15, 12, 5, 30}));
}

TEST(Money, HasTwoDecimals) {
    EXPECT_EQ("0.00", money(0));
    EXPECT_EQ("0.05", money(5));
    EXPECT_EQ("1234.56", money(123456));
    EXPECT_EQ("-24.97", money(-2497));
}

TEST(TextRecord, IsReadAsWritten) {
    TextRecord written("line");
    written.add("price", 1999);
    written.add("name", "A\x80");
    written.add("card", "");
    EXPECT_EQ("line price 1999 name 4180 card -\n", written.text());
    const TextRecord read = TextRecord::parse("line price 1999 name 4180 card -");
    EXPECT_EQ(1999, read.number("price", 0, 9999999));
    EXPECT_EQ("A\x80", read.bytes("name"));
    EXPECT_EQ("", read.bytes("card"));
    EXPECT_TRUE(read.has("card"));
    EXPECT_FALSE(read.has("cash"));
}

TEST(TextRecord, WhatIsWrongIsSaid) {
    EXPECT_THROW(TextRecord::parse("line price"), std::runtime_error);
    const TextRecord record = TextRecord::parse("line price 12a low -1 odd 123 letters GG");
    EXPECT_THROW(record.number("price", 0, 100), std::runtime_error);
    EXPECT_THROW(record.number("low", 0, 100), std::runtime_error);
    EXPECT_THROW(record.number("missing", 0, 100), std::runtime_error);
    EXPECT_THROW(record.bytes("odd"), std::runtime_error);
    EXPECT_THROW(record.bytes("letters"), std::runtime_error);
}

}  // namespace
}  // namespace virtual_register
