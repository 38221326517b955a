#include "simulation/fault_plan.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace simulation {
namespace {

constexpr std::array<std::string_view, kFaultKinds> kNames = {
    "request_lost",
    "request_cut",
    "request_byte_changed",
    "request_byte_doubled",
    "request_noise",
    "request_altered",
    "answer_lost",
    "answer_late_within",
    "answer_late_past",
    "answer_held",
    "answer_gap_within",
    "answer_gap_past",
    "answer_cut",
    "answer_byte_changed",
    "answer_byte_doubled",
    "answer_noise",
    "answer_wrong_start",
    "answer_wrong_length",
    "answer_wrong_sum",
    "answer_altered",
    "answer_wrong_code",
    "answer_other_number",
    "answer_stale",
    "line_dead",
    "write_short",
    "write_error",
    "read_error",
    "end_of_file",
    "poll_error",
    "interrupted",
    "hang_up",
    "device_gone",
    "open_fails",
    "line_settings_fail",
    "trace_unwritable",
    "trace_disk_full",
    "restart",
    "busy",
    "refusal",
    "keyboard_locked",
    "switch_locked",
    "paper_out",
    "paper_ends",
    "paper_in",
    "counters_near_wrap",
    "cashier_asks",
    "cashier_cancels",
    "cashier_clears",
    "cashier_presses",
    "cashier_enters_line",
    "cashier_enters_free_line",
    "cashier_deletes_line",
    "cashier_gives_discount",
    "cashier_asks_weight",
    "cashier_closes_shift",
};

// Requests on which a check hangs; a fault at an exchange drawn blindly seldom meets them.
constexpr std::uint8_t kCriticalCommands[] = {0x20, 0x7F, 0x7F, 0x25, 0x28, 0x0A, 0x0A, 0x24,
                                              0x23, 0x21, 0x27, 0x36, 0x10, 0x03, 0x29, 0x37,
                                              0x04, 0x35, 0x38, 0x02, 0x0B, 0x34};

FaultKind AnyKind(Random& random) {
    return static_cast<FaultKind>(random.Below(kFaultKinds));
}

// A kind that makes sense again and again.
FaultKind LineKind(Random& random) {
    return static_cast<FaultKind>(
        random.Below(static_cast<std::uint32_t>(FaultKind::interrupted) + 1));
}

Fault DrawFault(Random& random, std::uint32_t exchanges) {
    Fault fault{};
    fault.kind = AnyKind(random);
    // Requests altered unseen make the outcome anybody's guess: a few are enough.
    if (fault.kind == FaultKind::request_altered && random.Chance(700)) {
        fault.kind = FaultKind::answer_lost;
    }
    if (random.Chance(400)) {
        fault.command = random.OneOf(kCriticalCommands);
        fault.at = random.Below(random.Chance(700) ? 3 : 12);
    } else {
        fault.at = random.Below(exchanges);
    }
    fault.a = static_cast<std::uint32_t>(random.Next());
    fault.b = static_cast<std::uint32_t>(random.Next());
    return fault;
}

void DrawBurst(Random& random, std::uint32_t exchanges, FaultPlan& plan) {
    Burst burst;
    burst.first = random.Below(exchanges);
    burst.last = burst.first + random.Below(random.Chance(800) ? 40 : 400);
    static constexpr std::uint32_t kRates[] = {50, 200, 500, 900, 1000};
    burst.per_mille = random.OneOf(kRates);
    burst.any_kind = random.Chance(300);
    burst.kind = LineKind(random);
    plan.bursts.push_back(burst);
}

// The paper ends, somebody puts a new roll in and presses a key.
void DrawPaperStory(Random& random, std::uint32_t exchanges, FaultPlan& plan) {
    Fault fault{};
    fault.kind = random.Chance(700) ? FaultKind::paper_out : FaultKind::paper_ends;
    fault.at = random.Below(exchanges);
    fault.a = random.Below(30);
    plan.faults.push_back(fault);
    fault.kind = FaultKind::paper_in;
    fault.at += 1 + random.Below(60);
    plan.faults.push_back(fault);
    fault.kind = FaultKind::cashier_presses;
    fault.at += random.Below(4);
    fault.a = 1 + random.Below(30);
    plan.faults.push_back(fault);
}

}  // namespace

std::string_view NameOf(FaultKind kind) {
    return kNames[static_cast<std::size_t>(kind)];
}

const FaultKind* FaultNamed(std::string_view name) {
    static const auto kinds = [] {
        std::array<FaultKind, kFaultKinds> all{};
        for (std::uint32_t i = 0; i < kFaultKinds; ++i) {
            all[i] = static_cast<FaultKind>(i);
        }
        return all;
    }();
    const auto* found = std::find(kNames.begin(), kNames.end(), name);
    return found == kNames.end() ? nullptr
                                 : &kinds[static_cast<std::size_t>(found - kNames.begin())];
}

bool IsHarmless(FaultKind kind) {
    switch (kind) {
        case FaultKind::answer_late_within:
        case FaultKind::answer_gap_within:
        case FaultKind::interrupted:
        case FaultKind::trace_unwritable:
        case FaultKind::trace_disk_full:
            return true;
        default:
            return false;
    }
}

bool IsForWholeRun(FaultKind kind) {
    return kind == FaultKind::trace_unwritable || kind == FaultKind::trace_disk_full ||
           kind == FaultKind::counters_near_wrap;
}

bool FaultPlan::Has(FaultKind kind) const {
    return std::any_of(faults.begin(), faults.end(),
                       [kind](const Fault& fault) { return fault.kind == kind; });
}

void DrawFaults(Random random, std::uint32_t exchanges, FaultPlan& plan) {
    plan.Clear();
    plan.seed = random.Next();
    const std::uint32_t pattern = random.Below(100);
    std::uint32_t single = 0;
    if (pattern < 10) {
        return;  // a good day
    }
    if (pattern < 45) {
        single = 1;
    } else if (pattern < 70) {
        single = 2;
    } else if (pattern < 80) {
        single = 3 + random.Below(6);
    } else if (pattern < 83) {
        DrawPaperStory(random, exchanges, plan);
    } else if (pattern < 90) {
        // A line that is bad all the time.
        Burst burst;
        burst.last = ~0U;
        burst.per_mille = 1 + random.Below(random.Chance(800) ? 30 : 200);
        burst.any_kind = true;
        plan.bursts.push_back(burst);
    } else {
        DrawBurst(random, exchanges, plan);
        single = random.Below(3);
    }
    for (std::uint32_t i = 0; i < single; ++i) {
        plan.faults.push_back(DrawFault(random, exchanges));
    }
}

}  // namespace simulation
