// Counters and tape of the connected register, read so that one bad answer does not pass.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "companion/decision.h"

namespace kkmcheck {

// Nothing when the register did not give the same twice in a row.
std::optional<Mark> ReadMark();

// The tape behind a mark.
struct TapeReading {
    Counters counters;
    std::string last_record_before;
    std::vector<TapeRecord> records;

    bool operator==(const TapeReading& other) const;
};

// Records are read only where they can tell something: on the same tape of the same register.
// Nothing when the register did not give the same twice in a row, or time was up.
std::optional<TapeReading> ReadTape(const Counters& before,
                                    const std::function<bool()>& time_is_left);

}  // namespace kkmcheck
