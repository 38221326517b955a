#pragma once

#include <cstdint>
#include <optional>

#include "frame.h"

namespace virtual_register {

// Where a firmware keeps values in its working memory. Firmware that gives a value out by a command
// has no place for it that a host could rely on.
struct RamMap {
    std::optional<std::uint16_t> serial_number;  // 8 characters
    std::optional<std::uint16_t> sale_number;    // 1 byte
    std::optional<std::uint16_t> last_error;     // 1 byte
};

struct Firmware {
    int number;  // 300, 301, 302, 303, 310, 312, 400
    Bytes<3> version_answer;
    RamMap ram;
    std::size_t check_lines_max;
    std::uint32_t price_max_kopecks;
    bool has_wide_eeprom_address;  // 4 address bytes before the count instead of 2
    bool asks_for_barcode;         // answers a sale query in an open check by asking for a barcode
};

// 300 is the family's first, which answers a version that hosts do not recognise; 312 is a later
// make of 310 and differs only in what it answers. Null for a number that was never made.
const Firmware* find_firmware(int number);

}  // namespace virtual_register
