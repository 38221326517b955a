#include "kkm/dry_run.h"

#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/encoding.h"
#include "kkm/figures.h"

namespace kkm {
namespace {

constexpr int kLastWithoutTitles = 301;
constexpr int kLastWithShortChecks = 302;
constexpr int kFirstWithCash = 301;
constexpr int kLastWithCash = 309;

struct DryLine {
    std::string printed;  // UTF-8, what comes out; '?' for a lost letter
    std::vector<std::string> pieces;
    std::string cut;  // what does not come out
    std::vector<std::string> lost;
    double sum = 0;  // without the discount
    double sum_with_discount = 0;
    int error = 0;
};

// The sum that the library makes of a line.
int SumOf(const CheckLine& line, int discount, std::string name, double& sum) {
    cbClearSales();
    if (cbAddSale(name.data(), line.price, line.quantity, line.section) == 0) {
        return GetErrorCode();
    }
    if (cbSetDiscountValue(discount) == 0) {
        return GetErrorCode();
    }
    sum = cbGetSum();
    return echOk;
}

DryLine Try(const CheckLine& line, int discount, const FirmwareRules& rules) {
    DryLine dry;
    const RegisterText name = ToRegisterText(line.name);
    dry.lost = name.lost;
    const std::string through = name.bytes.substr(0, rules.longest_name);
    dry.printed = FromRegisterText(through);
    dry.cut = FromRegisterText(name.bytes.substr(through.size()));
    for (std::size_t at = 0; at < through.size(); at += rules.piece) {
        dry.pieces.push_back(FromRegisterText(through.substr(at, rules.piece)));
    }
    dry.error = SumOf(line, 0, name.bytes, dry.sum);
    if (dry.error == echOk) {
        dry.error = SumOf(line, discount, name.bytes, dry.sum_with_discount);
    }
    cbClearSales();
    return dry;
}

std::string QuantityText(double quantity) {
    std::ostringstream text;
    const bool whole = quantity == std::floor(quantity);
    text << std::fixed << std::setprecision(whole ? 0 : 3) << quantity;
    return text.str();
}

std::string Joined(const std::vector<std::string>& parts, const char* separator) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : separator) + part;
    }
    return text;
}

std::string ErrorText(int code) {
    return std::string(KKMErrorName(code)) + " (" + std::to_string(code) +
           "): " + KKMErrorAdvice(code);
}

struct DryCheck {
    std::vector<DryLine> lines;
    double sum = 0;
    double total = 0;
    bool too_many_lines = false;
    bool refused = false;
};

DryCheck TryAll(const CheckFile& check, const FirmwareRules& rules) {
    DryCheck dry;
    for (const CheckLine& line : check.lines) {
        dry.lines.push_back(Try(line, check.discount, rules));
        dry.sum += dry.lines.back().sum;
        dry.total += dry.lines.back().sum_with_discount;
        dry.refused = dry.refused || dry.lines.back().error != echOk;
    }
    dry.too_many_lines = dry.lines.size() > rules.most_lines;
    dry.refused = dry.refused || dry.too_many_lines;
    return dry;
}

void WriteLine(std::size_t number, const CheckLine& line, const DryLine& dry, std::ostream& out) {
    constexpr auto kIndent = "      ";
    out << std::setw(4) << number << "  "
        << (dry.pieces.size() > 1 ? Joined(dry.pieces, "|") : dry.printed) << '\n';
    if (dry.error != echOk) {
        out << kIndent << "refused: " << ErrorText(dry.error) << '\n';
    } else {
        out << kIndent << QuantityText(line.quantity) << " x " << MoneyText(line.price) << " = "
            << MoneyText(dry.sum) << '\n';
    }
    if (!dry.lost.empty()) {
        out << kIndent << "printed as '?': " << Joined(dry.lost, " ") << '\n';
    }
    if (!dry.cut.empty()) {
        out << kIndent << "not printed: " << dry.cut << '\n';
    }
}

void WriteText(const CheckFile& check, const DryCheck& dry, const FirmwareRules& rules,
               std::ostream& out) {
    out << "the check on firmware " << rules.firmware << "; nothing is sent\n";
    for (std::size_t i = 0; i < dry.lines.size(); ++i) {
        WriteLine(i + 1, check.lines[i], dry.lines[i], out);
    }
    if (check.mode != CheckMode::sale) {
        out << (check.mode == CheckMode::refund ? "a return\n" : "a credit\n");
    }
    if (check.discount != 0) {
        out << (check.discount < 0 ? "discount " : "surcharge ") << std::abs(check.discount)
            << " % = " << MoneyText(dry.total - dry.sum) << '\n';
    }
    out << "total " << MoneyText(dry.total) << '\n';
    if (check.cash && rules.takes_cash) {
        out << "cash " << MoneyText(*check.cash) << ", change "
            << MoneyText(*check.cash - dry.total) << '\n';
        if (*check.cash < dry.total) {
            out << "the cash is below the total: the register will refuse it\n";
        }
    } else if (check.cash) {
        out << "this firmware takes no cash from a program: paid exactly\n";
    }
    if (dry.too_many_lines) {
        out << "refused: this firmware takes " << rules.most_lines << " lines\n";
    }
}

void WriteJson(const CheckFile& check, const DryCheck& dry, const FirmwareRules& rules,
               std::ostream& out) {
    const auto money = [](double value) { return MoneyFigure("", "", value).value; };
    nlohmann::ordered_json json;
    json["firmware"] = rules.firmware;
    json["lines"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < dry.lines.size(); ++i) {
        const DryLine& line = dry.lines[i];
        json["lines"].push_back({{"name", check.lines[i].name},
                                 {"printed", line.printed},
                                 {"pieces", line.pieces},
                                 {"lost", line.lost},
                                 {"cut", line.cut},
                                 {"sum", money(line.sum)},
                                 {"error", line.error}});
    }
    json["total"] = money(dry.total);
    json["cash"] = check.cash && rules.takes_cash ? money(*check.cash) : nullptr;
    json["refused"] = dry.refused;
    out << json.dump(2) << '\n';
}

}  // namespace

FirmwareRules RulesOf(int firmware) {
    const bool titles = firmware > kLastWithoutTitles;
    // A name alone is one letter shorter than its place: the bar code begins on the last one.
    return {firmware, titles ? 72U : 15U, titles ? 18U : 15U,
            firmware <= kLastWithShortChecks ? 19U : 255U,
            firmware >= kFirstWithCash && firmware <= kLastWithCash};
}

ExitStatus DryRun(const CheckFile& check, int firmware, bool as_json, Streams& streams) {
    const FirmwareRules rules = RulesOf(firmware);
    const DryCheck dry = TryAll(check, rules);
    if (as_json) {
        WriteJson(check, dry, rules, streams.out);
    } else {
        WriteText(check, dry, rules, streams.out);
    }
    streams.out << std::flush;
    return dry.refused ? ExitStatus::refused : ExitStatus::done;
}

}  // namespace kkm
