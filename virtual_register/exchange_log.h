#pragma once

#include <cstdint>
#include <string>

#include "frame.h"

namespace virtual_register {

// The exchange in words, for a log that people read. UTF-8; control characters show as dots.
// "sale  \"Milk\" barcode 1234567890123 price 19.99 x 2 department 1 code 1"
std::string describe(const Request& request);
// `to` is the request that is answered: some answer codes are shared.
std::string describe(const Answer& answer, const Request& to);

// "12:05:30.250": time of day on a clock that showed `clock_start_s` at time 0.
std::string time_of_day(std::int64_t clock_start_s, std::int64_t now_us);

}  // namespace virtual_register
