// Numbers: doubles to integers, the rounding of money, decimal digits.
#pragma once

#include <cstdint>
#include <vector>

// A double cut into its whole part (toward zero) and the fraction that was dropped.
// A number that no 64-bit integer can hold, NaN and the infinities included, gives the smallest
// 64-bit integer and a fraction of 0, so that a range test or a cut to 32 bits stays predictable.
struct SplitNumber {
    std::int64_t whole;
    double fraction;
};

// The only way from a double to an integer in this library: defined for every input.
SplitNumber SplitDouble(double x) noexcept;

// Hundredths of a currency unit from currency units: x * 100, cut toward zero, plus 1 when the
// dropped fraction is 0.5 or more.
std::int64_t ToKopecks(double currency_units) noexcept;

// The low 32 bits of x cut toward zero, plus 1 when x exceeds them by 0.5 or more: half up for
// 0 <= x < 2^32, plain truncation for negative x. Exported to hosts under the name round(double);
// the label keeps it apart from the C library's function of that name.
int RoundHalfUp(double x) __asm__("_Z5roundd");

// The discount part of a line: half up on either side of zero, so -599.7 gives -600 and -2.5
// gives -2.
int RoundDiscount(double x) noexcept;

// Decimal digits of n as byte values 0 to 9, most significant first; 0 has no digits.
std::vector<unsigned char> ULtoHex(unsigned long n);

// The last `field_size` digits of n, right-aligned in `field`, whose free leading bytes become 0.
void PutDigits(std::uint32_t n, unsigned char* field, std::size_t field_size);
