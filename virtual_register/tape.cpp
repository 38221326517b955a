#include "tape.h"

#include <algorithm>

namespace virtual_register {
namespace {

constexpr std::size_t kBarcodeLength = 5;
constexpr std::size_t kKept = 65536;
constexpr std::uint32_t kLargestIn24Bits = 0xFFFFFF;
constexpr std::uint32_t kLargestIn16Bits = 0xFFFF;

Bytes<5> pack_digits(std::string_view barcode) {
    std::array<std::uint8_t, 10> digits{};
    std::size_t at = digits.size();
    for (std::size_t i = barcode.size(); i > 0 && at > 0; --i) {
        const char character = barcode[i - 1];
        if (character >= '0' && character <= '9') {
            digits[--at] = static_cast<std::uint8_t>(character - '0');
        }
    }
    Bytes<5> packed;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        packed.add(static_cast<std::uint8_t>(digits[i] << 4 | digits[i + 1]));
    }
    return packed;
}

}  // namespace

AnswerPayload TapeRecord::encode() const {
    AnswerPayload bytes;
    bytes.add_big_endian(check_number, 2);
    bytes.add_big_endian(amount_kopecks, 4);
    bytes.add_big_endian(std::min(price_kopecks, kLargestIn24Bits), 3);
    bytes.add_big_endian(std::min(discount_kopecks, kLargestIn24Bits), 3);
    bytes.add_big_endian(0, 3);  // a second discount, which this family never grants
    bytes.add(static_cast<std::uint8_t>(discount_percent));
    bytes.add(line_index);
    for (std::size_t i = 0; i < kBarcodeLength; ++i) {
        bytes.add(barcode_digits[i]);  // a record of fixed places, however few digits it was given
    }
    bytes.add_big_endian(code, 2);
    bytes.add(department);
    bytes.add(weighed ? 1 : 0);
    bytes.add_big_endian(quantity_thousandths, 2);
    bytes.add(kind);
    bytes.add(payment);
    bytes.add(marked ? 1 : 0);
    return bytes;
}

std::optional<TapeRecord> TapeRecord::decode(const AnswerPayload& bytes) {
    if (bytes.size() != kLength) {
        return std::nullopt;
    }
    TapeRecord record;
    record.check_number = static_cast<std::uint16_t>(bytes.big_endian(0, 2));
    record.amount_kopecks = bytes.big_endian(2, 4);
    record.price_kopecks = bytes.big_endian(6, 3);
    record.discount_kopecks = bytes.big_endian(9, 3);
    record.discount_percent = static_cast<std::int8_t>(bytes[15]);
    record.line_index = bytes[16];
    record.barcode_digits.add(bytes.data() + 17, kBarcodeLength);
    record.code = static_cast<std::uint16_t>(bytes.big_endian(22, 2));
    record.department = bytes[24];
    record.weighed = bytes[25] != 0;
    record.quantity_thousandths = static_cast<std::uint16_t>(bytes.big_endian(26, 2));
    record.kind = bytes[28];
    record.payment = bytes[29];
    record.marked = bytes[30] != 0;
    return record;
}

TapeRecord make_tape_record(const PrintedCheck& check, std::size_t line_index) {
    const SaleLine& line = check.lines[line_index];
    const std::int64_t discount = percent_of(line.amount_kopecks, check.discount_percent);
    TapeRecord record;
    record.check_number = check.number;
    record.amount_kopecks = static_cast<std::uint32_t>(line.amount_kopecks + discount);
    record.price_kopecks = line.price_kopecks;
    record.discount_kopecks = static_cast<std::uint32_t>(discount < 0 ? -discount : discount);
    record.discount_percent = static_cast<std::int8_t>(check.discount_percent);
    record.line_index = static_cast<std::uint8_t>(line_index);
    record.barcode_digits = pack_digits(line.barcode.text());
    record.code = line.code;
    record.department = line.department;
    record.weighed = line.weighed;
    record.quantity_thousandths =
        static_cast<std::uint16_t>(std::min(line.quantity_thousandths, kLargestIn16Bits));
    record.kind = check.type == CheckType::sale ? 0 : static_cast<std::uint8_t>(check.type);
    record.payment = check.type == CheckType::credit ? 1 : 0;
    return record;
}

void Tape::start(std::uint16_t count) {
    records_.clear();
    first_ = count;
    count_ = count;
}

void Tape::add(const TapeRecord& record) {
    if (records_.size() == kKept) {
        records_.pop_front();
        ++first_;
    }
    records_.push_back(record);
    ++count_;
}

const TapeRecord* Tape::find(std::uint16_t index) const {
    const std::size_t at = static_cast<std::uint16_t>(index - first_);
    return at < records_.size() ? &records_[at] : nullptr;
}

std::int64_t Tape::turnover_kopecks() const {
    std::int64_t sum = 0;
    for (const TapeRecord& record : records_) {
        if (record.kind == 0 || record.kind == static_cast<std::uint8_t>(CheckType::credit)) {
            sum += record.amount_kopecks;
        }
    }
    return sum;
}

}  // namespace virtual_register
