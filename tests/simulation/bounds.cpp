#include "simulation/bounds.h"

#include <algorithm>

namespace simulation {
namespace {

constexpr std::uint64_t kTries = 20;
constexpr std::uint64_t kPolls = 100;
constexpr std::uint64_t kCheckOutTries = 10;
constexpr std::uint64_t kProbeMs = 30'000;
constexpr std::uint64_t kShortestExchangeMs = 10;

// A status answer that asks for a sale costs three more exchanges.
constexpr std::uint64_t kStatus = 4;
// Answers that are decoded like a status.
constexpr std::uint64_t kDecoded = kStatus;
// Reset, clear, two keys, reset.
constexpr std::uint64_t kCancel = 1 + kDecoded + 2 * kDecoded + 1;
constexpr std::uint64_t kUnlock = kStatus + 1;
constexpr std::uint64_t kPiece = 18;
constexpr std::uint64_t kPieces = 4;

Work StartWait() {
    Work work;
    const std::uint64_t dropping = kDecoded + 10 * kStatus + 1 + kCancel + kUnlock;
    work.exchanges = 1 + kStatus + kTries + std::max(dropping, 1 + kCancel + kDecoded);
    work.pauses_ms = 4 * 50;
    return work;
}

Work Print(const RequiredCheck& check) {
    Work work;
    std::uint64_t lines = 0;
    for (const RequiredLine& line : check.lines) {
        const std::uint64_t pieces = std::min((line.name.size() + kPiece - 1) / kPiece, kPieces);
        work.exchanges += kTries + kTries * (1 + kStatus + 1 + kTries) + kTries * pieces;
        work.pauses_ms += kTries * 100;
        ++lines;
    }
    work.exchanges += kStatus + 1 + kDecoded + 2 + 1 + 1;      // query, sale number, lock, counters
    work.exchanges += 1 + kTries * (kDecoded + kStatus + 1);   // reset, discount
    work.exchanges += kTries * (1 + kPolls * kStatus + 1);     // type
    work.exchanges += kTries * (kPolls * kStatus + kDecoded);  // cash
    work.exchanges += kCheckOutTries * (kPolls * kStatus + 1);
    work.exchanges += kProbeMs / kShortestExchangeMs + 2 + 1;  // counters, error
    work.exchanges += kTries * kUnlock + 1 + kCancel;
    work.pauses_ms += 50 + 20 + 50 + 50 + 50 + kTries * 10;
    work.pauses_ms += kCheckOutTries * (50 + 3000 + 500 * std::max<std::uint64_t>(lines, 1));
    work.pauses_ms += 4 * 50;
    return work;
}

}  // namespace

std::optional<Work> MostWork(const Call& call, const RequiredCheck& check, int tape_records) {
    Work work;
    const auto records = static_cast<std::uint64_t>(tape_records);
    switch (call.kind) {
        case CallKind::disconnect:
            return std::nullopt;
        case CallKind::connect:
        case CallKind::connect_device:
            return Work{3, 2 * 10};
        case CallKind::check_close:
            work = StartWait();
            break;
        case CallKind::print_check:
            return Print(check);
        case CallKind::check_cancel:
            return Work{kStatus + 1, 0};
        case CallKind::get_grand_total:
            work.exchanges = 2 + kTries * records;
            break;
        case CallKind::get_cash_sum:
            work.exchanges = 1 + records;
            break;
        case CallKind::feed:
            work.exchanges = static_cast<std::uint64_t>(std::max(call.number, 0));
            break;
        case CallKind::lock:
        case CallKind::unlock:
        case CallKind::clear_indicator:
        case CallKind::print_string:
            work = {kUnlock + kDecoded, 100};
            break;
        default:
            work.exchanges = 1;
            break;
    }
    work.exchanges += 1;  // the version, when it is not known
    work.pauses_ms += 10;
    return work;
}

Micros LongestExchange(unsigned longest_body) {
    const Micros body = longest_body;
    const Micros ms = 10 + 10 + 400 + 100 + (100 * body + 200) + 100 * body;
    return ms * 1000 + 10'000;  // clocks of whole milliseconds, and the time of looking at them
}

}  // namespace simulation
