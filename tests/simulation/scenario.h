// Everything that a run is made of. A scenario is a function of one 64-bit seed, or is put together
// by a sweep.
#pragma once

#include <cstdint>

#include "simulation/fault_plan.h"
#include "simulation/host_plan.h"
#include "simulation/register_side.h"
#include "simulation/simulated_line.h"

namespace simulation {

constexpr int kFirmware[] = {301, 302, 303, 310, 400};

// The register as the run finds it.
struct RegisterPlan {
    int firmware = 303;
    bool switched_on_long_ago = true;  // idle, not just switched on
    std::uint32_t drawer_kopecks = 100'000'00;
    std::uint32_t print_us_per_line = 0;
    std::uint16_t checks = 0;
    std::uint16_t records = 0;
    bool shift_open = false;
    bool paper_out = false;
    std::uint32_t lines_in_open_check = 0;
    bool open_check_closed = false;
};

struct Scenario {
    std::uint64_t seed = 0;
    RegisterPlan kkm;
    LineSettings line;
    CashierPlan cashier;
    HostPlan host;
    FaultPlan faults;
};

void DrawScenario(std::uint64_t seed, Scenario& scenario);

}  // namespace simulation
