// kkm check --dry-run: the receipt as it will be, before anything is sent.
#pragma once

#include "kkm/check_file.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// What a firmware makes of a check.
struct FirmwareRules {
    int firmware;
    std::size_t longest_name;  // letters that get through
    std::size_t piece;         // the name travels in pieces of so many letters
    std::size_t most_lines;
    bool takes_cash;
};
FirmwareRules RulesOf(int firmware);

// Shows lines with their sums, letters that are lost, names where they are cut, discount, total and
// change, and what the library or the register refuses. Sums are the register's: the library's own
// are in floats of 32 bits. Uses the library's check buffer and no register. Refused when a line or
// the check would be.
ExitStatus DryRun(const CheckFile& check, int firmware, bool as_json, Streams& streams);

// The register's total of a check that is not refused, in currency units.
double RegisterTotal(const CheckFile& check);

}  // namespace kkm
