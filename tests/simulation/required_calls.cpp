// The exported functions.
#include <cmath>
#include <cstdlib>

#include "simulation/required_driver.h"
#include "simulation/simulated_system.h"

namespace simulation {

Outcome RequiredDriver::Follow(const Call& call, Journal& journal, std::size_t first_event,
                               std::uint32_t first_exchange) {
    Conversation talk(journal, first_event, first_exchange);
    talk.SetNumber(number_);
    talk.SetPortOpen(port_open_);
    talk_ = &talk;
    told_.clear();
    BeginBoundedPart();
    Outcome outcome;
    try {
        outcome = Do(call);
    } catch (const Failed& failed) {
        outcome.throws =
            call.kind == CallKind::set_cash || call.kind == CallKind::set_cash_over_total;
        if (!outcome.throws) {
            SetError(failed.how == Failing::engine ? failed.code : 2);
        }
    }
    if (call.kind == CallKind::disconnect) {
        error_ = 0;
    }
    outcome.error = error_;
    outcome.told = told_;
    outcome.exchanges = talk.Exchanges() - counted_from_;
    outcome.took_us = talk.Now() - timed_from_;
    outcome.longest_body = talk.LongestBody();
    outcome.tape_records = tape_records_;
    talk.EndOfCall();
    talk_ = nullptr;
    return outcome;
}

void RequiredDriver::BeginBoundedPart() {
    counted_from_ = talk_->Exchanges();
    timed_from_ = talk_->Now();
}

// What was done since then has no bound.
void RequiredDriver::LeaveOutExchanges(std::uint32_t since_exchange, Micros since) {
    counted_from_ += talk_->Exchanges() - since_exchange;
    timed_from_ += talk_->Now() - since;
}

Outcome RequiredDriver::Do(const Call& call) {
    const bool keeps_error = call.kind == CallKind::get_sum || call.kind == CallKind::set_cash ||
                             call.kind == CallKind::set_cash_over_total;
    if (!keeps_error) {
        error_ = 0;
    }
    Outcome outcome;
    switch (call.kind) {
        case CallKind::connect:
            Connect(call.number == 0 ? "/dev/ttyS4294967295"
                                     : "/dev/ttyS" + std::to_string(call.number - 1));
            break;
        case CallKind::connect_device:
            if (call.text.empty()) {
                throw Failed{Failing::engine, 12};
            }
            Connect(call.text);
            break;
        case CallKind::disconnect:
            Disconnect();
            break;
        case CallKind::add_sale:
            AddSale(call);
            break;
        case CallKind::delete_sale:
            DeleteSale(call.number);
            break;
        case CallKind::get_sale:
            outcome.value = GetSale(call.number);
            break;
        case CallKind::clear_sales:
            check_ = RequiredCheck();
            break;
        case CallKind::get_sum:
            outcome.value = check_.Total() * 0.01;
            break;
        case CallKind::set_cash:
        case CallKind::set_cash_over_total: {
            const double sum =
                call.money + (call.kind == CallKind::set_cash ? 0 : check_.Total() * 0.01);
            Identify();
            check_.cash = static_cast<std::uint32_t>(RequiredKopecks(sum));
            break;
        }
        case CallKind::set_return:
            check_.mode = call.number != 0 ? 1 : check_.mode;
            break;
        case CallKind::set_credit:
            check_.mode = call.number != 0 ? 2 : check_.mode;
            break;
        case CallKind::set_discount:
            SetDiscount(call.number);
            break;
        case CallKind::set_clear_mode:
            clears_buffer_ = call.number > 0;
            break;
        case CallKind::clear_bottom:
            throw Failed{Failing::engine, 71};
        case CallKind::print_check:
            Print();
            break;
        case CallKind::check_cancel:
            ReadStatus();
            Reset();
            break;
        default:
            outcome.value = DoQuery(call);
            break;
    }
    return outcome;
}

double RequiredDriver::DoQuery(const Call& call) {
    if (call.kind == CallKind::get_cash_sum) {
        return CashSum(call.number);
    }
    if (call.kind == CallKind::read_tape) {
        return ReadTape(call.number);
    }
    if (call.kind == CallKind::get_tax && call.number > 16) {
        throw Failed{Failing::engine, 12};
    }
    Identify();
    switch (call.kind) {
        case CallKind::check_close:
            StartWait();
            return 0;
        case CallKind::get_shift_number:
        case CallKind::get_tape_number:
            return ReadStatistics().tape;
        case CallKind::get_sale_number:
            return ReadStatistics().records + 1;
        case CallKind::get_check_count:
            return ReadStatistics().checks;
        case CallKind::get_grand_total:
            return GrandTotal();
        case CallKind::get_serial:
            return Serial();
        case CallKind::get_tax:
            return ReadEepromByte(674 + 36 * static_cast<std::uint32_t>(call.number));
        case CallKind::get_shift_status:
            return ReadEepromByte(1321) == 0xAA ? 1 : 0;
        case CallKind::get_version:
            return version_;
        case CallKind::lock:
            LockKeyboard();
            ShowText(16);
            return 0;
        case CallKind::unlock:
            UnlockKeyboard();
            Key(0);
            return 0;
        case CallKind::clear_indicator:
            ShowText(0);
            return 0;
        case CallKind::feed:
            for (int i = 0; i < call.number; ++i) {
                Ask(0x30, {40}, 0xB0);
            }
            return 0;
        case CallKind::print_string:
            PrintString(call.text);
            return 0;
        default:
            return 0;  // cbClearTitle only identifies
    }
}

void RequiredDriver::Identify() {
    if (version_ == 0) {
        const int version = AskVersion();
        if (version == 0) {
            throw Failed{Failing::protocol};
        }
        version_ = version;
    }
}

void RequiredDriver::Connect(const std::string& path) {
    if (port_open_) {
        talk_->Close();
    }
    port_open_ = false;
    version_ = 0;
    host_wait_set_ = false;
    talk_->Open(path, port_open_);
    if (!port_open_) {
        throw Failed{Failing::engine, 1};
    }
    talk_->SetPortOpen(true);
    bool found = FindAt(9600);
    if (!found) {
        try {
            talk_->SetLine(57600);
        } catch (const Failed&) {
            throw Failed{Failing::engine, 2};
        }
        try {
            version_ = AskVersion();
            found = version_ != 0;
            if (!found) {
                throw Failed{Failing::engine, 3};
            }
        } catch (const Failed& failed) {
            if (failed.how == Failing::engine) {
                throw;
            }
        }
    }
    try {
        talk_->Request(0x0B, {7, 1});
        KnowVersion();
        if (talk_->Answer().code == 0x7B) {
            host_wait_set_ = true;
        }
    } catch (const Failed&) {
        // A register that refuses the parameter is found all the same.
    }
    if (!found) {
        throw Failed{Failing::engine, 2};
    }
}

bool RequiredDriver::FindAt(int baud) {
    try {
        talk_->SetLine(baud);
        version_ = AskVersion();
    } catch (const Failed&) {
        return false;
    }
    return version_ != 0;
}

void RequiredDriver::Disconnect() {
    try {
        while (ReadStatus().state != 0xA0) {
            Reset();
        }
    } catch (const Failed&) {
        // A register that does not answer stays as it is.
    }
    if (host_wait_set_) {
        talk_->Request(0x0B, {7, 0});
        KnowVersion();
        if (talk_->Answer().code != 0x7B) {
            throw Failed{Failing::protocol};
        }
    }
    if (port_open_) {
        talk_->Close();
    }
    talk_->SetPortOpen(false);
    port_open_ = false;
    version_ = 0;
    host_wait_set_ = false;
}

}  // namespace simulation
