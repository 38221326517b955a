#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"

namespace virtual_register {

constexpr std::size_t kPaperWidth = 24;  // characters of normal width

// One line on the paper, in the register's code page.
struct PaperLine {
    enum class Kind : std::uint8_t {
        normal,
        wide,  // letters of double width
        feed,  // `feed` empty lines
        cut,   // the end of a receipt
    };
    Kind kind = Kind::normal;
    std::uint8_t feed = 0;
    Bytes<kPaperWidth> text;
};

// The roll and what is printed on it.
class Paper {
  public:
    bool present() const { return present_; }
    void take_out() { present_ = false; }
    // A new roll; `lines_left` limits it, to have the paper end in the middle of something.
    void put_in() {
        present_ = true;
        limited_ = false;
    }
    void put_in(std::size_t lines_left) {
        present_ = true;
        limited_ = true;
        left_ = lines_left;
    }

    // False, and nothing printed, when there is no paper. The last line of a roll is printed.
    bool print(const PaperLine& line);
    // False when the paper ended before the last of the lines.
    bool print(const std::vector<PaperLine>& lines);

    const std::vector<PaperLine>& lines() const { return lines_; }
    // For a long life: hands out what is printed and forgets it.
    std::vector<PaperLine> tear_off();

  private:
    std::vector<PaperLine> lines_;
    bool present_ = true;
    bool limited_ = false;
    std::size_t left_ = 0;
};

PaperLine normal_line(std::string_view text);
PaperLine wide_line(std::string_view text);

// The line as UTF-8 text: double-width letters are spread with blanks, a feed is one remark.
std::string render(const PaperLine& line);

}  // namespace virtual_register
