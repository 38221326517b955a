// A run in readable form.
#pragma once

#include <string>

#include "simulation/run.h"

namespace simulation {

// One line for each call of the host, each exchange, each longer wait and each fault.
std::string TellRun(const Scenario& scenario, const Journal& journal, const RunResult& result);

}  // namespace simulation
