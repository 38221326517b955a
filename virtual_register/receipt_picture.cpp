#include "receipt_picture.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "cp866.h"
#include "font.h"
#include "png.h"

namespace virtual_register {
namespace {

// Sizes in the printer's dots; the paper's edge is torn in teeth.
constexpr std::size_t kLineRows = 24;
constexpr std::size_t kSide = 20;
constexpr std::size_t kTop = 22;
constexpr std::size_t kTooth = 8;
constexpr std::size_t kWidth = kPaperWidth * kLetterColumns + 2 * kSide;
// A long feed is white paper, of which this much is enough to see.
constexpr std::size_t kFeedShown = 4;
constexpr std::size_t kDotsPerDot = 2;

std::size_t rows_of(const PaperLine& line) {
    switch (line.kind) {
        case PaperLine::Kind::feed:
            return kLineRows * std::min<std::size_t>(line.feed, kFeedShown);
        case PaperLine::Kind::cut:
            return 0;
        default:
            return kLineRows;
    }
}

std::size_t height_of(const PaperLines& lines) {
    std::size_t rows = 2 * kTop;
    for (const PaperLine& line : lines) {
        rows += rows_of(line);
    }
    return rows;
}

// --- drawing

std::string escaped(const std::string& text) {
    std::string safe;
    for (char character : text) {
        switch (character) {
            case '&':
                safe += "&amp;";
                break;
            case '<':
                safe += "&lt;";
                break;
            case '>':
                safe += "&gt;";
                break;
            default:
                safe += character;
        }
    }
    return safe;
}

// Paper between its torn edges, clockwise from the upper left.
std::string outline(std::size_t height) {
    std::string path = "M0 " + std::to_string(kTooth / 2);
    for (std::size_t x = kTooth / 2; x <= kWidth; x += kTooth / 2) {
        path +=
            " L" + std::to_string(x) + ' ' + (x % kTooth == 0 ? std::to_string(kTooth / 2) : "0");
    }
    for (std::size_t x = kWidth;; x -= kTooth / 2) {
        path += " L" + std::to_string(x) + ' ' +
                std::to_string(x % kTooth == 0 ? height - kTooth / 2 : height);
        if (x == 0) {
            return path + " Z";
        }
    }
}

// Words apart from each other stand in columns, whatever the width of the viewer's letters.
void add_words(std::string_view cp866, bool wide, std::size_t y, std::string& to) {
    const std::size_t stretch = wide ? 2 : 1;
    for (std::size_t at = cp866.find_first_not_of(' '); at != std::string_view::npos;) {
        const std::size_t end = std::min(cp866.find("  ", at), cp866.size());
        char place[192];
        std::snprintf(place, sizeof place,
                      "  <text%s x=\"%zu\" y=\"%zu\" textLength=\"%zu\" "
                      "lengthAdjust=\"spacingAndGlyphs\">",
                      wide ? " transform=\"scale(2,1)\"" : "",
                      kSide / stretch + at * kLetterColumns, y, (end - at) * kLetterColumns);
        to += place + escaped(to_utf8(cp866.substr(at, end - at))) + "</text>\n";
        at = cp866.find_first_not_of(' ', end);
    }
}

// --- dots

enum Ink : std::uint8_t { kNothing, kPaper, kBlack, kEdge };

constexpr std::array<Picture::Colour, Picture::kColours> kColours = {{
    {255, 255, 255, 0},
    {252, 251, 246, 255},
    {38, 38, 46, 255},
    {206, 203, 192, 255},
}};

// A picture whose dots are larger.
class Dots {
  public:
    explicit Dots(std::size_t height)
        : picture_(kWidth * kDotsPerDot, height * kDotsPerDot, kColours) {}

    void set(std::size_t x, std::size_t y, Ink ink) {
        for (std::size_t i = 0; i < kDotsPerDot * kDotsPerDot; ++i) {
            picture_.set(x * kDotsPerDot + i % kDotsPerDot, y * kDotsPerDot + i / kDotsPerDot, ink);
        }
    }
    const Picture& picture() const { return picture_; }

  private:
    Picture picture_;
};

void draw_paper(std::size_t height, Dots& dots) {
    for (std::size_t x = 0; x < kWidth; ++x) {
        const std::size_t in_tooth = x % kTooth;
        const std::size_t depth = std::min(in_tooth, kTooth - 1 - in_tooth);
        const std::size_t top = kTooth / 2 - 1 - depth;
        for (std::size_t y = top; y < height - top; ++y) {
            const bool edge = y == top || y + 1 == height - top || x == 0 || x + 1 == kWidth;
            dots.set(x, y, edge ? kEdge : kPaper);
        }
    }
}

void draw_letter(std::uint8_t letter, std::size_t x, std::size_t y, std::size_t stretch,
                 Dots& dots) {
    for (std::size_t row = 0; row < kLetterRows; ++row) {
        const std::uint16_t bits = letter_row(letter, row);
        for (std::size_t i = 0; i < kLetterColumns * stretch; ++i) {
            if ((bits >> (kLetterColumns - 1 - i / stretch) & 1) != 0) {
                dots.set(x + i, y + row, kBlack);
            }
        }
    }
}

bool has_letters(const PaperLine& line) {
    return line.kind == PaperLine::Kind::normal || line.kind == PaperLine::Kind::wide;
}

}  // namespace

std::string receipt_text(const PaperLines& lines) {
    std::string text;
    for (const PaperLine& line : lines) {
        text += render(line) + '\n';
    }
    return text;
}

std::string receipt_svg(const PaperLines& lines) {
    const std::size_t height = height_of(lines);
    const std::string size = std::to_string(kWidth) + "\" height=\"" + std::to_string(height);
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size +
                      "\" viewBox=\"0 0 " + std::to_string(kWidth) + ' ' + std::to_string(height) +
                      "\">\n <path fill=\"#fcfbf6\" stroke=\"#cecbc0\" d=\"" + outline(height) +
                      "\"/>\n <g font-family=\"'DejaVu Sans Mono','Liberation Mono',monospace\" "
                      "font-size=\"16.6\" fill=\"#26262e\" xml:space=\"preserve\">\n";
    std::size_t y = kTop;
    for (const PaperLine& line : lines) {
        if (has_letters(line)) {
            add_words(without_padding(line.text.text()), line.kind == PaperLine::Kind::wide,
                      y + kLetterRows - 4, svg);
        }
        y += rows_of(line);
    }
    return svg + " </g>\n</svg>\n";
}

std::string receipt_png(const PaperLines& lines) {
    const std::size_t height = height_of(lines);
    Dots dots(height);
    draw_paper(height, dots);
    std::size_t y = kTop;
    for (const PaperLine& line : lines) {
        const std::size_t stretch = line.kind == PaperLine::Kind::wide ? 2 : 1;
        for (std::size_t i = 0; has_letters(line) && i < line.text.size(); ++i) {
            draw_letter(line.text[i], kSide + i * kLetterColumns * stretch, y, stretch, dots);
        }
        y += rows_of(line);
    }
    return dots.picture().png();
}

std::string receipt_as(ReceiptFormat format, const PaperLines& lines) {
    switch (format) {
        case ReceiptFormat::text:
            return receipt_text(lines);
        case ReceiptFormat::svg:
            return receipt_svg(lines);
        case ReceiptFormat::png:
            break;
    }
    return receipt_png(lines);
}

}  // namespace virtual_register
