#include "unit/engine/engine_test.h"

namespace test {
namespace {

class WaitingTest : public EngineTest {
  protected:
    explicit WaitingTest(kkm_ver version = kkm_ver_303) : EngineTest(version) {
        driver.terminate();
    }

    // The register's memory holds so many lines of an open check.
    void HoldSales(unsigned char count) { line.Always(request::kRam, answer::Ram(count)); }

    // A pending sale, and what the status reads behind the sale query show.
    void PendSale(const std::vector<Bytes>& states) {
        HoldSales(1);
        line.Always(request::kStatistics, answer::Statistics(3, 9));
        line.Answer(request::kStatus, answer::None());
        for (const Bytes& state : states) {
            line.Answer(request::kStatus, state);
        }
    }

    const std::string read_sale_number =
        "SaleNum\nInfo: TryReadSaleNumber\nInfo: resulr TryReadSaleNumber = 1\nSaleNum > 0\n";
    const std::string armed = "Before Start\nAfter Start\n";
    const Bytes card = answer::State(0xCA);
};

class WaitingAt302Test : public WaitingTest {
  protected:
    WaitingAt302Test() : WaitingTest(kkm_ver_302) {}
};

class WaitingAt400Test : public WaitingTest {
  protected:
    WaitingAt400Test() : WaitingTest(kkm_ver_400) {}
};

TEST_F(WaitingTest, CheckOpenAtTheRegisterIsCancelled) {
    line.Answer(request::kStatus, answer::CheckOut());
    driver.StartWait(true);
    EXPECT_EQ(Steps(), (Lines{"20", "10", "7F", "sleep 50", "03", "sleep 50", "29 20", "sleep 50",
                              "29 28", "sleep 50", "7F", "35"}));
    EXPECT_EQ(Traced(), armed);
    EXPECT_TRUE(driver.iswait());
}

TEST_F(WaitingTest, NoPendingSaleArmsAtOnce) {
    line.Answer(request::kStatus, answer::Ready());
    HoldSales(0);
    driver.StartWait(false);
    EXPECT_EQ(Steps(), (Lines{"20", "04 15 95 01"}));
    EXPECT_EQ(Traced(),
              "SaleNum\nInfo: TryReadSaleNumber\nInfo: resulr TryReadSaleNumber = 0\n" + armed);
    EXPECT_TRUE(driver.iswait());
}

TEST_F(WaitingTest, LoopIsArmedBetweenItsTwoTraces) {
    line.Answer(request::kStatus, answer::Ready());
    HoldSales(0);
    Lines seen;
    world.on_trace = [&](const std::string& text) {
        seen.push_back((driver.iswait() ? "armed: " : "not armed: ") + text);
    };
    driver.StartWait(false);
    EXPECT_EQ(Lines(seen.end() - 2, seen.end()),
              (Lines{"not armed: Before Start\n", "armed: After Start\n"}));
}

TEST_F(WaitingTest, PendingSaleWithABarcodeIsResetAndCleared) {
    PendSale({answer::Barcode()});
    driver.StartWait(false);
    EXPECT_EQ(Steps(), (Lines{"20", "04 15 95 01", "35", "20", "0A", "04 15 95 01", "02 00 12 01",
                              "7F", "03"}));
    EXPECT_EQ(Traced(), read_sale_number + armed);
    EXPECT_TRUE(driver.iswait());
}

TEST_F(WaitingTest, PendingSaleWithADiscountCardIsCancelledWithShortPauses) {
    PendSale(std::vector<Bytes>(10, card));
    driver.StartWait(false);
    EXPECT_EQ(Steps(), (Lines{"20",    "04 15 95 01", "35",    "20",       "20", "20",
                              "20",    "20",          "20",    "20",       "20", "20",
                              "20",    "36 00",       "7F",    "sleep 20", "03", "sleep 20",
                              "29 20", "sleep 20",    "29 28", "sleep 20", "7F", "36 01"}));
    EXPECT_EQ(Traced(), read_sale_number + armed);
    EXPECT_TRUE(driver.iswait());
}

TEST_F(WaitingAt302Test, PendingSaleWithADiscountCardUsesTheSimpleLock) {
    PendSale(std::vector<Bytes>(10, card));
    line.Answer(request::kStatus, answer::State(0xCE));
    driver.StartWait(false);
    const Lines steps = Steps();
    EXPECT_EQ(Lines(steps.begin() + 13, steps.end()),
              (Lines{"10", "7F", "sleep 20", "03", "sleep 20", "29 20", "sleep 20", "29 28",
                     "sleep 20", "7F", "20", "7F"}));
}

TEST_F(WaitingTest, StateOfTheLastOfTenReadsCounts) {
    std::vector<Bytes> states(9, answer::Ready());
    states.push_back(card);
    PendSale(states);
    driver.StartWait(false);
    EXPECT_EQ(Count("36"), 2);
}

TEST_F(WaitingTest, BarcodeEndsTheReadsBehindADiscountCard) {
    PendSale({card, card, answer::Barcode()});
    driver.StartWait(false);
    EXPECT_EQ(Count("20"), 4);
    EXPECT_EQ(Count("36"), 0);
    EXPECT_EQ(Count("03"), 1);
}

TEST_F(WaitingTest, BarcodeAtTheTenthReadIsInTime) {
    std::vector<Bytes> states(9, answer::Ready());
    states.push_back(answer::Barcode());
    PendSale(states);
    driver.StartWait(false);
    EXPECT_EQ(Count("20"), 11);
    EXPECT_EQ(Count("03"), 1);
}

TEST_F(WaitingTest, PendingSaleInAnotherStateIsRefusedUnarmed) {
    PendSale(std::vector<Bytes>(10, answer::Ready()));
    line.Answer(request::kStatus, answer::Barcode());
    EXPECT_EQ(VeskCodeOf([&] { driver.StartWait(false); }), 6);
    EXPECT_EQ(Count("20"), 11);
    EXPECT_EQ(line.QueuedAnswers(), 1U);
    EXPECT_EQ(Traced(), read_sale_number);
    EXPECT_FALSE(driver.iswait());
}

TEST_F(WaitingTest, PendingSaleIsAskedForOnlyAboveZero) {
    line.Answer(request::kStatus, answer::State(0xCB));
    HoldSales(255);
    EXPECT_THROW(driver.StartWait(false), EMiniCom);  // nothing answers behind the query
    EXPECT_EQ(Count("35"), 1);
}

TEST_F(WaitingTest, UnreadableSaleNumberIsADeviceError) {
    line.Answer(request::kStatus, answer::None());
    EXPECT_EQ(VeskCodeOf([&] { driver.StartWait(false); }), 2);
    EXPECT_FALSE(driver.iswait());
}

TEST_F(WaitingTest, SilentRegisterLeavesStartWaitUnarmed) {
    EXPECT_THROW(driver.StartWait(false), EMiniCom);
    EXPECT_EQ(Steps(), (Lines{"20"}));
    EXPECT_EQ(Traced(), "");
    EXPECT_FALSE(driver.iswait());
}

TEST_F(WaitingTest, FailureToCancelTheOpenCheckLeavesStartWaitUnarmed) {
    line.Answer(request::kStatus, answer::CheckOut());
    line.Answer(request::kQuery, Silence());
    EXPECT_THROW(driver.StartWait(false), EMiniCom);
    EXPECT_EQ(Traced(), "");
    EXPECT_FALSE(driver.iswait());
}

TEST_F(WaitingTest, OpenCheckIsCancelledWithTheSimpleLockOnEveryFirmware) {
    for (const int version : {301, 302, 303, 310, 400}) {
        driver.setVersion(static_cast<kkm_ver>(version));
        line.Always(request::kStatus, answer::None());
        world.ClearLog();
        driver.DoCheckOut();
        EXPECT_EQ(world.Requests().front(), "10") << version;
        EXPECT_EQ(world.Requests().back(), "35") << version;
    }
}

TEST_F(WaitingTest, StopWaitEndsTheLoopAndSendsNothing) {
    driver.start();
    ASSERT_TRUE(driver.iswait());
    driver.StopWait();
    EXPECT_FALSE(driver.iswait());
    EXPECT_TRUE(world.Log().empty());
}

TEST_F(WaitingTest, FreeSaleIsNeverEnabled) {
    EXPECT_FALSE(driver.GetEnabledFreeSale());
}

TEST(Waiting, NewDriverIsNotTerminated) {
    const TTarvoVesk driver;
    EXPECT_TRUE(driver.iswait());
}

// A loop body that ends as the test says.
class CountingDriver : public TTarvoVesk {
  public:
    int execute() override {
        ++passes;
        seen_waiting = iswait();
        if (passes == terminate_at) {
            terminate();
        }
        return passes == stop_at ? 1 : 0;
    }

