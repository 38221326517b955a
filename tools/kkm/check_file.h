// A check as a JSON text:
//
//   { "mode": "sale", "discount": -5, "cash": 500,
//     "lines": [ { "name": "Хлеб", "price": 25.50, "quantity": 2, "section": 1 } ] }
//
// Only "lines" with their "name" and "price" are needed; the rest defaults to what is shown by the
// structures below. A field of another name is an error: a mistyped one must not be passed over.
#pragma once

#include <istream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kkm {

enum class CheckMode { sale, refund, credit };

struct CheckLine {
    std::string name;     // UTF-8
    double price = 0;     // currency units
    double quantity = 1;  // pieces or kilograms
    int section = 1;
};

struct CheckFile {
    std::vector<CheckLine> lines;
    CheckMode mode = CheckMode::sale;
    int discount = 0;            // per cent; negative for a discount
    std::optional<double> cash;  // currency units; nothing: paid exactly
};

// What is wrong, and where: "file line 3, column 8: ..." or "sale line 2, price: ...".
class CheckFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws CheckFileError. The register's own limits are left to the library.
CheckFile ParseCheck(const std::string& json);

// The same from a file, or from `standard_input` when the path is "-".
CheckFile ReadCheck(const std::string& path, std::istream& standard_input);

}  // namespace kkm
