#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace virtual_register {

// Bytes under way on a line. On a paced line each takes the time of its ten bits (start, eight,
// stop); on another they are there at once.
class PacedBytes {
  public:
    explicit PacedBytes(std::int64_t byte_us) : byte_us_(byte_us) {}

    void send(std::uint8_t byte, std::int64_t now_us);
    // The next byte that has arrived by now.
    std::optional<std::uint8_t> arrived(std::int64_t now_us);
    // When the next byte arrives, if one is under way.
    std::optional<std::int64_t> next_us() const;

  private:
    struct Byte {
        std::int64_t due_us;
        std::uint8_t value;
    };
    std::int64_t byte_us_;
    std::int64_t free_at_us_ = 0;
    std::deque<Byte> under_way_;
};

}  // namespace virtual_register
