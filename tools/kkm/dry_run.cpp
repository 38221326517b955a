#include "kkm/dry_run.h"

#include <cmath>
#include <cstdint>
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

// One letter less than its place: the bar code begins on the last one.
constexpr std::size_t kShortName = 15;
constexpr std::int64_t kMostKopecks = 4294967295;  // of a line and of a check

struct DryLine {
    std::string printed;  // UTF-8, what comes out; '?' for a lost letter
    std::vector<std::string> pieces;
    std::string short_name;  // what the line itself has room for
    std::string cut;         // what does not come out
    std::vector<std::string> lost;
    bool weighed = false;
    std::int64_t thousandths = 0;  // of the quantity, as the register gets it
    std::int64_t kopecks = 0;      // without the discount
    int error = 0;
};

// What the library and the register make of a check.
struct DryCheck {
    std::vector<DryLine> lines;
    std::int64_t discount_kopecks = 0;
    std::int64_t total_kopecks = 0;
    std::int64_t cash_kopecks = 0;  // 0: paid exactly
    bool has_total = true;          // every line and the discount are taken
    std::vector<std::string> refusals;
};

std::int64_t Rounded(double value) {
    return static_cast<std::int64_t>(std::floor(value + 0.5));
}

std::string ErrorText(int code) {
    return std::string(KKMErrorName(code)) + " (" + std::to_string(code) +
           "): " + KKMErrorAdvice(code);
}

// The register multiplies whole kopecks by whole thousandths.
void Multiply(const CheckLine& line, DryLine& dry) {
    dry.weighed = line.quantity != std::floor(line.quantity);
    dry.thousandths = Rounded(static_cast<float>(line.quantity) * 1000.0);
    dry.kopecks = (Rounded(line.price * 100) * dry.thousandths + 500) / 1000;
}

DryLine Try(const CheckLine& line, const FirmwareRules& rules) {
    DryLine dry;
    RegisterText name = ToRegisterText(line.name);
    dry.lost = name.lost;
    const std::string through = name.bytes.substr(0, rules.longest_name);
    dry.printed = FromRegisterText(through);
    dry.cut = FromRegisterText(name.bytes.substr(through.size()));
    dry.short_name = FromRegisterText(name.bytes.substr(0, kShortName));
    for (std::size_t at = 0; at < through.size(); at += rules.piece) {
        dry.pieces.push_back(FromRegisterText(through.substr(at, rules.piece)));
    }
    cbClearSales();
    if (cbAddSale(name.bytes.data(), line.price, line.quantity, line.section) == 0) {
        dry.error = GetErrorCode();
    } else {
        Multiply(line, dry);
    }
    return dry;
}

void TryLines(const CheckFile& check, const FirmwareRules& rules, DryCheck& dry) {
    for (const CheckLine& line : check.lines) {
        DryLine tried = Try(line, rules);
        const std::string number = "line " + std::to_string(dry.lines.size() + 1);
        if (tried.error != echOk) {
            dry.refusals.push_back(number + ": " + ErrorText(tried.error));
        } else if (dry.total_kopecks + tried.kopecks > kMostKopecks) {
            tried.error = echPrice;
            dry.refusals.push_back(number + ": the sum is above 42949672.95: " +
                                   KKMErrorName(echPrice) + " (" + std::to_string(echPrice) + ")");
        } else {
            dry.total_kopecks += tried.kopecks;
        }
        dry.has_total = dry.has_total && tried.error == echOk;
        dry.lines.push_back(std::move(tried));
    }
    if (dry.lines.size() > rules.most_lines) {
        dry.refusals.push_back("this firmware takes " + std::to_string(rules.most_lines) +
                               " lines");
    }
}

// Each line has its own part of the discount, half a kopeck rounded up.
std::int64_t DiscountOf(std::int64_t kopecks, int percent) {
    return Rounded(static_cast<double>(kopecks * percent) / 100);
}

void TryDiscount(int percent, DryCheck& dry) {
    if (cbSetDiscountValue(percent) == 0) {
        dry.has_total = false;
        dry.refusals.push_back("discount: " + ErrorText(GetErrorCode()));
        return;
    }
    for (const DryLine& line : dry.lines) {
        dry.discount_kopecks += DiscountOf(line.kopecks, percent);
    }
    dry.total_kopecks += dry.discount_kopecks;
    if (dry.total_kopecks > kMostKopecks) {
        dry.has_total = false;
        dry.refusals.emplace_back("discount: the total is above 42949672.95");
    }
}

// Only a sale is paid with what the customer gives.
void TryCash(const CheckFile& check, const FirmwareRules& rules, DryCheck& dry) {
    if (!rules.takes_cash || check.mode != CheckMode::sale) {
        return;
    }
    dry.cash_kopecks = Rounded(check.cash.value_or(0) * 100);
    if (dry.has_total && dry.cash_kopecks != 0 && dry.cash_kopecks < dry.total_kopecks) {
        dry.refusals.push_back("the cash is below the total: " + ErrorText(echNoCash));
    }
}

DryCheck TryAll(const CheckFile& check, const FirmwareRules& rules) {
    DryCheck dry;
    TryLines(check, rules, dry);
    TryDiscount(check.discount, dry);
    TryCash(check, rules, dry);
    cbClearSales();
    return dry;
}

std::string Kopecks(std::int64_t kopecks) {
    return MoneyText(static_cast<double>(kopecks) / 100);
}

