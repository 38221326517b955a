#include <stdexcept>

#include "unit/engine/engine_test.h"

namespace test {
namespace {

class MoneyStepsTest : public EngineTest {
  protected:
    explicit MoneyStepsTest(kkm_ver version = kkm_ver_302) : EngineTest(version) {}

    int CodeOfDiscount(int percent) {
        return VeskCodeOf([&] { driver.TrySendDiscount(percent); });
    }
    int CodeOfCash(unsigned long cash) {
        return VeskCodeOf([&] { driver.TrySendCheckCash(cash); });
    }
    void States(int count, unsigned char state) {
        line.Answers(request::kStatus, count, Frame(state));
    }
};

// --- TrySendDiscount

TEST_F(MoneyStepsTest, DiscountIsSentAndConfirmedByTheState) {
    TellStory();
    States(1, 0xC0);
    driver.TrySendDiscount(-5);
    EXPECT_EQ(Story(),
              "| Info: TrySendDiscount = -5%\\n\n"
              "> 23 FB\n"
              "> 20\n"
              "> 7F\n"
              "| TrySendDiscount-ok\\n\n");
}

TEST_F(MoneyStepsTest, DiscountIsCutToEightBits) {
    const std::vector<std::pair<int, std::string>> percents = {
        {300, "23 2C"}, {99, "23 63"}, {-99, "23 9D"}, {128, "23 80"}, {0, "23 00"}};
    for (const auto& [percent, request] : percents) {
        world.ClearLog();
        world.ClearTraces();
        States(1, 0xC0);
        driver.TrySendDiscount(percent);
        EXPECT_EQ(world.Requests().front(), request);
        EXPECT_EQ(world.Traces().front().text,
                  "Info: TrySendDiscount = " + std::to_string(percent) + "%\n");
    }
}

class DiscountLimitTest : public MoneyStepsTest, public testing::WithParamInterface<RetryCase> {};

TEST_P(DiscountLimitTest, IsKept) {
    for (int i = 0; i < GetParam().failures; ++i) {
        States(1, 0xC8);
    }
    line.Always(request::kStatus, answer::Ready());
    EXPECT_EQ(CodeOfDiscount(10), GetParam().succeeds ? 0 : 2);
    EXPECT_EQ(Traced(), "Info: TrySendDiscount = 10%\n" + GetParam().behind);
    Lines steps;
    for (std::size_t i = 0; i < GetParam().Attempts(); ++i) {
        steps.insert(steps.end(), {"23 0A", "20"});
    }
    if (GetParam().failures < 20) {
        steps.emplace_back("7F");
    }
    EXPECT_EQ(Steps(), steps);
}

const std::string kDiscountOk = "TrySendDiscount-ok\n";
const std::string kDiscountGivenUp = "Error: TrySendDiscount try ";

INSTANTIATE_TEST_SUITE_P(
    KeepsTwentiethSuccessAsFailure, DiscountLimitTest,
    testing::Values(RetryCase{0, true, kDiscountOk},
                    RetryCase{1, true, "Warning: TrySendDiscount try 2\n" + kDiscountOk},
                    RetryCase{18, true, "Warning: TrySendDiscount try 19\n" + kDiscountOk},
                    RetryCase{19, false, kDiscountGivenUp}, RetryCase{20, false, kDiscountGivenUp}),
    RetryCase::Name);

TEST_F(MoneyStepsTest, EveryFailureOfTheDiscountIsDroppedSilently) {
    line.Answer(request::kDiscount, Frame(0xB5))
        .Answer(request::kDiscount, Silence())
        .Answer(request::kDiscount, Throwing(ETarvo(&driver, 6, "")))
        .Answer(request::kDiscount, Throwing(ETarvoVesk(echNoCash)));
    line.Answer(request::kStatus, Silence());
    line.Always(request::kStatus, answer::Ready());
    line.Answer(request::kReset, Frame(0x91));
    EXPECT_EQ(CodeOfDiscount(10), 0);
    EXPECT_EQ(Steps(), (Lines{"23 0A", "23 0A", "23 0A", "23 0A", "23 0A", "20", "23 0A", "20",
                              "7F", "23 0A", "20", "7F"}));
    EXPECT_EQ(Traced(),
              "Info: TrySendDiscount = 10%\nWarning: TrySendDiscount try 7\nTrySendDiscount-ok\n");
}

// --- TrySendCheckCash

const std::string kCashEnd = "Info: TrySendCheckCash end\n";

TEST_F(MoneyStepsTest, CashIsSentWhenTheRegisterChecksOut) {
    TellStory();
    driver.check().cash = 258;
    States(1, 0xC8);
    driver.TrySendCheckCash(258);
    EXPECT_EQ(Story(),
              "| Info: TrySendCheckCash checkCash = 258\\n\n"
              "> 20\n"
              "> 28 00 00 00 01 02\n"
              "| Info: TrySendCheckCash - Send Ok\\n\n"
              "| Info: TrySendCheckCash end\\n\n");
}

TEST_F(MoneyStepsTest, KeepsCashOfTheBufferWhateverIsPassed) {
    driver.check().cash = 0xFFFFFFFF;
    States(1, 0xC8);
    driver.TrySendCheckCash(1);
    EXPECT_EQ(Steps(), (Lines{"20", "28 00 FF FF FF FF"}));
}

TEST_F(MoneyStepsTest, NoCashSendsNothing) {
    driver.check().cash = 500;
    driver.TrySendCheckCash(0);
    EXPECT_TRUE(world.Log().empty());
    EXPECT_EQ(Traced(), "Info: TrySendCheckCash checkCash = 0\n" + kCashEnd);
}

TEST_F(MoneyStepsTest, KeepsCashForFirmware301To309ByNumber) {
    const std::vector<std::pair<int, long>> versions = {{300, 0}, {301, 1}, {302, 1}, {303, 1},
                                                        {309, 1}, {310, 0}, {400, 0}};
    for (const auto& [version, count] : versions) {
        driver.setVersion(static_cast<kkm_ver>(version));
        world.ClearLog();
        line.Always(request::kStatus, answer::CheckOut());
        EXPECT_EQ(CodeOfCash(100), 0);
        EXPECT_EQ(Count("28"), count) << version;
        EXPECT_EQ(world.Log().empty(), count == 0) << version;
    }
}

TEST_F(MoneyStepsTest, UnknownFirmwareLeavesTheCashStepAfterItsFirstTrace) {
    driver.setVersion(kkm_ver_unknown);
    for (const unsigned long cash : {0UL, 100UL}) {
        world.ClearTraces();
        try {
            driver.TrySendCheckCash(cash);
            ADD_FAILURE() << "nothing thrown";
        } catch (const ETarvo& e) {
            EXPECT_EQ(e.code(), 7);
        }
        EXPECT_EQ(Traced(), "Info: TrySendCheckCash checkCash = " + std::to_string(cash) + "\n");
    }
    EXPECT_TRUE(world.Log().empty());
}

TEST_F(MoneyStepsTest, RefusedCashIsNoCashAtOnce) {
    States(1, 0xC8);
    line.Answer(request::kCash, Frame(0xE8, {1}));
    EXPECT_EQ(CodeOfCash(100), 20);
    EXPECT_EQ(Steps(), (Lines{"20", "28 00 00 00 00 00"}));
    EXPECT_EQ(Traced(), "Info: TrySendCheckCash checkCash = 100\nError:  echNoCash");
}

TEST_F(MoneyStepsTest, RefusedMoneyAtTheStatusReadIsNoCashToo) {
    line.Answer(request::kStatus, Throwing(ETarvo(&driver, 6, "")));
    EXPECT_EQ(CodeOfCash(100), 20);
}

TEST_F(MoneyStepsTest, StateIsReadAHundredTimesBeforeTheNextAttempt) {
    States(100, 0xC0);
    States(1, 0xC8);
    EXPECT_EQ(CodeOfCash(100), 0);
    Lines steps(100, "20");
    steps.insert(steps.end(), {"sleep 10", "20", "28 00 00 00 00 00"});
    EXPECT_EQ(Steps(), steps);
    EXPECT_EQ(Traced(),
              "Info: TrySendCheckCash checkCash = 100\n"
              "Error: !waitKKMStatus(ks_checkout)\n"
              "TrySendCheckCash: error\n"
              "Info: TrySendCheckCash - Send Ok\n"
              "Warning: TrySendCheckCash try2\n"
              "Info: TrySendCheckCash end\n");
}

TEST_F(MoneyStepsTest, StateAtTheHundredthReadIsInTimeForTheCash) {
    States(99, 0xC0);
    States(1, 0xC8);
    EXPECT_EQ(CodeOfCash(100), 0);
    EXPECT_EQ(Traced().find("Warning"), std::string::npos);
}

TEST_F(MoneyStepsTest, CashErrorsOfTheProtocolAreSilentAndOthersAreTraced) {
    line.Always(request::kStatus, answer::CheckOut());
    line.Answer(request::kCash, Frame(0xE9))
        .Answer(request::kCash, Silence())
        .Answer(request::kCash, Throwing(ETarvoVesk(echNoCash)))
        .Answer(request::kCash, Throwing(std::runtime_error("")));
    EXPECT_EQ(CodeOfCash(100), 0);
    const std::string send = "28 00 00 00 00 00";
    EXPECT_EQ(Steps(), (Lines{"20", send, "sleep 10", "20", send, "sleep 10", "20", send,
                              "sleep 10", "20", send, "sleep 10", "20", send}));
    EXPECT_EQ(Traced(),
              "Info: TrySendCheckCash checkCash = 100\n" + Repeat(3, "TrySendCheckCash: error\n") +
                  "Info: TrySendCheckCash - Send Ok\nWarning: TrySendCheckCash try5\n" + kCashEnd);
}

class CashLimitTest : public MoneyStepsTest, public testing::WithParamInterface<RetryCase> {};

TEST_P(CashLimitTest, IsKept) {
    line.Answers(request::kCash, GetParam().failures, Frame(0xE9));
    line.Always(request::kStatus, answer::CheckOut());
    EXPECT_EQ(CodeOfCash(100), GetParam().succeeds ? 0 : 2);
    EXPECT_EQ(Traced(), "Info: TrySendCheckCash checkCash = 100\n" + GetParam().behind);
    EXPECT_EQ(Count("28"), static_cast<long>(GetParam().Attempts()));
}

const std::string kCashSent = "Info: TrySendCheckCash - Send Ok\n";
const std::string kCashGivenUp = "Error: TrySendCheckCash try";

INSTANTIATE_TEST_SUITE_P(
    KeepsTwentiethSuccessAsFailure, CashLimitTest,
    testing::Values(RetryCase{0, true, kCashSent + kCashEnd},
                    RetryCase{1, true, kCashSent + "Warning: TrySendCheckCash try2\n" + kCashEnd},
                    RetryCase{18, true, kCashSent + "Warning: TrySendCheckCash try19\n" + kCashEnd},
                    RetryCase{19, false, kCashSent + kCashGivenUp},
                    RetryCase{20, false, kCashGivenUp}),
    RetryCase::Name);

TEST_F(MoneyStepsTest, RegisterThatNeverChecksOutFailsTheCash) {
    line.Always(request::kStatus, answer::Ready());
    EXPECT_EQ(CodeOfCash(100), 2);
    EXPECT_EQ(Count("20"), 2000);
    EXPECT_EQ(Count("28"), 0);
    EXPECT_EQ(Traced(), "Info: TrySendCheckCash checkCash = 100\n" +
                            Repeat(20,
                                   "Error: !waitKKMStatus(ks_checkout)\n"
                                   "TrySendCheckCash: error\n") +
                            "Error: TrySendCheckCash try");
}

// --- TryPrintDoubleCheck

const std::string kCopyBegin = "Info: TryPrintDoubleCheck - begin\n";

TEST_F(MoneyStepsTest, CopyIsPrintedBetweenTwoProbes) {
    TellStory();
    line.Always(request::kStatistics, answer::Statistics(1, 1));
    EXPECT_TRUE(driver.TryPrintDoubleCheck());
    EXPECT_EQ(Story(),
              "| Info: TryPrintDoubleCheck - begin\\n\n"
              "> 0A\n"
              "> 29 2B\n"
              "  20 ms\n"
              "> 0A\n"
              "| Info: TryPrintDoubleCheck - ok\\n\n");
}

TEST_F(MoneyStepsTest, SilentRegisterGetsNoCopyKey) {
    const Micros begin = world.Now();
    EXPECT_FALSE(driver.TryPrintDoubleCheck());
    EXPECT_EQ(Steps(), Lines(72, "0A"));
    EXPECT_EQ((world.Now() - begin) / 1000, 30240U);
    EXPECT_EQ(Traced(), kCopyBegin + "Info: TryPrintDoubleCheck no inteface for DoubleCheck\n");
}

TEST_F(MoneyStepsTest, RegisterSilentBehindTheCopyKeyIsNoSuccess) {
    line.Answer(request::kStatistics, answer::Statistics(1, 1));
    const Micros begin = world.Now();
    EXPECT_FALSE(driver.TryPrintDoubleCheck());
    Lines steps{"0A", "29 2B", "sleep 20"};
    steps.insert(steps.end(), 72, "0A");
    EXPECT_EQ(Steps(), steps);
    EXPECT_EQ((world.Now() - begin) / 1000, 30300U);
    EXPECT_EQ(Traced(), kCopyBegin + "Info: TryPrintDoubleCheck no inteface after DoubleCheck\n");
}

TEST_F(MoneyStepsTest, ProbesDropEveryFailure) {
    for (int probe = 0; probe < 2; ++probe) {
        line.Answer(request::kStatistics, Frame(0x8A, Bytes(12)))
            .Answer(request::kStatistics, Throwing(ETarvoVesk(echRegKass)))
            .Answer(request::kStatistics, Silence())
            .Answer(request::kStatistics, answer::Statistics(1, 1));
    }
    EXPECT_TRUE(driver.TryPrintDoubleCheck());
    EXPECT_EQ(Steps(),
              (Lines{"0A", "0A", "0A", "0A", "29 2B", "sleep 20", "0A", "0A", "0A", "0A"}));
    EXPECT_EQ(Traced(), kCopyBegin + "Info: TryPrintDoubleCheck - ok\n");
}

TEST_F(MoneyStepsTest, FailedCopyKeyIsDropped) {
    line.Always(request::kStatistics, answer::Statistics(1, 1));
    for (const Reply& reply : {Reply(Frame(0xAA)), Silence(), Throwing(ETarvoVesk(echRegKass))}) {
        world.ClearLog();
        line.Answer(request::kKey, reply);
        EXPECT_TRUE(driver.TryPrintDoubleCheck());
        EXPECT_EQ(Steps(), (Lines{"0A", "29 2B", "sleep 20", "0A"}));
    }
}

}  // namespace
}  // namespace test
