#include "simulation/sweep.h"

#include <algorithm>
#include <sstream>

namespace simulation {
namespace {

constexpr std::size_t kFirmwares = std::size(kFirmware);
// A pair's second fault follows within so many exchanges of the first.
constexpr std::uint32_t kReach = 48;

// How many places or values a kind can hit within a frame.
std::uint32_t Variants(FaultKind kind) {
    switch (kind) {
        case FaultKind::answer_wrong_length:
            return 256;
        case FaultKind::request_cut:
        case FaultKind::request_byte_changed:
        case FaultKind::request_byte_doubled:
        case FaultKind::request_altered:
        case FaultKind::answer_cut:
        case FaultKind::answer_byte_changed:
        case FaultKind::answer_byte_doubled:
        case FaultKind::answer_altered:
        case FaultKind::answer_gap_past:
        case FaultKind::read_error:
        case FaultKind::end_of_file:
        case FaultKind::write_short:
            return 16;
        case FaultKind::answer_wrong_code:
            return 30;
        case FaultKind::counters_near_wrap:
            return 3;
        case FaultKind::line_dead:
        case FaultKind::restart:
        case FaultKind::busy:
        case FaultKind::device_gone:
        case FaultKind::paper_ends:
        case FaultKind::poll_error:
        case FaultKind::refusal:
        case FaultKind::cashier_presses:
            return 6;
        default:
            return 1;
    }
}

// The first eight places one by one, then every third: a sale's 46 bytes are reached too.
Fault Variant(FaultKind kind, std::uint32_t exchange, std::uint32_t variant) {
    Fault fault{};
    fault.kind = kind;
    fault.at = exchange;
    switch (kind) {
        case FaultKind::answer_wrong_length:
            fault.a = variant;
            break;
        case FaultKind::answer_wrong_code:
            fault.a = variant;
            break;
        case FaultKind::line_dead: {
            static constexpr std::uint32_t kMs[] = {100, 600, 3'000, 20'000, 45'000, 80'000};
            fault.a = kMs[variant];
            break;
        }
        case FaultKind::restart:
            fault.a = variant == 0 ? 0 : 1;
            fault.b = variant * 7'000;
            break;
        case FaultKind::busy:
            fault.a = variant * 25;
            break;
        case FaultKind::device_gone:
            fault.a = variant * 900;
            break;
        case FaultKind::paper_ends:
            fault.a = variant * 2;
            break;
        case FaultKind::cashier_presses:
            fault.a = variant * 8;  // 0x20 clears, 0x28 confirms
            break;
        default:
            fault.a = variant < 8 ? variant : 8 + 3 * (variant - 8);
            fault.b = 0x55 + variant;
            break;
    }
    return fault;
}

Call Simple(CallKind kind, int number, When when) {
    Call call{};
    call.kind = kind;
    call.number = number;
    call.when = when;
    return call;
}

void AddLine(const char* name, double price, double quantity, When when, std::vector<Call>& calls) {
    Call call = Simple(CallKind::add_sale, 1, when);
    call.text = name;
    call.money = price;
    call.quantity = quantity;
    calls.push_back(call);
}

// The buffer keeps its lines when a check fails, so the second try fills nothing.
void AddPrint(bool one_line, When when, std::vector<Call>& calls) {
    calls.push_back(Simple(CallKind::connect, 1, when));
    if (when == When::always) {
        AddLine("TEA", 12.5, 2, when, calls);
        if (!one_line) {
            AddLine("CHEESE OF THE VALLEY, RIPENED IN A CAVE", 419.9, 0.345, when, calls);
            AddLine("BREAD OF EIGHTEEN.", 31, 1, when, calls);
            calls.push_back(Simple(CallKind::set_discount, -10, when));
            Call cash = Simple(CallKind::set_cash_over_total, 0, when);
            cash.money = 50;
            calls.push_back(cash);
        }
    }
    calls.push_back(Simple(CallKind::check_close, 0, when));
    calls.push_back(Simple(CallKind::print_check, 0, when));
}

std::uint32_t FaultlessExchanges(int firmware, bool one_line) {
    Case one;
    one.firmware = firmware;
    one.one_line = one_line;
    return Runner().Run(MakeScenario(one)).exchanges;
}

Ending EndingOf(const std::vector<Verdict>& verdicts) {
    for (const Verdict verdict : verdicts) {
        const bool known = verdict == Verdict::printed || verdict == Verdict::failed ||
                           verdict >= Verdict::polled_silence;
        if (!known) {
            return Ending::unknown;
        }
    }
    if (!verdicts.empty() && verdicts.back() == Verdict::printed) {
        return verdicts.size() == 1 ? Ending::printed_at_once : Ending::printed_again;
    }
    return Ending::not_printed;
}

const RunResult& RunCase(const Case& one, Collector& to) {
    const RunResult& result = to.Run(MakeScenario(one), "--case '" + Tell(one) + "'");
    ++to.figures.endings[static_cast<std::size_t>(EndingOf(result.verdicts))];
    return result;
}

// One kind for each effect on the conversation.
constexpr FaultKind kEffects[] = {
    FaultKind::request_lost,
    FaultKind::answer_lost,
    FaultKind::answer_late_past,
    FaultKind::answer_held,
    FaultKind::answer_wrong_sum,
    FaultKind::answer_altered,
    FaultKind::answer_wrong_code,
    FaultKind::answer_stale,
    FaultKind::line_dead,
    FaultKind::write_error,
    FaultKind::end_of_file,
    FaultKind::hang_up,
    FaultKind::restart,
    FaultKind::busy,
    FaultKind::refusal,
    FaultKind::keyboard_locked,
    FaultKind::paper_out,
    FaultKind::paper_in,
    FaultKind::cashier_asks,
    FaultKind::cashier_cancels,
    FaultKind::cashier_presses,
    FaultKind::cashier_enters_line,
    FaultKind::cashier_deletes_line,
    FaultKind::cashier_closes_shift,
};

}  // namespace

std::string Tell(const Case& one) {
    std::string text = std::to_string(one.firmware) + (one.one_line ? " one_line" : " full");
    for (const Fault& fault : one.faults) {
        text += " " + std::string(NameOf(fault.kind)) + "@" + std::to_string(fault.at) + ":" +
                std::to_string(fault.a) + ":" + std::to_string(fault.b);
    }
    return text;
}

std::optional<Case> ReadCase(const std::string& text) {
    std::istringstream in(text);
    Case one;
    std::string word;
    if (!(in >> one.firmware >> word) || std::find(std::begin(kFirmware), std::end(kFirmware),
                                                   one.firmware) == std::end(kFirmware)) {
        return std::nullopt;
    }
    one.one_line = word == "one_line";
    while (in >> word) {
        const std::size_t at = word.find('@');
        const FaultKind* const kind = FaultNamed(std::string_view(word).substr(0, at));
        Fault fault{};
        char colon = 0;
        std::istringstream numbers(at == std::string::npos ? "" : word.substr(at + 1));
        if (kind == nullptr || !(numbers >> fault.at >> colon >> fault.a >> colon >> fault.b)) {
            return std::nullopt;
        }
        fault.kind = *kind;
        one.faults.push_back(fault);
    }
    return one;
}

Scenario MakeScenario(const Case& one) {
    Scenario scenario;
    scenario.kkm.firmware = one.firmware;
    scenario.kkm.drawer_kopecks = 50'000;
    scenario.line.baud = one.firmware == 302 ? 57600 : 9600;
    scenario.line.net_number = 7;
    scenario.cashier.after_polls = 1;
    scenario.host.patience = 400;
    AddPrint(one.one_line, When::always, scenario.host.calls);
    AddPrint(one.one_line, When::after_failed_print, scenario.host.calls);
    scenario.host.calls.push_back(Simple(CallKind::disconnect, 0, When::always));
    scenario.faults.seed = 1;
    scenario.faults.faults = one.faults;
    for (const Fault& fault : one.faults) {
        if (fault.kind == FaultKind::counters_near_wrap) {
            scenario.kkm.shift_open = true;
            scenario.kkm.checks = fault.a == 0 ? 65535 : 65533;
            scenario.kkm.records = fault.a == 1 ? 65535 : 65500;
        }
    }
    return scenario;
}

SingleSweep::SingleSweep() {
    for (const int firmware : kFirmware) {
        exchanges_.push_back(FaultlessExchanges(firmware, false));
    }
}

std::size_t SingleSweep::Chunks() const {
    return kFirmwares * kFaultKinds;
}

int SingleSweep::FirmwareOf(std::size_t chunk) {
    return kFirmware[chunk / kFaultKinds];
}

FaultKind SingleSweep::KindOf(std::size_t chunk) {
    return static_cast<FaultKind>(chunk % kFaultKinds);
}

void SingleSweep::RunChunk(std::size_t chunk, Collector& to) const {
    const FaultKind kind = KindOf(chunk);
    Case one;
    one.firmware = FirmwareOf(chunk);
    const std::uint32_t exchanges = IsForWholeRun(kind) ? 1 : exchanges_[chunk / kFaultKinds];
    for (std::uint32_t exchange = 0; exchange < exchanges; ++exchange) {
        for (std::uint32_t variant = 0; variant < Variants(kind); ++variant) {
            one.faults = {Variant(kind, exchange, variant)};
            RunCase(one, to);
        }
    }
}

PairSweep::PairSweep(bool all_kinds, bool every_firmware) : every_firmware_(every_firmware) {
    if (all_kinds) {
        for (std::uint32_t i = 0; i < kFaultKinds; ++i) {
            kinds_.push_back(static_cast<FaultKind>(i));
        }
        kinds_.erase(std::remove_if(kinds_.begin(), kinds_.end(), IsForWholeRun), kinds_.end());
    } else {
        kinds_.assign(std::begin(kEffects), std::end(kEffects));
    }
    for (const int firmware : kFirmware) {
        exchanges_.push_back(FaultlessExchanges(firmware, true));
    }
}

// One chunk for each kind of the first fault and each exchange of it.
std::size_t PairSweep::Chunks() const {
    const std::size_t longest = *std::max_element(exchanges_.begin(), exchanges_.end());
    return kinds_.size() * longest * (every_firmware_ ? kFirmwares : 1);
}

void PairSweep::RunChunk(std::size_t chunk, Collector& to) const {
    const FaultKind first = kinds_[chunk % kinds_.size()];
    const std::size_t longest = *std::max_element(exchanges_.begin(), exchanges_.end());
    const std::size_t rest = chunk / kinds_.size();
    const auto at = static_cast<std::uint32_t>(rest % longest);
    std::size_t firmware = every_firmware_ ? rest / longest : chunk % kFirmwares;
    Case one;
    one.one_line = true;
    one.firmware = kFirmware[firmware];
    one.faults = {Variant(first, at, 1 % Variants(first))};
    const std::uint32_t alone = RunCase(one, to).exchanges;
    const std::uint32_t last = std::min(alone, at + kReach);
    for (std::uint32_t then = at; then < last; ++then) {
        for (const FaultKind second : kinds_) {
            if (!every_firmware_) {
                firmware = (firmware + 1) % kFirmwares;
                one.firmware = kFirmware[firmware];
            }
            one.faults = {Variant(first, at, 1 % Variants(first)),
                          Variant(second, then, 1 % Variants(second))};
            RunCase(one, to);
        }
    }
}

}  // namespace simulation