std::string QuantityText(const DryLine& dry) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(dry.weighed ? 3 : 0)
         << static_cast<double>(dry.thousandths) / 1000;
    return text.str();
}

void WriteLine(std::size_t number, const CheckLine& line, const DryLine& dry, std::ostream& out) {
    constexpr auto kIndent = "      ";
    out << std::setw(4) << number << "  ";
    for (std::size_t i = 0; i < dry.pieces.size(); ++i) {
        out << (i == 0 ? "" : "      + ") << dry.pieces[i] << '\n';
    }
    if (dry.short_name.size() < dry.pieces.front().size()) {
        out << kIndent << "short name: " << dry.short_name << '\n';
    }
    if (dry.error == echOk) {
        out << kIndent << QuantityText(dry) << " x " << MoneyText(line.price) << " = "
            << Kopecks(dry.kopecks) << '\n';
        if (dry.thousandths == 0) {
            out << kIndent << "so small a quantity becomes nothing\n";
        }
    }
    if (!dry.lost.empty()) {
        out << kIndent << "printed as '?':";
        for (const std::string& letter : dry.lost) {
            out << ' ' << letter;
        }
        out << '\n';
    }
    if (!dry.cut.empty()) {
        out << kIndent << "not printed: " << dry.cut << '\n';
    }
}

void WriteCash(const CheckFile& check, const DryCheck& dry, const FirmwareRules& rules,
               std::ostream& out) {
    if (!check.cash) {
        return;
    }
    if (check.mode != CheckMode::sale) {
        out << "cash is for sales; this check passes it over\n";
    } else if (!rules.takes_cash) {
        out << "this firmware takes no cash from a program: paid exactly\n";
    } else if (dry.cash_kopecks == 0) {
        out << "no cash: paid exactly\n";
    } else {
        out << "cash " << Kopecks(dry.cash_kopecks);
        if (dry.cash_kopecks >= dry.total_kopecks) {
            out << ", change " << Kopecks(dry.cash_kopecks - dry.total_kopecks);
        }
        out << '\n';
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
    if (dry.has_total) {
        if (check.discount != 0) {
            out << (check.discount < 0 ? "discount " : "surcharge ") << std::abs(check.discount)
                << " % = " << Kopecks(dry.discount_kopecks) << '\n';
        }
        out << "total " << Kopecks(dry.total_kopecks) << '\n';
        WriteCash(check, dry, rules, out);
    }
    for (const std::string& refusal : dry.refusals) {
        out << "refused: " << refusal << '\n';
    }
}

const char* NameOf(CheckMode mode) {
    switch (mode) {
        case CheckMode::refund:
            return "return";
        case CheckMode::credit:
            return "credit";
        case CheckMode::sale:
            break;
    }
    return "sale";
}

nlohmann::ordered_json LineAsJson(const CheckLine& line, const DryLine& dry) {
    nlohmann::ordered_json json{{"name", line.name},
                                {"price", MoneyFigure("", "", line.price).value},
                                {"quantity", line.quantity},
                                {"section", line.section},
                                {"printed", dry.printed},
                                {"pieces", dry.pieces},
                                {"short_name", dry.short_name},
                                {"lost", dry.lost},
                                {"cut", dry.cut},
                                {"sum", nullptr},
                                {"error", dry.error}};
    if (dry.error == echOk) {
        json["quantity"] = static_cast<double>(dry.thousandths) / 1000;
        json["sum"] = static_cast<double>(dry.kopecks) / 100;
    }
    return json;
}

void WriteJson(const CheckFile& check, const DryCheck& dry, const FirmwareRules& rules,
               std::ostream& out) {
    const auto money_if = [](bool known, std::int64_t kopecks) {
        return known ? nlohmann::ordered_json(static_cast<double>(kopecks) / 100) : nullptr;
    };
    const bool paid = dry.cash_kopecks != 0;
    const bool enough = dry.has_total && paid && dry.cash_kopecks >= dry.total_kopecks;
    nlohmann::ordered_json json;
    json["firmware"] = rules.firmware;
    json["mode"] = NameOf(check.mode);
    json["lines"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < dry.lines.size(); ++i) {
        json["lines"].push_back(LineAsJson(check.lines[i], dry.lines[i]));
    }
    json["discount"] = check.discount;
    json["discount_sum"] = money_if(dry.has_total, dry.discount_kopecks);
    json["total"] = money_if(dry.has_total, dry.total_kopecks);
    json["cash"] = money_if(paid, dry.cash_kopecks);
    json["change"] = money_if(enough, dry.cash_kopecks - dry.total_kopecks);
    json["refused"] = !dry.refusals.empty();
    json["why"] = dry.refusals;
    out << json.dump(2) << '\n';
}

}  // namespace

FirmwareRules RulesOf(int firmware) {
    const bool titles = firmware > kLastWithoutTitles;
    return {firmware, titles ? 72U : kShortName, titles ? 18U : kShortName,
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
    return dry.refusals.empty() ? ExitStatus::done : ExitStatus::refused;
}

double RegisterTotal(const CheckFile& check) {
    std::int64_t kopecks = 0;
    for (const CheckLine& line : check.lines) {
        DryLine dry;
        Multiply(line, dry);
        kopecks += dry.kopecks + DiscountOf(dry.kopecks, check.discount);
    }
    return static_cast<double>(kopecks) * 0.01;
}

}  // namespace kkm
