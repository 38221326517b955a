// The host's numbers on their way to integers, and the sum of the check buffer.
#include <cmath>

#include "engine/check.h"
#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "support/numbers.h"

namespace fuzz {
namespace {

void Split(double x) {
    const SplitNumber parts = SplitDouble(x);
    Require(std::fabs(parts.fraction) < 1, "a fraction is below 1");
    if (std::fabs(x) < 9e15) {
        const double together = static_cast<double>(parts.whole) + parts.fraction;
        Require(!(together < x) && !(together > x), "the parts make the whole");
    }
    const std::int64_t kopecks = ToKopecks(x);
    Note(static_cast<double>(kopecks));
    Note(parts.fraction);
    if (std::fabs(x) < 1e13) {
        Require(std::fabs(static_cast<double>(kopecks) - x * 100) <= 1, "kopecks are hundredths");
    }
}

void Round(double x) {
    const int rounded = RoundHalfUp(x);
    if (x >= 0 && x < 2147483647.0) {
        Require(std::fabs(rounded - x) <= 0.5, "a positive number is rounded");
    } else if (x < 0 && x > -2147483648.0) {
        Require(std::fabs(rounded - x) < 1 && rounded >= x, "a negative number is cut");
    }
    const int discount = RoundDiscount(x);
    Note(rounded);
    Note(discount);
    if (std::fabs(x) < 2147483647.0) {
        Require(std::fabs(discount - x) <= 0.5, "a discount is rounded on either side of zero");
    }
}

void Digits(std::uint32_t number, std::size_t field_size) {
    const auto digits = ULtoHex(number);
    Require(digits.empty() == (number == 0), "0 has no digits");
    Require(digits.empty() || digits.front() != 0, "no leading zeros");
    Bytes field(field_size + 2, 0xEE);
    PutDigits(number, field.data() + 1, field_size);
    Require(field.front() == 0xEE && field.back() == 0xEE, "a field keeps to its bytes");
    for (std::size_t i = 0; i < field_size; ++i) {
        Require(field[field_size - i] == number % 10, "the last digits stand at the right");
        number /= 10;
    }
}

void Sum(Input& input) {
    TCheck check;
    check.discount = static_cast<int>(input.Choice(199)) - 99;
    while (!input.Exhausted() && check.sales.size() < 20) {
        sale line;
        line.price = input.Word32();
        const auto quantity = static_cast<float>(input.Int32()) / 1000;
        line.count = input.Flag() ? quantity : std::nearbyint(quantity);
        check.sales.push_back(line);
    }
    const double sum = check.sum();
    Note(sum);
    Require(std::isfinite(sum), "a sum is a number");
    Require(std::equal_to<>()(sum, std::trunc(sum)), "a sum is whole kopecks");
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned choice = input.Choice(4);
    if (choice == 3) {
        fuzz::Sum(input);
    } else if (choice == 2) {
        const std::uint32_t number = input.Word32();
        fuzz::Digits(number, input.Choice(12));
    } else {
        const double x = choice == 0 ? input.Double() : input.Int32() / 1000.0;
        fuzz::Split(x);
        fuzz::Round(x);
    }
    return 0;
}
