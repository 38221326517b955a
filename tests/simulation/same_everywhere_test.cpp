// A run is a function of its seed.
#include <gtest/gtest.h>

#include "simulation/run.h"
#include "simulation/sweep.h"

namespace simulation {
namespace {

std::string LogOf(const Scenario& scenario) {
    std::string log;
    Runner().Run(scenario, &log);
    return log;
}

std::string LogOf(std::uint64_t seed) {
    Scenario scenario;
    DrawScenario(seed, scenario);
    return LogOf(scenario);
}

// FNV-1a.
std::uint64_t Hash(const std::string& text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    return hash;
}

// The log without the lines that tell its plan.
std::string WithoutPlan(const std::string& log) {
    return log.substr(log.find("     0.000000"));
}

Fault WholeRun(FaultKind kind) {
    Fault fault{};
    fault.kind = kind;
    return fault;
}

// Both word sizes run this test: a seed has one log, byte for byte. After a change of what is drawn
// or told, take the new numbers from one of them.
TEST(Runs, LogIsTheSameOnEveryWordSize) {
    const std::pair<std::uint64_t, std::uint64_t> kLogs[] = {
        {1, 14059495792227876383U},     {2, 12204280217527273276U},
        {3, 2934560773515675775U},      {1000, 1799324377104717920U},
        {65536, 11961701334086415736U}, {18446744073709551615U, 14649766176982277185U}};
    for (const auto& [seed, hash] : kLogs) {
        EXPECT_EQ(Hash(LogOf(seed)), hash) << "seed " << seed;
    }
}

TEST(Runs, SameSeedGivesTheSameLogAgain) {
    for (std::uint64_t seed = 500; seed < 520; ++seed) {
        const std::string first = LogOf(seed);
        LogOf(seed + 1);
        EXPECT_EQ(LogOf(seed), first) << "seed " << seed;
    }
}

TEST(Runs, TraceFileThatCannotBeWrittenChangesNothing) {
    for (const int firmware : kFirmware) {
        Case one;
        one.firmware = firmware;
        const std::string log = WithoutPlan(LogOf(MakeScenario(one)));
        for (const FaultKind kind : {FaultKind::trace_unwritable, FaultKind::trace_disk_full}) {
            one.faults = {WholeRun(kind)};
            EXPECT_EQ(WithoutPlan(LogOf(MakeScenario(one))), log);
        }
    }
}

TEST(Runs, InterruptionOfEveryWaitChangesNoExchange) {
    for (const int firmware : kFirmware) {
        Case one;
        one.firmware = firmware;
        Scenario scenario = MakeScenario(one);
        const RunResult quiet = Runner().Run(scenario);
        scenario.faults.bursts.push_back({0, ~0U, 1000, false, FaultKind::interrupted});
        const RunResult interrupted = Runner().Run(scenario);
        EXPECT_EQ(interrupted.violation, "");
        EXPECT_EQ(interrupted.exchanges, quiet.exchanges);
        EXPECT_EQ(interrupted.verdicts, quiet.verdicts);
    }
}

TEST(Names, EveryFaultHasItsOwn) {
    for (std::uint32_t i = 0; i < kFaultKinds; ++i) {
        const auto kind = static_cast<FaultKind>(i);
        ASSERT_NE(FaultNamed(NameOf(kind)), nullptr) << NameOf(kind);
        EXPECT_EQ(*FaultNamed(NameOf(kind)), kind) << NameOf(kind);
    }
    EXPECT_EQ(FaultNamed("no_such_fault"), nullptr);
}

TEST(Names, CaseOfASweepIsReadAsItIsTold) {
    const std::string text = "310 one_line answer_lost@12:0:3 restart@14:1:7000";
    ASSERT_TRUE(ReadCase(text));
    EXPECT_EQ(Tell(*ReadCase(text)), text);
    EXPECT_FALSE(ReadCase("311 full"));
    EXPECT_FALSE(ReadCase("303 full no_such_fault@1:0:0"));
    EXPECT_FALSE(ReadCase("303 full answer_lost@"));
}

}  // namespace
}  // namespace simulation
