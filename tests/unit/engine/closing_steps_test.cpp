#include <stdexcept>

#include "unit/engine/engine_test.h"

namespace test {
namespace {

class ClosingStepsTest : public EngineTest {
  protected:
    explicit ClosingStepsTest(kkm_ver version = kkm_ver_303) : EngineTest(version) {}

    int CodeOfType(kkm_check type = check_return) {
        return VeskCodeOf([&] { driver.TrySendCheckType(type); });
    }

    int CodeOfPrintTest(int checks = 7, int sales = 40, int lines = 3) {
        return VeskCodeOf([&] { driver.TestCheckPrint(checks, sales, lines); });
    }

    void States(int count, unsigned char state) {
        line.Answers(request::kStatus, count, Frame(state));
    }

    // The clock stands at so many milliseconds behind now when the reply's request is written.
    Reply FailingAt(Micros ms) {
        const Micros at = world.Now() + ms * 1000;
        Reply reply;
        reply.at_request = [this, at] {
            world.Advance(at - world.Now());
            throw std::runtime_error("");
        };
        return reply;
    }
};

class ClosingStepsAt310Test : public ClosingStepsTest {
  protected:
    ClosingStepsAt310Test() : ClosingStepsTest(kkm_ver_310) {}
};

// --- TrySendCheckType

TEST_F(ClosingStepsTest, CheckTypeIsSentAndConfirmedByTheState) {
    TellStory();
    States(1, 0xC0);
    driver.TrySendCheckType(check_return);
    EXPECT_EQ(Story(),
              "| Info: TrySendCheckType type check = 1\\n\n"
              "  50 ms\n"
              "> 25 01\n"
              "> 20\n"
              "> 7F\n"
              "| Info: TrySendCheckType-ok\\n\n");
}

TEST_F(ClosingStepsTest, KeepsCheckTypeZeroSentAsSix) {
    const std::vector<std::pair<int, std::string>> types = {
        {0, "25 06"}, {1, "25 01"}, {2, "25 02"}, {3, "25 03"}, {4, "25 04"}, {6, "25 06"}};
    for (const auto& [type, request] : types) {
        world.ClearLog();
        world.ClearTraces();
        States(1, 0xC0);
        driver.TrySendCheckType(static_cast<kkm_check>(type));
        EXPECT_EQ(world.Requests().front(), request);
        EXPECT_EQ(world.Traces().front().text,
                  "Info: TrySendCheckType type check = " + std::to_string(type) + "\n");
    }
}

TEST_F(ClosingStepsTest, StateIsReadAHundredTimesBeforeTheTypeIsSentAgain) {
    States(100, 0xC8);
    States(1, 0xC0);
    EXPECT_EQ(CodeOfType(), 0);
    Lines steps{"sleep 50", "25 01"};
    steps.insert(steps.end(), 100, "20");
    steps.insert(steps.end(), {"25 01", "20", "7F"});
    EXPECT_EQ(Steps(), steps);
    EXPECT_EQ(TracedFrom("Warning"),
              "Warning: TrySendCheckType try 2\nInfo: TrySendCheckType-ok\n");
}

TEST_F(ClosingStepsTest, StateAtTheHundredthReadIsInTime) {
    States(99, 0xC8);
    States(1, 0xC0);
    EXPECT_EQ(CodeOfType(), 0);
    EXPECT_EQ(Count("25"), 1);
    EXPECT_EQ(Traced().find("Warning"), std::string::npos);
}

TEST_F(ClosingStepsTest, RefusedTypeIsNoCashAtOnce) {
    line.Answer(request::kCheckOut, Frame(0xE4, {0}));
    EXPECT_EQ(CodeOfType(), 20);
    EXPECT_EQ(Steps(), (Lines{"sleep 50", "25 01"}));
    EXPECT_EQ(Traced(), "Info: TrySendCheckType type check = 1\nError:  echNoCash");
}

TEST_F(ClosingStepsTest, RefusedMoneyIsNoCashWhicheverExchangeItComesFrom) {
    for (const unsigned char command : {request::kStatus, request::kReset}) {
        line.Answer(command, Throwing(ETarvo(&driver, 6, "")));
        line.Always(request::kStatus, answer::Ready());
        EXPECT_EQ(CodeOfType(), 20);
    }
}

TEST_F(ClosingStepsTest, FailedResetSendsTheTypeAgain) {
    States(2, 0xC0);
    line.Answer(request::kReset, Silence());
    EXPECT_EQ(CodeOfType(), 0);
    EXPECT_EQ(Steps(), (Lines{"sleep 50", "25 01", "20", "7F", "25 01", "20", "7F"}));
}

TEST_F(ClosingStepsTest, RegisterThatIsNeverReadyFailsTheType) {
    line.Always(request::kStatus, answer::CheckOut());
    EXPECT_EQ(CodeOfType(), 2);
    EXPECT_EQ(Count("25"), 20);
    EXPECT_EQ(Count("20"), 2000);
    EXPECT_EQ(Traced(), "Info: TrySendCheckType type check = 1\nError: TrySendCheckType  try");
}

class CheckTypeLimitTest : public ClosingStepsTest,
                           public testing::WithParamInterface<RetryCase> {};

TEST_P(CheckTypeLimitTest, IsKept) {
    const Reply bad[] = {Frame(0xE5, {1}), Silence(), Throwing(ETarvoVesk(echNoCash)),
                         Throwing(std::runtime_error(""))};
    for (int i = 0; i < GetParam().failures; ++i) {
        line.Answer(request::kCheckOut, bad[i % 4]);
    }
    line.Always(request::kStatus, answer::Ready());
    EXPECT_EQ(CodeOfType(), GetParam().succeeds ? 0 : 2);
    EXPECT_EQ(Traced(), "Info: TrySendCheckType type check = 1\n" + GetParam().behind);
    EXPECT_EQ(Count("25"), static_cast<long>(GetParam().Attempts()));
    EXPECT_EQ(std::count(world.Log().begin(), world.Log().end(), "sleep 50"), 1);
}

const std::string kTypeOk = "Info: TrySendCheckType-ok\n";
const std::string kTypeGivenUp = "Error: TrySendCheckType  try";

INSTANTIATE_TEST_SUITE_P(
    KeepsTwentiethSuccessAsFailure, CheckTypeLimitTest,
    testing::Values(RetryCase{0, true, kTypeOk},
                    RetryCase{1, true, "Warning: TrySendCheckType try 2\n" + kTypeOk},
                    RetryCase{18, true, "Warning: TrySendCheckType try 19\n" + kTypeOk},
                    RetryCase{19, false, kTypeGivenUp}, RetryCase{20, false, kTypeGivenUp}),
    RetryCase::Name);

// --- TryEnableCheckOut

TEST_F(ClosingStepsTest, CheckOutIsAwaitedAndTimeGivenToPrint) {
    TellStory();
    driver.check().sales.resize(4);
    States(1, 0xC8);
    driver.TryEnableCheckOut();
    EXPECT_EQ(Story(),
              "| Info: TryEnableCheckOut - begin\\n\n"
              "  50 ms\n"
              "> 20\n"
              "> 7F\n"
              "  5000 ms\n"
              "| Info: TryEnableCheckOut - ok\\n\n");
}

TEST_F(ClosingStepsTest, EveryLineTakesHalfASecondToPrint) {
    const std::vector<std::pair<std::size_t, std::string>> waits = {
        {0, "sleep 3000"}, {1, "sleep 3500"}, {20, "sleep 13000"}};
    for (const auto& [lines, wait] : waits) {
        driver.check().sales.resize(lines);
        world.ClearLog();
        States(1, 0xC8);
        driver.TryEnableCheckOut();
        EXPECT_EQ(Steps(), (Lines{"sleep 50", "20", "7F", wait}));
    }
}

TEST_F(ClosingStepsTest, KeepsCheckOutThatNeverComesAsOk) {
    line.Always(request::kStatus, answer::Ready());
    driver.TryEnableCheckOut();
    EXPECT_EQ(Traced(), "Info: TryEnableCheckOut - begin\n" +
                            Repeat(10,
                                   "Error: TryEnableCheckOut - !waitKKMStatus(ks_checkout)\n"
                                   "TryEnableCheckOut: error\n") +
                            "Warning: TryEnableCheckOut 10\nInfo: TryEnableCheckOut - ok\n");
    EXPECT_EQ(Count("20"), 1000);
    EXPECT_EQ(Count("7F"), 0);
    EXPECT_EQ(std::count(world.Log().begin(), world.Log().end(), "sleep 50"), 10);
}

TEST_F(ClosingStepsTest, CheckOutAtTheTenthAttemptIsOkToo) {
    States(900, 0xC0);
    States(1, 0xC8);
    driver.TryEnableCheckOut();
    EXPECT_EQ(Count("7F"), 1);
    EXPECT_EQ(TracedFrom("Warning"),
              "Warning: TryEnableCheckOut 10\nInfo: TryEnableCheckOut - ok\n");
}

TEST_F(ClosingStepsTest, SilentRegisterIsAskedTenTimesWithoutADelay) {
    driver.TryEnableCheckOut();
    EXPECT_EQ(Traced(), "Info: TryEnableCheckOut - begin\n" +
                            Repeat(10, "TryEnableCheckOut: error\n") +
                            "Warning: TryEnableCheckOut 10\nInfo: TryEnableCheckOut - ok\n");
    Lines steps;
    for (int i = 0; i < 10; ++i) {
        steps.insert(steps.end(), {"sleep 50", "20", "sleep 0"});
    }
    EXPECT_EQ(Steps(), steps);
}

TEST_F(ClosingStepsTest, FailedResetStillGivesTimeToPrint) {
    TellStory();
    driver.check().sales.resize(2);
    States(2, 0xC8);
    line.Answer(request::kReset, Frame(0x91));
    driver.TryEnableCheckOut();
    EXPECT_EQ(Story(),
              "| Info: TryEnableCheckOut - begin\\n\n"
              "  50 ms\n"
              "> 20\n"
              "> 7F\n"
              "| TryEnableCheckOut: error\\n\n"
              "  4000 ms\n"
              "  50 ms\n"
              "> 20\n"
              "> 7F\n"
              "  4000 ms\n"
              "| Warning: TryEnableCheckOut 2\\n\n"
              "| Info: TryEnableCheckOut - ok\\n\n");
}

TEST_F(ClosingStepsTest, PrintingTimeStartsAgainAtZeroWithEachAttempt) {
    driver.check().sales.resize(2);
    States(1, 0xC8);
    line.Answer(request::kReset, Silence());
    line.Answer(request::kStatus, Silence());
    States(1, 0xC8);
    driver.TryEnableCheckOut();
    EXPECT_EQ(Steps(), (Lines{"sleep 50", "20", "7F", "sleep 4000", "sleep 50", "20", "sleep 0",
                              "sleep 50", "20", "7F", "sleep 4000"}));
}

// --- TryReadError

TEST_F(ClosingStepsTest, ErrorNumberIsReadFromMemory) {
    line.Answer(request::kRam, answer::Ram(255));
    EXPECT_EQ(driver.TryReadError(), 255);
    EXPECT_EQ(Steps(), (Lines{"04 19 56 01"}));
    EXPECT_EQ(Traced(), "Info: TryReadError - begin\nInfo: TryReadError result = 255\n");
}

TEST_F(ClosingStepsAt310Test, ErrorNumberIsAskedForByCommand) {
    line.Answer(request::kError, Frame(0xB8, {16}));
    EXPECT_EQ(driver.TryReadError(), 16);
    EXPECT_EQ(Steps(), (Lines{"38"}));
    EXPECT_EQ(Traced(), "Info: TryReadError - begin\nInfo: TryReadError result = 16\n");
}

TEST_F(ClosingStepsTest, KeepsOneAttemptToReadTheError) {
    const Reply bad[] = {Frame(0x85, {16}), Silence(), Frame(0x84), Throwing(ETarvoVesk(echNoCash)),
                         Throwing(ETarvo(&driver, 6, ""))};
    for (const Reply& reply : bad) {
        world.ClearLog();
        world.ClearTraces();
        line.Answer(request::kRam, reply).Answer(request::kRam, answer::Ram(16));
        EXPECT_EQ(VeskCodeOf([&] { driver.TryReadError(); }), 2);
        EXPECT_EQ(Steps(), (Lines{"04 19 56 01"}));
        EXPECT_EQ(Traced(),
                  "Info: TryReadError - begin\nError TryReadError: ???\nError: TryReadError  try");
        driver.TryReadError();
    }
}

// --- TestCheckPrint

const std::string kTestBegin = "Info: TestCheckPrint - begin\n";

TEST_F(ClosingStepsTest, PrintIsProvedByTheCounters) {
    line.Answer(request::kStatistics, answer::Statistics(8, 43));
    EXPECT_EQ(CodeOfPrintTest(7, 40, 3), 0);
    EXPECT_EQ(Steps(), (Lines{"0A"}));
    EXPECT_EQ(Traced(), kTestBegin + "Info: TestCheckPrint - ok\n");
}

TEST_F(ClosingStepsTest, CountersReachSixteenBits) {
    line.Answer(request::kStatistics, answer::Statistics(65535, 65535));
    EXPECT_EQ(CodeOfPrintTest(65534, 65530, 5), 0);
}

struct Counters {
    std::string name;
    unsigned checks;
    unsigned sales;
    int checks_before;
    int sales_before;
    std::string compared;
};

class WrongCountersTest : public ClosingStepsTest, public testing::WithParamInterface<Counters> {
  protected:
    int Test() {
        line.Answer(request::kStatistics, answer::Statistics(GetParam().checks, GetParam().sales));
        return CodeOfPrintTest(GetParam().checks_before, GetParam().sales_before, 3);
    }
    std::string Compared(int error) const {
        return kTestBegin + "Error:  TestCheckPrint  (  " + GetParam().compared +
               ")\nInfo: TryReadError - begin\nInfo: TryReadError result = " +
               std::to_string(error) + "\n";
    }
};

TEST_P(WrongCountersTest, AreAFailedPrint) {
    line.Answer(request::kRam, answer::Ram(17));
    EXPECT_EQ(Test(), 32);
    EXPECT_EQ(Steps(), (Lines{"0A", "04 19 56 01"}));
    EXPECT_EQ(Traced(), Compared(17) + "Error: TestCheckPrint <> iPaperAbsent");
}

TEST_P(WrongCountersTest, WithErrorSixteenArePaperAbsent) {
    line.Answer(request::kRam, answer::Ram(16));
    EXPECT_EQ(Test(), 5);
    EXPECT_EQ(Traced(), Compared(16) + "Error: TestCheckPrint iPaperAbsent");
}

INSTANTIATE_TEST_SUITE_P(
    TestCheckPrint, WrongCountersTest,
    testing::Values(Counters{"OneSaleMissing", 8, 42, 7, 40, "8:8;  42:43"},
                    Counters{"OneSaleTooMany", 8, 44, 7, 40, "8:8;  44:43"},
                    Counters{"NoCheck", 7, 43, 7, 40, "7:8;  43:43"},
                    Counters{"TwoChecks", 9, 43, 7, 40, "9:8;  43:43"},
                    Counters{"KeepsChecksWithoutWrap", 0, 43, 65535, 40, "0:65536;  43:43"},
                    Counters{"KeepsSalesWithoutWrap", 8, 2, 7, 65535, "8:8;  2:65538"}),
    [](const auto& info) { return info.param.name; });

TEST_F(ClosingStepsTest, OnlyErrorSixteenIsAbsentPaper) {
    for (const int error : {0, 15, 17, 32, 144, 255}) {
        line.Answer(request::kStatistics, answer::Statistics(7, 40));
        line.Answer(request::kRam, answer::Ram(static_cast<unsigned char>(error)));
        EXPECT_EQ(CodeOfPrintTest(), 32) << error;
    }
}

TEST_F(ClosingStepsTest, UnreadableErrorLeavesThePrintTest) {
    line.Answer(request::kStatistics, answer::Statistics(7, 40));
    EXPECT_EQ(CodeOfPrintTest(), 2);
    EXPECT_EQ(Steps(), (Lines{"0A", "04 19 56 01"}));
    EXPECT_EQ(TracedFrom("Error TryReadError"),
              "Error TryReadError: ???\nError: TryReadError  try");
}

TEST_F(ClosingStepsTest, CountersAreReadUntilTheyAnswer) {
    line.Answers(request::kStatistics, 50, Frame(0x8A, Bytes(10)))
        .Answer(request::kStatistics, Silence())
        .Answer(request::kStatistics, answer::Statistics(8, 43));
    EXPECT_EQ(CodeOfPrintTest(), 0);
    EXPECT_EQ(Steps(), Lines(52, "0A"));
}

TEST_F(ClosingStepsTest, SilentRegisterFailsThePrintTestAfterThirtySeconds) {
    const Micros begin = world.Now();
    EXPECT_EQ(CodeOfPrintTest(), 2);
    EXPECT_EQ(Steps(), Lines(72, "0A"));  // of 420 ms each
    EXPECT_EQ((world.Now() - begin) / 1000, 30240U);
    EXPECT_EQ(Traced(), kTestBegin + "Error: TestCheckPrint - !readed\n");
}

TEST_F(ClosingStepsTest, ReadThatFailsAfterThirtySecondsIsTheLast) {
    line.Answer(request::kStatistics, FailingAt(30000));
    line.Answer(request::kStatistics, answer::Statistics(8, 43));
    EXPECT_EQ(CodeOfPrintTest(), 2);
    EXPECT_EQ(Count("0A"), 1);
}

TEST_F(ClosingStepsTest, ReadThatFailsAMillisecondEarlierIsNot) {
    line.Answer(request::kStatistics, FailingAt(29999));
    line.Answer(request::kStatistics, answer::Statistics(8, 43));
    EXPECT_EQ(CodeOfPrintTest(), 0);
}

TEST_F(ClosingStepsTest, EngineErrorOfAReadEndsThePrintTestWithItsCode) {
    line.Answer(request::kStatistics, Throwing(ETarvoVesk(echRegKass)));
    line.Answer(request::kStatistics, answer::Statistics(8, 43));
    EXPECT_EQ(CodeOfPrintTest(), 6);
    EXPECT_EQ(Count("0A"), 1);
    EXPECT_EQ(Traced(), kTestBegin + "Error: TestCheckPrint - !readed\n");
}

TEST_F(ClosingStepsTest, EngineErrorTwoOfAReadDoesNotEndThePrintTest) {
    line.Answer(request::kStatistics, Throwing(ETarvoVesk(echDevice)));
    line.Answer(request::kStatistics, Throwing(ETarvo(&driver, 6, "")));
    line.Answer(request::kStatistics, answer::Statistics(8, 43));
    EXPECT_EQ(CodeOfPrintTest(), 0);
    EXPECT_EQ(Count("0A"), 3);
}

}  // namespace
}  // namespace test
