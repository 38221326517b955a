#include "support/numbers.h"

#include <algorithm>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

}  // namespace

SplitNumber SplitDouble(double x) noexcept {
    const bool fits = x >= -kTwoTo63 && x < kTwoTo63;  // false for NaN
    if (!fits) {
        return {INT64_MIN, 0.0};
    }
    const auto whole = static_cast<std::int64_t>(x);
    return {whole, x - static_cast<double>(whole)};
}

std::int64_t ToKopecks(double currency_units) noexcept {
    const SplitNumber kopecks = SplitDouble(currency_units * 100);
    return kopecks.fraction >= 0.5 ? kopecks.whole + 1 : kopecks.whole;
}

int RoundHalfUp(double x) {
    auto low = static_cast<std::uint32_t>(SplitDouble(x).whole);
    if (x - low >= 0.5) {
        ++low;
    }
    return static_cast<int>(low);
}

int RoundDiscount(double x) noexcept {
    if (x >= 0) {
        return RoundHalfUp(x);
    }
    const SplitNumber part = SplitDouble(x);
    const auto whole = static_cast<int>(part.whole);
    return part.fraction < -0.5 ? whole - 1 : whole;
}

std::vector<unsigned char> ULtoHex(unsigned long n) {
    std::vector<unsigned char> digits;
    for (; n != 0; n /= 10) {
        digits.push_back(static_cast<unsigned char>(n % 10));
    }
    std::reverse(digits.begin(), digits.end());
    return digits;
}

void PutDigits(std::uint32_t n, unsigned char* field, std::size_t field_size) {
    for (std::size_t i = field_size; i > 0; --i) {
        field[i - 1] = static_cast<unsigned char>(n % 10);
        n /= 10;
    }
}
