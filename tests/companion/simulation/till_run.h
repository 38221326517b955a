// A story carried out in virtual time, and its answer held against the register's truth.
#pragma once

#include <string>

#include "companion/decision.h"
#include "companion/simulation/story.h"

namespace outcome_simulation {

struct Answer {
    kkmcheck::Verdict first;  // what the host is told by the call that prints
    kkmcheck::Verdict last;   // what it is told when it asks later
    std::string wrong;        // empty: it is the truth
    bool printed = false;     // the truth
    std::uint32_t exchanges = 0;
};

// With `tell` the story is told on the standard output.
Answer Run(const Story& story, bool tell);

}  // namespace outcome_simulation
