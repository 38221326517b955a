#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "memory.h"
#include "paper.h"

namespace virtual_register {

// Appends a registered check as it stands on the paper: header, number and time, goods, discount,
// total, payment, footer, cut. A copy says that it is one.
void compose_receipt(const PrintedCheck& check, const Memory& memory, bool copy,
                     std::vector<PaperLine>& to);

// Appends the report that closes a shift.
void compose_shift_report(const Memory& memory, std::int64_t at_s, std::vector<PaperLine>& to);

// 123456 gives "1234.56"; negative sums carry their sign.
std::string money(std::int64_t kopecks);

}  // namespace virtual_register
