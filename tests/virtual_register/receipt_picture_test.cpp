#include "virtual_register/receipt_picture.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "virtual_register/cp866.h"
#include "virtual_register/font.h"
#include "virtual_register/png.h"
#include "virtual_register/text_record.h"

namespace virtual_register {
namespace {

PaperLine line_of(PaperLine::Kind kind, std::uint8_t feed = 0) {
    PaperLine line;
    line.kind = kind;
    line.feed = feed;
    return line;
}

// "ИТОГО      =5.00", wide "КОПИЯ", fed, cut.
PaperLines paper() {
    return {normal_line(to_cp866("ИТОГО      =5.00")), wide_line(to_cp866("<A&Б>")),
            line_of(PaperLine::Kind::feed, 2), line_of(PaperLine::Kind::cut)};
}

std::uint32_t big_endian(const std::string& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<std::uint8_t>(bytes.at(at + i));
    }
    return value;
}

// The rows of dots in a PNG file, as its stored blocks carry them.
std::string rows_of(const std::string& png) {
    std::size_t at = png.find("IDAT") + 4 + 2;
    std::string rows;
    for (bool last = false; !last;) {
        const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(png.at(at + i)); };
        last = byte(0) == 1;
        const std::size_t size = byte(1) | static_cast<std::size_t>(byte(2)) << 8;
        EXPECT_EQ(0xFFFFU, size + (byte(3) | static_cast<std::size_t>(byte(4)) << 8));
        rows += png.substr(at + 5, size);
        at += 5 + size;
    }
    return rows;
}

// Ink of a dot of the printer; two by two in the picture, whose rows have 141 bytes.
int ink(const std::string& rows, std::size_t x, std::size_t y) {
    const auto byte = static_cast<std::uint8_t>(rows.at(2 * y * 141 + 1 + 2 * x / 4));
    return byte >> (2 * x % 4 == 0 ? 6 : 2) & 3;
}

TEST(Font, ALetterIsRowsOfTenDots) {
    const std::uint16_t zhe[20] = {0,     0,     0,     0x1B6, 0x1B6, 0x1B6, 0x1B6,
                                   0x1B6, 0x0FC, 0x078, 0x0FC, 0x1B6, 0x1B6, 0x1B6,
                                   0x1B6, 0x1B6, 0,     0,     0,     0};
    for (std::size_t row = 0; row < 20; ++row) {
        EXPECT_EQ(zhe[row], letter_row(0x86, row)) << row;
        EXPECT_EQ(0, letter_row(' ', row));
        EXPECT_EQ(letter_row('.', row), letter_row(0x07, row)) << "no picture";
        EXPECT_EQ(letter_row('.', row), letter_row(0x7F, row)) << "no picture";
    }
}

TEST(Png, IsTheseBytes) {
    Picture picture(5, 2, {{{255, 254, 253, 0}, {1, 2, 3, 255}, {4, 5, 6, 254}, {7, 8, 9, 253}}});
    picture.set(1, 0, 1);
    picture.set(2, 0, 2);
    picture.set(3, 0, 3);
    picture.set(4, 0, 3);
    picture.set(5, 0, 3);
    picture.set(0, 2, 3);
    EXPECT_EQ(
        "89504E470D0A1A0A0000000D4948445200000005000000020203000000ED04FECE0000000C504C54"
        "45FFFEFD0102030405060708099B11B2800000000474524E5300FFFEFD443810E500000011494441"
        "547801010600F9FF001BC0000000038D00DCFF503B870000000049454E44AE426082",
        to_hex(picture.png()));
}

TEST(Png, ALargePictureIsStoredInSeveralBlocks) {
    Picture picture(400, 700, {});
    picture.set(399, 699, 1);
    const std::string rows = rows_of(picture.png());
    ASSERT_EQ(700U * 101, rows.size());
    EXPECT_EQ('\1', rows.back());
    EXPECT_EQ(std::string::npos, rows.substr(0, rows.size() - 1).find('\1'));
}

TEST(ReceiptPicture, TextIsWhatTheScreenShows) {
    EXPECT_EQ("ИТОГО      =5.00\n< A & Б >\n~~~ 2 empty lines ~~~\n- - - - - - - - - - - -\n",
              receipt_as(ReceiptFormat::text, paper()));
}

TEST(ReceiptPicture, SvgPutsWordsIntoColumns) {
    const std::string svg = receipt_as(ReceiptFormat::svg, paper());
    EXPECT_EQ(0U, svg.find("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"280\" "
                           "height=\"140\" viewBox=\"0 0 280 140\">\n"));
    EXPECT_NE(std::string::npos,
              svg.find("  <text x=\"20\" y=\"38\" textLength=\"50\" "
                       "lengthAdjust=\"spacingAndGlyphs\">ИТОГО</text>\n"
                       "  <text x=\"130\" y=\"38\" textLength=\"50\" "
                       "lengthAdjust=\"spacingAndGlyphs\">=5.00</text>\n"
                       "  <text transform=\"scale(2,1)\" x=\"10\" y=\"62\" textLength=\"50\" "
                       "lengthAdjust=\"spacingAndGlyphs\">&lt;A&amp;Б&gt;</text>\n"
                       " </g>\n</svg>\n"))
        << svg;
}

TEST(ReceiptPicture, PngDrawsLettersWhereTheyStand) {
    const std::string png = receipt_as(ReceiptFormat::png, paper());
    EXPECT_EQ(560U, big_endian(png, 16));
    EXPECT_EQ(280U, big_endian(png, 20));
    const std::string rows = rows_of(png);
    ASSERT_EQ(280U * 141, rows.size());
    EXPECT_EQ(0, ink(rows, 8, 1)) << "between two teeth";
    EXPECT_EQ(3, ink(rows, 0, 70)) << "the edge";
    EXPECT_EQ(1, ink(rows, 10, 70)) << "paper";
    // The top row of "И" is .##....##. and lies three rows below that of its line.
    std::string row;
    for (std::size_t x = 20; x < 30; ++x) {
        row += ink(rows, x, 22 + 3) == 2 ? '#' : '.';
    }
    EXPECT_EQ(".##....##.", row);
    // The same of the wide "A", second in its line: ....##.... twice as wide.
    row.clear();
    for (std::size_t x = 40; x < 60; ++x) {
        row += ink(rows, x, 46 + 3) == 2 ? '#' : '.';
    }
    EXPECT_EQ("........####........", row);
}

TEST(ReceiptPicture, ALongFeedIsFourLinesOfWhite) {
    const std::string short_feed = receipt_png({line_of(PaperLine::Kind::feed, 4)});
    EXPECT_EQ(short_feed, receipt_png({line_of(PaperLine::Kind::feed, 200)}));
    EXPECT_EQ(280U, big_endian(short_feed, 20));
}

}  // namespace
}  // namespace virtual_register
