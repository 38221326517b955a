// Writing of the trace files, and the building of their lines.
#pragma once

#include <charconv>
#include <sstream>
#include <string>
#include <type_traits>
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

// Appends one piece of a trace line: texts as they are, numbers in decimal, bytes as numbers,
// single-precision numbers with up to 6 digits; the host's locale plays no part.
template <typename Piece>
void Append(std::string& line, const Piece& piece) {
    if constexpr (std::is_floating_point_v<Piece>) {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, piece, std::chars_format::general,
                                       6 /* significant digits */);
        line.append(text, end.ptr);
    } else if constexpr (std::is_integral_v<Piece>) {
        line += std::to_string(piece);
    } else {
        line += piece;
    }
}

// A line built from pieces: no separators, a line end behind the last one.
template <typename... Pieces>
std::string Line(const Pieces&... pieces) {
    std::string line;
    (Append(line, pieces), ...);
    line += '\n';
    return line;
}

}  // namespace trace
