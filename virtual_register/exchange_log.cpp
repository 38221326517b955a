#include "exchange_log.h"

#include <cstdio>
#include <optional>

#include "calendar.h"
#include "check.h"
#include "codes.h"
#include "cp866.h"
#include "receipt.h"
#include "tape.h"

namespace virtual_register {
namespace {

template <typename Payload>
std::string hex(const Payload& payload) {
    std::string text;
    char byte[4];
    for (std::uint8_t value : payload) {
        std::snprintf(byte, sizeof byte, " %02X", value);
        text += byte;
    }
    return text;
}

std::string quoted(std::string_view cp866) {
    return '"' + to_utf8(without_padding(cp866)) + '"';
}

std::string number(std::uint32_t value) {
    return std::to_string(value);
}

std::string address(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", value);
    return text;
}

std::string quantity(bool weighed, std::uint32_t value) {
    char text[24];
    if (weighed) {
        std::snprintf(text, sizeof text, "%u.%03u kg", value / 1000, value % 1000);
    } else {
        std::snprintf(text, sizeof text, "%u", value == 0 ? 1 : value);
    }
    return text;
}

std::string describe_sale(const RequestPayload& payload) {
    std::uint8_t block[41]{};
    std::copy_n(payload.data(), std::min(payload.size(), sizeof block), block);
    const std::optional<SaleLine> line = decode_sale(block);
    if (!line) {
        return hex(payload);
    }
    return ' ' + quoted(line->name.text()) + " barcode " + to_utf8(line->barcode.text()) +
           " price " + money(line->price_kopecks) + " x " +
           quantity(line->weighed, line->quantity_on_wire()) + " department " +
           number(line->department) + " code " + number(line->code);
}

// What follows the command's name; nothing for payloads that have no words of their own.
std::optional<std::string> request_words(Command command, const RequestPayload& bytes) {
    switch (command) {
        case Command::sale:
            return describe_sale(bytes);
        case Command::sale_text:
            return " line " + number(bytes[0]) + " piece " + number(bytes[1]) + ' ' +
                   quoted(bytes.text(2));
        case Command::discount:
            return ' ' + std::to_string(static_cast<std::int8_t>(bytes[0])) + '%';
        case Command::discount_card:
            return " kind " + number(bytes[1]) + " number " + quoted(bytes.text(3));
        case Command::close_check:
            return " type " + number(bytes[0]);
        case Command::cash:
            return ' ' + money(bytes.big_endian(1, 4));
        case Command::key: {
            const char* name = bytes[0] == 0x20   ? " (clear)"
                               : bytes[0] == 0x28 ? " (cancel)"
                               : bytes[0] == 0x2B ? " (copy)"
                                                  : "";
            return ' ' + address(bytes[0]) + name;
        }
        case Command::lock_switch:
            return bytes[0] == 0 ? " lock" : " unlock";
        case Command::write_parameter:
            return ' ' + number(bytes[0]) + " = " + number(bytes[1]);
        case Command::feed:
            return ' ' + number(bytes[0]);
        case Command::read_ram:
            return ' ' + address(bytes.big_endian(0, 2)) + " count " + number(bytes[2]);
        case Command::read_eeprom:
            return ' ' + address(bytes.big_endian(0, bytes.size() - 1)) + " count " +
                   number(bytes[bytes.size() - 1]);
        case Command::read_tape:
        case Command::read_product:
            return ' ' + number(bytes.big_endian(0, 2));
        case Command::show_text:
        case Command::show_message:
            return ' ' + quoted(bytes.text(0, 16)) + " value " + number(bytes[16]) + " mode " +
                   number(bytes[17]);
        case Command::print_line:
        case Command::print_wide_line:
            return ' ' + quoted(bytes.text(1, bytes.size() - 3));
        case Command::write_header:
        case Command::write_footer:
            return ' ' + quoted(bytes.text());
        default:
            return std::nullopt;
    }
}

std::string state_words(const Answer& answer) {
    const char* name = state_name(answer.code);
    std::string text = name == nullptr ? "state " + address(answer.code) : name;
    const AnswerPayload& bytes = answer.payload;
    switch (static_cast<State>(answer.code)) {
        case State::sale_code:
            return text + ", code " + number(bytes.big_endian(0, 2));
        case State::sale_added:
        case State::sale_deleted:
            return text + ", sale " + number(bytes[4]) + ' ' + quoted(bytes.text(17)) + " price " +
                   money(bytes.big_endian(14, 3)) + " x " +
                   quantity(bytes[10] != 0, bytes.big_endian(11, 2));
        case State::check_out:
            return text + ", type " + number(bytes[5]) + ", lines " + number(bytes[4]) +
                   ", to pay " + money(bytes.big_endian(8, 4));
        default:
            return text + (bytes.empty() ? "" : "," + hex(bytes));
    }
}

std::string tape_words(const AnswerPayload& bytes) {
    const std::optional<TapeRecord> record = TapeRecord::decode(bytes);
    if (!record) {
        return " no such record";
    }
    return " check " + number(record->check_number) + " line " + number(record->line_index) +
           " sum " + money(record->amount_kopecks) + " kind " + number(record->kind);
}

std::string answer_words(Command command, const AnswerPayload& bytes) {
    switch (command) {
        case Command::statistics:
            return " tape " + number(bytes.big_endian(0, 2)) + ", checks " +
                   number(bytes.big_endian(2, 2)) + ", records " + number(bytes.big_endian(4, 2)) +
                   ", drawer " + money(bytes.big_endian(7, 4));
        case Command::sale:
        case Command::cash:
            return bytes[0] == 0 ? " taken" : " refused: " + number(bytes[0]);
        case Command::close_check:
            return bytes[0] != 0 ? " closed" : " refused";
        case Command::serial_number:
            return ' ' + quoted(bytes.text());
        case Command::sale_number:
        case Command::last_error:
            return ' ' + number(bytes[0]);
        case Command::version:
            return ' ' + number(bytes[0]) + '.' + number(bytes[1]);
        case Command::read_tape:
            return tape_words(bytes);
        default:
            return hex(bytes);
    }
}

}  // namespace

std::string describe(const Request& request) {
    const CommandRow* row = find_command(request.command);
    if (row == nullptr) {
        return "unknown " + address(request.command) + hex(request.payload);
    }
    const bool whole = request.payload.size() >= row->payload_min;
    const auto words = whole ? request_words(row->command, request.payload) : std::nullopt;
    return row->name + words.value_or(hex(request.payload));
}

std::string describe(const Answer& answer, const Request& to) {
    const CommandRow* row = find_command(to.command);
    if (row == nullptr || row->command == Command::status) {
        return state_words(answer);
    }
    return row->name + std::string(" answered") + answer_words(row->command, answer.payload);
}

std::string time_of_day(std::int64_t clock_start_s, std::int64_t now_us) {
    const CalendarTime time = calendar_time(clock_start_s + now_us / 1000000);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", time.hour % 100, time.minute % 100,
                  time.second % 100, static_cast<int>(now_us / 1000 % 1000));
    return text;
}

}  // namespace virtual_register
