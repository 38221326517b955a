// The check buffer, and the queries that compute something.
#include <algorithm>
#include <cfloat>
#include <cmath>

#include "simulation/required_driver.h"

namespace simulation {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

// The exported rounding: half up for positive numbers, truncation for negative ones, 32 bits.
std::int64_t RoundUp(double x) {
    if (!(x > -kTwoTo63 && x < kTwoTo63)) {
        return 0;
    }
    const auto whole = static_cast<std::int64_t>(std::trunc(x));
    const auto low = static_cast<std::uint32_t>(whole);
    return x - low >= 0.5 ? low + 1U : low;
}

std::int32_t RoundPart(double x) {
    if (x >= 0) {
        return static_cast<std::int32_t>(RoundUp(x));
    }
    const double whole = std::trunc(x);
    return static_cast<std::int32_t>(whole - x > 0.5 ? whole - 1 : whole);
}

}  // namespace

std::int64_t RequiredKopecks(double units) {
    const double kopecks = units * 100;
    if (!(kopecks >= -kTwoTo63 && kopecks < kTwoTo63)) {
        return INT64_MIN;
    }
    const double whole = std::trunc(kopecks);
    return static_cast<std::int64_t>(whole) + (kopecks - whole >= 0.5 ? 1 : 0);
}

double RequiredCheck::Total() const {
    double total = 0;
    for (const RequiredLine& line : lines) {
        const float product = static_cast<float>(line.kopecks) * line.quantity;
        const auto rounded = static_cast<std::uint32_t>(RoundUp(product));
        std::int64_t amount =
            product >= 0 ? std::int64_t{rounded} : static_cast<std::int32_t>(rounded);
        if (discount != 0) {
            const auto part = static_cast<std::int32_t>(
                static_cast<std::uint32_t>(static_cast<std::int64_t>(discount) * amount));
            amount += RoundPart(part * 0.01);
        }
        total += static_cast<double>(amount);
    }
    return total;
}

void RequiredDriver::AddSale(const Call& call) {
    if (version_ <= 302 && check_.lines.size() > 18) {
        throw Failed{Failing::engine, 17};
    }
    if (call.number < 1 || call.number > 15) {
        throw Failed{Failing::engine, 12};
    }
    RequiredLine line;
    line.name = call.text;
    line.barcode = "1234567890123";
    line.section = static_cast<std::uint8_t>(call.number);
    const std::int64_t kopecks = RequiredKopecks(call.money);
    if (kopecks < 1 || kopecks > 9999999) {
        throw Failed{Failing::engine, 14};
    }
    line.kopecks = static_cast<std::uint32_t>(kopecks);
    if (!(std::fabs(call.quantity) <= double{FLT_MAX})) {
        throw Failed{Failing::engine, 15};
    }
    line.fractional = call.quantity > std::trunc(call.quantity);
    if (call.quantity > (line.fractional ? 65 : 65535)) {
        throw Failed{Failing::engine, 15};
    }
    line.quantity = static_cast<float>(call.quantity);
    check_.lines.push_back(line);
}

void RequiredDriver::DeleteSale(int index) {
    if (index < 1 || static_cast<std::size_t>(index) > check_.lines.size()) {
        throw Failed{Failing::engine, 11};
    }
    check_.lines.erase(check_.lines.begin() + index - 1);
}

double RequiredDriver::GetSale(int index) const {
    if (index < 1 || static_cast<std::size_t>(index) > check_.lines.size()) {
        throw Failed{Failing::engine, 11};
    }
    return check_.lines[static_cast<std::size_t>(index) - 1].kopecks * 0.01;
}

void RequiredDriver::SetDiscount(int value) {
    if (value < -99 || value > 99) {
        check_.discount = 0;
        throw Failed{Failing::engine, 19};
    }
    check_.discount = value;
}

double RequiredDriver::GrandTotal() {
    const Reply closed = ReadEeprom(0x04F7, 8);
    if (closed.size != 8) {
        throw Failed{Failing::other};
    }
    std::uint64_t raw = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        raw = raw * 256 + closed.At(i);
    }
    double total = static_cast<double>(static_cast<std::int64_t>(raw)) * 0.01;
    const int records = ReadStatistics().records;
    for (int index = 0; index < records; ++index) {
        TapeRecord record;
        for (int made = 1;; ++made) {
            try {
                record = AskTape(index);
                break;
            } catch (const Failed&) {
                if (made == 20) {
                    throw;
                }
            }
        }
        if (record.exists && (record.kind == 0 || record.kind == 2)) {
            total += record.sum;
        }
    }
    return total;
}

double RequiredDriver::CashSum(int selector) {
    double sum = 0;
    const int records = ReadStatistics().records;
    for (int index = 0; index < records; ++index) {
        const TapeRecord record = AskTape(index);
        if (!record.exists || record.selector + 1 != selector) {
            continue;
        }
        if (record.kind == 0 || record.kind == 3) {
            sum += record.sum;
        } else if (record.kind == 1 || record.kind == 4) {
            sum -= record.sum;
        }
    }
    return sum;
}

RequiredDriver::TapeRecord RequiredDriver::AskTape(int index) {
    const Reply reply = Ask(
        0x12, {static_cast<unsigned char>(index / 256), static_cast<unsigned char>(index % 256)},
        0x8B);
    TapeRecord record;
    record.exists = reply.size != 1;
    record.sum = (std::uint32_t{reply.Word(2)} * 65536U + reply.Word(4)) * 0.01;
    record.kind = static_cast<int>(reply.At(28));
    record.selector = static_cast<int>(reply.At(29));
    return record;
}

double RequiredDriver::ReadTape(int number) {
    const TapeRecord record = AskTape((number - 1) & 0xFFFF);
    if (!record.exists) {
        throw Failed{Failing::engine, 10};
    }
    return record.sum;
}

// The serial number's leading digits.
double RequiredDriver::Serial() {
    const Reply reply = version_ > 399 ? Ask(0x15, {}, 0x95) : ReadRam(SerialPlace(), 8);
    const std::string text(reinterpret_cast<const char*>(reply.data), reply.size);
    return static_cast<double>(std::strtoll(text.c_str(), nullptr, 10));
}

void RequiredDriver::PrintString(std::string text) {
    text.resize(16, ' ');
    Payload data(19, 0);
    std::copy(text.begin(), text.end(), data.begin() + 1);
    Ask(0x31, data, 0xB1, 100);
}

}  // namespace simulation
