// Reading the memories, the goods database, the indicator, free printing.
#include <algorithm>

#include "calendar.h"
#include "model.h"

namespace virtual_register {

bool Model::execute_service(Command command, const RequestPayload& payload, AnswerPayload& answer) {
    switch (command) {
        case Command::read_ram:
            answer = memory_.read_ram(payload.big_endian(0, 2), payload[2]);
            return true;
        case Command::read_eeprom:
            return read_eeprom(payload, answer);
        case Command::serial_number:
            answer.add(memory_.serial());
            return true;
        case Command::sale_number:
            answer.add(memory_.sale_number());
            return true;
        case Command::last_error:
            answer.add(memory_.last_error());
            return true;
        case Command::statistics:
            answer.add_big_endian(memory_.tape_number, 2);
            answer.add_big_endian(memory_.checks, 2);
            answer.add_big_endian(memory_.tape.count(), 2);
            answer.add_big_endian(static_cast<std::uint64_t>(memory_.drawer_kopecks), 5);
            return true;
        case Command::read_tape:
            if (const TapeRecord* record =
                    memory_.tape.find(static_cast<std::uint16_t>(payload.big_endian(0, 2)))) {
                answer = record->encode();
            } else {
                answer.add(0);
            }
            return true;
        case Command::read_product:
            read_product(static_cast<std::uint16_t>(payload.big_endian(0, 2)), answer);
            return true;
        case Command::write_product:
            write_product(payload, answer);
            return true;
        case Command::read_time:
            add_time(answer);
            return true;
        default:
            return execute_setting(command, payload) || execute_output(command, payload);
    }
}

bool Model::execute_setting(Command command, const RequestPayload& payload) {
    switch (command) {
        case Command::write_parameter:
            memory_.set_parameter(payload[0], payload[1]);
            ++memory_version_;
            return true;
        case Command::write_header:
            memory_.set_header(payload.text());
            ++memory_version_;
            return true;
        case Command::write_footer:
            memory_.set_footer(payload.text());
            ++memory_version_;
            return true;
        case Command::weight:
            weight_.clear();
            weight_.add(payload.data(), payload.size());
            return true;
        default:
            return false;
    }
}

bool Model::execute_output(Command command, const RequestPayload& payload) {
    switch (command) {
        case Command::show_text:
        case Command::show_message:
            indicator_.clear();
            indicator_.add(payload.data(), payload.size());
            return true;
        case Command::feed: {
            PaperLine line;
            line.kind = PaperLine::Kind::feed;
            line.feed = payload[0];
            print_free(line);
            return true;
        }
        case Command::print_line:
            print_free(normal_line(payload.text(1, 16)));
            return true;
        case Command::print_wide_line:
            print_free(wide_line(payload.text(1, 7)));
            return true;
        default:
            return false;
    }
}

bool Model::read_eeprom(const RequestPayload& payload, AnswerPayload& answer) const {
    const std::size_t address_length = memory_.firmware().has_wide_eeprom_address ? 4 : 2;
    if (payload.size() != address_length + 1) {
        return false;
    }
    answer = memory_.read_eeprom(payload.big_endian(0, address_length), payload[address_length]);
    return true;
}

void Model::read_product(std::uint16_t code, AnswerPayload& answer) const {
    const ProductBlock* block = memory_.products.find(code);
    answer.add(block == nullptr ? 0 : 1);
    if (block != nullptr) {
        answer.add(block->data(), block->size());
    }
}

void Model::write_product(const RequestPayload& payload, AnswerPayload& answer) {
    ProductBlock block;
    std::copy_n(payload.data(), block.size(), block.begin());
    answer.add(memory_.products.write(block) ? 1 : 0);
    answer.add(block[37]);
    answer.add(block[38]);
    ++memory_version_;
}

void Model::add_time(AnswerPayload& to) const {
    const CalendarTime now = calendar_time(clock_s());
    for (int value : {now.second, now.minute, now.hour, now.day, now.month}) {
        to.add(static_cast<std::uint8_t>(value));
    }
    to.add_big_endian(static_cast<std::uint64_t>(now.year), 2);
}

void Model::print_free(const PaperLine& line) {
    if (!paper_.print(line)) {
        note_paper_out();
    }
}

}  // namespace virtual_register
