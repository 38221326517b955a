#include "simulation/checker.h"

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "simulation/expected_check.h"

namespace simulation {
namespace {

constexpr std::uint8_t kReadRam = 0x04;
constexpr std::uint8_t kStatistics = 0x0A;
constexpr std::uint8_t kSaleNumber = 0x37;

// Did the driver take for an acknowledgement of the step something that the register did not say?
// Only then can the step's part of the check differ.
bool ExplainsDifference(const Disturbances& seen, Difference difference) {
    switch (difference) {
        case Difference::names:
            return seen.Forged(0x27);
        case Difference::discount:
            return seen.Forged(0x23);
        case Difference::type:
            return seen.Forged(0x25);
        case Difference::cash:
            return seen.Forged(0x28);
        case Difference::lines:
        case Difference::none:
            break;
    }
    return false;
}

bool Prints(const CallFacts& facts) {
    return facts.call->kind == CallKind::print_check;
}

}  // namespace

Disturbances Checker::Look(std::uint32_t first_exchange) const {
    Disturbances seen;
    const auto& exchanges = journal_.exchanges();
    for (std::size_t i = first_exchange; i < exchanges.size(); ++i) {
        const ExchangeFacts& one = exchanges[i];
        seen.any = seen.any || one.disturbed || one.forged || one.misread || one.answer_count == 0;
        seen.misread = seen.misread || one.misread;
        if (one.forged) {
            seen.any_forged = true;
            seen.forged[one.command] = true;
        }
    }
    return seen;
}

std::optional<std::string> Checker::Check(const CallFacts& facts) {
    if (auto wrong = CheckAnswer(facts)) {
        return wrong;
    }
    return Prints(facts) ? CheckPrint(facts) : CheckOutside(facts);
}

// The second driver went through the same conversation and must have come to the same result.
std::optional<std::string> Checker::CheckAnswer(const CallFacts& facts) const {
    const Answered& got = facts.answered;
    const Outcome& required = facts.required;
    if (got.threw != required.throws) {
        return got.threw ? "an exception left the call" : "the call must throw";
    }
    if (got.threw) {
        return std::nullopt;
    }
    if (got.error != required.error) {
        return "last error " + std::to_string(got.error) + ", required is " +
               std::to_string(required.error);
    }
    const bool keeps_error = facts.call->kind == CallKind::get_sum ||
                             facts.call->kind == CallKind::set_cash ||
                             facts.call->kind == CallKind::set_cash_over_total;
    if (!keeps_error && got.result != (required.error == 0 ? 1 : 0)) {
        return "result " + std::to_string(got.result) + " with last error " +
               std::to_string(got.error);
    }
    if (got.value && required.value && *got.value != *required.value) {
        return "value " + std::to_string(*got.value) + ", required is " +
               std::to_string(*required.value);
    }
    return std::nullopt;
}

// Did a statistics answer reach the driver as the register gave it, behind this exchange?
bool Checker::CountersGotThrough(std::uint32_t behind_exchange) const {
    const auto& exchanges = journal_.exchanges();
    for (std::size_t i = behind_exchange + 1; i < exchanges.size(); ++i) {
        const ExchangeFacts& one = exchanges[i];
        if (one.command == kStatistics && one.taken && one.answer_count != 0 && !one.disturbed) {
            return true;
        }
    }
    return false;
}

std::string Checker::Differs(std::size_t printed, std::optional<Verdict>& window,
                             const Disturbances& seen) const {
    const auto difference =
        Compare(required_.printed(), required_.version(), side_.model().printed()[printed]);
    if (difference == Difference::none) {
        return "";
    }
    if (side_.changes_by_cashier() > 0) {
        window = Verdict::changed_by_cashier;
    } else if (seen.misread) {
        window = Verdict::request_misread;
    } else if (ExplainsDifference(seen, difference)) {
        window = Verdict::answer_forged;
    }
    return std::string("the printed check differs in ") + NameOf(difference);
}

std::optional<Verdict> Checker::Judge(const CallFacts& facts, std::string& why) const {
    const Disturbances seen = Look(facts.first_exchange);
    std::size_t own = 0;
    std::size_t left_over = 0;
    std::uint32_t exchange = 0;
    const auto& all = side_.registrations();
    for (const Registration& one : all) {
        if (one.call == facts.number) {
            ++(one.born_in == facts.number ? own : left_over);
            exchange = one.exchange;
        }
    }
    const bool ok = facts.answered.result == 1;
    std::optional<Verdict> window;
    if (own == 0 && left_over == 0) {
        if (!ok) {
            return Verdict::failed;
        }
        if (facts.ended_by_host) {
            return Verdict::ended_by_host;
        }
        why = "PrintCheck gave 1 and nothing was registered";
        if (seen.Forged(kStatistics)) {
            window = Verdict::counters_forged;
        }
        return window;
    }
    if (own > 1) {
        why = "one PrintCheck registered " + std::to_string(own) + " checks";
        return std::nullopt;
    }
    if (left_over > 0) {
        why = "a check of an earlier call was registered";
        return Verdict::left_over_printed;
    }
    if (ok) {
        why = Differs(all.size() - 1, window, seen);
        return why.empty() ? Verdict::printed : window;
    }
    why = "PrintCheck gave 0 with code " + std::to_string(facts.answered.error) +
          " and a check was registered";
    if (!CountersGotThrough(exchange)) {
        window = Verdict::counters_unread;
    } else if (side_.model().memory().checks == 0 ||
               side_.model().memory().tape.count() < required_.printed().lines.size()) {
        window = Verdict::counters_wrapped;
    } else if (side_.changes_by_cashier() > 0) {
        window = Verdict::changed_by_cashier;
    } else if (seen.Forged(kStatistics)) {
        window = Verdict::counters_forged;
    } else if (seen.misread) {
        window = Verdict::request_misread;
    } else if (Compare(required_.printed(), required_.version(), side_.model().printed().back()) ==
                   Difference::lines &&
               (seen.Forged(kSaleNumber) || seen.Forged(kReadRam))) {
        window = Verdict::answer_forged;  // a line was taken for missing and sent twice
    }
    return window;
}

std::optional<std::string> Checker::CheckPrint(const CallFacts& facts) {
    std::string why;
    const auto verdict = Judge(facts, why);
    if (!verdict) {
        return why;
    }
    ++figures_.checks;
    ++figures_.verdicts[static_cast<std::size_t>(*verdict)];
    if (facts.answered.result == 0) {
        ++figures_.errors[static_cast<std::size_t>(facts.answered.error)];
        return CheckCleanUp(facts);
    }
    if (*verdict != Verdict::printed) {
        return std::nullopt;
    }
    const auto& model = side_.model();
    const std::size_t lines = model.printed().back().lines.size();
    const bool same_tape = facts.tape_number_before == model.memory().tape_number;
    if (same_tape &&
        static_cast<std::uint16_t>(facts.tape_before + lines) != model.memory().tape.count()) {
        return "the tape did not grow by the lines of the check";
    }
    if (model.paper().lines().size() <= facts.paper_before) {
        return "nothing came out on the paper";
    }
    const int version = required_.version();
    if (version > 302 && version != 400 && model.switch_locked()) {
        if (!Look(facts.first_exchange).any) {
            return "printed, and the keyboard is locked";
        }
        ++figures_.remarks[static_cast<std::size_t>(Remark::printed_and_locked)];
    }
    return std::nullopt;
}

// Behind a failure the register is free again, if the line let the driver do its work.
std::optional<std::string> Checker::CheckCleanUp(const CallFacts& facts) {
    const auto& events = journal_.events();
    std::size_t event = facts.first_event;
    std::uint32_t exchange = facts.first_exchange;
    for (; event < events.size() && events[event].kind != EventKind::failure; ++event) {
        exchange += events[event].kind == EventKind::write ? 1U : 0U;
    }
    const bool left_open = side_.model().open_check().is_open();
    const bool left_locked = side_.model().keyboard_locked();
    if (facts.answered.error == echPaperAbsent) {
        figures_.remarks[static_cast<std::size_t>(Remark::open_for_paper)] += left_open ? 1 : 0;
        return std::nullopt;
    }
    if (!left_open && !left_locked) {
        return std::nullopt;
    }
    if (required_.version() == 0) {
        // Behind a failed ConnectKKM the driver knows no way to clear a check.
        ++figures_.remarks[static_cast<std::size_t>(Remark::left_unconnected)];
        return std::nullopt;
    }
    if (!Look(exchange).any) {
        return std::string("after a failure with a living line ") +
               (left_open ? "a check is open" : "the keyboard is locked");
    }
    figures_.remarks[static_cast<std::size_t>(Remark::left_open)] += left_open ? 1 : 0;
    figures_.remarks[static_cast<std::size_t>(Remark::left_locked)] += left_locked ? 1 : 0;
    return std::nullopt;
}

// No other call prints, but what was left behind can come out.
std::optional<std::string> Checker::CheckOutside(const CallFacts& facts) {
    for (const Registration& one : side_.registrations()) {
        if (one.call != facts.number) {
            continue;
        }
        const bool resets =
            facts.call->kind == CallKind::check_cancel || facts.call->kind == CallKind::disconnect;
        if (one.by_key) {
            ++figures_.remarks[static_cast<std::size_t>(Remark::printed_by_cashier_later)];
        } else if (resets) {
            ++figures_.remarks[static_cast<std::size_t>(Remark::printed_by_reset_later)];
        } else if (!Look(facts.first_exchange).misread) {
            return std::string(NameOf(facts.call->kind)) + " registered a check";
        }
    }
    return std::nullopt;
}

}  // namespace simulation
