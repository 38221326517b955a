// One simulated story: a check under a key, what goes wrong, and who asks for its outcome.
//
// Beside the faults of simulation/fault_plan.h, which strike at exchanges of the whole story:
//
// - the process that drives the register is killed, before a request is sent or when it is under
// way,
//   while it prints or while it finds out;
// - the deadline comes while the register is silent or does not ask;
// - the journal finds its disk full at one of its writings;
// - between the end of one process and the beginning of the next the register's plug is pulled, a
//   cashier rings up checks of his own, or closes the shift, or puts paper in and presses a key;
//   another program prints a check; the register is exchanged for another, or its memory for an
//   older one;
// - the host prints a check of the same sums and other names under another key, is killed again,
// and
//   asks for both, in either order.
#pragma once

#include <string>
#include <string_view>

#include "companion/check.h"
#include "simulation/scenario.h"

namespace outcome_simulation {

enum class Between : unsigned char {
    nothing,
    plug,
    cashiers_check,
    longer_check,
    typed_into_it,
    shift_closed,
    paper_in,
    paper_in_and_key,
    other_program,
    other_register,
    older_memory,
    count
};

enum class Kill : unsigned char { none, before, sent };

// The names of a check's lines begin so, and those of the other key's.
constexpr std::string_view kOurNames = "OURS";
constexpr std::string_view kAlikeNames = "ALIKE";

struct Story {
    simulation::Scenario scenario;  // its host's calls are not used
    kkmcheck::Check check;
    Kill kill = Kill::none;
    std::uint32_t kill_at = 0;    // exchange
    std::uint32_t disk_full = 0;  // the journal's writing that fails, counted from 1; 0: none
    Between between = Between::nothing;
    // The other key's check; no lines: there is none. Its process is killed at an exchange too.
    kkmcheck::Check alike;
    Kill alike_kill = Kill::none;
    std::uint32_t alike_kill_at = 0;
    bool alike_is_asked_first = false;
    std::string kind;  // of what goes wrong, for the figures
};

void DrawStory(std::uint64_t seed, Story& story);

}  // namespace outcome_simulation
