#include "products.h"

namespace virtual_register {
namespace {

constexpr std::size_t kBarcodeAt = 15;
constexpr std::size_t kPriceAt = 28;
constexpr std::size_t kDepartmentAt = 35;
constexpr std::size_t kCodeAt = 37;
constexpr std::uint8_t kBarcodeShift = 0x20;

std::uint16_t code_of(const ProductBlock& block) {
    return static_cast<std::uint16_t>(block[kCodeAt] << 8 | block[kCodeAt + 1]);
}

}  // namespace

bool Products::write(const ProductBlock& block) {
    const std::uint16_t code = code_of(block);
    if (code == 0 || (records_.size() >= kCapacity && records_.count(code) == 0)) {
        return false;
    }
    for (std::size_t i = kPriceAt; i < kDepartmentAt; ++i) {
        if (block[i] > 9) {
            return false;
        }
    }
    ProductBlock stored = block;
    for (std::size_t i = kBarcodeAt; i < kPriceAt; ++i) {
        if (stored[i] >= kBarcodeShift) {
            stored[i] = static_cast<std::uint8_t>(stored[i] - kBarcodeShift);
        }
    }
    records_[code] = stored;
    return true;
}

void Products::restore(const ProductBlock& stored) {
    records_[code_of(stored)] = stored;
}

const ProductBlock* Products::find(std::uint16_t code) const {
    const auto found = records_.find(code);
    return found == records_.end() ? nullptr : &found->second;
}

}  // namespace virtual_register
