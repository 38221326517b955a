#include "check.h"

#include <algorithm>

namespace virtual_register {
namespace {

// Places in a sale's 41 bytes.
constexpr std::size_t kNameLength = 15;
constexpr std::size_t kBarcodeAt = 15;
constexpr std::size_t kBarcodeLength = 13;
constexpr std::size_t kPriceAt = 28;
constexpr std::size_t kPriceDigits = 7;
constexpr std::size_t kDepartmentAt = 35;
constexpr std::size_t kWeighedAt = 36;
constexpr std::size_t kCodeAt = 37;
constexpr std::size_t kQuantityAt = 39;

}  // namespace

void SaleLine::write_title(std::size_t piece, std::string_view text) {
    if (piece >= kTitlePieces) {
        return;
    }
    if (title_pieces == 0) {
        title.fill(' ');
    }
    char* to = title.data() + piece * kTitlePieceLength;
    text = text.substr(0, kTitlePieceLength);
    std::fill_n(to, kTitlePieceLength, ' ');
    std::copy(text.begin(), text.end(), to);
    title_pieces = std::max(title_pieces, static_cast<std::uint8_t>(piece + 1));
}

std::string_view SaleLine::printed_name() const {
    if (title_pieces == 0) {
        return without_padding(name.text());
    }
    return without_padding({title.data(), title_pieces * kTitlePieceLength});
}

std::uint16_t SaleLine::quantity_on_wire() const {
    return static_cast<std::uint16_t>(weighed ? quantity_thousandths : quantity_thousandths / 1000);
}

std::int64_t percent_of(std::int64_t amount, int percent) {
    const std::int64_t doubled = 2 * amount * percent + 100;
    const std::int64_t rounded = doubled / 200;
    return doubled % 200 < 0 ? rounded - 1 : rounded;
}

std::optional<SaleLine> decode_sale(const std::uint8_t (&block)[41]) {
    SaleLine line;
    line.name.add(block, kNameLength);
    line.barcode.add(block + kBarcodeAt, kBarcodeLength);
    for (std::size_t i = 0; i < kPriceDigits; ++i) {
        const std::uint8_t digit = block[kPriceAt + i];
        if (digit > 9) {
            return std::nullopt;
        }
        line.price_kopecks = line.price_kopecks * 10 + digit;
    }
    line.department = block[kDepartmentAt];
    line.weighed = block[kWeighedAt] != 0;
    line.code = static_cast<std::uint16_t>(block[kCodeAt] << 8 | block[kCodeAt + 1]);
    const unsigned count = static_cast<unsigned>(block[kQuantityAt] << 8 | block[kQuantityAt + 1]);
    if (line.weighed) {
        line.quantity_thousandths = count;
    } else {
        line.quantity_thousandths = 1000 * (count == 0 ? 1 : count);  // no pieces means one
    }
    const std::uint64_t amount =
        (std::uint64_t{line.price_kopecks} * line.quantity_thousandths + 500) / 1000;
    if (amount > UINT32_MAX) {
        return std::nullopt;
    }
    line.amount_kopecks = static_cast<std::uint32_t>(amount);
    return line;
}

std::int64_t OpenCheck::gross_kopecks() const {
    std::int64_t sum = 0;
    for (const SaleLine& line : lines) {
        sum += line.amount_kopecks;
    }
    return sum;
}

std::int64_t OpenCheck::discount_kopecks() const {
    if (discount_percent == 0) {
        return 0;
    }
    std::int64_t sum = 0;
    for (const SaleLine& line : lines) {
        sum += percent_of(line.amount_kopecks, discount_percent);
    }
    return sum;
}

void OpenCheck::clear() {
    lines.clear();
    stage = Stage::lines;
    type = CheckType::sale;
    discount_percent = 0;
    cash_kopecks.reset();
    card_kind = 0;
    card_number.clear();
}

}  // namespace virtual_register
