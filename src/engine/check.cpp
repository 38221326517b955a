#include "engine/check.h"

#include "support/numbers.h"

namespace {

// Kopecks of a line. 64 bits hold both 2^32 - 1 kopecks and the amounts of negative quantities.
std::int64_t LineAmount(const sale& line) {
    const float product = static_cast<float>(line.price) * line.count;
    const int rounded = RoundHalfUp(product);
    return product >= 0 ? std::int64_t{static_cast<std::uint32_t>(rounded)} : rounded;
}

int DiscountPart(int percent, std::int64_t amount) {
    const std::uint32_t product =
        static_cast<std::uint32_t>(percent) * static_cast<std::uint32_t>(amount);
    return RoundDiscount(static_cast<std::int32_t>(product) * 0.01);
}

}  // namespace

void TCheck::clear() {
    *this = TCheck();
}

double TCheck::sum() const {
    double total = 0.0;
    for (const sale& line : sales) {
        std::int64_t amount = LineAmount(line);
        if (discount != 0) {
            amount += DiscountPart(discount, amount);
        }
        total += static_cast<double>(amount);
    }
    return total;
}
