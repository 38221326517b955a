#include "fuzz/obliging_register.h"

#include <array>

namespace fuzz {
namespace {

constexpr std::uint8_t kNeutral = 0xA0;
constexpr std::uint8_t kSaleQuery = 0xA1;
constexpr std::uint8_t kLineAdded = 0xA2;
constexpr std::uint8_t kReady = 0xC0;
constexpr std::uint8_t kBufferClear = 0xC5;
constexpr std::uint8_t kClosing = 0xC8;

std::uint8_t High(std::uint16_t number) {
    return static_cast<std::uint8_t>(number >> 8U);
}

std::uint8_t Low(std::uint16_t number) {
    return static_cast<std::uint8_t>(number);
}

}  // namespace

std::uint8_t ObligingRegister::GoodCode(std::uint8_t command) {
    static constexpr std::array<std::array<std::uint8_t, 2>, 34> kCodes{{
        {0x02, 0x82}, {0x03, 0x83}, {0x04, 0x84}, {0x06, 0x86}, {0x07, 0x87}, {0x08, 0x88},
        {0x09, 0x89}, {0x0A, 0x8A}, {0x0B, 0x7B}, {0x0C, 0x7C}, {0x0D, 0x7D}, {0x10, 0xAF},
        {0x12, 0x8B}, {0x15, 0x95}, {0x20, 0xA0}, {0x21, 0xC1}, {0x23, 0xB4}, {0x24, 0xB5},
        {0x25, 0xE4}, {0x26, 0xB6}, {0x27, 0x97}, {0x28, 0xE8}, {0x29, 0xA9}, {0x2A, 0xAA},
        {0x30, 0xB0}, {0x31, 0xB1}, {0x32, 0xB2}, {0x34, 0xB4}, {0x35, 0xB5}, {0x36, 0xB7},
        {0x37, 0xB7}, {0x38, 0xB8}, {0x7E, 0x91}, {0x7F, 0x90},
    }};
    for (const auto& [request, answer] : kCodes) {
        if (request == command) {
            return answer;
        }
    }
    return kNeutral;
}

ObligingRegister::Answer ObligingRegister::Take(std::uint8_t command, const Bytes& payload) {
    const std::uint8_t code = GoodCode(command);
    switch (command) {
        case 0x02:  // memory by address: the count stands last
            return {code, Bytes(payload.empty() ? 1 : payload.back() % 64U, 0xAA)};
        case 0x04: {  // memory by name: a single byte is the line count or the error number
            const std::size_t count = payload.empty() ? 1 : payload.back() % 128U;
            return {code, count == 1 ? Bytes{lines_} : Bytes(count, '7')};
        }
        case 0x06:
            return {code, {1, 2, 3, 4, 5, 7, 208}};
        case 0x08:
            return {code, Bytes(40, 1)};
        case 0x09:
            return {code,
                    {1, payload.size() > 38 ? payload[37] : std::uint8_t{0},
                     payload.size() > 38 ? payload[38] : std::uint8_t{0}}};
        case 0x0A:
            return {
                code,
                {0, 1, High(checks_), Low(checks_), High(sales_), Low(sales_), 0, 0, 0, 48, 57}};
        case 0x12:
            return {code, Bytes(31, 0)};
        case 0x15:
            return {code, {'0', '0', '1', '2', '3', '4', '5', '6'}};
        case 0x20:
            return Status();
        case 0x21:
            ++lines_;
            state_ = kLineAdded;
            return {code, {0}};
        case 0x23:
        case 0x25:
            state_ = kReady;
            after_reset_ = command == 0x25 ? kClosing : kNeutral;
            return {code, {1}};
        case 0x28:
            return {code, {0}};
        case 0x29:
            state_ = state_ == kClosing ? kBufferClear : state_;
            return {code, {}};
        case 0x34:
            return {code, version_answer_};
        case 0x37:
            return {code, {lines_}};
        case 0x38:
            return {code, {error_number_}};
        case 0x7F:
            Reset();
            return {code, {}};
        default:
            return {code, {}};
    }
}

ObligingRegister::Answer ObligingRegister::Status() {
    const Answer answer{state_, Bytes(20, 0)};
    if (state_ == kNeutral) {
        state_ = kSaleQuery;  // the next customer
    }
    return answer;
}

void ObligingRegister::Reset() {
    if (state_ == kClosing) {  // the check comes out
        ++checks_;
        sales_ = static_cast<std::uint16_t>(sales_ + lines_);
        lines_ = 0;
        after_reset_ = kNeutral;
    }
    state_ = after_reset_;
}

}  // namespace fuzz
