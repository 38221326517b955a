// What is checked behind PrintCheck: the register's truth against the result, and the windows in
// which the driver cannot know.
#include "VeskTarvoM5/VeskTarvoM5.h"
#include "simulation/checker.h"
#include "simulation/expected_check.h"

namespace simulation {
namespace {

constexpr std::uint8_t kReadRam = 0x04;
constexpr std::uint8_t kStatistics = 0x0A;
constexpr std::uint8_t kStatus = 0x20;
constexpr std::uint8_t kSale = 0x21;
constexpr std::uint8_t kDiscount = 0x23;
constexpr std::uint8_t kClose = 0x25;
constexpr std::uint8_t kSaleText = 0x27;
constexpr std::uint8_t kCash = 0x28;
constexpr std::uint8_t kSaleNumber = 0x37;
constexpr std::uint8_t kLastError = 0x38;

// Did the driver take for an acknowledgement of the step something that the register did not say?
// Only then can the step's part of the check differ.
bool IsExplained(Difference difference, const Disturbances& seen) {
    switch (difference) {
        case Difference::names:
            return seen.Forged(kSaleText);
        case Difference::discount:
            return seen.Forged(kDiscount);
        case Difference::type:
            return seen.Forged(kClose);
        case Difference::cash:
            return seen.Forged(kCash);
        case Difference::lines:
        case Difference::none:
            break;
    }
    return false;
}

bool LocksKeyboard(int version) {
    return version > 302 && version != 400;
}

}  // namespace

Wrong Checker::CheckPrint(const CallFacts& facts) {
    std::string why;
    const auto verdict = Judge(facts, why);
    if (!verdict) {
        return why;
    }
    verdicts_.push_back(*verdict);
    ++figures_.checks;
    ++figures_.verdicts[static_cast<std::size_t>(*verdict)];
    if (facts.answered.result == 0) {
        ++figures_.errors[static_cast<std::size_t>(facts.answered.error)]
                         [static_cast<std::size_t>(*verdict)];
        if (auto wrong = CheckCause(facts)) {
            return wrong;
        }
        return CheckCleanUp(facts);
    }
    return *verdict == Verdict::printed ? CheckPaper(facts) : std::nullopt;
}

std::optional<Verdict> Checker::Judge(const CallFacts& facts, std::string& why) const {
    std::size_t own = 0;
    std::size_t left_over = 0;
    std::uint32_t registered_at = 0;
    bool by_key = false;
    for (const Registration& one : side_.registrations()) {
        if (one.call == facts.number) {
            ++(one.born_in == facts.number ? own : left_over);
            registered_at = one.exchange;
            by_key = by_key || one.by_key;
        }
    }
    if (own > 1) {
        why = "one PrintCheck registered " + std::to_string(own) + " checks";
        return std::nullopt;
    }
    if (left_over > 0) {
        why = "a check that an earlier call left behind was registered";
        return JudgeLeftOver(facts, by_key);
    }
    if (own == 0) {
        return JudgeNothingRegistered(facts, why);
    }
    if (facts.answered.result == 1) {
        return JudgeSuccess(Look(facts.first_exchange), why);
    }
    why = "PrintCheck gave 0 with code " + std::to_string(facts.answered.error) +
          " and a check was registered";
    return JudgeFailure(facts, registered_at);
}

// The driver cancels what it finds open; only one that was misled about the register's state, or
// the cashier, brings it out.
std::optional<Verdict> Checker::JudgeLeftOver(const CallFacts& facts, bool by_key) const {
    const Disturbances seen = Look(facts.first_exchange);
    if (by_key || side_.is_busy() || seen.misread || seen.Forged(kStatus)) {
        return Verdict::left_over_printed;
    }
    return std::nullopt;
}

std::optional<Verdict> Checker::JudgeNothingRegistered(const CallFacts& facts,
                                                       std::string& why) const {
    if (facts.answered.result == 0) {
        return Verdict::failed;
    }
    if (facts.ended_by_host) {
        const auto& exchanges = journal_.exchanges();
        const bool answered = exchanges.size() > facts.first_exchange &&
                              exchanges.back().answer_count != 0 && !exchanges.back().disturbed;
        return !answered                              ? Verdict::polled_silence
               : side_.model().open_check().is_open() ? Verdict::polled_open_check
                                                      : Verdict::polled_idle;
    }
    why = "PrintCheck gave 1 and nothing was registered";
    if (Look(facts.first_exchange).Forged(kStatistics)) {
        return Verdict::counters_forged;
    }
    return std::nullopt;
}

std::optional<Verdict> Checker::JudgeSuccess(const Disturbances& seen, std::string& why) const {
    const Difference difference =
        Compare(required_.printed(), required_.version(), side_.model().printed().back());
    if (difference == Difference::none) {
        return Verdict::printed;
    }
    why = std::string("PrintCheck gave 1 and the check differs in ") + NameOf(difference);
    if (side_.changes_by_cashier() > 0) {
        return Verdict::changed_by_cashier;
    }
    if (seen.misread) {
        return Verdict::request_misread;
    }
    if (IsExplained(difference, seen)) {
        return Verdict::answer_forged;
    }
    return std::nullopt;
}

// Registered, and the driver said 0.
std::optional<Verdict> Checker::JudgeFailure(const CallFacts& facts,
                                             std::uint32_t registered_at) const {
    const Disturbances seen = Look(facts.first_exchange);
    const auto& memory = side_.model().memory();
    const auto& printed = side_.model().printed().back();
    if (seen.Forged(kStatistics)) {
        return Verdict::counters_forged;
    }
    if (const auto unread = CountersUnread(registered_at)) {
        return unread;
    }
    if (side_.changes_by_cashier() > 0) {
        return Verdict::changed_by_cashier;
    }
    const bool wrapped = memory.tape_number == facts.before.tape_number &&
                         (memory.checks == 0 || memory.tape.count() < printed.lines.size());
    if (wrapped) {
        return Verdict::counters_wrapped;
    }
    if (seen.misread) {
        return Verdict::request_misread;
    }
    // A line that was taken for missing was sent twice; the counters told.
    const bool more_lines = printed.lines.size() > required_.printed().lines.size();
    if (more_lines && (seen.Forged(kSaleNumber) || seen.Forged(kReadRam))) {
        return Verdict::answer_forged;
    }
    return std::nullopt;
}

// Behind this exchange the driver asked for the counters, and no answer of the register's reached
// it whole. Counters that belong to the decoding of a status do not count: the driver drops them.
std::optional<Verdict> Checker::CountersUnread(std::uint32_t behind_exchange) const {
    const auto& exchanges = journal_.exchanges();
    std::optional<Verdict> unread;
    for (std::size_t i = behind_exchange + 1; i < exchanges.size(); ++i) {
        const ExchangeFacts& one = exchanges[i];
        const bool of_a_status = i + 1 < exchanges.size() && exchanges[i + 1].command == kReadRam;
        if (one.command != kStatistics || of_a_status) {
            continue;
        }
        if (one.taken && one.answer_count != 0 && !one.disturbed) {
            return std::nullopt;
        }
        // On a slow line a driver that gives an answer up at its first byte asks again before the
        // rest of it is through; that rest is what it reads next, and so on.
        unread = one.slipped && one.answer_count != 0 ? Verdict::answers_slipped
                                                      : Verdict::counters_unread;
    }
    return unread;
}

Wrong Checker::CheckPaper(const CallFacts& facts) {
    const auto& model = side_.model();
    const auto records =
        static_cast<std::uint16_t>(facts.before.records + model.printed().back().lines.size());
    const bool same_tape = facts.before.tape_number == model.memory().tape_number;
    if (same_tape && records != model.memory().tape.count()) {
        return "the tape did not grow by the lines of the check";
    }
    const auto& paper = model.paper().lines();
    const std::size_t receipt_end = side_.registrations().back().paper_lines;
    if (receipt_end <= facts.before.paper_lines ||
        paper[receipt_end - 1].kind != virtual_register::PaperLine::Kind::cut) {
        return "no whole receipt came out";
    }
    if (LocksKeyboard(required_.version()) && model.switch_locked()) {
        if (!Look(facts.first_exchange).any) {
            return "printed, and the keyboard is locked";
        }
        Note(Remark::printed_and_locked);
    }
    return std::nullopt;
}

// The last error is one that something in this call can cause.
Wrong Checker::CheckCause(const CallFacts& facts) const {
    const Disturbances seen = Look(facts.first_exchange);
    const RegisterSaid& said = side_.said();
    bool explained = false;
    switch (facts.answered.error) {
        case echPaperAbsent:
            explained = said.no_paper || seen.Forged(kReadRam) || seen.Forged(kLastError);
            break;
        case echRegKass:
            explained = said.marked || seen.Forged(kStatus);
            break;
        case echPrice:
            explained = said.refused_sale || seen.Forged(kSale);
            break;
        case echNoCash:
            explained = said.refused_closing || said.refused_cash || seen.Forged(kClose) ||
                        seen.Forged(kCash);
            break;
        case echCancelCheck:
            explained = said.declined || seen.Forged(kStatus);
            break;
        case echPrintTest:
        case echDevice:
            // Nobody refused anything: the line, the register's slowness, a limit of its counters
            // or a driver that found another firmware than there is.
            explained = seen.any || side_.is_busy() || said.refused_discount ||
                        required_.version() == 0 || side_.changes_by_cashier() > 0 ||
                        required_.version() != side_.firmware_as_reported() || WasRegistered(facts);
            break;
        default:
            break;
    }
    if (explained) {
        return std::nullopt;
    }
    return "nothing that happened can cause the last error " + std::to_string(facts.answered.error);
}

// Behind a failure the register is free again, if the line let the driver do its work.
Wrong Checker::CheckCleanUp(const CallFacts& facts) {
    const auto& events = journal_.events();
    std::uint32_t exchange = facts.first_exchange;
    for (std::size_t event = facts.first_event;
         event < events.size() && events[event].kind != EventKind::failure; ++event) {
        exchange += events[event].kind == EventKind::write ? 1U : 0U;
    }
    const bool left_open = side_.model().open_check().is_open();
    const bool left_locked = side_.model().keyboard_locked();
    if (facts.answered.error == echPaperAbsent) {
        if (left_open) {
            Note(Remark::open_for_paper);
        }
        return std::nullopt;
    }
    if (!left_open && !left_locked) {
        return std::nullopt;
    }
    if (required_.version() == 0) {
        // Behind a failed ConnectKKM the driver knows no way to clear a check.
        Note(Remark::left_unconnected);
        return std::nullopt;
    }
    if (!Look(exchange).any) {
        return std::string("after a failure with a living line ") +
               (left_open ? "a check is open" : "the keyboard is locked");
    }
    if (left_open) {
        Note(Remark::left_open);
    }
    if (left_locked) {
        Note(Remark::left_locked);
    }
    return std::nullopt;
}

}  // namespace simulation
