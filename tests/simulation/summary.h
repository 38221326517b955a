// The figures of a campaign for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "simulation/campaign.h"

namespace simulation {

struct Summary {
    std::string what;  // "random runs from seed 1"
    Figures figures;
    std::vector<Violation> violations;
    double seconds = 0;
    unsigned jobs = 1;
};

std::string AsText(const Summary& summary);
std::string AsJson(const Summary& summary);

// A row of a sweep: how the reference check ended under one kind of fault on one firmware.
struct SweepRow {
    int firmware;
    FaultKind kind;
    Figures figures;
};
std::string SweepTable(const std::vector<SweepRow>& rows);

}  // namespace simulation
