#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "codes.h"
#include "frame.h"
#include "memory.h"
#include "paper.h"

namespace virtual_register {

// A cash register of the Tarvo M5 family without its line: requests go in, answers come out. It
// does no input or output, reads no clock and draws no random numbers: time is told to it, in
// microseconds from its switching on, and the same calls give the same answers.
//
// How it works, where its protocol leaves a choice.
//
// Silence. A request for another network number, with a command that this firmware lacks, or with
// a payload of the wrong length is not answered. Neither is anything while the power is off or a
// receipt is being printed.
//
// States. Every state but `none` lasts until the host resets the status, a command or a key brings
// another. Power on gives `switched_on`. A reset gives `none`, with three exceptions: under the
// simple lock it only ends the lock, so that what the register was doing stands again; in `ready`
// after a check was closed it leads to `check_out`; in `check_out` it prints the check.
//
// A check lives in memory until it is printed. It is registered in one moment, at the status reset
// in `check_out` (or the cashier's key, see paper): receipt, counters, tape, drawer, shift and sale
// number change together in that one request, before its answer. Until then nothing of it is on
// paper or tape, and clearing it leaves no trace.
// - A sale adds a line whatever state the register is in, unless the check is closed. It is refused
//   with 1 for a price above the limit, 2 when the check is full, 3 when a sum passes 32 bits, 4
//   when the check is closed; the state is then `sale_refused`.
// - A discount or surcharge replaces an earlier one, so that a repeated command does no harm. It
//   falls on each line, rounded half up. One that cannot be (no check, closed check, above 99 per
//   cent, sum too large) is answered and leaves the state alone.
// - Closing again, with the same type or another, is allowed until the check is printed. It is
//   refused (0) without lines, with an unknown type, and when a type that pays out asks for more
//   than the drawer holds.
// - Cash is taken in `check_out` only (otherwise refused with 2) and refused with 1 below the total
//   of a sale; credit and refunds take any cash and do not use it. Without cash a check is paid
//   exactly.
// - Clearing (command, or key 0x20 and then 0x28) works until the check is printed and leads to
//   `check_cleared`; with nothing to clear it changes nothing. Key 0x20 alone leaves the check-out,
//   and any state, and goes back to the goods.
// - A sale query from the host makes a register without an open check ask for one (`sale_code`).
//   With an open check it asks for the next line (`sale_barcode`) while goods are entered, and for
//   a discount card once totals were begun; firmware without a clear command knows only the latter.
//
// Locks. The lock switch and the simple lock are two things; either one shuts the cashier's
// keyboard out and neither touches keys that the host sends. Every firmware obeys the simple lock
// (state `key_lock`) until a status reset; the switch stays until it is switched or the power goes.
//
// Paper. A check that comes to be printed without paper, or whose receipt meets the end of the
// roll, is not registered: the last error becomes 16, the check stays open and closed as it was,
// the state becomes `none`. With paper in, the cashier's next key (any but 0x20) prints the whole
// receipt; a host can close it again or clear it. The error stays until a check is printed or
// cleared. Free text and feeding without paper are answered, print nothing, and set the error.
//
// Shift. The first check opens it. Closing it needs an unlocked keyboard, no open check and paper;
// it prints a report, begins tape number + 1, and starts check and record counters at 0.
//
// Power. Memory, open check included, survives; state, locks, indicator and the check-out do not.
//
// The host-wait parameter (7) is kept like any other and changes nothing: the cashier decides.
struct Settings {
    std::uint8_t net_number = 1;
    std::uint32_t price_max_kopecks = 0;      // 0 leaves it to the firmware
    std::uint32_t print_us_per_line = 0;      // printing a receipt keeps the register deaf so long
    std::int64_t clock_start_s = 1213531530;  // its calendar when time is 0: 15.06.2008 12:05:30
};

// What a query state tells the host.
struct Query {
    std::uint16_t code = 0;  // 7: the cashier wants no check
    std::uint8_t department = 0;
    bool weighed = false;
    std::uint16_t quantity = 0;  // thousandths when weighed; 0 is one piece
    bool marked = false;         // taken back: nothing that a host could register
    Bytes<32> barcode;
};

constexpr std::uint16_t kCashierCancelled = 7;
constexpr std::uint8_t kPaperOutError = 16;

namespace key {
constexpr std::uint8_t kClear = 0x20;
constexpr std::uint8_t kCancelCheck = 0x28;  // after kClear
constexpr std::uint8_t kCopy = 0x2B;         // prints the last check once more
}  // namespace key

class Model {
  public:
    explicit Model(Memory memory, const Settings& settings = {});

    // One request at `now_us`, which never runs backwards. Nothing: the register keeps silent.
    std::optional<Answer> handle(const Request& request, std::int64_t now_us);
    void advance(std::int64_t now_us);

