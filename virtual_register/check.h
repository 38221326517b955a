#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "bytes.h"

namespace virtual_register {

// What a check is closed as; the numbers are those of the wire.
enum class CheckType : std::uint8_t {
    refund = 1,  // money leaves the drawer
    credit = 2,  // the drawer is untouched
    paid_in = 3,
    paid_out = 4,  // money leaves the drawer
    service = 5,   // the drawer is untouched
    sale = 6,
};

constexpr std::size_t kTitlePieces = 4;
constexpr std::size_t kTitlePieceLength = 18;

struct SaleLine {
    Bytes<15> name;     // as it came with the sale
    Bytes<13> barcode;  // as it came, zero bytes and all
    std::uint32_t price_kopecks = 0;
    std::uint32_t quantity_thousandths = 0;
    std::uint32_t amount_kopecks = 0;  // price x quantity, rounded half up
    std::uint16_t code = 0;
    std::uint8_t department = 0;
    bool weighed = false;

    // Writes one piece of the long name, which replaces the short one on the paper.
    void write_title(std::size_t piece, std::string_view text);
    // What stands on the paper: the long name if there is one, without padding.
    std::string_view printed_name() const;
    // The quantity as it travels: thousandths of a weighed good, otherwise pieces.
    std::uint16_t quantity_on_wire() const;

    std::uint8_t title_pieces = 0;
    std::array<char, kTitlePieces * kTitlePieceLength> title{};
};

// The part of `amount` that `percent` makes, rounded half up on either side of zero.
std::int64_t percent_of(std::int64_t amount, int percent);

// A line as its 41 bytes tell it; the amount is worked out, nothing else is judged.
// Nothing when the price is not made of decimal digits or the amount does not fit 32 bits.
std::optional<SaleLine> decode_sale(const std::uint8_t (&block)[41]);

// The check being put together. Nothing of it is on the paper or the tape.
struct OpenCheck {
    // `lines` while goods are entered, `totals` once a discount or a discount card came,
    // `closed` once it has its type and only waits to be printed.
    enum class Stage : std::uint8_t { lines, totals, closed };

    std::vector<SaleLine> lines;
    Stage stage = Stage::lines;
    CheckType type = CheckType::sale;
    int discount_percent = 0;                   // negative for a discount, positive for a surcharge
    std::optional<std::uint32_t> cash_kopecks;  // tendered, when the host said so
    std::uint8_t card_kind = 0;
    Bytes<32> card_number;

    bool is_open() const { return !lines.empty(); }
    std::int64_t gross_kopecks() const;
    std::int64_t discount_kopecks() const;  // summed line by line
    std::int64_t total_kopecks() const { return gross_kopecks() + discount_kopecks(); }
    void clear();
};

// A check as it was registered.
struct PrintedCheck {
    std::uint16_t tape_number = 0;
    std::uint16_t number = 0;  // the check counter after it
    CheckType type = CheckType::sale;
    std::vector<SaleLine> lines;
    int discount_percent = 0;
    std::int64_t discount_kopecks = 0;
    std::uint32_t total_kopecks = 0;
    std::uint32_t cash_kopecks = 0;
    std::uint32_t change_kopecks = 0;
    std::int64_t registered_at_s = 0;  // the register's calendar, seconds since 1970
    Bytes<32> card_number;
};

}  // namespace virtual_register
