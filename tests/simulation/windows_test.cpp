// One exact case for each window in which the driver cannot know, and for each other thing that a
// user of the figures should know of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulation/run.h"
#include "simulation/sweep.h"

namespace simulation {

void PrintTo(Verdict verdict, std::ostream* to) {
    *to << NameOf(verdict);
}

namespace {

using testing::ElementsAre;

constexpr std::uint8_t kStatistics = 0x0A;
constexpr std::uint8_t kLock = 0x10;
constexpr std::uint8_t kStatus = 0x20;
constexpr std::uint8_t kSale = 0x21;
constexpr std::uint8_t kClose = 0x25;
constexpr std::uint8_t kSaleText = 0x27;
constexpr std::uint8_t kCash = 0x28;

// The fault at the nth request, counted from 0, with the command.
Fault At(std::uint8_t command, std::uint32_t nth, FaultKind kind, std::uint32_t a = 0,
         std::uint32_t b = 0) {
    Fault fault{};
    fault.kind = kind;
    fault.command = command;
    fault.at = nth;
    fault.a = a;
    fault.b = b;
    return fault;
}

Scenario Printing(int firmware, std::vector<Fault> faults, bool one_line = true) {
    Case one;
    one.firmware = firmware;
    one.one_line = one_line;
    one.faults = std::move(faults);
    return MakeScenario(one);
}

std::uint64_t Noted(const RunResult& result, Remark remark) {
    return result.figures.remarks[static_cast<std::size_t>(remark)];
}

class Windows : public testing::Test {
  protected:
    RunResult Run(const Scenario& scenario) {
        const RunResult result = Runner().Run(scenario);
        EXPECT_EQ(result.violation, "");
        return result;
    }
};

TEST_F(Windows, GoodDayPrintsOnEveryFirmware) {
    for (const int firmware : kFirmware) {
        EXPECT_THAT(Run(Printing(firmware, {}, false)).verdicts, ElementsAre(Verdict::printed));
    }
}

// The line dies behind the registration and stays dead for longer than the driver asks for the
// counters. A host that prints again without looking at the counters prints the check twice.
TEST_F(Windows, CountersUnreadBehindTheRegistration) {
    const auto dead = At(kStatistics, 2, FaultKind::line_dead, 31'000, 3);
    EXPECT_THAT(Run(Printing(302, {dead})).verdicts,
                ElementsAre(Verdict::counters_unread, Verdict::printed));
}

// A shift report that the cashier asks for and that finds no paper hangs torn behind the receipt;
// the receipt is whole.
TEST_F(Windows, TornShiftReportBehindTheReceiptIsNotTheReceipt) {
    const RunResult result =
        Run(Printing(302, {At(kStatistics, 2, FaultKind::paper_ends, 2),
                           At(kStatistics, 2, FaultKind::cashier_closes_shift)}));
    EXPECT_EQ(result.verdicts.front(), Verdict::printed);
}

// The same where the driver locks the keyboard: the unlocking is lost as well, the cashier cannot
// ask for the second check, and only UnLock() helps.
TEST_F(Windows, CountersUnreadLeavesTheKeyboardLocked) {
    const auto dead = At(kStatistics, 2, FaultKind::line_dead, 31'000, 3);
    const RunResult result = Run(Printing(303, {dead}));
    EXPECT_THAT(result.verdicts, ElementsAre(Verdict::counters_unread, Verdict::polled_idle));
    EXPECT_EQ(Noted(result, Remark::left_locked), 1U);
}

// At 9600 baud the counters take longer than the driver's two pauses. Once it has given an answer
// up at its first byte, it finds the rest of it behind each new request, for all of the 30 s.
TEST_F(Windows, NoiseBeforeTheCountersMakesAnswersSlip) {
    const auto noise = At(kStatistics, 2, FaultKind::answer_noise, 0, 85);
    EXPECT_THAT(Run(Printing(301, {noise})).verdicts,
                ElementsAre(Verdict::answers_slipped, Verdict::printed));
}

// The counters that arrive behind the registration belong to a status that changed on the line;
// none of those that would have decided arrives.
TEST_F(Windows, CountersReadForAStatusConfirmNothing) {
    Scenario scenario;
    DrawScenario(1616576, scenario);
    EXPECT_THAT(Run(scenario).verdicts,
                ElementsAre(Verdict::counters_unread, Verdict::polled_idle));
}

TEST_F(Windows, ShortSilenceBehindTheRegistrationIsWaitedFor) {
    const auto dead = At(kStatistics, 2, FaultKind::line_dead, 27'000, 3);
    EXPECT_THAT(Run(Printing(303, {dead})).verdicts, ElementsAre(Verdict::printed));
}

TEST_F(Windows, CheckCounterThatWrapsFailsThePrintedCheck) {
    const auto wrap = At(0, 0, FaultKind::counters_near_wrap, 0);
    EXPECT_THAT(Run(Printing(310, {wrap})).verdicts,
                ElementsAre(Verdict::counters_wrapped, Verdict::printed));
}

TEST_F(Windows, RecordCounterThatWrapsFailsThePrintedCheck) {
    const auto wrap = At(0, 0, FaultKind::counters_near_wrap, 1);
    EXPECT_THAT(Run(Printing(310, {wrap})).verdicts,
                ElementsAre(Verdict::counters_wrapped, Verdict::printed));
}

TEST_F(Windows, CountersThatChangedOnTheLineFailThePrintedCheck) {
    const auto altered = At(kStatistics, 2, FaultKind::answer_altered, 3, 0);
    EXPECT_THAT(Run(Printing(400, {altered})).verdicts,
                ElementsAre(Verdict::counters_forged, Verdict::printed));
}

// Firmware up to 302 and 400 leaves its keyboard unlocked while the driver works.
TEST_F(Windows, CashierAddsALineAtAnUnlockedKeyboard) {
    const auto line = At(kClose, 0, FaultKind::cashier_enters_line, 1);
    EXPECT_THAT(Run(Printing(302, {line})).verdicts,
                ElementsAre(Verdict::changed_by_cashier, Verdict::printed));
}

TEST_F(Windows, CashierCannotAddALineAtALockedKeyboard) {
    const auto line = At(kClose, 0, FaultKind::cashier_enters_line, 1);
    EXPECT_THAT(Run(Printing(303, {line})).verdicts, ElementsAre(Verdict::printed));
}

// The checksum is one sum of bytes: two changes can cancel out.
TEST_F(Windows, SaleThatChangedOnTheLineIsPrintedAsItCame) {
    const auto altered = At(kSale, 0, FaultKind::request_altered, 33, 2);
    EXPECT_THAT(Run(Printing(303, {altered})).verdicts, ElementsAre(Verdict::request_misread));
}

// Answers carry no number of their request, and the pieces of a name are acknowledged alike.
TEST_F(Windows, StaleAcknowledgementOfALostPieceOfAName) {
    const auto lost = At(kSaleText, 2, FaultKind::request_lost);
    const auto stale = At(kSaleText, 2, FaultKind::answer_stale);
    EXPECT_THAT(Run(Printing(303, {lost, stale}, false)).verdicts,
                ElementsAre(Verdict::answer_forged));
}

// A register that is slow to show its states makes the driver reset twice what an earlier host left
// closed.
TEST_F(Windows, SlowRegisterPrintsWhatWasLeftOver) {
    Scenario scenario = Printing(303, {At(kStatus, 0, FaultKind::busy, 2, 1)});
    scenario.kkm.lines_in_open_check = 1;
    scenario.kkm.open_check_closed = true;
    scenario.kkm.in_check_out = false;
    auto& calls = scenario.host.calls;
    calls.erase(std::remove_if(calls.begin(), calls.end(),
                               [](const Call& call) { return call.kind == CallKind::check_close; }),
                calls.end());
    EXPECT_THAT(Run(scenario).verdicts, testing::Contains(Verdict::left_over_printed));
}

TEST_F(Windows, HostEndsThePollingOfARegisterThatNeverAsks) {
    Scenario scenario = Printing(303, {});
    scenario.cashier.asks = CashierPlan::Asks::never;
    EXPECT_THAT(Run(scenario).verdicts, ElementsAre(Verdict::polled_idle));
}

TEST_F(Windows, HostEndsThePollingOfASilentRegister) {
    const auto pulled = At(kStatus, 1, FaultKind::hang_up);
    EXPECT_THAT(Run(Printing(303, {pulled})).verdicts, ElementsAre(Verdict::polled_silence));
}

TEST_F(Windows, HostEndsThePollingOfARegisterWithACheckOfTheCashiers) {
    Scenario scenario = Printing(303, {});
    scenario.faults.faults = {At(kStatus, 2, FaultKind::cashier_enters_line),
                              At(kStatus, 2, FaultKind::cashier_asks)};
    scenario.cashier.asks = CashierPlan::Asks::never;
    EXPECT_THAT(Run(scenario).verdicts, ElementsAre(Verdict::polled_open_check));
}

class Remarks : public Windows {};

// Code 5 leaves the check open: with paper in, the cashier's key brings it out behind the host's
// back.
TEST_F(Remarks, CashierFinishesTheCheckWhenThereIsPaperAgain) {
    Scenario scenario =
        Printing(303, {At(kClose, 0, FaultKind::paper_out), At(kStatistics, 3, FaultKind::paper_in),
                       At(kStatistics, 3, FaultKind::cashier_presses, 1)});
    auto& calls = scenario.host.calls;
    Call query{};
    query.kind = CallKind::get_check_count;
    calls.resize(4);  // connect, one line, prepare, print
    calls.push_back(query);
    const RunResult result = Run(scenario);
    EXPECT_THAT(result.verdicts, ElementsAre(Verdict::failed));
    EXPECT_EQ(Noted(result, Remark::open_for_paper), 1U);
    EXPECT_EQ(Noted(result, Remark::printed_by_cashier_later), 1U);
}

// A clean-up that does not get through leaves the check in its check-out, and the reset with which
// DisconnectKKM makes the register idle prints it.
TEST_F(Remarks, DisconnectPrintsWhatADisturbedCleanUpLeft) {
    Scenario scenario = Printing(
        303, {At(kCash, 0, FaultKind::refusal, 0, 1), At(kLock, 0, FaultKind::request_lost)},
        false);
    auto& calls = scenario.host.calls;
    calls.erase(calls.begin() + 8, calls.end() - 1);  // prints once, then disconnects
    const RunResult result = Run(scenario);
    EXPECT_EQ(Noted(result, Remark::left_open), 1U);
    EXPECT_EQ(Noted(result, Remark::printed_by_reset_later), 1U);
}

}  // namespace
}  // namespace simulation
