#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "frame.h"

namespace virtual_register {

// A goods record as it travels: name from 0, barcode from 15, price digits from 28, department at
// 35, weighed flag at 36, goods code at 37.
using ProductBlock = std::array<std::uint8_t, 39>;

// The goods database, one record for each goods code from 1. Barcode characters are kept 0x20 below
// their text form and are read out so.
class Products {
  public:
    static constexpr std::size_t kCapacity = 2000;

    // False, and nothing kept, for code 0, a price that is not made of digits, or a full database.
    bool write(const ProductBlock& block);
    // Puts a record back as it was read out.
    void restore(const ProductBlock& stored);
    const ProductBlock* find(std::uint16_t code) const;
    const std::map<std::uint16_t, ProductBlock>& all() const { return records_; }

  private:
    std::map<std::uint16_t, ProductBlock> records_;
};

}  // namespace virtual_register
