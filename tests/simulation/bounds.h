// How long a call may take at most, worked out from the required limits and waits.
#pragma once

#include <cstdint>
#include <optional>

#include "simulation/host_plan.h"
#include "simulation/required_driver.h"

namespace simulation {

struct Work {
    std::uint64_t exchanges = 0;
    std::uint64_t pauses_ms = 0;  // besides those of the exchanges
};

// The most that the call may do. For PrintCheck it is counted from the status request that began
// its last pass: before it the driver polls without bound, as it must. Clearing a check by keys,
// on firmware 301, has no bound either and is not in it. Nothing for DisconnectKKM, which resets
// the register until it is idle.
std::optional<Work> MostWork(const Call& call, const RequiredCheck& check, int tape_records);

// The longest exchange when the longest answer announced so many bytes.
Micros LongestExchange(unsigned longest_body);

}  // namespace simulation