    // The cashier. Each act gives false, and changes nothing, when the register does not let it
    // happen: power off, printing, keyboard locked, or as said below.
    bool ask_host(const Query& query = {});  // not with a closed check
    bool ask_host_by_barcode(std::string_view barcode, Query query = {});
    bool cancel();  // clears an open check; without one tells the host that none is wanted
    bool press(std::uint8_t key_code);
    bool enter_line(SaleLine line);       // a line typed at the keyboard: in the check at once
    bool enter_free_line(SaleLine line);  // a line still being typed: not in the check
    bool delete_last_line();              // needs a line in a check that is not closed
    bool enter_discount(int percent);     // as a discount from the host, seen as `discount`
    bool ask_weight();  // waits for the host to tell a weight; not with a closed check
    bool open_shift();  // false when it is open
    bool close_shift();
    void paper_out() { paper_.take_out(); }
    void paper_in() { paper_.put_in(); }
    void paper_in(std::size_t lines_left) { paper_.put_in(lines_left); }
    void power_off();
    void power_on();

    // Faults of the register itself; those of the line are the line's.
    // The n-th request from now with this command (1 is the next) does nothing and is answered by
    // its good answer code with `reply` as only payload byte. Not for the status request.
    void refuse(Command command, unsigned nth, std::uint8_t reply);
    // A busy register: each new state shows only after that many status answers of the old one.
    // 0 ends it at once.
    void set_states_late(unsigned polls);

    // The truth.
    const Memory& memory() const { return memory_; }
    Memory& memory() { return memory_; }
    const Settings& settings() const { return settings_; }
    State state() const { return simple_lock_ ? State::key_lock : state_; }
    const OpenCheck& open_check() const { return memory_.check; }
    const std::vector<PrintedCheck>& printed() const { return printed_; }
    std::uint64_t checks_registered() const { return checks_registered_; }
    void forget_printed() { printed_.clear(); }  // for a long life
    bool powered() const { return powered_; }
    bool keyboard_locked() const { return simple_lock_ || switch_lock_; }
    bool switch_locked() const { return switch_lock_; }
    bool printing() const { return now_us_ < deaf_until_us_; }
    std::string_view indicator() const { return indicator_.text(0, 16); }
    std::uint8_t indicator_value() const { return indicator_[16]; }
    std::uint8_t indicator_mode() const { return indicator_[17]; }
    const Paper& paper() const { return paper_; }
    Paper& paper() { return paper_; }
    std::int64_t clock_s() const { return settings_.clock_start_s + now_us_ / 1000000; }
    // Rises with every change of what a power cut would not take.
    std::uint64_t memory_version() const { return memory_version_; }

  private:
    struct Refusal {
        Command command;
        unsigned countdown;
        std::uint8_t reply;
    };

    bool execute(Command command, const RequestPayload& payload, AnswerPayload& answer);
    bool execute_check(Command command, const RequestPayload& payload, AnswerPayload& answer);
    bool execute_service(Command command, const RequestPayload& payload, AnswerPayload& answer);
    bool execute_setting(Command command, const RequestPayload& payload);
    bool execute_output(Command command, const RequestPayload& payload);
    std::optional<std::uint8_t> take_refusal(Command command);

    Answer status();
    Answer status_of(State state) const;
    void add_query_status(AnswerPayload& to) const;
    void add_document(AnswerPayload& to) const;
    void add_free_sale_status(AnswerPayload& to) const;
    void add_discount_status(AnswerPayload& to) const;
    void add_card_status(AnswerPayload& to) const;
    void add_line_status(const SaleLine& line, std::uint8_t sale, AnswerPayload& to) const;
    void add_check_out_status(AnswerPayload& to) const;
    void set_state(State state);
    void reset_status();

    std::uint8_t sell(const RequestPayload& payload);
    std::uint8_t try_line(const SaleLine& line) const;
    void add_line(const SaleLine& line);
    bool give_discount(int percent);
    void take_discount_card(const RequestPayload& payload);
    bool close_check(std::uint8_t type);
    std::uint8_t take_cash(std::uint32_t kopecks);
    void query_sale();
    void clear_check();
    void leave_check_out();
    void register_check();
    void book(const PrintedCheck& check);
    void print_copy();
    void print_free(const PaperLine& line);
    void printed_for_a_while(std::size_t lines);
    void note_paper_out();

    bool read_eeprom(const RequestPayload& payload, AnswerPayload& answer) const;
    void read_product(std::uint16_t code, AnswerPayload& answer) const;
    void write_product(const RequestPayload& payload, AnswerPayload& answer);
    void add_time(AnswerPayload& to) const;

    bool keyboard_free() const { return powered_ && !printing() && !keyboard_locked(); }
    void key_pressed(std::uint8_t key_code);

    Memory memory_;
    Settings settings_;
    Paper paper_;
    std::vector<PrintedCheck> printed_;
    std::uint64_t checks_registered_ = 0;
    std::uint64_t memory_version_ = 0;

    std::int64_t now_us_ = 0;
    std::int64_t deaf_until_us_ = 0;
    bool powered_ = true;
    bool simple_lock_ = false;
    bool switch_lock_ = false;
    bool clear_armed_ = false;  // the last key was kClear
    State state_ = State::switched_on;
    Query query_;
    SaleLine shown_line_;  // the one typed or deleted last
    std::uint8_t cleared_lines_ = 0;
    Bytes<6> weight_;
    Bytes<18> indicator_;

    std::vector<Refusal> refusals_;
    unsigned late_polls_ = 0;
    unsigned late_left_ = 0;
    Answer late_answer_;
    std::vector<PaperLine> receipt_;  // kept for its capacity
};

}  // namespace virtual_register
