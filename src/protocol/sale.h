// A line of the check buffer.
#pragma once

#include <cstdint>
#include <string>

struct sale {
    std::string title;         // goods name in the host's bytes
    std::uint8_t section = 0;  // department, 1 to 15
    bool fractional = false;   // weighed goods: the quantity travels in thousandths
    std::uint16_t code = 0;    // goods code; 1 for every line that a host adds
    std::string barcode;       // the host cannot set it
    std::uint32_t price = 0;   // kopecks for one unit
    float count = 0;           // quantity
};
