#pragma once

#include <cstddef>
#include <cstdint>

namespace virtual_register {

// Requests that the register knows.
enum class Command : std::uint8_t {
    read_eeprom = 0x02,
    clear_check = 0x03,
    read_ram = 0x04,
    read_time = 0x06,
    show_text = 0x07,
    read_product = 0x08,
    write_product = 0x09,
    statistics = 0x0A,
    write_parameter = 0x0B,
    write_header = 0x0C,
    write_footer = 0x0D,
    simple_lock = 0x10,
    read_tape = 0x12,
    serial_number = 0x15,
    status = 0x20,
    sale = 0x21,
    discount = 0x23,
    discount_card = 0x24,
    close_check = 0x25,
    weight = 0x26,
    sale_text = 0x27,
    cash = 0x28,
    key = 0x29,
    cancel_check_out = 0x2A,
    feed = 0x30,
    print_line = 0x31,
    print_wide_line = 0x32,
    version = 0x34,
    query_sale = 0x35,
    lock_switch = 0x36,
    sale_number = 0x37,
    last_error = 0x38,
    show_message = 0x7E,
    reset_status = 0x7F,
};

// States, as they stand in the command byte of a status answer.
enum class State : std::uint8_t {
    none = 0xA0,
    sale_code = 0xA1,
    sale_added = 0xA2,
    sale_barcode = 0xA3,
    sale_refused = 0xA7,
    ready = 0xC0,
    sale_deleted = 0xC4,
    check_cleared = 0xC5,
    free_sale = 0xC6,
    check_out = 0xC8,
    discount = 0xC9,
    discount_card = 0xCA,
    switched_on = 0xCB,
    shift_closed = 0xCC,
    weight = 0xCD,
    key_lock = 0xCE,
};

// One row for each request: what answers it, how long its payload may be, which firmware has it.
struct CommandRow {
    Command command;
    std::uint8_t answer;  // for the status request the state stands here instead
    std::size_t payload_min;
    std::size_t payload_max;
    int first_firmware;
    int last_firmware;
    const char* name;
};

// Null for a code that is no request.
const CommandRow* find_command(std::uint8_t code);
// Null for a code that is no state.
const char* state_name(std::uint8_t code);

}  // namespace virtual_register
