#include "support/payload.h"

#include <algorithm>

Bytes PayloadView::Field(std::size_t i, std::size_t count) const {
    Bytes field(count);
    for (std::size_t k = 0; k < count; ++k) {
        field[k] = Byte(i + k);
    }
    return field;
}

std::string PayloadView::Text(std::size_t i, std::size_t count) const {
    if (i >= bytes_.size()) {
        return {};
    }
    const std::size_t length = std::min(count, bytes_.size() - i);
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(i);
    return {first, first + static_cast<std::ptrdiff_t>(length)};
}

std::uint16_t PayloadView::Be16(std::size_t i) const {
    return static_cast<std::uint16_t>(Byte(i) << 8U | Byte(i + 1));
}
