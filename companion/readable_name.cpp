#include "companion/readable_name.h"

namespace kkmcheck {
namespace {

// Unicode of a letter of the upper half, 0 for what is none.
unsigned Letter(unsigned char byte) {
    if (byte >= 0x80 && byte <= 0xAF) {
        return 0x0410U + byte - 0x80U;
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return 0x0440U + byte - 0xE0U;
    }
    return byte == 0xF0 ? 0x0401U : byte == 0xF1 ? 0x0451U : 0U;
}

}  // namespace

std::string ReadableName(const std::string& bytes) {
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        const unsigned letter = Letter(byte);
        if (byte >= 0x20 && byte < 0x7F) {
            text += character;
        } else if (letter != 0) {
            text += static_cast<char>(0xC0U | letter >> 6U);
            text += static_cast<char>(0x80U | (letter & 0x3FU));
        } else {
            text += '?';
        }
    }
    return text;
}

}  // namespace kkmcheck
