#include "codes.h"

#include <array>

#include "frame.h"

namespace virtual_register {
namespace {

constexpr int kAnyOld = 0;
constexpr int kAnyNew = 999;
constexpr std::size_t kAll = kLongestRequest;

constexpr CommandRow kCommands[] = {
    {Command::read_eeprom, 0x82, 3, 5, kAnyOld, kAnyNew, "read eeprom"},
    {Command::clear_check, 0x83, 0, 0, 302, kAnyNew, "clear check"},
    {Command::read_ram, 0x84, 3, 3, kAnyOld, kAnyNew, "read ram"},
    {Command::read_time, 0x86, 0, 0, kAnyOld, kAnyNew, "read time"},
    {Command::show_text, 0x87, 18, 18, kAnyOld, kAnyNew, "show text"},
    {Command::read_product, 0x88, 2, 2, kAnyOld, kAnyNew, "read product"},
    {Command::write_product, 0x89, 39, 39, kAnyOld, kAnyNew, "write product"},
    {Command::statistics, 0x8A, 0, 0, kAnyOld, kAnyNew, "statistics"},
    {Command::write_parameter, 0x7B, 2, 2, kAnyOld, kAnyNew, "write parameter"},
    {Command::write_header, 0x7C, 1, kAll, kAnyOld, kAnyNew, "write header"},
    {Command::write_footer, 0x7D, 1, kAll, kAnyOld, kAnyNew, "write footer"},
    {Command::simple_lock, 0xAF, 0, 0, kAnyOld, kAnyNew, "lock keyboard"},
    {Command::read_tape, 0x8B, 2, 2, kAnyOld, kAnyNew, "read tape"},
    {Command::serial_number, 0x95, 0, 0, 400, kAnyNew, "serial number"},
    {Command::status, 0x00, 0, 0, kAnyOld, kAnyNew, "status"},
    {Command::sale, 0xC1, 41, 41, kAnyOld, kAnyNew, "sale"},
    {Command::discount, 0xB4, 1, 1, kAnyOld, kAnyNew, "discount"},
    {Command::discount_card, 0xB5, 3, kAll, kAnyOld, kAnyNew, "discount card"},
    {Command::close_check, 0xE4, 1, 1, kAnyOld, kAnyNew, "close check"},
    {Command::weight, 0xB6, 6, 6, kAnyOld, kAnyNew, "weight"},
    {Command::sale_text, 0x97, 20, 20, 302, kAnyNew, "sale text"},
    {Command::cash, 0xE8, 5, 5, 301, 309, "cash"},
    {Command::key, 0xA9, 1, 1, kAnyOld, kAnyNew, "key"},
    {Command::cancel_check_out, 0xAA, 0, 0, kAnyOld, kAnyNew, "cancel check-out"},
    {Command::feed, 0xB0, 1, 1, kAnyOld, kAnyNew, "feed"},
    {Command::print_line, 0xB1, 19, 19, kAnyOld, kAnyNew, "print line"},
    {Command::print_wide_line, 0xB2, 10, 10, kAnyOld, kAnyNew, "print wide line"},
    {Command::version, 0xB4, 0, 0, kAnyOld, kAnyNew, "version"},
    {Command::query_sale, 0xB5, 0, 0, kAnyOld, kAnyNew, "query sale"},
    {Command::lock_switch, 0xB7, 1, 1, 303, kAnyNew, "lock switch"},
    {Command::sale_number, 0xB7, 0, 0, 400, kAnyNew, "sale number"},
    {Command::last_error, 0xB8, 0, 0, 304, kAnyNew, "last error"},
    {Command::show_message, 0x91, 18, 18, kAnyOld, kAnyNew, "show message"},
    {Command::reset_status, 0x90, 0, 0, kAnyOld, kAnyNew, "reset status"},
};

constexpr std::uint8_t kNoRow = 0xFF;
static_assert(std::size(kCommands) < kNoRow, "a row number fits its byte");

constexpr std::array<std::uint8_t, 256> rows_by_code() {
    std::array<std::uint8_t, 256> rows{};
    for (auto& row : rows) {
        row = kNoRow;
    }
    for (std::size_t i = 0; i < std::size(kCommands); ++i) {
        rows[static_cast<std::uint8_t>(kCommands[i].command)] = static_cast<std::uint8_t>(i);
    }
    return rows;
}

constexpr std::array<std::uint8_t, 256> kRowsByCode = rows_by_code();

}  // namespace

const CommandRow* find_command(std::uint8_t code) {
    const std::uint8_t row = kRowsByCode[code];
    return row == kNoRow ? nullptr : &kCommands[row];
}

const char* state_name(std::uint8_t code) {
    switch (static_cast<State>(code)) {
        case State::none:
            return "idle";
        case State::sale_code:
            return "asks the host";
        case State::sale_added:
            return "line added";
        case State::sale_barcode:
            return "asks by barcode";
        case State::sale_refused:
            return "line refused";
        case State::ready:
            return "ready";
        case State::sale_deleted:
            return "line deleted";
        case State::check_cleared:
            return "check cleared";
        case State::free_sale:
            return "free-price line";
        case State::check_out:
            return "check-out";
        case State::discount:
            return "discount";
        case State::discount_card:
            return "discount card";
        case State::switched_on:
            return "switched on";
        case State::shift_closed:
            return "shift closed";
        case State::weight:
            return "weight";
        case State::key_lock:
            return "keyboard locked";
    }
    return nullptr;
}

}  // namespace virtual_register
