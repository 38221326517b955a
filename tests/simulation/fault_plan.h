// The faults of a run.
//
// The fault model. An exchange is one request of the driver and what comes back; exchanges are
// counted from 0 over a whole run. A fault happens at an exchange. What it does to which exchange
// is decided before the run; the register's model decides what follows.
//
// The line. Between driver and register bytes can be lost, cut, changed, doubled, added and
// delayed, in both directions; a delayed answer can arrive within the driver's limits, behind them,
// or while the driver waits for the next answer; bytes can change so that the checksum stays right.
// Nothing overtakes: what the register sent first arrives first.
//
// The host. Writes can be short or fail, reads can fail or meet the end of the file, waits can fail
// or be interrupted, the device can vanish and come back, its attributes can be refused, the trace
// file can be unwritable or its disk full.
//
// The register. It can lose its power with its memory kept, be slow to show a new state, be silent
// for a while, refuse a sale, a closing or cash, run out of paper, find its keyboard locked by
// somebody else, and stand just before its counters wrap.
//
// The cashier. Whatever can be done at an unlocked keyboard can happen in the middle of a check.
//
// Not in the model: memory of the host or of the register that changes by itself, a register that
// acts on requests it did not get, two hosts on one line, a clock that runs backwards.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "simulation/random.h"

namespace simulation {

enum class FaultKind : std::uint8_t {
    // The way of a request.
    request_lost,
    request_cut,
    request_byte_changed,
    request_byte_doubled,
    request_noise,
    request_altered,  // the checksum is right

    // The way of an answer.
    answer_lost,
    answer_late_within,  // below the limit of the first byte
    answer_late_past,
    answer_held,  // until the next exchange
    answer_gap_within,
    answer_gap_past,  // beyond the limit between bytes
    answer_cut,
    answer_byte_changed,
    answer_byte_doubled,
    answer_noise,
    answer_wrong_start,
    answer_wrong_length,
    answer_wrong_sum,
    answer_altered,       // the checksum is right
    answer_wrong_code,    // the checksum is right
    answer_other_number,  // another register's number, the checksum is right
    answer_stale,         // the previous answer comes once more, before the right one
    line_dead,            // for a while, both ways

    // The host's side.
    write_short,
    write_error,
    read_error,
    end_of_file,
    poll_error,
    interrupted,  // every wait of the exchange
    hang_up,      // until the device is opened again
    device_gone,  // for a while, and then until it is opened again
    open_fails,
    line_settings_fail,
    trace_unwritable,  // for the whole run
    trace_disk_full,   // for the whole run

    // The register.
    restart,
    busy,  // from now on every state shows late
    refusal,
    keyboard_locked,
    switch_locked,
    paper_out,
    paper_ends,  // some lines are left
    paper_in,
    counters_near_wrap,  // from the beginning of the run

    // The cashier.
    cashier_asks,
    cashier_cancels,
    cashier_clears,  // the first of the two cancelling keys alone
    cashier_presses,
    cashier_enters_line,
    cashier_enters_free_line,
    cashier_deletes_line,
    cashier_gives_discount,
    cashier_asks_weight,
    cashier_closes_shift,

    count
};

constexpr auto kFaultKinds = static_cast<std::uint32_t>(FaultKind::count);

std::string_view NameOf(FaultKind kind);
// Null when there is no such name.
const FaultKind* FaultNamed(std::string_view name);

// True for what the driver can bear without noticing.
bool IsHarmless(FaultKind kind);
// True for what lasts from the beginning of a run and belongs to no exchange.
bool IsForWholeRun(FaultKind kind);

struct Fault {
    FaultKind kind;
    std::uint8_t command = 0;  // 0: at exchange `at`; else at the at-th request with this command
    std::uint32_t at = 0;
    std::uint32_t a = 0;  // parameters, any numbers; each kind takes what it needs of them
    std::uint32_t b = 0;
};

// Faults that come again and again.
struct Burst {
    std::uint32_t first = 0;
    std::uint32_t last = 0;  // exchanges, both included
    std::uint32_t per_mille = 0;
    bool any_kind = false;
    FaultKind kind = FaultKind::request_lost;
};

struct FaultPlan {
    std::uint64_t seed = 0;  // of what is drawn during the run
    std::vector<Fault> faults;
    std::vector<Burst> bursts;

    void Clear() {
        faults.clear();
        bursts.clear();
    }
    bool Has(FaultKind kind) const;
};

// Draws the faults of a run that is expected to take about so many exchanges.
void DrawFaults(Random random, std::uint32_t exchanges, FaultPlan& plan);

}  // namespace simulation
