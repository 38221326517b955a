// How the line carries out its fault plan.
#include <algorithm>
#include <cerrno>

#include "simulation/simulated_line.h"

namespace simulation {
namespace {

constexpr Micros kMs = 1000;

bool IsOfRegisterOrCashier(FaultKind kind) {
    return kind >= FaultKind::restart;
}

}  // namespace

void SimulatedLine::ChooseFaults(std::uint8_t command, Micros now) {
    faults_.clear();
    const std::uint32_t seen = seen_[command]++;
    for (const Fault& fault : plan_.faults) {
        const bool due = fault.command == 0 ? fault.at == Present()
                                            : fault.command == command && fault.at == seen;
        if (due && !IsForWholeRun(fault.kind)) {
            Begin(fault, command, now);
        }
    }
    for (const Burst& burst : plan_.bursts) {
        if (Present() < burst.first || Present() > burst.last || !random_.Chance(burst.per_mille)) {
            continue;
        }
        Fault fault{};
        fault.kind = burst.any_kind ? static_cast<FaultKind>(random_.Below(
                                          static_cast<std::uint32_t>(FaultKind::interrupted) + 1))
                                    : burst.kind;
        fault.a = static_cast<std::uint32_t>(random_.Next());
        fault.b = static_cast<std::uint32_t>(random_.Next());
        Begin(fault, command, now);
    }
}

void SimulatedLine::Begin(const Fault& fault, std::uint8_t command, Micros now) {
    ++injected_[static_cast<std::size_t>(fault.kind)];
    if (!IsHarmless(fault.kind)) {
        journal_.exchanges().back().disturbed = true;
    }
    if (IsOfRegisterOrCashier(fault.kind)) {
        side_.Act(fault, command, now);
        return;
    }
    journal_.Add(EventKind::fault, now, static_cast<int>(fault.kind));
    faults_.push_back(fault);
    BeginHostFault(fault, now);
}

void SimulatedLine::BeginHostFault(const Fault& fault, Micros now) {
    switch (fault.kind) {
        case FaultKind::answer_stale:
            RepeatPreviousAnswer(now);
            break;
        case FaultKind::line_dead:
            dead_until_ = now + (fault.b % 3 == 0 ? fault.a % 90'000 : fault.a % 2'500) * kMs;
            break;
        case FaultKind::poll_error:
            polls_to_error_ = static_cast<int>(fault.a % 4);
            break;
        case FaultKind::interrupted:
            interrupts_waits_ = true;
            break;
        case FaultKind::hang_up:
            hung_up_ = true;
            break;
        case FaultKind::device_gone:
            hung_up_ = true;
            gone_until_ = now + (1 + fault.a % 20'000) * kMs;
            break;
        case FaultKind::open_fails:
            open_fails_ = true;
            break;
        case FaultKind::line_settings_fail:
            settings_fail_ = true;
            break;
        default:
            break;
    }
}

void SimulatedLine::RepeatPreviousAnswer(Micros now) {
    if (previous_answer_.empty()) {
        return;
    }
    Transmission stale;
    stale.bytes = previous_answer_;
    stale.start = now;
    stale.exchange = Present();
    Transmit(stale);
}

// Faults that leave the bytes alone and change when or whether they can be read.
void SimulatedLine::DelayAnswer(const Fault& fault, Transmission& answer) const {
    const std::size_t size = answer.bytes.size();
    if (size == 0) {
        return;
    }
    const std::size_t inner = size == 1 ? 0 : 1 + fault.a % (size - 1);
    switch (fault.kind) {
        case FaultKind::answer_late_within:
            answer.start = std::max(answer.start, written_at_ + (20 + fault.a % 360) * kMs);
            break;
        case FaultKind::answer_late_past:
            answer.start = std::max(answer.start, written_at_ + (530 + fault.a % 2'000) * kMs);
            break;
        case FaultKind::answer_held:
            answer.held = true;
            answer.start = fault.a;
            break;
        case FaultKind::answer_gap_within:
            answer.gaps.assign(size, 0);
            answer.gaps[inner] = (1 + fault.b % 90) * kMs;
            break;
        case FaultKind::answer_gap_past:
            answer.gaps.assign(size, 0);
            answer.gaps[inner] = (105 + fault.b % 300) * kMs;
            break;
        case FaultKind::read_error:
        case FaultKind::end_of_file:
            answer.broken_at = static_cast<int>(fault.a % size);
            answer.ending = fault.kind == FaultKind::read_error ? -EIO : kEndOfFile;
            answer.ends_there = fault.b % 2 == 0;
            break;
        default:
            break;
    }
}

}  // namespace simulation
