// Carries out the host's calls through the exported functions.
#pragma once

#include <optional>

#include "simulation/host_plan.h"

namespace simulation {

struct Answered {
    int result = 0;  // the success flag; 1 where the function gives none
    int error = 0;   // GetErrorCode() afterwards
    bool threw = false;
    std::optional<double> value;  // of a query that succeeded
};

Answered Perform(const Call& call);

// The library as it is when it has just been loaded.
void Reload(std::uint8_t number);

}  // namespace simulation
