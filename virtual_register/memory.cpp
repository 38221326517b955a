#include "memory.h"

#include <algorithm>
#include <stdexcept>

#include "calendar.h"
#include "cp866.h"

namespace virtual_register {
namespace {

constexpr std::size_t kSerialLength = 8;

template <typename Image>
AnswerPayload read(const Image& image, std::size_t address, std::size_t count) {
    AnswerPayload bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.add(address + i < image.size() ? image[address + i] : 0xFF);
    }
    return bytes;
}

std::uint8_t packed_decimal(int value) {
    return static_cast<std::uint8_t>(value / 10 % 10 * 16 + value % 10);
}

// A title from its rows, each centred in the width that rows have.
std::string title(std::initializer_list<const char*> rows) {
    std::string text;
    for (const char* row : rows) {
        const std::string cp866 = to_cp866(row);
        const std::size_t left = (Memory::kTitleRow - cp866.size()) / 2;
        text += std::string(left, ' ') + cp866;
        text += std::string(Memory::kTitleRow - left - cp866.size(), ' ');
    }
    return text;
}

}  // namespace

Memory::Memory(const Identity& identity) : firmware_(find_firmware(identity.firmware)) {
    if (firmware_ == nullptr) {
        throw std::invalid_argument("no such firmware: " + std::to_string(identity.firmware));
    }
    static const std::string header = title({"МАГАЗИН", "\"У ДОМА\""});
    static const std::string footer = title({"СПАСИБО", "ЗА ПОКУПКУ!"});
    drawer_kopecks = identity.drawer_kopecks;
    set_serial(identity.serial);
    set_header(header);
    set_footer(footer);
    eeprom_[kSectionAt] = static_cast<std::uint8_t>(identity.section - 1);
    for (std::size_t i = 0; i < identity.taxes.size(); ++i) {
        eeprom_[kTaxAt + kTaxStep * i] = identity.taxes[i];
    }
    eeprom_[kShiftAt] = kShiftShut;
}

AnswerPayload Memory::read_ram(std::size_t address, std::size_t count) const {
    return read(ram_, address, count);
}

AnswerPayload Memory::read_eeprom(std::size_t address, std::size_t count) const {
    return read(eeprom_, address, count);
}

void Memory::set_serial(std::string_view text) {
    serial_ = std::string(text.substr(0, kSerialLength));
    serial_.resize(kSerialLength, ' ');
    if (firmware_->ram.serial_number) {
        std::copy(serial_.begin(), serial_.end(), ram_.begin() + *firmware_->ram.serial_number);
    }
}

std::string_view Memory::ram_text(std::size_t at, std::size_t length) const {
    return {reinterpret_cast<const char*>(ram_.data()) + at, length};
}

void Memory::write_ram_text(std::size_t at, std::size_t length, std::string_view text) {
    text = text.substr(0, length);
    const auto place = ram_.begin() + static_cast<std::ptrdiff_t>(at);
    std::fill_n(place, length, std::uint8_t{0});
    std::copy(text.begin(), text.end(), place);
}

void Memory::set_last_error(std::uint8_t error) {
    last_error_ = error;
    if (firmware_->ram.last_error) {
        ram_[*firmware_->ram.last_error] = error;
    }
}

void Memory::note_sale_number() {
    if (firmware_->ram.sale_number) {
        ram_[*firmware_->ram.sale_number] = sale_number();
    }
}

void Memory::open_shift(std::int64_t at_s) {
    const CalendarTime begun = calendar_time(at_s);
    eeprom_[kShiftAt] = kShiftOpen;
    eeprom_[kDateAt] = packed_decimal(begun.day);
    eeprom_[kDateAt + 1] = packed_decimal(begun.month);
    eeprom_[kDateAt + 2] = packed_decimal(begun.year);
    eeprom_[kTimeAt] = static_cast<std::uint8_t>(begun.hour << 1 | (begun.minute & 3) << 6);
    eeprom_[kTimeAt + 1] = static_cast<std::uint8_t>(begun.minute >> 2);
    eeprom_[kTimeAt + 2] = static_cast<std::uint8_t>(begun.second);
}

void Memory::close_shift() {
    auto turnover = static_cast<std::uint64_t>(closed_turnover_kopecks() + tape.turnover_kopecks());
    for (std::size_t i = 8; i > 0; --i) {
        eeprom_[kTurnoverAt + i - 1] = static_cast<std::uint8_t>(turnover);
        turnover >>= 8;
    }
    eeprom_[kShiftAt] = kShiftShut;
    tape.start();
    checks = 0;
    ++tape_number;
}

std::int64_t Memory::closed_turnover_kopecks() const {
    std::uint64_t turnover = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        turnover = turnover << 8 | eeprom_[kTurnoverAt + i];
    }
    return static_cast<std::int64_t>(turnover);
}

}  // namespace virtual_register
