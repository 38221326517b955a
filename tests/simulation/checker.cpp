// What is checked behind every call.
#include "simulation/checker.h"

#include "simulation/bounds.h"

namespace simulation {
namespace {

bool KeepsError(CallKind kind) {
    return kind == CallKind::get_sum || kind == CallKind::set_cash ||
           kind == CallKind::set_cash_over_total;
}

}  // namespace

Disturbances Checker::Look(std::uint32_t first_exchange) const {
    Disturbances seen;
    const auto& exchanges = journal_.exchanges();
    for (std::size_t i = first_exchange; i < exchanges.size(); ++i) {
        const ExchangeFacts& one = exchanges[i];
        seen.any = seen.any || one.disturbed || one.forged || one.misread || one.answer_count == 0;
        seen.misread = seen.misread || one.misread;
        seen.forged[one.command] = seen.forged[one.command] || one.forged;
    }
    return seen;
}

Wrong Checker::Check(const CallFacts& facts) {
    if (facts.plug_pulled) {
        Note(Remark::ended_by_plug);
    }
    for (const auto& wrong : {CheckAnswer(facts), CheckBound(facts), CheckQuery(facts)}) {
        if (wrong) {
            return wrong;
        }
    }
    return facts.call->kind == CallKind::print_check ? CheckPrint(facts) : CheckOutside(facts);
}

// The second driver went through the same conversation and must have come to the same result.
Wrong Checker::CheckAnswer(const CallFacts& facts) {
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
    if (got.told != required.told) {
        return "the callbacks heard \"" + got.told + "\", required is \"" + required.told + "\"";
    }
    if (!KeepsError(facts.call->kind) && got.result != (required.error == 0 ? 1 : 0)) {
        return "result " + std::to_string(got.result) + " with last error " +
               std::to_string(got.error);
    }
    if (got.value && required.value && *got.value != *required.value) {
        return "value " + std::to_string(*got.value) + ", required is " +
               std::to_string(*required.value);
    }
    return std::nullopt;
}

Wrong Checker::CheckBound(const CallFacts& facts) const {
    const Outcome& did = facts.required;
    const auto& check =
        facts.call->kind == CallKind::print_check ? required_.printed() : required_.check();
    const auto most = MostWork(*facts.call, check, did.tape_records);
    if (!most || facts.plug_pulled) {
        return std::nullopt;
    }
    if (did.exchanges > most->exchanges) {
        return std::to_string(did.exchanges) + " exchanges, at most " +
               std::to_string(most->exchanges) + " are allowed";
    }
    const Micros limit =
        did.exchanges * LongestExchange(did.longest_body) + (most->pauses_ms + 100) * 1000;
    if (did.took_us > limit) {
        return std::to_string(did.took_us) + " us, at most " + std::to_string(limit) +
               " are allowed";
    }
    return std::nullopt;
}

// A query that nothing disturbed tells the truth.
Wrong Checker::CheckQuery(const CallFacts& facts) const {
    if (!facts.answered.value || Look(facts.first_exchange).any) {
        return std::nullopt;
    }
    const auto& model = side_.model();
    const auto& memory = model.memory();
    double truth = 0;
    switch (facts.call->kind) {
        case CallKind::get_shift_number:
        case CallKind::get_tape_number:
            truth = memory.tape_number;
            break;
        case CallKind::get_sale_number:
            truth = memory.tape.count() + 1;
            break;
        case CallKind::get_check_count:
            truth = memory.checks;
            break;
        case CallKind::get_shift_status:
            truth = memory.shift_is_open() ? 1 : 0;
            break;
        case CallKind::get_tax:
            truth = memory.tax(static_cast<std::size_t>(facts.call->number));
            break;
        default:
            return std::nullopt;
    }
    if (*facts.answered.value != truth) {
        return "value " + std::to_string(*facts.answered.value) + ", the register holds " +
               std::to_string(truth);
    }
    return std::nullopt;
}

// No other call prints, but what was left behind can come out.
Wrong Checker::CheckOutside(const CallFacts& facts) {
    for (const Registration& one : side_.registrations()) {
        if (one.call != facts.number) {
            continue;
        }
        const bool resets =
            facts.call->kind == CallKind::check_cancel || facts.call->kind == CallKind::disconnect;
        if (one.by_key) {
            Note(Remark::printed_by_cashier_later);
        } else if (resets) {
            Note(Remark::printed_by_reset_later);
        } else if (!Look(facts.first_exchange).misread) {
            return std::string(NameOf(facts.call->kind)) + " registered a check";
        }
    }
    return std::nullopt;
}

}  // namespace simulation