    int passes = 0;
    int terminate_at = 0;
    int stop_at = 0;
    bool seen_waiting = false;
};

TEST(PrintCheck, RunsUntilTheLoopIsTerminated) {
    CountingDriver driver;
    driver.terminate_at = 5;
    driver.PrintCheck();
    EXPECT_EQ(driver.passes, 5);
}

TEST(PrintCheck, RunsUntilAPassWantsTheEnd) {
    CountingDriver driver;
    driver.stop_at = 3;
    driver.PrintCheck();
    EXPECT_EQ(driver.passes, 3);
}

TEST(PrintCheck, ClearsAnEarlierTermination) {
    CountingDriver driver;
    driver.terminate();
    driver.stop_at = 2;
    driver.PrintCheck();
    EXPECT_EQ(driver.passes, 2);
    EXPECT_TRUE(driver.seen_waiting);
}

TEST_F(WaitingTest, SaleNumberIsReadFromMemory) {
    HoldSales(200);
    EXPECT_EQ(driver.TryReadSaleNumber(), 200);
    EXPECT_EQ(Steps(), (Lines{"04 15 95 01"}));
    EXPECT_EQ(Traced(), "Info: TryReadSaleNumber\nInfo: resulr TryReadSaleNumber = 200\n");
}

TEST_F(WaitingAt400Test, SaleNumberIsAskedForByCommand) {
    line.Answer(request::kSaleNumber, Frame(0xB7, {255}));
    EXPECT_EQ(driver.TryReadSaleNumber(), 255);
    EXPECT_EQ(Steps(), (Lines{"37"}));
    EXPECT_EQ(Traced(), "Info: TryReadSaleNumber\nInfo: resulr TryReadSaleNumber = 255\n");
}

class SaleNumberLimitTest : public WaitingTest, public testing::WithParamInterface<RetryCase> {};

TEST_P(SaleNumberLimitTest, IsKept) {
    // Every kind of failure counts: a wrong answer code, no data, silence.
    const Bytes bad[] = {Frame(0x85, {1}), Frame(0x84), Bytes()};
    for (int i = 0; i < GetParam().failures; ++i) {
        line.Answer(request::kRam, bad[i % 3]);
    }
    HoldSales(7);
    int number = -1;
    EXPECT_EQ(VeskCodeOf([&] { number = driver.TryReadSaleNumber(); }),
              GetParam().succeeds ? 0 : 2);
    EXPECT_EQ(number, GetParam().succeeds ? 7 : -1);
    EXPECT_EQ(Traced(), "Info: TryReadSaleNumber\n" +
                            Repeat(GetParam().failures, "ReadSaleNumber -  error: ???\n") +
                            GetParam().behind);
    EXPECT_EQ(Steps(), Lines(GetParam().Attempts(), "04 15 95 01"));
}

const std::string kNumber = "Info: resulr TryReadSaleNumber = 7\n";
const std::string kGivenUp = "Error: TryReadSaleNumber (count)";

INSTANTIATE_TEST_SUITE_P(
    KeepsTwentiethSuccessAsFailure, SaleNumberLimitTest,
    testing::Values(RetryCase{0, true, kNumber},
                    RetryCase{1, true, "Warning: TryReadSaleNumber 2>1\n" + kNumber},
                    RetryCase{18, true, "Warning: TryReadSaleNumber 19>1\n" + kNumber},
                    RetryCase{19, false, kGivenUp}, RetryCase{20, false, kGivenUp}),
    RetryCase::Name);

}  // namespace
}  // namespace test
