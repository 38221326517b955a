// Outcomes of a journal, for people and for programs.
#pragma once

#include <kkmcheck/kkmcheck.h>

#include <ostream>
#include <string>
#include <vector>

namespace kkm {

struct KeyedOutcome {
    std::string key;
    kkmcheck_outcome outcome;
};

// "printed", "not printed", "unknown"
std::string OutcomeName(int verdict);

// One outcome with its evidence.
void WriteOutcome(const KeyedOutcome& row, bool as_json, std::ostream& out);

// One line for each.
void WriteOutcomesAsTable(const std::vector<KeyedOutcome>& outcomes, std::ostream& out);
void WriteOutcomesAsCsv(const std::vector<KeyedOutcome>& outcomes, std::ostream& out);
void WriteOutcomesAsJson(const std::vector<KeyedOutcome>& outcomes, std::ostream& out);

}  // namespace kkm
