#include "companion/decision.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace kkmcheck {
namespace {

// The driver gives every line the same code and article; what a cashier types has its own.
constexpr int kDriverCode = 1;
constexpr std::uint8_t kDriverDigits[4] = {0x45, 0x67, 0x89, 0x01};
// So many of the article's bytes must differ, and the code too, before a record counts as somebody
// else's: a byte that changes on the line changes one of the two.
constexpr int kForeignDigits = 3;
// A record cannot hold a larger quantity.
constexpr std::int64_t kLargestQuantity = 65535;

enum class Origin { driver, foreign, doubtful };

Origin OriginOf(const TapeRecord& record) {
    int differing = 0;
    for (std::size_t i = 0; i < std::size(kDriverDigits); ++i) {
        differing += record.digits[i] != kDriverDigits[i] ? 1 : 0;
    }
    if (differing == 0 && record.code == kDriverCode && !record.marked) {
        return Origin::driver;
    }
    return differing >= kForeignDigits && record.code != kDriverCode ? Origin::foreign
                                                                     : Origin::doubtful;
}

bool Matches(const TapeRecord& record, const ExpectedRecord& expected) {
    return record.kind == expected.kind && record.sum_kopecks == expected.sum_kopecks &&
           record.quantity_thousandths == std::min(expected.quantity_thousandths, kLargestQuantity);
}

Verdict Unknown(Reason reason) {
    return {Outcome::unknown, reason};
}

// Whether a later attempt's lines may be among the new records. Its mark excludes that, but for a
// memory that was exchanged in between.
bool AnotherMayOwn(const Evidence& evidence) {
    const int first = evidence.before->counters.records;
    const int end = evidence.after->records;
    return std::any_of(evidence.claims.begin(), evidence.claims.end(), [&](const Claim& claim) {
        return claim.first_record < end && claim.end_record > first;
    });
}

// The records of this check, one behind the other, found by their origin and compared by sums.
bool AreThisCheck(const Evidence& evidence, const std::vector<std::size_t>& places) {
    if (places.size() != evidence.expected.size()) {
        return false;
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i] != places[0] + i ||
            !Matches(evidence.records[places[i]], evidence.expected[i])) {
            return false;
        }
    }
    return true;
}

Verdict DecideByTape(const Evidence& evidence, int checks) {
    std::vector<std::size_t> from_driver;
    for (std::size_t place = 0; place < evidence.records.size(); ++place) {
        const Origin origin = OriginOf(evidence.records[place]);
        if (origin == Origin::doubtful) {
            return Unknown(Reason::doubtful_records);
        }
        if (origin == Origin::driver) {
            from_driver.push_back(place);
        }
    }
    if (from_driver.empty()) {
        return evidence.nothing_open ? Verdict{Outcome::not_printed, Reason::not_on_tape}
                                     : Unknown(Reason::check_may_be_open);
    }
    if (!AreThisCheck(evidence, from_driver)) {
        return Unknown(Reason::other_lines_on_tape);
    }
    // Every other check has a record at least. With more records than that, some may have been
    // typed into this check, unless the driver had counted before the others came. A keyboard that
    // is locked while it works proves nothing: a line may be typed before the lock.
    const int other_checks = checks - 1;
    const int other_records = static_cast<int>(evidence.records.size() - from_driver.size());
    const bool undisturbed = other_checks > 0 && evidence.driver_result.value_or(0) == 1;
    if (other_records < other_checks) {
        return Unknown(Reason::counters_at_odds);
    }
    if (other_records > other_checks && !undisturbed) {
        return Unknown(Reason::lines_added_by_hand);
    }
    return {Outcome::printed, Reason::on_tape,
            evidence.before->counters.records + static_cast<int>(from_driver[0])};
}

Verdict DecideUnmoved(const Evidence& evidence, bool nothing_open) {
    if (evidence.driver_result.value_or(0) == 1) {
        return Unknown(Reason::counters_went_back);  // the driver had seen them move
    }
    return nothing_open ? Verdict{Outcome::not_printed, Reason::counters_unmoved}
                        : Unknown(Reason::check_may_be_open);
}

