#include "kkm/check_command.h"

#include <optional>
#include <utility>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/dry_run.h"
#include "kkm/encoding.h"
#include "kkm/figures.h"
#include "kkm/progress.h"
#include "kkm/report.h"
#include "kkm/signal_shield.h"

namespace kkm {
namespace {

std::string Count(std::size_t lines) {
    return std::to_string(lines) + (lines == 1 ? " line" : " lines");
}

// The library calls plain functions, so what they work on has to be found from everywhere.
struct Printing {
    Progress& progress;
    std::size_t lines;
    std::optional<SignalShield> shield;
};
Printing* printing = nullptr;

void OnQuery() {
    printing->shield.emplace();
}

void OnStep(unsigned char step) {
    if (step == 0) {
        printing->progress.Step("sending " + Count(printing->lines) + " and printing");
    } else {
        printing->progress.Step("closed; comparing the register's counters");
    }
}

void OnError(int /*code*/, char* /*text*/) {
    printing->progress.Failed();
}

// The callbacks for the time of one PrintCheck().
class Listening {
  public:
    explicit Listening(Printing& to) {
        printing = &to;
        EventQuery = OnQuery;
        EventCheckPrepare = OnStep;
        EventErrorProc = OnError;
    }
    ~Listening() {
        EventQuery = nullptr;
        EventCheckPrepare = nullptr;
        EventErrorProc = nullptr;
        printing = nullptr;
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
};

// What this firmware will leave out, though the library takes it.
void WarnOfFirmware(int firmware, const CheckFile& check, const std::vector<std::string>& names,
                    std::ostream& warnings) {
    const FirmwareRules rules = RulesOf(firmware);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].size() > rules.longest_name) {
            warnings << "kkm: sale line " << i + 1 << ": only " << rules.longest_name
                     << " letters of the name are printed" << std::endl;
        }
    }
    if (check.cash && !rules.takes_cash) {
        warnings << "kkm: firmware " << firmware
                 << " takes no cash from a program: the check will be paid exactly" << std::endl;
    }
}

void FillBuffer(const CheckFile& check, std::vector<std::string> names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        const CheckLine& line = check.lines[i];
        Require(cbAddSale(names[i].data(), line.price, line.quantity, line.section),
                ExitStatus::refused, "sale line " + std::to_string(i + 1) + " was refused");
    }
    cbSetReturnMode(check.mode == CheckMode::refund ? 1 : 0);
    cbSetCreditMode(check.mode == CheckMode::credit ? 1 : 0);
    Require(cbSetDiscountValue(check.discount), ExitStatus::refused, "the discount was refused");
    if (check.cash) {
        cbSetCash(*check.cash);
    }
}

std::string BufferText(double total) {
    std::string text = Count(static_cast<std::size_t>(cbGetSalesCount()));
    if (cbGetReturnMode() != 0) {
        text += ", a return";
    } else if (cbGetCreditMode() != 0) {
        text += ", a credit";
    }
    if (cbGetDiscountValue() != 0) {
        text += cbGetDiscountValue() < 0 ? ", discount " : ", surcharge ";
        text += std::to_string(std::abs(cbGetDiscountValue())) + " %";
    }
    return text + ", total " + MoneyText(total);
}

RegisterFailure NotPrinted(int code) {
    switch (code) {
        case echPaperAbsent:
            return {ExitStatus::paper_absent, "the check was not printed", code};
        case echDevice:     // the line may have died behind the closing
        case echPrintTest:  // the counters moved otherwise than by this check
            return {ExitStatus::unknown, "the check is not confirmed as printed", code};
        default:
            return {ExitStatus::not_printed, "the check was not printed", code};
    }
}

void Print(Connection& connection, Progress& progress, std::size_t lines) {
    Printing state{progress, lines, {}};
    const Listening listening(state);
    progress.Step("waiting for the register to ask for the check (Ctrl-C gives up)");
    if (PrintCheck() == 0) {
        const int code = GetErrorCode();
        if (NotPrinted(code).status() == ExitStatus::unknown) {
            connection.Leave(Connection::Leaving::as_it_is);
        }
        throw NotPrinted(code);
    }
}

// Gives what a program wants to know of the printed check.
std::vector<Figure> PrintCheckFile(const Address& address, const CheckFile& check, Streams& streams,
                                   Progress& progress) {
    const std::vector<std::string> names = RegisterNames(check, streams.err);
    progress.Step("connecting to " + address.Text());
    // Until an earlier check that was left open is out of the way.
    Connection connection(address, Connection::Leaving::as_it_is);
    const int firmware = Firmware();
    progress.Note("firmware " + std::to_string(firmware));
    WarnOfFirmware(firmware, check, names, streams.err);
    FillBuffer(check, names);
    // As the paper will have it: the library's own sum is in floats of 32 bits.
    const double total = RegisterTotal(check);
    progress.Note(BufferText(total));
    progress.Step("preparing the register");
    Require(CheckClose(), ExitStatus::refused, "the register does not take the check");
    connection.Leave(Connection::Leaving::reset);
    Print(connection, progress, names.size());
    progress.Step("leaving the register");
    return {FlagFigure("printed", "", true, "", ""), NumberFigure("firmware", "", firmware),
            NumberFigure("lines", "", static_cast<int>(names.size())),
            MoneyFigure("total", "", total)};
}

}  // namespace

std::vector<std::string> RegisterNames(const CheckFile& check, std::ostream& warnings) {
    std::vector<std::string> names;
    for (const CheckLine& line : check.lines) {
        RegisterText name = ToRegisterText(line.name);
        if (!name.lost.empty()) {
            warnings << "kkm: sale line " << names.size() + 1
                     << ": the register lacks and prints as '?':";
            for (const std::string& letter : name.lost) {
                warnings << ' ' << letter;
            }
            warnings << std::endl;
        }
        names.push_back(std::move(name.bytes));
    }
    return names;
}

ExitStatus RunCheck(const Address& address, const CheckFile& check, bool as_json,
                    Streams& streams) {
    Progress progress(as_json ? streams.err : streams.out,
                      as_json ? streams.err_terminal : streams.out_terminal);
    try {
        const std::vector<Figure> figures = PrintCheckFile(address, check, streams, progress);
        progress.Note("the check is printed");
        if (as_json) {
            streams.out << FiguresAsJson(figures) << std::flush;
        }
        return ExitStatus::done;
    } catch (const RegisterFailure& failure) {
        progress.Failed();
        return Report(failure, as_json, streams);
    }
}

}  // namespace kkm
