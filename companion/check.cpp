#include "companion/check.h"

#include <cmath>

namespace kkmcheck {
namespace {

// Far beyond what a register takes. With the limit of the sum before the discount, kopecks times
// thousandths and all that is made of them stay within 64 bits.
constexpr double kPriceLimit = 1e9;
constexpr double kQuantityLimit = 1e6;
constexpr double kSumLimit = 1e9;
constexpr int kPercentLimit = 99;

// The driver makes kopecks and thousandths so: cut off, and one more from a half on.
std::int64_t HalfUp(double value) {
    const double whole = std::trunc(value);
    return static_cast<std::int64_t>(whole) + (value - whole >= 0.5 ? 1 : 0);
}

bool IsWeighed(double quantity) {
    return quantity - std::trunc(quantity) > 0;
}

std::int64_t Thousandths(double quantity) {
    // The driver keeps a quantity in single precision.
    const auto kept = static_cast<double>(static_cast<float>(quantity));
    return IsWeighed(quantity) ? HalfUp(kept * 1000.0)
                               : static_cast<std::int64_t>(std::trunc(kept)) * 1000;
}

// The part of an amount that a percentage makes, half up on either side of zero.
std::int64_t Percent(std::int64_t amount, int percent) {
    const std::int64_t twice = amount * percent * 2 + 100;
    const std::int64_t quotient = twice / 200;
    return twice % 200 < 0 ? quotient - 1 : quotient;
}

}  // namespace

bool Line::operator==(const Line& other) const {
    return name == other.name && price == other.price && quantity == other.quantity &&
           section == other.section;
}

bool Check::operator==(const Check& other) const {
    return lines == other.lines && mode == other.mode && discount == other.discount &&
           cash == other.cash;
}

void Examine(const Check& check) {
    if (check.lines.empty()) {
        throw BadCheck("a check needs a line");
    }
    if (check.mode != Mode::sale && check.mode != Mode::refund && check.mode != Mode::credit) {
        throw BadCheck("a check is a sale, a return or a credit");
    }
    // Not by its absolute value: the lowest number has none.
    if (check.discount < -kPercentLimit || check.discount > kPercentLimit) {
        throw BadCheck("a discount is -99 to 99 per cent");
    }
    if (!(check.cash >= 0) || check.cash > kPriceLimit) {
        throw BadCheck("the cash is no sum of money");
    }
    double sum = 0;
    for (const Line& line : check.lines) {
        if (!(line.price > 0) || line.price > kPriceLimit) {
            throw BadCheck("a price must be above 0");
        }
        if (!(line.quantity > 0) || line.quantity > kQuantityLimit) {
            throw BadCheck("a quantity must be above 0");
        }
        if (line.name.find('\0') != std::string::npos) {
            throw BadCheck("a name has a zero byte");
        }
        sum += line.price * line.quantity;
    }
    if (sum > kSumLimit) {
        throw BadCheck("the sum is beyond any register");
    }
}

std::vector<ExpectedRecord> ExpectedRecords(const Check& check) {
    std::vector<ExpectedRecord> records;
    for (const Line& line : check.lines) {
        ExpectedRecord record;
        const std::int64_t thousandths = Thousandths(line.quantity);
        // The driver reads a record of no quantity as one piece.
        record.quantity_thousandths = thousandths == 0 ? 1000 : thousandths;
        const std::int64_t product = HalfUp(line.price * 100.0) * thousandths;
        const std::int64_t amount = (product + 500) / 1000;
        record.sum_kopecks = amount + Percent(amount, check.discount);
        record.kind = static_cast<int>(check.mode);
        records.push_back(record);
    }
    return records;
}

std::int64_t TotalKopecks(const Check& check) {
    std::int64_t total = 0;
    for (const ExpectedRecord& record : ExpectedRecords(check)) {
        total += record.sum_kopecks;
    }
    return total;
}

}  // namespace kkmcheck
