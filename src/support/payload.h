// A reader of answer bytes that never leaves them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

// View of the payload of one answer. A short answer is a fault of the register: a byte that did not
// come reads as 0 and a text ends where the bytes end. The bytes must outlive the view.
class PayloadView {
  public:
    explicit PayloadView(const Bytes& bytes) : bytes_(bytes) {}

    std::uint8_t Byte(std::size_t i) const { return i < bytes_.size() ? bytes_[i] : 0; }
    std::uint16_t Be16(std::size_t i) const;
    std::uint32_t Be24(std::size_t i) const { return std::uint32_t{Be16(i)} << 8U | Byte(i + 2); }
    std::uint32_t Be32(std::size_t i) const { return std::uint32_t{Be16(i)} << 16U | Be16(i + 2); }

    // `count` bytes from byte i, missing ones as 0.
    Bytes Field(std::size_t i, std::size_t count) const;
    // Up to `count` characters from byte i.
    std::string Text(std::size_t i, std::size_t count) const;
    std::string TextToEnd(std::size_t i) const { return Text(i, bytes_.size()); }

  private:
    const Bytes& bytes_;
};
