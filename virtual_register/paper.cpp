#include "paper.h"

#include <algorithm>
#include <utility>

#include "cp866.h"

namespace virtual_register {

bool Paper::print(const PaperLine& line) {
    if (limited_ && left_ == 0) {
        present_ = false;
    }
    if (!present_) {
        return false;
    }
    if (limited_) {
        --left_;
    }
    lines_.push_back(line);
    return true;
}

bool Paper::print(const std::vector<PaperLine>& lines) {
    return std::all_of(lines.begin(), lines.end(),
                       [this](const PaperLine& line) { return print(line); });
}

std::vector<PaperLine> Paper::tear_off() {
    return std::exchange(lines_, {});
}

PaperLine normal_line(std::string_view text) {
    PaperLine line;
    line.text.add(text);
    return line;
}

PaperLine wide_line(std::string_view text) {
    PaperLine line;
    line.kind = PaperLine::Kind::wide;
    line.text.add(text.substr(0, kPaperWidth / 2));
    return line;
}

std::string render(const PaperLine& line) {
    switch (line.kind) {
        case PaperLine::Kind::normal:
            return to_utf8(without_padding(line.text.text()));
        case PaperLine::Kind::wide: {
            std::string spread;
            for (char character : without_padding(line.text.text())) {
                spread += character;
                spread += ' ';
            }
            return to_utf8(without_padding(spread));
        }
        case PaperLine::Kind::feed:
            return "~~~ " + std::to_string(line.feed) + " empty lines ~~~";
        case PaperLine::Kind::cut:
            return "- - - - - - - - - - - -";
    }
    return {};
}

}  // namespace virtual_register
