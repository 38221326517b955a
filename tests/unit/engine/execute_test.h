// A register's whole side of a check, for the tests of the check execution.
#pragma once

#include <string>

#include "unit/engine/engine_test.h"

namespace test {

class ExecuteTest : public EngineTestOf<HookedDriver> {
  protected:
    explicit ExecuteTest(kkm_ver version = kkm_ver_303) : EngineTestOf(version) { driver.start(); }

    void AddLine(const std::string& title, std::uint32_t price, float count, bool fractional,
                 unsigned char section) {
        sale line_item;
        line_item.title = title;
        line_item.section = section;
        line_item.fractional = fractional;
        line_item.code = 1;
        line_item.barcode = "1234567890123";
        line_item.price = price;
        line_item.count = count;
        driver.check().sales.push_back(line_item);
    }

    // The next reads of the sale number, whichever way the firmware has it read.
    void SaleNumber(int number) {
        const auto byte = static_cast<unsigned char>(number);
        if (driver.version() == kkm_ver_400) {
            line.Answer(request::kSaleNumber, Frame(0xB7, {byte}));
        } else {
            line.Answer(request::kRam, answer::Ram(byte));
        }
    }

    // The register waits for a check, none is open, and its counters stand at 7 and 40.
    void QueryForCheck(const Bytes& state = answer::SaleCode()) {
        line.Answer(request::kStatus, state);
        line.Answers(request::kStatistics, 2, answer::Statistics(7, 40));
        SaleNumber(0);
        SaleNumber(0);
    }

    void TakeLines(int count) {
        for (int number = 0; number < count; ++number) {
            SaleNumber(number);
            line.Answer(request::kStatus, answer::SaleAdd());
            SaleNumber(number + 1);
        }
    }

    // From the discount to the check-out, and the counters behind it.
    void CloseCheck(int lines) {
        if (driver.check().discount != 0) {
            line.Answer(request::kStatus, answer::Ready());
        }
        line.Answer(request::kStatus, answer::Ready());
        const bool takes_cash = driver.version() >= 301 && driver.version() <= 309;
        if (driver.check().cash != 0 && takes_cash) {
            line.Answer(request::kStatus, answer::CheckOut());
        }
        line.Answer(request::kStatus, answer::CheckOut());
        line.Answer(request::kStatistics, answer::Statistics(8, 40 + static_cast<unsigned>(lines)));
    }

    // A check of so many lines goes well.
    void GoWell(int lines) {
        QueryForCheck();
        TakeLines(lines);
        CloseCheck(lines);
    }

    // The steps from the first place of the given one on.
    Lines StepsFrom(const std::string& step) const {
        const Lines steps = Steps();
        return {std::find(steps.begin(), steps.end(), step), steps.end()};
    }
};

}  // namespace test
