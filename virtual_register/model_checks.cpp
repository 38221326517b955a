// From the first line of a check to its receipt.
#include <algorithm>
#include <utility>

#include "model.h"
#include "receipt.h"

namespace virtual_register {
namespace {

// First answer bytes of a sale.
constexpr std::uint8_t kTaken = 0;
constexpr std::uint8_t kPriceAboveLimit = 1;
constexpr std::uint8_t kCheckFull = 2;
constexpr std::uint8_t kSumTooLarge = 3;
constexpr std::uint8_t kCheckClosed = 4;
// First answer bytes of cash.
constexpr std::uint8_t kCashBelowTotal = 1;
constexpr std::uint8_t kNoCheckOut = 2;

constexpr int kPercentMax = 99;

bool pays_out(CheckType type) {
    return type == CheckType::refund || type == CheckType::paid_out;
}

bool pays_in(CheckType type) {
    return type == CheckType::sale || type == CheckType::paid_in;
}

}  // namespace

bool Model::execute_check(Command command, const RequestPayload& payload, AnswerPayload& answer) {
    switch (command) {
        case Command::sale:
            answer.add(sell(payload));
            return true;
        case Command::sale_text:
            if (payload[0] < memory_.check.lines.size()) {
                memory_.check.lines[payload[0]].write_title(payload[1], payload.text(2));
                ++memory_version_;
            }
            return true;
        case Command::discount:
            if (give_discount(static_cast<std::int8_t>(payload[0]))) {
                set_state(State::ready);
            }
            return true;
        case Command::discount_card:
            take_discount_card(payload);
            return true;
        case Command::close_check:
            answer.add(close_check(payload[0]) ? 1 : 0);
            return true;
        case Command::cash:
            answer.add(take_cash(payload.big_endian(1, 4)));
            return true;
        case Command::query_sale:
            query_sale();
            return true;
        case Command::clear_check:
            clear_check();
            return true;
        case Command::cancel_check_out:
            if (memory_.check.stage == OpenCheck::Stage::closed) {
                leave_check_out();
                set_state(State::none);
            }
            return true;
        default:
            return false;
    }
}

std::uint8_t Model::sell(const RequestPayload& payload) {
    std::uint8_t block[41];
    std::copy_n(payload.data(), sizeof block, block);
    const std::optional<SaleLine> line = decode_sale(block);
    const std::uint8_t verdict = line ? try_line(*line) : kSumTooLarge;
    if (verdict == kTaken) {
        add_line(*line);
        set_state(State::sale_added);
    } else {
        set_state(State::sale_refused);
    }
    return verdict;
}

std::uint8_t Model::try_line(const SaleLine& line) const {
    const OpenCheck& check = memory_.check;
    const std::uint32_t price_max = settings_.price_max_kopecks != 0
                                        ? settings_.price_max_kopecks
                                        : memory_.firmware().price_max_kopecks;
    if (check.stage == OpenCheck::Stage::closed) {
        return kCheckClosed;
    }
    if (line.price_kopecks > price_max) {
        return kPriceAboveLimit;
    }
    if (check.lines.size() >= memory_.firmware().check_lines_max) {
        return kCheckFull;
    }
    const std::int64_t total = check.total_kopecks() + line.amount_kopecks +
                               percent_of(line.amount_kopecks, check.discount_percent);
    return total > std::int64_t{UINT32_MAX} ? kSumTooLarge : kTaken;
}

void Model::add_line(const SaleLine& line) {
    memory_.check.lines.push_back(line);
    memory_.note_sale_number();
    shown_line_ = line;
    ++memory_version_;
}

bool Model::give_discount(int percent) {
    OpenCheck& check = memory_.check;
    if (!check.is_open() || check.stage == OpenCheck::Stage::closed || percent > kPercentMax ||
        percent < -kPercentMax) {
        return false;
    }
    const int before = std::exchange(check.discount_percent, percent);
    if (check.total_kopecks() > std::int64_t{UINT32_MAX}) {
        check.discount_percent = before;
        return false;
    }
    check.stage = OpenCheck::Stage::totals;
    ++memory_version_;
    return true;
}

void Model::take_discount_card(const RequestPayload& payload) {
    OpenCheck& check = memory_.check;
    if (!check.is_open() || check.stage == OpenCheck::Stage::closed) {
        return;
    }
    check.stage = OpenCheck::Stage::totals;
    check.card_kind = payload[1];
    check.card_number.clear();
    if (payload[2] > 0) {
        check.card_number.add(payload.text(3, payload[2] - 1U));
    }
    ++memory_version_;
    set_state(State::discount_card);
}

bool Model::close_check(std::uint8_t type) {
    OpenCheck& check = memory_.check;
    if (!check.is_open() || type < static_cast<std::uint8_t>(CheckType::refund) ||
        type > static_cast<std::uint8_t>(CheckType::sale)) {
        return false;
    }
    const auto closed_as = static_cast<CheckType>(type);
    if (pays_out(closed_as) && check.total_kopecks() > memory_.drawer_kopecks) {
        return false;
    }
    check.type = closed_as;
    check.stage = OpenCheck::Stage::closed;
    check.cash_kopecks.reset();
    ++memory_version_;
    set_state(State::ready);
    return true;
}

std::uint8_t Model::take_cash(std::uint32_t kopecks) {
    OpenCheck& check = memory_.check;
    if (state() != State::check_out) {
        return kNoCheckOut;
    }
    if (pays_in(check.type)) {
        if (kopecks < check.total_kopecks()) {
            return kCashBelowTotal;
        }
        check.cash_kopecks = kopecks;
        ++memory_version_;
    }
    return kTaken;
}

void Model::query_sale() {
    const OpenCheck& check = memory_.check;
    query_ = {};
    if (!check.is_open()) {
        set_state(State::sale_code);
    } else if (check.stage == OpenCheck::Stage::lines && memory_.firmware().asks_for_barcode) {
        set_state(State::sale_barcode);
    } else {
        leave_check_out();
        set_state(State::discount_card);
    }
}

void Model::leave_check_out() {
    OpenCheck& check = memory_.check;
    if (check.stage == OpenCheck::Stage::closed) {
        check.stage = OpenCheck::Stage::totals;
        check.cash_kopecks.reset();
        check.type = CheckType::sale;
        ++memory_version_;
    }
}

void Model::clear_check() {
    if (!memory_.check.is_open() && state_ != State::free_sale) {
        return;
    }
    cleared_lines_ = memory_.sale_number();
    memory_.check.clear();
    memory_.note_sale_number();
    memory_.set_last_error(0);
    ++memory_version_;
    set_state(State::check_cleared);
}

void Model::register_check() {
    OpenCheck& open = memory_.check;
    PrintedCheck check;
    check.tape_number = memory_.tape_number;
    check.number = static_cast<std::uint16_t>(memory_.checks + 1);
    check.type = open.type;
    check.discount_percent = open.discount_percent;
    check.discount_kopecks = open.discount_kopecks();
    check.total_kopecks = static_cast<std::uint32_t>(open.total_kopecks());
    check.cash_kopecks = pays_in(open.type) || pays_out(open.type)
                             ? open.cash_kopecks.value_or(check.total_kopecks)
                             : 0;
    check.change_kopecks = pays_in(open.type) ? check.cash_kopecks - check.total_kopecks : 0;
    check.registered_at_s = clock_s();
    check.card_number = open.card_number;
    check.lines = std::move(open.lines);

    receipt_.clear();
    compose_receipt(check, memory_, false, receipt_);
    set_state(State::none);
    if (!paper_.print(receipt_)) {
        open.lines = std::move(check.lines);
        note_paper_out();
        return;
    }
    book(check);
    memory_.check.clear();
    memory_.note_sale_number();
    memory_.set_last_error(0);
    printed_for_a_while(receipt_.size());
    memory_.last_check = check;
    printed_.push_back(std::move(check));
    ++checks_registered_;
}

void Model::book(const PrintedCheck& check) {
    if (!memory_.shift_is_open()) {
        memory_.open_shift(check.registered_at_s);
    }
    for (std::size_t i = 0; i < check.lines.size(); ++i) {
        memory_.tape.add(make_tape_record(check, i));
    }
    memory_.checks = check.number;
    if (pays_in(check.type)) {
        memory_.drawer_kopecks += check.total_kopecks;
    } else if (pays_out(check.type)) {
        memory_.drawer_kopecks -= check.total_kopecks;
    }
    ++memory_version_;
}

void Model::print_copy() {
    if (!memory_.last_check || memory_.check.is_open()) {
        return;
    }
    receipt_.clear();
    compose_receipt(*memory_.last_check, memory_, true, receipt_);
    if (paper_.print(receipt_)) {
        printed_for_a_while(receipt_.size());
    } else {
        note_paper_out();
    }
}

void Model::note_paper_out() {
    memory_.set_last_error(kPaperOutError);
    ++memory_version_;
}

void Model::printed_for_a_while(std::size_t lines) {
    deaf_until_us_ = now_us_ + static_cast<std::int64_t>(lines) * settings_.print_us_per_line;
}

}  // namespace virtual_register
