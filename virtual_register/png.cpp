#include "png.h"

#include <algorithm>
#include <string_view>

namespace virtual_register {
namespace {

constexpr std::size_t kDotsPerByte = 4;
constexpr std::size_t kStoredMax = 65535;

constexpr std::array<std::uint32_t, 256> crc_table() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint32_t value = n;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? 0xEDB88320U ^ value >> 1 : value >> 1;
        }
        table[n] = value;
    }
    return table;
}

std::uint32_t crc(std::string_view bytes) {
    static constexpr std::array<std::uint32_t, 256> kTable = crc_table();
    std::uint32_t value = 0xFFFFFFFFU;
    for (char byte : bytes) {
        value = kTable[(value ^ static_cast<std::uint8_t>(byte)) & 0xFF] ^ value >> 8;
    }
    return ~value;
}

std::uint32_t adler(std::string_view bytes) {
    constexpr std::uint32_t kBase = 65521;
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (char byte : bytes) {
        low = (low + static_cast<std::uint8_t>(byte)) % kBase;
        high = (high + low) % kBase;
    }
    return high << 16 | low;
}

std::string big_endian(std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
    return bytes;
}

std::string chunk(const char* type, const std::string& data) {
    const std::string body = type + data;
    return big_endian(data.size()) + body + big_endian(crc(body));
}

// A stream of stored blocks.
std::string stored(const std::string& bytes) {
    std::string stream = "\x78\x01";
    for (std::size_t at = 0; at < bytes.size(); at += kStoredMax) {
        const std::size_t size = std::min(kStoredMax, bytes.size() - at);
        const bool last = at + size == bytes.size();
        stream += last ? '\1' : '\0';
        for (std::size_t word : {size, ~size}) {
            stream += static_cast<char>(word & 0xFF);
            stream += static_cast<char>(word >> 8 & 0xFF);
        }
        stream.append(bytes, at, size);
    }
    return stream + big_endian(adler(bytes));
}

}  // namespace

std::string Picture::png() const {
    std::string palette;
    std::string opacity;
    for (const Colour& colour : colours_) {
        for (std::uint8_t part : {colour.red, colour.green, colour.blue}) {
            palette += static_cast<char>(part);
        }
        opacity += static_cast<char>(colour.opacity);
    }
    // Two bits a dot, colours from the palette, no interlacing.
    const std::string head =
        big_endian(width_) + big_endian(height_) + std::string("\2\3\0\0\0", 5);
    return "\x89PNG\r\n\x1A\n" + chunk("IHDR", head) + chunk("PLTE", palette) +
           chunk("tRNS", opacity) + chunk("IDAT", stored(rows())) + chunk("IEND", "");
}

std::string Picture::rows() const {
    std::string bytes;
    for (std::size_t y = 0; y < height_; ++y) {
        bytes += '\0';  // a row as it stands, not as a difference
        for (std::size_t x = 0; x < width_; x += kDotsPerByte) {
            unsigned byte = 0;
            for (std::size_t i = 0; i < kDotsPerByte; ++i) {
                byte = byte << 2 | (x + i < width_ ? dots_[y * width_ + x + i] : 0U);
            }
            bytes += static_cast<char>(byte);
        }
    }
    return bytes;
}

}  // namespace virtual_register
