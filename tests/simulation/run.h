// One run: a scenario carried out, every call checked.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulation/scenario.h"
#include "simulation/verdict.h"

namespace simulation {

struct RunResult {
    Figures figures;
    std::string violation;          // empty: everything that was promised held
    std::string call;               // in which it did not
    std::uint32_t exchanges = 0;    // of the whole run
    std::vector<Verdict> verdicts;  // one for each PrintCheck
};

class Runner {
  public:
    // With a log the run is told in readable form.
    RunResult Run(const Scenario& scenario, std::string* log = nullptr);

  private:
    Journal journal_;
};

}  // namespace simulation
