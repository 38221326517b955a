#include "kkm/query_commands.h"

#include <functional>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/figures.h"
#include "kkm/open_check.h"
#include "kkm/progress.h"
#include "kkm/register_state.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr int kCash = 1;  // the first kind of payment
constexpr unsigned char kLastTax = 16;

using Figures = std::vector<Figure>;
using Reading = std::function<Figures(const Address&)>;

template <typename Value>
Value Read(int (*query)(Value*), const std::string& name) {
    Value value{};
    Require(query(&value), ExitStatus::not_read, "the " + name + " could not be read");
    return value;
}

void AddCounters(Figures& figures) {
    figures.push_back(
        NumberFigure("tape_number", "control tape", Read(GetKLNum, "control-tape number")));
    figures.push_back(NumberFigure("checks", "checks", Read(GetCheckCount, "check counter")));
    figures.push_back(NumberFigure("next_sale", "next sale", Read(GetSaleNum, "sale counter")));
}

Figures LookAsFigures(const Address& address, const std::optional<RegisterLook>& look) {
    Figures figures = {TextFigure("device", "register", address.Text())};
    if (look) {
        for (Figure& figure : StateAsFigures(*look)) {
            figures.push_back(std::move(figure));
        }
    }
    return figures;
}

// What is known without the driver.
void WriteOpenCheck(const Address& address, const RegisterLook& look, bool as_json,
                    Streams& streams) {
    Figures figures = LookAsFigures(address, look);
    if (look.counters) {
        figures.push_back(NumberFigure("tape_number", "control tape", look.counters->tape));
        figures.push_back(NumberFigure("checks", "checks", look.counters->checks));
    }
    if (as_json) {
        figures.push_back({"error",
                           "",
                           "",
                           {{"what", OpenCheckText(look.state)},
                            {"advice", kOpenCheckAdvice},
                            {"exit_status", static_cast<int>(ExitStatus::refused)}}});
    }
    streams.out << (as_json ? FiguresAsJson(figures) : FiguresAsText(figures)) << std::flush;
    ReportOpenCheck(look.state, false, streams);
}

Figures ReadStatus(const Address& address, const std::optional<RegisterLook>& look) {
    const Connection connection(address);
    Figures figures = LookAsFigures(address, look);
    figures.push_back(NumberFigure("firmware", "firmware", Firmware()));
    figures.push_back(
        NumberFigure("serial_number", "serial number", Read(GetKKMNum, "serial number")));
    figures.push_back(FlagFigure(
        "shift_open", "shift", Read(GetSmenaStatus, "state of the shift") != 0, "open", "closed"));
    AddCounters(figures);
    return figures;
}

Figures ReadCounters(const Address& address) {
    const Connection connection(address);
    Figures figures;
    AddCounters(figures);
    figures.push_back(MoneyFigure("grand_total", "grand total", Read(GetNI, "grand total")));
    double cash = 0;
    Require(GetCashSum(kCash, &cash), ExitStatus::not_read, "the sum of cash could not be read");
    figures.push_back(MoneyFigure("cash", "cash", cash));
    return figures;
}

Figures ReadTaxes(const Address& address) {
    const Connection connection(address);
    Figures figures;
    for (unsigned char number = 0; number <= kLastTax; ++number) {
        double tax = 0;
        const std::string name = "tax " + std::to_string(number);
        Require(GetTax(number, &tax), ExitStatus::not_read, name + " could not be read");
        figures.push_back(
            NumberFigure("tax_" + std::to_string(number), name, static_cast<int>(tax)));
    }
    return figures;
}

// The figures come whole or not at all; only a terminal sees the waiting.
Figures ReadWaiting(const Address& address, const Reading& read, Streams& streams) {
    Progress progress(streams.err, streams.err_terminal);
    if (streams.err_terminal.live) {
        progress.Step("reading " + address.Text());
    }
    return read(address);
}

ExitStatus RunQuery(const Address& address, const Reading& read, bool as_json, Streams& streams) {
    try {
        const Figures figures = ReadWaiting(address, read, streams);
        streams.out << (as_json ? FiguresAsJson(figures) : FiguresAsText(figures)) << std::flush;
        return ExitStatus::done;
    } catch (const RegisterFailure& failure) {
        return Report(failure, as_json, streams);
    }
}

}  // namespace

ExitStatus RunStatus(const Address& address, bool as_json, Streams& streams) {
    // Before the driver comes: its connecting changes the state.
    const auto look = LookAtRegister(address);
    if (look && HoldsOpenCheck(*look)) {
        WriteOpenCheck(address, *look, as_json, streams);
        return ExitStatus::refused;
    }
    const auto read = [&look](const Address& at) { return ReadStatus(at, look); };
    return RunQuery(address, read, as_json, streams);
}

ExitStatus RunCounters(const Address& address, bool as_json, Streams& streams) {
    return RunQuery(address, ReadCounters, as_json, streams);
}

ExitStatus RunTaxes(const Address& address, bool as_json, Streams& streams) {
    return RunQuery(address, ReadTaxes, as_json, streams);
}

}  // namespace kkm