// What the marks of this attempt and the next tell by themselves, without the register.
std::optional<Verdict> DecideByMarks(const Mark& before, const Evidence& evidence) {
    const Mark& until = *evidence.until;
    if (until.counters.checks < before.counters.checks ||
        until.counters.records < before.counters.records) {
        return Unknown(Reason::counters_went_back);
    }
    if (until.counters != before.counters) {
        return std::nullopt;
    }
    return until.last_record == before.last_record ? DecideUnmoved(evidence, true)
                                                   : Unknown(Reason::other_memory);
}

Verdict DecideByMoves(const Evidence& evidence) {
    const int checks = evidence.after->checks - evidence.before->counters.checks;
    const int records = evidence.after->records - evidence.before->counters.records;
    if (checks == 0 && records == 0) {
        return DecideUnmoved(evidence, evidence.nothing_open);
    }
    if (records < checks || checks == 0) {
        return Unknown(Reason::counters_at_odds);
    }
    if (evidence.records.size() != static_cast<std::size_t>(records)) {
        return Unknown(Reason::tape_unread);
    }
    if (AnotherMayOwn(evidence)) {
        return Unknown(Reason::not_told_apart);
    }
    return DecideByTape(evidence, checks);
}

// What was found later, as it would have been found when the next attempt's mark was read.
Verdict DecideUntilNext(const Evidence& evidence) {
    const Mark& until = *evidence.until;
    const Counters& after = *evidence.after;
    const int first = evidence.before->counters.records;
    if (after.checks < until.counters.checks || after.records < until.counters.records) {
        return Unknown(Reason::counters_went_back);
    }
    if (evidence.records.size() < static_cast<std::size_t>(until.counters.records - first)) {
        return Unknown(Reason::tape_unread);
    }
    Evidence then = evidence;
    then.after = until.counters;
    then.nothing_open = true;
    then.records.resize(static_cast<std::size_t>(until.counters.records - first));
    if (!then.records.empty() && Text(then.records.back()) != until.last_record) {
        return Unknown(Reason::other_memory);
    }
    return DecideByMoves(then);
}

}  // namespace

bool Counters::operator==(const Counters& other) const {
    return serial == other.serial && tape == other.tape && checks == other.checks &&
           records == other.records;
}

bool TapeRecord::operator==(const TapeRecord& other) const {
    return kind == other.kind && payment == other.payment && sum_kopecks == other.sum_kopecks &&
           quantity_thousandths == other.quantity_thousandths && marked == other.marked &&
           code == other.code && std::memcmp(digits, other.digits, sizeof digits) == 0;
}

std::string Text(const TapeRecord& record) {
    char text[128];
    std::snprintf(text, sizeof text,
                  "kind %d, payment %d, %lld.%02lld, quantity %lld.%03lld, article %d "
                  "%02x%02x%02x%02x%s",
                  record.kind, record.payment, static_cast<long long>(record.sum_kopecks / 100),
                  static_cast<long long>(record.sum_kopecks % 100),
                  static_cast<long long>(record.quantity_thousandths / 1000),
                  static_cast<long long>(record.quantity_thousandths % 1000), record.code,
                  record.digits[0], record.digits[1], record.digits[2], record.digits[3],
                  record.marked ? ", marked" : "");
    return text;
}

Verdict Decide(const Evidence& evidence) {
    if (evidence.stage == Stage::intended || evidence.stage == Stage::counted) {
        return {Outcome::not_printed, Reason::nothing_sent};
    }
    if (evidence.before && evidence.until) {
        if (const auto verdict = DecideByMarks(*evidence.before, evidence)) {
            return *verdict;
        }
    }
    if (!evidence.before || !evidence.after) {
        return Unknown(Reason::register_unread);
    }
    const Counters& before = evidence.before->counters;
    const Counters& after = *evidence.after;
    if (after.serial != before.serial) {
        return Unknown(Reason::other_register);
    }
    if (after.tape != before.tape) {
        return Unknown(after.tape > before.tape ? Reason::tape_closed : Reason::counters_went_back);
    }
    if (after.checks < before.checks || after.records < before.records) {
        return Unknown(Reason::counters_went_back);
    }
    if (evidence.last_record_now != evidence.before->last_record) {
        return Unknown(evidence.last_record_now.empty() ? Reason::tape_unread
                                                        : Reason::other_memory);
    }
    return evidence.until ? DecideUntilNext(evidence) : DecideByMoves(evidence);
}

}  // namespace kkmcheck
