#include "support/trace.h"

#include <charconv>
#include <fstream>

#include "VeskTarvoM5/VeskTarvoM5.h"

void TraceLogFile(const std::string& fileName, const std::string& text) {
    // Without a formatting stream around it, and with a buffer that need not be allocated, a
    // message costs less than half. A longer one passes the buffer by, in one write as well.
    char buffer[1024];
    std::filebuf file;
    file.pubsetbuf(buffer, sizeof buffer);
    if (file.open(fileName, std::ios::app) != nullptr) {
        file.sputn(text.data(), static_cast<std::streamsize>(text.size()));
    }
}

void TraceLogFile(const std::string& fileName, const std::ostringstream& text) {
    TraceLogFile(fileName, text.str());
}

std::string v_str(const std::vector<unsigned char>& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        char hex[2];
        const auto end = std::to_chars(hex, hex + sizeof hex, byte, 16);
        text.append(hex, end.ptr);
        text += ' ';
    }
    return text;
}

void DbgPrint(const std::string& /*text*/) {}

void DbgTrace(const char* /*format*/, ...) {}

void trace_vector(const std::vector<unsigned char>& /*bytes*/, const std::string& /*text*/) {}

const char* zetdGetErrorMsg(int /*code*/) {
    return "";
}

namespace trace {

namespace {

constexpr int kSignificantDigits = 6;

template <typename Number, std::size_t Size, typename... Format>
std::string_view Write(char (&digits)[Size], Number number, Format... format) {
    const auto end = std::to_chars(digits, digits + Size, number, format...);
    return {digits, static_cast<std::size_t>(end.ptr - digits)};
}

}  // namespace

Piece::Piece(int number) : text_(Write(digits_, number)) {}

Piece::Piece(unsigned number) : text_(Write(digits_, number)) {}

Piece::Piece(unsigned long number) : text_(Write(digits_, number)) {}

Piece::Piece(double number)
    : text_(Write(digits_, number, std::chars_format::general, kSignificantDigits)) {}

std::string Join(std::initializer_list<Piece> pieces) {
    std::size_t size = 0;
    for (const Piece& piece : pieces) {
        size += piece.Text().size();
    }
    std::string text;
    text.reserve(size);
    for (const Piece& piece : pieces) {
        text += piece.Text();
    }
    return text;
}

}  // namespace trace
