#include "companion/decision.h"

namespace kkmcheck {
namespace {

struct Row {
    Reason reason;
    std::string_view name;
    std::string_view advice;
};

constexpr Row kRows[] = {
    {Reason::none, "none", "Nothing is known yet."},
    {Reason::on_tape, "on_tape",
     "The register's counters moved as this check moves them, and its control tape has the "
     "check's lines."},
    {Reason::seen_on_paper, "seen_on_paper", "A person found the check on the paper."},
    {Reason::nothing_sent, "nothing_sent",
     "No line of the check was sent to the register. It may be printed again."},
    {Reason::counters_unmoved, "counters_unmoved",
     "The register's counters did not move and no check is open. It may be printed again."},
    {Reason::not_on_tape, "not_on_tape",
     "Only other checks were printed since, and no check is open. It may be printed again."},
    {Reason::not_on_paper, "not_on_paper",
     "A person looked and found no such check on the paper. It may be printed again."},
    {Reason::still_working, "still_working",
     "The check is still being worked on at the register. Ask again later (resolve)."},
    {Reason::register_unread, "register_unread",
     "The register's counters could not be read. Mend the connection and ask again (resolve), or "
     "look at the paper."},
    {Reason::other_register, "other_register",
     "Another register is connected. Connect the one that was to print the check and ask again, "
     "or look at that one's paper."},
    {Reason::other_memory, "other_memory",
     "The register's tape is not the one that the check was to go on: its memory was exchanged. "
     "Look at the paper."},
    {Reason::counters_went_back, "counters_went_back",
     "The register's counters are lower than before the check: its memory was set back, or a "
     "counter went round. Look at the paper."},
    {Reason::tape_closed, "tape_closed",
     "The shift was closed since, and the tape with it. Look at the paper before the shift "
     "report."},
    {Reason::counters_at_odds, "counters_at_odds",
     "The register's counters moved in a way that no checks move them. Look at the paper."},
    {Reason::tape_unread, "tape_unread",
     "The control tape could not be read as far as is needed. Ask again (resolve) with more time, "
     "or look at the paper."},
    {Reason::check_may_be_open, "check_may_be_open",
     "The check is not printed so far, but it may be open at the register still and come out. "
     "Mend the connection and ask again (resolve)."},
    {Reason::other_lines_on_tape, "other_lines_on_tape",
     "The tape has lines that a program sent, and they are not the lines of this check or not of "
     "this check alone. Compare the paper with the check."},
    {Reason::doubtful_records, "doubtful_records",
     "The tape has lines of which it cannot be told whether a program sent them. Compare the "
     "paper with the check."},
    {Reason::lines_added_by_hand, "lines_added_by_hand",
     "The tape has the check's lines, and lines typed by hand that may be in the same check. "
     "Compare the paper with the check."},
    {Reason::not_told_apart, "not_told_apart",
     "Another check of the journal may have left the lines that the tape has. Compare the paper "
     "with both checks."},
};

const Row& RowOf(Reason reason) {
    for (const Row& row : kRows) {
        if (row.reason == reason) {
            return row;
        }
    }
    return kRows[0];
}

}  // namespace

std::string_view Name(Reason reason) {
    return RowOf(reason).name;
}

std::string_view Advice(Reason reason) {
    return RowOf(reason).advice;
}

std::string_view Name(Outcome outcome) {
    switch (outcome) {
        case Outcome::printed:
            return "printed";
        case Outcome::not_printed:
            return "not printed";
        case Outcome::unknown:
            break;
    }
    return "unknown";
}

}  // namespace kkmcheck
