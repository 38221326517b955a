// A check as the host gives it, and the records that the control tape bears once it is printed.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace kkmcheck {

enum class Mode : int { sale = 0, refund = 1, credit = 2 };

struct Line {
    std::string name;     // bytes of the register's code page
    double price = 0;     // currency units
    double quantity = 1;  // pieces or kilograms
    int section = 1;

    bool operator==(const Line& other) const;
};

struct Check {
    std::vector<Line> lines;
    Mode mode = Mode::sale;
    int discount = 0;  // per cent
    double cash = 0;   // currency units; 0: paid exactly

    bool operator==(const Check& other) const;
};

// A check that is not worth a key: no lines, a quantity that is no quantity.
class BadCheck : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws BadCheck. The limits of the register are left to the driver.
void Examine(const Check& check);

// One line as the tape has it.
struct ExpectedRecord {
    std::int64_t sum_kopecks = 0;  // with its part of the discount
    std::int64_t quantity_thousandths = 0;
    int kind = 0;
};

std::vector<ExpectedRecord> ExpectedRecords(const Check& check);
std::int64_t TotalKopecks(const Check& check);

}  // namespace kkmcheck
