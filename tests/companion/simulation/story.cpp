#include "companion/simulation/story.h"

#include <array>

namespace outcome_simulation {

using simulation::FaultKind;
using simulation::Random;

namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Between::count)> kBetween = {
    "nothing",       "plug pulled",    "cashier's check", "a longer check",
    "typed into it", "shift closed",   "paper put in",    "paper in and key",
    "other program", "other register", "older memory"};

// About as many as printing a check and finding out take.
constexpr std::uint32_t kExchanges = 130;

kkmcheck::Check DrawCheck(Random random) {
    kkmcheck::Check check;
    static constexpr double kPrices[] = {0.01, 1, 19.99, 25.5, 199.99, 9999.99, 99999.99};
    static constexpr double kQuantities[] = {1, 1, 1, 2, 3, 12, 0.345, 1.5, 0.001, 64.999, 100};
    const std::uint32_t lines = random.Chance(950) ? 1 + random.Below(4) : 5 + random.Below(12);
    for (std::uint32_t i = 0; i < lines; ++i) {
        kkmcheck::Line line;
        line.name = std::string(kOurNames) + " " + std::to_string(i);
        line.price =
            random.Chance(700) ? (1 + random.Below(50'000)) / 100.0 : random.OneOf(kPrices);
        line.quantity = random.OneOf(kQuantities);
        line.section = random.Between(1, 15);
        check.lines.push_back(line);
    }
    const std::uint32_t mode = random.Below(10);
    check.mode = mode == 0   ? kkmcheck::Mode::refund
                 : mode == 1 ? kkmcheck::Mode::credit
                             : kkmcheck::Mode::sale;
    check.discount = random.Chance(700) ? 0 : random.Between(-50, 50);
    if (check.mode == kkmcheck::Mode::sale && random.Chance(300)) {
        check.cash =
            static_cast<double>(kkmcheck::TotalKopecks(check) / 100 + 1 + random.Below(1000));
    }
    return check;
}

struct Exchanges {
    std::uint32_t first;
    std::uint32_t count;
};

void DrawKill(Random random, Exchanges among, Story& story, Kill& kill, std::uint32_t& kill_at) {
    kill = random.Chance(500) ? Kill::before : Kill::sent;
    kill_at = among.first + random.Below(among.count);
    simulation::Fault fault{};
    if (kill == Kill::sent) {
        fault.kind = FaultKind::answer_lost;
        fault.at = kill_at;
        story.scenario.faults.faults.push_back(fault);
    }
    fault.kind = FaultKind::hang_up;
    fault.at = kill_at + (kill == Kill::sent ? 1 : 0);
    story.scenario.faults.faults.push_back(fault);
}

void DrawAlike(Random random, Story& story) {
    static constexpr Exchanges kWhileSending = {30, 60};
    static constexpr Between kBefore[] = {
        Between::nothing,         Between::nothing,      Between::plug,
        Between::cashiers_check,  Between::longer_check, Between::typed_into_it,
        Between::paper_in_and_key};
    story.alike = story.check;
    for (kkmcheck::Line& line : story.alike.lines) {
        line.name.replace(0, kOurNames.size(), kAlikeNames);
    }
    // Mostly while lines may be at the register.
    story.scenario.faults.faults.clear();
    DrawKill(random.Branch(), kWhileSending, story, story.kill, story.kill_at);
    if (random.Chance(700)) {
        DrawKill(random.Branch(), {story.kill_at + 30, kExchanges}, story, story.alike_kill,
                 story.alike_kill_at);
    }
    story.between = random.OneOf(kBefore);
    story.alike_is_asked_first = random.Chance(500);
    story.kind = "killed, then alike by another key";
}

std::string KindOf(const simulation::FaultPlan& plan) {
    if (!plan.bursts.empty()) {
        return "bad line";
    }
    if (plan.faults.empty()) {
        return "no fault";
    }
    return plan.faults.size() == 1 ? std::string(NameOf(plan.faults[0].kind)) : "several faults";
}

}  // namespace

void DrawStory(std::uint64_t seed, Story& story) {
    Random random(seed ^ 0x6B6B6D636865636BU);
    DrawScenario(random.Next(), story.scenario);
    simulation::Scenario& scenario = story.scenario;
    scenario.seed = seed;
    if (scenario.faults.Has(FaultKind::counters_near_wrap)) {
        scenario.kkm.checks = 0;
        scenario.kkm.records = 0;
    }
    story.check = DrawCheck(random.Branch());
    story.kill = Kill::none;
    story.disk_full = 0;
    story.between = Between::nothing;
    story.alike = {};
    story.alike_kill = Kill::none;
    scenario.faults.Clear();
    scenario.faults.seed = random.Next();
    Random faults = random.Branch();
    const std::uint32_t pattern = random.Below(100);
    const bool has_faults = pattern < 50 || pattern >= 90;
    if (has_faults) {
        DrawFaults(faults, kExchanges, scenario.faults);
    }
    story.kind = KindOf(scenario.faults);
    if (scenario.faults.Has(FaultKind::counters_near_wrap)) {
        scenario.kkm.shift_open = true;
        scenario.kkm.checks = static_cast<std::uint16_t>(65'533 + random.Below(3));
        scenario.kkm.records = static_cast<std::uint16_t>(65'530 + random.Below(6));
    }
    if (pattern >= 50) {
        DrawKill(random.Branch(), {0, kExchanges}, story, story.kill, story.kill_at);
        story.kind = has_faults ? "killed and more" : "killed";
    }
    if (pattern >= 55 && pattern < 60) {
        DrawAlike(random.Branch(), story);
    }
    if (pattern >= 60 && pattern < 96) {
        story.between =
            static_cast<Between>(1 + random.Below(static_cast<std::uint32_t>(Between::count) - 1));
        story.kind += std::string(", then ") + kBetween[static_cast<std::size_t>(story.between)];
    }
    if (pattern < 5) {
        story.disk_full = 1 + random.Below(4);
        story.kind = "disk full and more";
    }
}

}  // namespace outcome_simulation
