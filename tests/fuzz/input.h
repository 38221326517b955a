// The bytes that decide one run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "support/payload.h"

namespace fuzz {

// Reads from the front; behind the end everything is 0. All choices are made from fixed-width
// numbers, so that an input means the same on both word sizes.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    bool Exhausted() const { return at_ >= size_; }
    std::size_t Left() const { return size_ - at_; }

    std::uint8_t Byte() { return Exhausted() ? std::uint8_t{0} : data_[at_++]; }
    // 0 to count - 1.
    unsigned Choice(unsigned count) { return Byte() % count; }
    bool Flag() { return (Byte() & 1U) != 0; }

    std::uint32_t Word32() {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i) {
            word = word << 8U | Byte();
        }
        return word;
    }
    std::int32_t Int32() { return static_cast<std::int32_t>(Word32()); }

    // Every bit pattern of a double: infinities and all kinds of NaN included.
    double Double() {
        const std::uint64_t high = Word32();
        const std::uint64_t bits = high << 32U | Word32();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    // Up to `most` bytes, as many as the next byte says.
    Bytes Block(std::size_t most) {
        std::size_t count = Byte() % (most + 1);
        Bytes block;
        for (; count > 0 && !Exhausted(); --count) {
            block.push_back(Byte());
        }
        return block;
    }
    std::string Text(std::size_t most) {
        const Bytes block = Block(most);
        return {block.begin(), block.end()};
    }
    Bytes Rest() {
        Bytes rest(data_ + at_, data_ + size_);
        at_ = size_;
        return rest;
    }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

}  // namespace fuzz
