// What can be said about a call that prints, and about a run.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "simulation/fault_plan.h"

namespace simulation {

// One of these for every PrintCheck.
enum class Verdict : std::uint8_t {
    // The driver knew.
    printed,  // 1: exactly this check is on the paper
    failed,   // 0: nothing was registered

    // Windows: the driver cannot know. Each has its condition, taken from the register's truth and
    // the faults, in checker.cpp; a result that meets none of them is a violation.
    counters_unread,     // 0: registered, but no statistics answer got through behind it
    answers_slipped,     // 0: the same, with a living line on which each answer came too late
    counters_wrapped,    // 0: registered, and a counter went round
    counters_forged,     // 0 or 1: a statistics answer was not what the register said
    changed_by_cashier,  // 0 or 1: somebody worked at an unlocked keyboard in the middle of it
    request_misread,     // 0 or 1: the register took a request that was not sent
    answer_forged,       // 0 or 1: an acknowledgement was not what the register said
    left_over_printed,   // 0: a check left behind by an earlier call came out

    // PrintCheck polls without bound, as required; the host ended it with nothing printed.
    polled_silence,     // the register did not answer
    polled_idle,        // the register did not ask for a check
    polled_open_check,  // the register asked, with a check of somebody else's in it

    count
};

constexpr auto kVerdicts = static_cast<std::size_t>(Verdict::count);
std::string_view NameOf(Verdict verdict);

// Things that are no violation and that the user of the figures should know of.
enum class Remark : std::uint8_t {
    printed_by_cashier_later,  // a check left open was brought out by the cashier's key
    printed_by_reset_later,  // a check left behind was brought out by CheckCancel or DisconnectKKM
    left_open,               // a disturbed clean-up left a check open
    left_locked,             // a disturbed clean-up left the keyboard locked
    left_unconnected,    // printing without a connection left a check open, or the keyboard locked
    printed_and_locked,  // printed, but no unlocking got through
    ended_by_plug,       // a loop that has no bound (clearing by keys, DisconnectKKM) went on
    open_for_paper,      // code 5: left open for the cashier
    count
};

constexpr auto kRemarks = static_cast<std::size_t>(Remark::count);
std::string_view NameOf(Remark remark);

// How a reference check of a sweep ended, for a host that connects anew and prints again after a
// failure.
enum class Ending : std::uint8_t {
    printed_at_once,
    printed_again,  // the first call failed and registered nothing, the second one printed
    not_printed,
    unknown,  // a call fell into one of the windows
    count
};

constexpr auto kEndings = static_cast<std::size_t>(Ending::count);
std::string_view NameOf(Ending ending);

constexpr std::size_t kErrorCodes = 72;

// Sums of one run or of many.
struct Figures {
    std::uint64_t runs = 0;
    std::uint64_t checks = 0;  // calls of PrintCheck
    std::uint64_t calls = 0;
    std::uint64_t exchanges = 0;
    std::uint64_t violations = 0;
    std::uint64_t virtual_s = 0;
    std::array<std::uint64_t, kFaultKinds> faults{};
    std::array<std::uint64_t, kVerdicts> verdicts{};
    std::array<std::uint64_t, kRemarks> remarks{};
    // Of PrintChecks that gave 0, by last error and verdict.
    std::array<std::array<std::uint64_t, kVerdicts>, kErrorCodes> errors{};
    std::array<std::uint64_t, kEndings> endings{};  // of sweeps

    void Add(const Figures& other);
};

}  // namespace simulation
