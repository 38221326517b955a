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
    // What the callbacks were told: q for the query, the step, e and the code for an error.
    std::string told;
};

Answered Perform(const Call& call);

// The library as it is when it has just been loaded, with the host's callbacks.
void Reload(std::uint8_t number, Callbacks callbacks);

}  // namespace simulation
