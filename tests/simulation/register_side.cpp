#include "simulation/register_side.h"

namespace simulation {

using virtual_register::Command;
using virtual_register::Query;
using virtual_register::SaleLine;
using virtual_register::State;

namespace {

constexpr std::uint32_t kAsksInACall = 3;
constexpr std::uint32_t kPollsBeforeAskingAgain = 25;

SaleLine TypedLine(std::uint32_t number) {
    SaleLine line;
    line.name.add("TYPED");
    line.price_kopecks = 100 + number % 900;
    line.quantity_thousandths = 1000;
    line.amount_kopecks = line.price_kopecks;
    line.code = 77;
    line.department = 1;
    return line;
}

bool IsIdle(State state) {
    switch (state) {
        case State::none:
        case State::switched_on:
        case State::check_cleared:
        case State::shift_closed:
            return true;
        default:
            return false;
    }
}

}  // namespace

RegisterSide::RegisterSide(virtual_register::Model& model, Journal& journal,
                           const CashierPlan& cashier, Micros started)
    : model_(model),
      journal_(journal),
      cashier_(cashier),
      started_(started),
      registered_(model.checks_registered()),
      had_lines_(model.open_check().is_open()) {}

void RegisterSide::BeginCall(std::uint32_t number, bool prints) {
    call_ = number;
    call_prints_ = prints;
    idle_polls_ = 0;
    asks_left_ = kAsksInACall;
    changes_by_cashier_ = 0;
    said_ = RegisterSaid();
}

std::optional<virtual_register::Answer> RegisterSide::Take(const virtual_register::Request& request,
                                                           Micros now) {
    LetPowerReturn(now);
    model_.advance(RegisterTime(now));
    if (call_prints_ && request.command == static_cast<std::uint8_t>(Command::status)) {
        AskWhenIdle();
    }
    auto answer = model_.handle(request, RegisterTime(now));
    if (answer) {
        NoteSaid(request, *answer);
    }
    NoteCheck(now, false);
    return answer;
}

void RegisterSide::NoteSaid(const virtual_register::Request& request,
                            const virtual_register::Answer& answer) {
    const auto& payload = answer.payload;
    switch (static_cast<Command>(request.command)) {
        case Command::sale:
            said_.refused_sale = said_.refused_sale || payload[0] != 0;
            break;
        case Command::discount:
            said_.refused_discount = said_.refused_discount || model_.state() != State::ready;
            break;
        case Command::close_check:
            said_.refused_closing = said_.refused_closing || payload[0] == 0;
            break;
        case Command::cash:
            said_.refused_cash = said_.refused_cash || payload[0] != 0;
            break;
        case Command::read_ram:
        case Command::last_error:
            said_.no_paper =
                said_.no_paper || model_.memory().last_error() == virtual_register::kPaperOutError;
            break;
        case Command::status:
            if (answer.code == static_cast<std::uint8_t>(State::sale_code)) {
                said_.marked = said_.marked || payload[6] != 0;
                said_.declined = said_.declined ||
                                 payload.big_endian(0, 2) == virtual_register::kCashierCancelled;
            }
            break;
        default:
            break;
    }
}

void RegisterSide::LetPowerReturn(Micros now) {
    if (!model_.powered() && now >= power_on_at_) {
        model_.power_on();
    }
}

void RegisterSide::AskWhenIdle() {
    const bool idle = IsIdle(model_.state()) && !model_.open_check().is_open();
    const bool done = !registrations_.empty() && registrations_.back().call == call_;
    const std::uint32_t wait =
        asks_left_ == kAsksInACall ? cashier_.after_polls : kPollsBeforeAskingAgain;
    if (!idle || done || asks_left_ == 0 || idle_polls_++ < wait) {
        return;
    }
    if (Ask()) {
        --asks_left_;
        idle_polls_ = 0;
    }
}

bool RegisterSide::Ask() {
    Query query;
    switch (cashier_.asks) {
        case CashierPlan::Asks::by_code:
            return model_.ask_host(query);
        case CashierPlan::Asks::by_barcode:
            return model_.ask_host_by_barcode(
                std::string_view("4601234567890123456789").substr(0, cashier_.barcode_digits),
                query);
        case CashierPlan::Asks::with_free_line:
            return model_.enter_free_line(TypedLine(0));
        case CashierPlan::Asks::with_line:
            return model_.enter_line(TypedLine(1));
        case CashierPlan::Asks::declines:
            return model_.cancel();
        case CashierPlan::Asks::marked:
            query.marked = true;
            return model_.ask_host(query);
        case CashierPlan::Asks::never:
            break;
    }
    return false;
}

void RegisterSide::Act(const Fault& fault, std::uint8_t command, Micros now) {
    LetPowerReturn(now);
    model_.advance(RegisterTime(now));
    bool happened = true;
    switch (fault.kind) {
        case FaultKind::restart:
            model_.power_off();
            // Half of the cuts are over before the request is through.
            power_on_at_ = fault.a % 2 == 0 ? now : now + Micros{fault.b % 40'000} * 1000;
            LetPowerReturn(now);
            break;
        case FaultKind::busy:
            busy_ = true;
            model_.set_states_late(1 + fault.a % (fault.b % 4 == 0 ? 150 : 12));
            break;
        case FaultKind::refusal:
            Refuse(fault, command);
            break;
        case FaultKind::keyboard_locked:
        case FaultKind::switch_locked: {
            virtual_register::Request lock;
            const bool simple = fault.kind == FaultKind::keyboard_locked;
            lock.command =
                static_cast<std::uint8_t>(simple ? Command::simple_lock : Command::lock_switch);
            if (!simple) {
                lock.payload.add(0);
            }
            happened = model_.handle(lock, RegisterTime(now)).has_value();
            break;
        }
        case FaultKind::paper_out:
            model_.paper_out();
            break;
        case FaultKind::paper_ends:
            model_.paper_in(fault.a % 40);
            break;
        case FaultKind::paper_in:
            model_.paper_in();
            break;
        default:
            happened = CashierActs(fault);
            break;
    }
    journal_.Add(EventKind::act, now, static_cast<int>(fault.kind), happened ? 1 : 0);
    NoteCheck(now, true);
}

// What the request asks for is refused; when it is no such request, the next of some kind is.
void RegisterSide::Refuse(const Fault& fault, std::uint8_t command) {
    static constexpr Command kRefusable[] = {Command::sale, Command::close_check, Command::cash};
    Command refused = kRefusable[fault.a % 3];
    for (const Command one : kRefusable) {
        if (static_cast<std::uint8_t>(one) == command) {
            refused = one;
        }
    }
    const std::uint8_t reply =
        refused == Command::close_check ? 0 : static_cast<std::uint8_t>(1 + fault.b % 255);
    model_.refuse(refused, 1, reply);
}

bool RegisterSide::CashierActs(const Fault& fault) {
    const std::uint64_t before = model_.memory_version();
    bool happened = false;
    switch (fault.kind) {
        case FaultKind::cashier_asks:
            happened = model_.ask_host();
            break;
        case FaultKind::cashier_cancels:
            happened = model_.cancel();
            break;
        case FaultKind::cashier_clears:
            happened = model_.press(virtual_register::key::kClear);
            break;
        case FaultKind::cashier_presses:
            happened = model_.press(static_cast<std::uint8_t>(fault.a));
            break;
        case FaultKind::cashier_enters_line:
            happened = model_.enter_line(TypedLine(fault.a));
            break;
        case FaultKind::cashier_enters_free_line:
            happened = model_.enter_free_line(TypedLine(fault.a));
            break;
        case FaultKind::cashier_deletes_line:
            happened = model_.delete_last_line();
            break;
        case FaultKind::cashier_gives_discount:
            happened = model_.enter_discount(1 + static_cast<int>(fault.a % 50));
            break;
        case FaultKind::cashier_asks_weight:
            happened = model_.ask_weight();
            break;
        case FaultKind::cashier_closes_shift:
            happened = model_.close_shift();
            break;
        default:
            break;
    }
    if (model_.memory_version() != before) {
        ++changes_by_cashier_;
    }
    return happened;
}

void RegisterSide::NoteCheck(Micros now, bool by_key) {
    for (; registered_ < model_.checks_registered(); ++registered_) {
        Registration registration;
        registration.call = call_;
        registration.exchange = static_cast<std::uint32_t>(journal_.exchanges().size()) - 1;
        registration.born_in = born_in_;
        registration.by_key = by_key;
        registration.paper_lines = model_.paper().lines().size();
        registrations_.push_back(registration);
        journal_.Add(EventKind::registered, now, static_cast<int>(registrations_.size()));
    }
    const bool has_lines = model_.open_check().is_open();
    if (has_lines && !had_lines_) {
        born_in_ = call_;
    }
    had_lines_ = has_lines;
}

}  // namespace simulation
