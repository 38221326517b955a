// The cashier's side: keys, whoever presses them, and what is done at the keyboard.
#include "model.h"
#include "receipt.h"

namespace virtual_register {

void Model::key_pressed(std::uint8_t key_code) {
    const bool cancels = clear_armed_ && key_code == key::kCancelCheck;
    clear_armed_ = key_code == key::kClear;
    if (clear_armed_) {
        leave_check_out();
        set_state(State::none);
    } else if (cancels) {
        clear_check();
    } else if (key_code == key::kCopy) {
        print_copy();
    }
}

bool Model::press(std::uint8_t key_code) {
    if (!keyboard_free()) {
        return false;
    }
    const bool waits_for_paper =
        memory_.check.stage == OpenCheck::Stage::closed && state_ == State::none;
    if (waits_for_paper && key_code != key::kClear) {
        register_check();
    } else {
        key_pressed(key_code);
    }
    return true;
}

bool Model::ask_host(const Query& query) {
    if (!keyboard_free() || memory_.check.stage == OpenCheck::Stage::closed) {
        return false;
    }
    query_ = query;
    set_state(State::sale_code);
    return true;
}

bool Model::ask_host_by_barcode(std::string_view barcode, Query query) {
    query.barcode.clear();
    query.barcode.add(barcode);
    if (!ask_host(query)) {
        return false;
    }
    set_state(State::sale_barcode);
    return true;
}

bool Model::cancel() {
    if (!keyboard_free()) {
        return false;
    }
    if (memory_.check.is_open()) {
        clear_check();
        return true;
    }
    Query declined;
    declined.code = kCashierCancelled;
    return ask_host(declined);
}

bool Model::enter_line(SaleLine line) {
    if (!keyboard_free() || try_line(line) != 0) {
        return false;
    }
    add_line(line);
    set_state(State::sale_added);
    return true;
}

bool Model::enter_free_line(SaleLine line) {
    if (!keyboard_free() || try_line(line) != 0) {
        return false;
    }
    shown_line_ = line;
    set_state(State::free_sale);
    return true;
}

bool Model::delete_last_line() {
    OpenCheck& check = memory_.check;
    if (!keyboard_free() || !check.is_open() || check.stage == OpenCheck::Stage::closed) {
        return false;
    }
    shown_line_ = check.lines.back();
    check.lines.pop_back();
    if (!check.is_open()) {
        check.clear();
    }
    memory_.note_sale_number();
    ++memory_version_;
    set_state(State::sale_deleted);
    return true;
}

bool Model::enter_discount(int percent) {
    if (!keyboard_free() || !give_discount(percent)) {
        return false;
    }
    set_state(State::discount);
    return true;
}

bool Model::ask_weight() {
    if (!keyboard_free() || memory_.check.stage == OpenCheck::Stage::closed) {
        return false;
    }
    weight_ = {0, 0, 0, 0, 0, 0};
    set_state(State::weight);
    return true;
}

bool Model::open_shift() {
    if (!keyboard_free() || memory_.shift_is_open()) {
        return false;
    }
    memory_.open_shift(clock_s());
    ++memory_version_;
    return true;
}

bool Model::close_shift() {
    if (!keyboard_free() || memory_.check.is_open() || !memory_.shift_is_open()) {
        return false;
    }
    receipt_.clear();
    compose_shift_report(memory_, clock_s(), receipt_);
    if (!paper_.print(receipt_)) {
        note_paper_out();
        return false;
    }
    memory_.close_shift();
    ++memory_version_;
    set_state(State::shift_closed);
    printed_for_a_while(receipt_.size());
    return true;
}

}  // namespace virtual_register
