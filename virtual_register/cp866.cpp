#include "cp866.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace virtual_register {
namespace {

// Code points of 0x80 to 0xFF.
constexpr std::array<char16_t, 128> upper_half() {
    constexpr char16_t kFrames[] =
        u"\u2591\u2592\u2593\u2502\u2524\u2561\u2562\u2556\u2555\u2563\u2551\u2557\u255D\u255C"
        u"\u255B\u2510\u2514\u2534\u252C\u251C\u2500\u253C\u255E\u255F\u255A\u2554\u2569\u2566"
        u"\u2560\u2550\u256C\u2567\u2568\u2564\u2565\u2559\u2558\u2552\u2553\u256B\u256A\u2518"
        u"\u250C\u2588\u2584\u258C\u2590\u2580";
    constexpr char16_t kOthers[] =
        u"\u0401\u0451\u0404\u0454\u0407\u0457\u040E\u045E\u00B0\u2219\u00B7\u221A\u2116\u00A4"
        u"\u25A0\u00A0";
    std::array<char16_t, 128> points{};
    for (std::size_t i = 0; i < 48; ++i) {
        points[i] = static_cast<char16_t>(0x0410 + i);
        points[48 + i] = kFrames[i];
    }
    for (std::size_t i = 0; i < 16; ++i) {
        points[96 + i] = static_cast<char16_t>(0x0440 + i);
        points[112 + i] = kOthers[i];
    }
    return points;
}

constexpr std::array<char16_t, 128> kUpperHalf = upper_half();

void append_utf8(std::string& to, char16_t point) {
    if (point < 0x80) {
        to += static_cast<char>(point);
    } else if (point < 0x800) {
        to += static_cast<char>(0xC0 | point >> 6);
        to += static_cast<char>(0x80 | (point & 0x3F));
    } else {
        to += static_cast<char>(0xE0 | point >> 12);
        to += static_cast<char>(0x80 | (point >> 6 & 0x3F));
        to += static_cast<char>(0x80 | (point & 0x3F));
    }
}

// Takes one code point off the front; a broken sequence costs one byte and gives '?'.
std::uint32_t take_point(std::string_view& utf8) {
    const auto byte = [&utf8](std::size_t i) { return static_cast<std::uint8_t>(utf8[i]); };
    const std::uint8_t lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const bool follows =
        length <= utf8.size() && std::all_of(utf8.begin() + 1, utf8.begin() + length, [](char c) {
            return (static_cast<std::uint8_t>(c) & 0xC0) == 0x80;
        });
    if (length == 1) {
        utf8.remove_prefix(1);
        return lead;
    }
    if (lead < 0xC2 || !follows) {
        utf8.remove_prefix(1);
        return '?';
    }
    std::uint32_t point = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        point = point << 6 | (byte(i) & 0x3FU);
    }
    utf8.remove_prefix(length);
    return point;
}

}  // namespace

std::string to_utf8(std::string_view cp866) {
    std::string utf8;
    utf8.reserve(2 * cp866.size());
    for (char character : cp866) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (byte >= 0x80) {
            append_utf8(utf8, kUpperHalf[byte - 0x80]);
        } else if (byte < 0x20 || byte == 0x7F) {
            utf8 += '.';
        } else {
            utf8 += character;
        }
    }
    return utf8;
}

std::string to_cp866(std::string_view utf8) {
    std::string cp866;
    cp866.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::uint32_t point = take_point(utf8);
        if (point < 0x80) {
            cp866 += static_cast<char>(point);
            continue;
        }
        const auto* found = std::find(kUpperHalf.begin(), kUpperHalf.end(), point);
        cp866 += found == kUpperHalf.end() ? '?'
                                           : static_cast<char>(0x80 + (found - kUpperHalf.begin()));
    }
    return cp866;
}

}  // namespace virtual_register
