#include "simulation/scenario.h"

namespace simulation {
namespace {

void DrawRegister(Random random, RegisterPlan& plan) {
    plan = RegisterPlan();
    plan.firmware = random.Chance(5) ? 300 : random.OneOf(kFirmware);
    plan.switched_on_long_ago = random.Chance(700);
    static constexpr std::uint32_t kPace[] = {0, 0, 0, 20'000, 50'000, 100'000, 150'000};
    // A printer that takes longer than the driver waits for it is a rarity of its own.
    plan.print_us_per_line = random.Chance(10) ? 2'500'000 : random.OneOf(kPace);
    if (random.Chance(100)) {
        plan.drawer_kopecks = random.Below(1'000);
    }
    plan.shift_open = random.Chance(500);
    if (plan.shift_open) {
        plan.checks = static_cast<std::uint16_t>(random.Below(500));
        plan.records = static_cast<std::uint16_t>(random.Below(3));
    }
    plan.paper_out = random.Chance(10);
    if (random.Chance(30)) {
        plan.lines_in_open_check = 1 + random.Below(3);
        plan.open_check_closed = random.Chance(500);
    }
}

void DrawCashier(Random random, CashierPlan& plan) {
    plan = CashierPlan();
    const std::uint32_t kind = random.Below(1000);
    if (kind < 600) {
        plan.asks = CashierPlan::Asks::by_code;
    } else if (kind < 850) {
        plan.asks = CashierPlan::Asks::by_barcode;
        plan.barcode_digits = random.Below(21);
    } else if (kind < 930) {
        plan.asks = CashierPlan::Asks::with_free_line;
    } else if (kind < 945) {
        plan.asks = CashierPlan::Asks::with_line;
    } else if (kind < 965) {
        plan.asks = CashierPlan::Asks::declines;
    } else if (kind < 985) {
        plan.asks = CashierPlan::Asks::marked;
    } else {
        plan.asks = CashierPlan::Asks::never;
    }
    plan.after_polls = random.Chance(800) ? random.Below(4) : random.Below(60);
}

}  // namespace

void DrawScenario(std::uint64_t seed, Scenario& scenario) {
    Random random(seed);
    scenario.seed = seed;
    DrawRegister(random.Branch(), scenario.kkm);
    scenario.line.baud = random.Chance(500) ? 9600 : 57600;
    scenario.line.net_number = static_cast<std::uint8_t>(1 + random.Below(255));
    scenario.line.latency_us = 500 + random.Below(8'000);
    DrawCashier(random.Branch(), scenario.cashier);
    DrawHost(random.Branch(), scenario.host);
    DrawFaults(random.Branch(), scenario.host.Exchanges(), scenario.faults);
    if (scenario.faults.Has(FaultKind::counters_near_wrap)) {
        scenario.kkm.shift_open = true;
        scenario.kkm.checks = static_cast<std::uint16_t>(65'533 + random.Below(3));
        scenario.kkm.records = static_cast<std::uint16_t>(65'530 + random.Below(6));
        // Reading a tape of that length takes an hour of the line's time and tells nothing new.
        for (Call& call : scenario.host.calls) {
            if (call.kind == CallKind::get_grand_total || call.kind == CallKind::get_cash_sum) {
                call.kind = CallKind::get_sale_number;
            }
        }
    }
}

}  // namespace simulation
