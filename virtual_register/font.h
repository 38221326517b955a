#pragma once

#include <cstddef>
#include <cstdint>

namespace virtual_register {

constexpr std::size_t kLetterColumns = 10;
constexpr std::size_t kLetterRows = 20;

// One row of dots, 0 the topmost, of a letter of the register's code page; its lowest bit is the
// rightmost dot.
std::uint16_t letter_row(std::uint8_t letter, std::size_t row);

}  // namespace virtual_register
