// The scenarios that come with the register, each with the library as its host.
#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

#include "system/register_fixture.h"

namespace test {
namespace {

constexpr int kPaperAbsent = 5;
constexpr int kPrice = 14;
constexpr int kCancelled = 34;

class ScenarioTest : public RegisterTest {
  protected:
    void StartWith(const std::string& name, int firmware = 310) {
        Start(firmware, {"--scenario", SCENARIOS "/" + name + ".scenario"});
        Connect();
    }
    void AddLines() {
        for (const char* name : {"Tea", "Milk", "Bread"}) {
            ASSERT_TRUE(Add(name, 20.0, 1.0, 1));
        }
    }
    // How often the scenario did something.
    std::ptrdiff_t Events() const {
        const std::string log = folder.Read("register.log");
        const std::regex event("(^|\n)-- scenario, line ");
        return std::distance(std::sregex_iterator(log.begin(), log.end(), event),
                             std::sregex_iterator());
    }
};

TEST_F(ScenarioTest, LostAnswerSellsNothingTwice) {
    StartWith("lost-answer");
    AddLines();
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(Events(), 1);
    EXPECT_EQ(LastCheck().lines.size(), 3U);
}

TEST_F(ScenarioTest, NoisyLineDelaysTheCheckAndNoMore) {
    StartWith("noisy-line", 303);
    AddLines();
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(Events(), 7);
    EXPECT_EQ(LastCheck().lines.size(), 3U);
}

TEST_F(ScenarioTest, PaperEndsAndTheCheckStaysOpen) {
    StartWith("paper-ends");
    AddLines();
    EXPECT_EQ(Print(), kPaperAbsent);
    EXPECT_EQ(Events(), 1);
    EXPECT_EQ(Memory().check.lines.size(), 3U);
    EXPECT_FALSE(Memory().last_check.has_value());
    const std::string paper = Paper();
    EXPECT_EQ(std::count(paper.begin(), paper.end(), '\n'), 5);
}

TEST_F(ScenarioTest, PlugIsPulledAndTheCheckComesOutOnce) {
    StartWith("plug-pulled");
    AddLines();
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(Events(), 2);
    EXPECT_EQ(LastCheck().number, 1);
    EXPECT_EQ(LastCheck().lines.size(), 3U);
}

TEST_F(ScenarioTest, CashierDeclines) {
    StartWith("cashier-declines");
    AddLines();
    ASSERT_EQ(library.CheckClose(), 1);
    library.PrintCheck();
    EXPECT_EQ(library.GetErrorCode(), kCancelled);
    EXPECT_FALSE(Memory().last_check.has_value());
}

TEST_F(ScenarioTest, RefusedLineEndsTheCheck) {
    StartWith("refused-line");
    AddLines();
    EXPECT_EQ(Print(), kPrice);
    EXPECT_FALSE(Memory().last_check.has_value());
    EXPECT_FALSE(Memory().check.is_open());
}

TEST(Scenarios, EachHasATestHere) {
    std::set<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(SCENARIOS)) {
        names.insert(file.path().filename().string());
    }
    EXPECT_EQ(names, (std::set<std::string>{"cashier-declines.scenario", "lost-answer.scenario",
                                            "noisy-line.scenario", "paper-ends.scenario",
                                            "plug-pulled.scenario", "refused-line.scenario"}));
}

}  // namespace
}  // namespace test
