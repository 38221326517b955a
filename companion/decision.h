// Whether a check was printed, from what is known about it: a function from evidence to a verdict,
// without input or output. docs/outcome.md has its rules as a table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companion/check.h"

namespace kkmcheck {

enum class Outcome : int { unknown = 0, printed = 1, not_printed = 2 };

// How far an attempt got, as its journal row says. Each stage is on the disk before what follows it
// is sent.
enum class Stage : int {
    intended = 0,  // the register was not asked for anything
    counted = 1,   // its counters are known; no line was sent
    sending = 2,   // from here on lines may be at the register
    returned = 3,  // the driver's PrintCheck() came back
};

// Numbers stand in journals and in the C interface; they do not change.
enum class Reason : int {
    none = 0,
    // printed
    on_tape = 1,
    seen_on_paper = 2,  // a person said so
    // not printed
    nothing_sent = 10,
    counters_unmoved = 11,
    not_on_tape = 12,
    not_on_paper = 13,  // a person said so
    // unknown
    still_working = 20,
    register_unread = 21,
    other_register = 22,
    other_memory = 23,
    counters_went_back = 24,
    tape_closed = 25,
    counters_at_odds = 26,
    tape_unread = 27,
    check_may_be_open = 28,
    other_lines_on_tape = 29,
    doubtful_records = 30,
    lines_added_by_hand = 31,
    not_told_apart = 32,
};

struct Counters {
    int serial = 0;
    int tape = 0;
    int checks = 0;
    int records = 0;

    bool operator==(const Counters& other) const;
    bool operator!=(const Counters& other) const { return !(*this == other); }
};

struct TapeRecord {
    int kind = 0;
    int payment = 0;
    std::int64_t sum_kopecks = 0;
    std::int64_t quantity_thousandths = 0;
    bool marked = false;
    int code = 0;
    std::uint8_t digits[4] = {};  // of the article, two to a byte

    bool operator==(const TapeRecord& other) const;
    bool operator!=(const TapeRecord& other) const { return !(*this == other); }
};

// "kind 0, payment 0, 25.50, quantity 2.000, article 1 45678901"
std::string Text(const TapeRecord& record);

// Where a register stands: its counters and the record that its tape ends with.
struct Mark {
    Counters counters;
    std::string last_record;  // as Text() gives it; "none" when the tape has none
};

// Where the lines of a later attempt of this journal stand, or may stand, on the same tape.
struct Claim {
    int first_record = 0;
    int end_record = 0;  // the one behind its last
};

struct Evidence {
    Stage stage = Stage::intended;
    std::vector<ExpectedRecord> expected;
    std::optional<Mark> before;
    std::optional<int> driver_result;  // of PrintCheck()
    // Read for the next attempt on the same tape, when nothing of this one was open any more: what
    // this check left on the tape lies between the two marks, whenever it is looked for.
    std::optional<Mark> until;

    std::optional<Counters> after;
    // Behind `after` no check was open at the register.
    bool nothing_open = false;
    // The record that stood last before, read again; empty when it was not read.
    std::string last_record_now;
    // From the record behind the last one before to the last one after, or until the next mark, as
    // far as they were read.
    std::vector<TapeRecord> records;
    std::vector<Claim> claims;
};

struct Verdict {
    Outcome outcome = Outcome::unknown;
    Reason reason = Reason::none;
    int first_record = -1;  // of this check on the tape, when it is printed
};

Verdict Decide(const Evidence& evidence);

// "counters_unmoved"
std::string_view Name(Reason reason);
// What it means and what a person should do, in English.
std::string_view Advice(Reason reason);
std::string_view Name(Outcome outcome);

}  // namespace kkmcheck
