#include "simulation/host_plan.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace simulation {
namespace {

constexpr const char* kNames[] = {
    "ConnectKKM",
    "ConnectKKMDevice",
    "DisconnectKKM",
    "cbAddSale",
    "cbDeleteSale",
    "cbGetSale",
    "cbClearSales",
    "cbGetSum",
    "cbSetCash",
    "cbSetCash",
    "cbSetReturnMode",
    "cbSetCreditMode",
    "cbSetDiscountValue",
    "cbSetClearBufMode",
    "cbClearTitle",
    "cbClearBottom",
    "CheckClose",
    "PrintCheck",
    "CheckCancel",
    "GetSmenaNum",
    "GetKLNum",
    "GetSaleNum",
    "GetCheckCount",
    "GetNI",
    "GetKKMNum",
    "GetCashSum",
    "GetTax",
    "GetSmenaStatus",
    "GetKKMVers",
    "ReadSaleFromKL",
    "Lock",
    "UnLock",
    "ClearIndicator",
    "Feed",
    "KKMPrintStr",
};
static_assert(std::size(kNames) == static_cast<std::size_t>(CallKind::count), "one name each");

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr double kEdgePrices[] = {0,       0.004,       0.005,       0.01,     0.015,     0.994999,
                                  9999.99, 10000,       99999.98,    99999.99, 99999.994, 99999.995,
                                  100000,  42949672.95, 42949672.96, 1e300,    -0.01,     -1,
                                  kNaN,    kInfinity,   -kInfinity};
constexpr double kEdgeQuantities[] = {
    0,  1,       2,    -1,  -300, -0.5,  0.0005,  0.001, 0.0015, 0.9995, 1.5,  64.9994,  64.9999999,
    65, 65.0001, 65.5, 255, 256,  65535, 65535.5, 65536, 1e10,   1e300,  kNaN, kInfinity};
constexpr double kEdgeMoney[] = {0, 0.01, -1, 1000, 100000, 42949672.95, 42949673, 1e300, kNaN};
constexpr int kEdgeSections[] = {1, 15, 0, 16, -1, 257};
constexpr int kEdgeDiscounts[] = {0, 1, -1, 99, -99, 100, -100, 300, -1000};
constexpr std::uint32_t kLengths[] = {0, 1, 14, 15, 16, 17, 18, 19, 35, 36, 37, 54, 71, 72, 73, 80};

std::string Name(Random& random) {
    const std::uint32_t length = random.Chance(400)   ? random.OneOf(kLengths)
                                 : random.Chance(800) ? 1 + random.Below(24)
                                                      : random.Below(81);
    std::string text(length, ' ');
    const bool plain = random.Chance(500);
    for (char& character : text) {
        character = static_cast<char>(plain ? 'A' + random.Below(26) : 1 + random.Below(255));
    }
    return text;
}

Call Simple(CallKind kind, int number = 0, When when = When::always) {
    Call call{};
    call.kind = kind;
    call.number = number;
    call.when = when;
    return call;
}

Call Line(Random& random, bool edges) {
    Call call = Simple(CallKind::add_sale, random.Between(1, 15));
    call.text = Name(random);
    call.money = random.Between(1, random.Chance(900) ? 50'000 : 9'999'999) / 100.0;
    if (random.Chance(700)) {
        call.quantity = random.Between(1, random.Chance(800) ? 9 : 300);
    } else {
        call.quantity = random.Between(1, 9'000) / 1000.0;
    }
    if (edges && random.Chance(300)) {
        call.money = random.OneOf(kEdgePrices);
    }
    if (edges && random.Chance(300)) {
        call.quantity = random.OneOf(kEdgeQuantities);
    }
    if (edges && random.Chance(100)) {
        call.number = random.OneOf(kEdgeSections);
    }
    return call;
}

std::uint32_t LineCount(Random& random) {
    const std::uint32_t kind = random.Below(100);
    if (kind < 3) {
        return 0;
    }
    if (kind < 75) {
        return 1 + random.Below(3);
    }
    if (kind < 96) {
        return 1 + random.Below(8);
    }
    // Once in a while more than the register can count.
    return random.Chance(20) ? 250 + random.Below(10) : random.Below(61);
}

void DrawModes(Random& random, bool edges, std::vector<Call>& calls) {
    if (random.Chance(100)) {
        calls.push_back(Simple(CallKind::set_return, 1));
    }
    if (random.Chance(70)) {
        calls.push_back(Simple(CallKind::set_credit, random.Chance(800) ? 1 : 0));
    }
    if (random.Chance(350)) {
        const int percent = edges ? random.OneOf(kEdgeDiscounts) : random.Between(-30, 30);
        calls.push_back(Simple(CallKind::set_discount, percent));
    }
    if (random.Chance(400)) {
        Call cash = Simple(CallKind::set_cash_over_total);
        cash.money = random.Chance(400) ? 0 : random.Below(100'000) / 100.0;
        if (edges && random.Chance(300)) {
            cash.kind = CallKind::set_cash;
            cash.money = random.OneOf(kEdgeMoney);
        }
        calls.push_back(cash);
    }
    if (random.Chance(50)) {
        calls.push_back(Simple(CallKind::set_clear_mode, random.Between(-1, 1)));
    }
}

void DrawFill(Random& random, std::vector<Call>& calls) {
    const bool edges = random.Chance(250);
    const std::uint32_t lines = LineCount(random);
    for (std::uint32_t i = 0; i < lines; ++i) {
        calls.push_back(Line(random, edges));
        if (random.Chance(20)) {
            calls.push_back(Simple(CallKind::delete_sale, random.Between(-1, 5)));
        }
    }
    DrawModes(random, edges, calls);
    if (random.Chance(150)) {
        calls.push_back(Simple(CallKind::get_sum));
    }
    if (random.Chance(50)) {
        calls.push_back(Simple(CallKind::get_sale, random.Between(0, 4)));
    }
}

void DrawQueries(Random& random, std::vector<Call>& calls) {
    if (!random.Chance(120)) {
        return;
    }
    const auto first = static_cast<int>(CallKind::get_shift_number);
    const auto last = static_cast<int>(CallKind::print_string);
    for (int i = random.Between(1, 4); i > 0; --i) {
        Call call = Simple(static_cast<CallKind>(random.Between(first, last)));
        call.number = random.Chance(800) ? random.Between(0, 3) : random.Between(0, 18);
        if (call.kind == CallKind::print_string) {
            call.text = Name(random);
        }
        calls.push_back(call);
    }
}

void DrawConnect(Random& random, When when, std::vector<Call>& calls) {
    if (random.Chance(20)) {
        calls.push_back(Simple(CallKind::connect, random.Between(0, 3), when));
    }
    Call call = Simple(CallKind::connect, 1, when);
    if (random.Chance(300)) {
        call.kind = CallKind::connect_device;
        call.text = random.Chance(970) ? "/dev/serial/by-id/register" : "";
    }
    calls.push_back(call);
}

// After a failed print a careful host looks at the counters, prepares again and prints again.
void DrawReaction(Random& random, std::vector<Call>& calls) {
    const When when = When::after_failed_print;
    if (!random.Chance(500)) {
        return;
    }
    if (random.Chance(200)) {
        calls.push_back(Simple(CallKind::check_cancel, 0, when));
    }
    if (random.Chance(400)) {
        calls.push_back(Simple(CallKind::connect, 1, when));
    }
    if (random.Chance(300)) {
        calls.push_back(Simple(CallKind::get_check_count, 0, when));
    }
    if (random.Chance(900)) {
        calls.push_back(Simple(CallKind::check_close, 0, when));
    }
    calls.push_back(Simple(CallKind::print_check, 0, when));
}

}  // namespace

const char* NameOf(CallKind kind) {
    return kNames[static_cast<std::size_t>(kind)];
}

std::uint32_t HostPlan::PrintCalls() const {
    return static_cast<std::uint32_t>(
        std::count_if(calls.begin(), calls.end(),
                      [](const Call& call) { return call.kind == CallKind::print_check; }));
}

std::uint32_t HostPlan::Exchanges() const {
    std::uint32_t sum = 0;
    std::uint32_t lines = 0;
    for (const Call& call : calls) {
        if (call.kind == CallKind::add_sale) {
            lines +=
                5 + static_cast<std::uint32_t>(std::min<std::size_t>(call.text.size(), 72)) / 18;
        } else if (call.kind == CallKind::print_check && call.when == When::always) {
            sum += 28 + lines;
            lines = 0;
        } else {
            sum += call.when == When::always ? 3 : 0;
        }
    }
    return sum;
}

void DrawHost(Random random, HostPlan& plan) {
    plan.calls.clear();
    plan.asks_for_number = random.Chance(500);
    const std::uint32_t callbacks = random.Below(10);
    plan.callbacks = callbacks == 0   ? Callbacks::none
                     : callbacks == 1 ? Callbacks::throwing
                                      : Callbacks::plain;
    plan.patience = 60 + random.Below(random.Chance(800) ? 300 : 3'000);
    DrawConnect(random, When::always, plan.calls);
    if (random.Chance(700)) {
        DrawConnect(random, When::after_failed_connect, plan.calls);
    }
    const std::uint32_t kind = random.Below(100);
    const int checks = kind < 80 ? 1 : kind < 95 ? 2 : 4;
    for (int i = 0; i < checks; ++i) {
        DrawQueries(random, plan.calls);
        DrawFill(random, plan.calls);
        if (random.Chance(850)) {
            plan.calls.push_back(Simple(CallKind::check_close));
        }
        plan.calls.push_back(Simple(CallKind::print_check));
        DrawReaction(random, plan.calls);
        if (random.Chance(100)) {
            plan.calls.push_back(Simple(CallKind::clear_sales));
        }
    }
    DrawQueries(random, plan.calls);
    if (random.Chance(700)) {
        plan.calls.push_back(Simple(CallKind::disconnect));
    }
}

}  // namespace simulation
