#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "check.h"
#include "firmware.h"
#include "frame.h"
#include "products.h"
#include "tape.h"

namespace virtual_register {

// What a new register is made with.
struct Identity {
    int firmware = 303;               // must be one that find_firmware() knows
    std::string serial = "00012345";  // up to 8 characters
    std::uint8_t section = 1;         // 1 to 255
    std::array<std::uint8_t, 17> taxes{};
    std::uint32_t drawer_kopecks = 100000;  // change that is in the drawer from the start
};

// All that a register keeps through a power cut: its two memories, its counters, the tape, the
// goods database, the check being put together and the last one printed.
//
// Working memory (RAM): header at 0x0000 (95 bytes, five rows of 19), footer at 0x00C0 (57 bytes,
// three rows of 19), and serial number, sale number and last error where the firmware has them.
//
// EEPROM: section less one at 0x0012; the 256 parameters from 0x0100; tax settings, one byte at
// 674 + 36 n for n from 0 to 16; turnover of all closed shifts in kopecks at 0x04F7 (8 bytes); date
// on which the tape was begun at 0x0515 (day, month, year of century, each packed decimal); 0xAA at
// 1321 while the shift is open; the tape's hour and minute at 0x3700 (bits 1 to 5 the hour, bits 6
// and 7 the low bits of the minute) and 0x3701 (the minute's other bits), its second at 0x3702.
class Memory {
  public:
    static constexpr std::size_t kHeaderLength = 95;
    static constexpr std::size_t kFooterLength = 57;
    static constexpr std::size_t kTitleRow = 19;

    explicit Memory(const Identity& identity);

    const Firmware& firmware() const { return *firmware_; }

    // Bytes past the end of a memory read as 0xFF.
    AnswerPayload read_ram(std::size_t address, std::size_t count) const;
    AnswerPayload read_eeprom(std::size_t address, std::size_t count) const;

    std::string_view serial() const { return serial_; }
    void set_serial(std::string_view text);
    std::uint8_t section() const { return static_cast<std::uint8_t>(eeprom_[kSectionAt] + 1); }
    std::string_view header() const { return ram_text(kHeaderAt, kHeaderLength); }
    std::string_view footer() const { return ram_text(kFooterAt, kFooterLength); }
    // What is too long is cut; the rest of the place is emptied.
    void set_header(std::string_view text) { write_ram_text(kHeaderAt, kHeaderLength, text); }
    void set_footer(std::string_view text) { write_ram_text(kFooterAt, kFooterLength, text); }
    std::uint8_t parameter(std::uint8_t number) const { return eeprom_[kParametersAt + number]; }
    void set_parameter(std::uint8_t number, std::uint8_t value) {
        eeprom_[kParametersAt + number] = value;
    }
    std::uint8_t tax(std::size_t number) const { return eeprom_[kTaxAt + kTaxStep * number]; }

    std::uint8_t last_error() const { return last_error_; }
    void set_last_error(std::uint8_t error);
    // Lines of the open check; 0 when there is none.
    std::uint8_t sale_number() const { return static_cast<std::uint8_t>(check.lines.size()); }
    // To be called after every change of the open check's lines.
    void note_sale_number();

    bool shift_is_open() const { return eeprom_[kShiftAt] == kShiftOpen; }
    // Begins a shift, and with it the dates of the tape.
    void open_shift(std::int64_t at_s);
    // Adds the tape's turnover to that of the closed shifts and begins a new, empty tape.
    void close_shift();
    std::int64_t closed_turnover_kopecks() const;

    // For the file that keeps a memory: whole images, written back byte by byte.
    static constexpr std::size_t kRamSize = 0x2000;
    static constexpr std::size_t kEepromSize = 0x4000;
    const std::array<std::uint8_t, kRamSize>& ram() const { return ram_; }
    const std::array<std::uint8_t, kEepromSize>& eeprom() const { return eeprom_; }
    void put_ram(std::size_t address, std::uint8_t value) { ram_.at(address) = value; }
    void put_eeprom(std::size_t address, std::uint8_t value) { eeprom_.at(address) = value; }
    void clear_images() {
        ram_.fill(0);
        eeprom_.fill(0);
    }

    // Counters as the statistics answer gives them.
    std::uint16_t tape_number = 1;
    std::uint16_t checks = 0;  // of this shift
    std::int64_t drawer_kopecks = 0;
    Tape tape;
    Products products;
    OpenCheck check;
    std::optional<PrintedCheck> last_check;

  private:
    static constexpr std::size_t kHeaderAt = 0x0000;
    static constexpr std::size_t kFooterAt = 0x00C0;
    static constexpr std::size_t kSectionAt = 0x0012;
    static constexpr std::size_t kParametersAt = 0x0100;
    static constexpr std::size_t kTaxAt = 674;
    static constexpr std::size_t kTaxStep = 36;
    static constexpr std::size_t kTurnoverAt = 0x04F7;
    static constexpr std::size_t kDateAt = 0x0515;
    static constexpr std::size_t kShiftAt = 1321;
    static constexpr std::size_t kTimeAt = 0x3700;
    static constexpr std::uint8_t kShiftOpen = 0xAA;
    static constexpr std::uint8_t kShiftShut = 0x55;

    std::string_view ram_text(std::size_t at, std::size_t length) const;
    void write_ram_text(std::size_t at, std::size_t length, std::string_view text);

    const Firmware* firmware_;
    std::string serial_;
    std::uint8_t last_error_ = 0;
    std::array<std::uint8_t, kRamSize> ram_{};
    std::array<std::uint8_t, kEepromSize> eeprom_{};
};

}  // namespace virtual_register
