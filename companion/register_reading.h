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
    std::string last_record_before;  // empty when it was not read
    std::vector<TapeRecord> records;

    bool operator==(const TapeReading& other) const;
};

// What of the tape is looked at.
struct TapeRange {
    Counters before;
    int end_record = 0;  // none behind it is needed
};

// Told how many of how many records are read, before every stretch of a long tape; false ends it.
using TapeGoesOn = std::function<bool(int read, int all)>;

// Reads the tape stretch by stretch, and goes on where `reading` broke off. Records are read only
// where they can tell something: on the same tape of the same register. False when the register
// did not give the same twice in a row, or was not to go on: `reading` then has what is certain,
// and nothing when not even the counters are.
bool ReadTape(const TapeRange& range, const TapeGoesOn& goes_on,
              std::optional<TapeReading>& reading);

}  // namespace kkmcheck
