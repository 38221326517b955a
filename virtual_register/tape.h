#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "check.h"
#include "frame.h"

namespace virtual_register {

// One record of the control tape: one line of a registered check.
struct TapeRecord {
    std::uint16_t check_number = 0;
    std::uint32_t amount_kopecks = 0;  // with its share of the check's discount
    std::uint32_t price_kopecks = 0;
    std::uint32_t discount_kopecks = 0;  // size of the share, whatever its direction
    std::int8_t discount_percent = 0;
    std::uint8_t line_index = 0;  // within its check, from 0
    Bytes<5> barcode_digits;      // the last ten digits, two to a byte
    std::uint16_t code = 0;
    std::uint8_t department = 0;
    bool weighed = false;
    // Thousandths in 16 bits: more than 65.535 of anything is kept as 65.535.
    std::uint16_t quantity_thousandths = 0;
    std::uint8_t kind = 0;     // 0 sale, otherwise the check type
    std::uint8_t payment = 0;  // 0 cash, 1 credit
    bool marked = false;       // taken back at the keyboard

    static constexpr std::size_t kLength = 31;
    AnswerPayload encode() const;
    static std::optional<TapeRecord> decode(const AnswerPayload& bytes);
};

TapeRecord make_tape_record(const PrintedCheck& check, std::size_t line_index);

// The records of the present shift. The count of records is one 16-bit word and goes round; the
// tape then keeps the last 65536.
class Tape {
  public:
    void start(std::uint16_t count = 0);
    void add(const TapeRecord& record);
    std::uint16_t count() const { return count_; }
    // Null when no such record is kept.
    const TapeRecord* find(std::uint16_t index) const;
    const std::deque<TapeRecord>& records() const { return records_; }
    // What closed shifts are charged with: sales and credit, refunds not taken off.
    std::int64_t turnover_kopecks() const;

  private:
    std::deque<TapeRecord> records_;
    std::uint16_t first_ = 0;
    std::uint16_t count_ = 0;
};

}  // namespace virtual_register
