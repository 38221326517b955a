// The check buffer.
#pragma once

#include <cstdint>
#include <vector>

#include "protocol/sale.h"

enum CheckMode : int { mode_sale = 0, mode_return = 1, mode_credit = 2 };

struct TCheck {
    std::vector<sale> sales;
    int mode = mode_sale;    // a CheckMode
    int discount = 0;        // per cent, negative for a discount
    std::uint32_t cash = 0;  // kopecks tendered

    void clear();
    // Total in kopecks, the discount taken line by line. The product of price and quantity is taken
    // in single precision, as the register's makers did.
    double sum() const;
};
