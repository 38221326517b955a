#include "paced_bytes.h"

#include <algorithm>

namespace virtual_register {

void PacedBytes::send(std::uint8_t byte, std::int64_t now_us) {
    free_at_us_ = std::max(free_at_us_, now_us) + byte_us_;
    under_way_.push_back({free_at_us_, byte});
}

std::optional<std::uint8_t> PacedBytes::arrived(std::int64_t now_us) {
    if (under_way_.empty() || under_way_.front().due_us > now_us) {
        return std::nullopt;
    }
    const std::uint8_t value = under_way_.front().value;
    under_way_.pop_front();
    return value;
}

std::optional<std::int64_t> PacedBytes::next_us() const {
    if (under_way_.empty()) {
        return std::nullopt;
    }
    return under_way_.front().due_us;
}

}  // namespace virtual_register
