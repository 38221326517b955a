#include "simulation/expected_check.h"

#include <algorithm>

namespace simulation {
namespace {

using virtual_register::CheckType;
using virtual_register::PrintedCheck;
using virtual_register::SaleLine;

constexpr std::size_t kLongestTitle = 72;
constexpr std::size_t kShortName = 15;

std::string WithoutPadding(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) {
        text.pop_back();
    }
    return text;
}

// Thousandths as the register reads the 16 bits of the count.
std::uint32_t Thousandths(const RequiredLine& line) {
    const std::int64_t count = RequiredCount(line);
    // The driver cuts the count to bytes by a signed division.
    const auto high = static_cast<std::uint8_t>(count / 256);
    const auto low = static_cast<std::uint8_t>(count % 256);
    const std::uint32_t wire = high * 256U + low;
    if (line.fractional) {
        return wire;
    }
    return 1000 * (wire == 0 ? 1 : wire);
}

bool SameLine(const RequiredLine& required, const SaleLine& printed) {
    const std::uint32_t thousandths = Thousandths(required);
    const std::uint64_t amount = (std::uint64_t{required.kopecks} * thousandths + 500) / 1000;
    std::string barcode = required.barcode;
    barcode.resize(13, '\0');
    return printed.price_kopecks == required.kopecks &&
           printed.quantity_thousandths == thousandths && printed.amount_kopecks == amount &&
           printed.department == required.section && printed.weighed == required.fractional &&
           printed.code == 1 && printed.barcode.text() == barcode;
}

bool SameName(const RequiredLine& required, int firmware, const SaleLine& printed) {
    std::string expected = required.name;
    expected.resize(std::min(expected.size(), firmware > 301 ? kLongestTitle : kShortName));
    return printed.printed_name() == WithoutPadding(expected);
}

}  // namespace

Difference Compare(const RequiredCheck& required, int firmware, const PrintedCheck& printed) {
    if (printed.lines.size() != required.lines.size()) {
        return Difference::lines;
    }
    for (std::size_t i = 0; i < required.lines.size(); ++i) {
        if (!SameLine(required.lines[i], printed.lines[i])) {
            return Difference::lines;
        }
        if (!SameName(required.lines[i], firmware, printed.lines[i])) {
            return Difference::names;
        }
    }
    if (printed.discount_percent != required.discount) {
        return Difference::discount;
    }
    const CheckType type = required.mode == 1   ? CheckType::refund
                           : required.mode == 2 ? CheckType::credit
                                                : CheckType::sale;
    if (printed.type != type) {
        return Difference::type;
    }
    const bool sends_cash = required.cash != 0 && firmware >= 301 && firmware <= 309;
    const std::uint32_t cash = type == CheckType::credit               ? 0
                               : type == CheckType::sale && sends_cash ? required.cash
                                                                       : printed.total_kopecks;
    return printed.cash_kopecks == cash ? Difference::none : Difference::cash;
}

const char* NameOf(Difference difference) {
    switch (difference) {
        case Difference::none:
            return "nothing";
        case Difference::lines:
            return "its lines";
        case Difference::names:
            return "the names of its lines";
        case Difference::discount:
            return "its discount";
        case Difference::type:
            return "its type";
        case Difference::cash:
            return "its cash";
    }
    return "";
}

}  // namespace simulation
