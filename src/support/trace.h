// Writing of the trace files, and the building of their lines.
#pragma once

#include <initializer_list>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

// Opens the file for appending (creating it when missing), writes the text unchanged and closes it
// again, so that a crash loses no more than the message being written. A file that cannot be
// written changes nothing else.
void TraceLogFile(const std::string& fileName, const std::string& text);
void TraceLogFile(const std::string& fileName, const std::ostringstream& text);

// The bytes in lower-case hexadecimal without leading zeros, each followed by a blank: "0 3 a0 ".
std::string v_str(const std::vector<unsigned char>& bytes);

// Debug entry points that do nothing on this platform.
void DbgPrint(const std::string& text);
void DbgTrace(const char* format, ...);
void trace_vector(const std::vector<unsigned char>& bytes, const std::string& text);
const char* zetdGetErrorMsg(int code);  // always an empty text

namespace trace {

// One piece of a trace line: texts as they are, numbers in decimal, bytes as numbers, fractions
// with up to 6 digits; the host's locale plays no part. A text must outlive the piece.
class Piece {
  public:
    explicit Piece(const char* text) : text_(text) {}
    explicit Piece(const std::string& text) : text_(text) {}
    explicit Piece(int number);
    explicit Piece(unsigned number);
    explicit Piece(unsigned long number);
    explicit Piece(double number);
    Piece(const Piece&) = delete;
    Piece& operator=(const Piece&) = delete;

    std::string_view Text() const { return text_; }

  private:
    char digits_[24];
    std::string_view text_;
};

std::string Join(std::initializer_list<Piece> pieces);

// A text built from pieces without separators.
template <typename... Pieces>
std::string Text(const Pieces&... pieces) {
    return Join({Piece(pieces)...});
}

// The same with a line end behind the last one.
template <typename... Pieces>
std::string Line(const Pieces&... pieces) {
    return Join({Piece(pieces)..., Piece("\n")});
}

}  // namespace trace
