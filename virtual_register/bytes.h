#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace virtual_register {

// A byte sequence of bounded length kept in place: the simulation answers tens of thousands of
// requests a second, so no request or answer touches the heap. What does not fit is dropped.
template <std::size_t Capacity>
class Bytes {
  public:
    Bytes() = default;
    Bytes(std::initializer_list<int> values) {
        for (int value : values) {
            add(static_cast<std::uint8_t>(value));
        }
    }

    static constexpr std::size_t capacity() { return Capacity; }
    void add(std::uint8_t byte) {
        if (size_ < Capacity) {
            bytes_[size_++] = byte;
        }
    }
    void add(const std::uint8_t* from, std::size_t count) {
        count = std::min(count, Capacity - size_);
        std::copy_n(from, count, bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += count;
    }
    void add(std::string_view text) {
        for (char character : text) {
            add(static_cast<std::uint8_t>(character));
        }
    }
    // The low `width` bytes of `value`, most significant first.
    void add_big_endian(std::uint64_t value, int width) {
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
            add(static_cast<std::uint8_t>(value >> shift));
        }
    }
    void drop_front(std::size_t count) {
        count = std::min(count, size_);
        std::copy(begin() + count, end(), bytes_.begin());
        size_ -= count;
    }
    void clear() { size_ = 0; }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const std::uint8_t* data() const { return bytes_.data(); }
    const std::uint8_t* begin() const { return bytes_.data(); }
    const std::uint8_t* end() const { return bytes_.data() + size_; }
    // Bytes past the end read as 0.
    std::uint8_t operator[](std::size_t index) const { return index < size_ ? bytes_[index] : 0; }
    std::uint32_t big_endian(std::size_t from, std::size_t width) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < width; ++i) {
            value = (value << 8) | (*this)[from + i];
        }
        return value;
    }
    std::string_view text(std::size_t from = 0, std::size_t count = Capacity) const {
        from = std::min(from, size_);
        count = std::min(count, size_ - from);
        return {reinterpret_cast<const char*>(bytes_.data()) + from, count};
    }

    friend bool operator==(const Bytes& one, const Bytes& other) {
        return std::equal(one.begin(), one.end(), other.begin(), other.end());
    }
    friend bool operator!=(const Bytes& one, const Bytes& other) { return !(one == other); }

  private:
    std::array<std::uint8_t, Capacity> bytes_{};
    std::size_t size_ = 0;
};

// Trailing spaces and zero bytes are padding of the register's fixed fields.
inline std::string_view without_padding(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace virtual_register
