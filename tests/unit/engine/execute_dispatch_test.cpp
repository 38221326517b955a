#include <stdexcept>

#include "unit/engine/execute_test.h"

namespace test {
namespace {

// One pass over one state of the register.
class DispatchTest : public ExecuteTest {
  protected:
    explicit DispatchTest(kkm_ver version = kkm_ver_303) : ExecuteTest(version) {}

    // The check procedure ends at once when the register holds lines of an open check.
    void HoldOpenCheck() { line.Always(request::kRam, answer::Ram(1)); }

    // What a pass over the open check ends with.
    const std::string opened =
        "> 04 15 95 01\n"
        "| Warning:Check is opened - Exit\n"
        "> 7E 43 68 65 63 6B 20 69 73 20 6F 70 65 6E 65 64 20 10 02\n"
        "  20 ms\n";
};

class DispatchAt301Test : public DispatchTest {
  protected:
    DispatchAt301Test() : DispatchTest(kkm_ver_301) {}
};

TEST_F(DispatchTest, NeutralStateIsLeftAlone) {
    line.Answer(request::kStatus, answer::None());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Steps(), (Lines{"20"}));
    EXPECT_EQ(Traced(), "");
    EXPECT_TRUE(driver.iswait());
}

TEST_F(DispatchTest, EveryStateThatIsNoQueryIsReset) {
    int reset = 0;
    for (unsigned code = 0; code < 256; ++code) {
        if (code >= 0xA0 && code <= 0xA3) {
            continue;
        }
        if (code == 0xC6 || code == 0xC8) {
            continue;
        }
        world.ClearLog();
        line.Answer(request::kStatus, Frame(static_cast<unsigned char>(code)));
        EXPECT_EQ(driver.execute(), 0);
        EXPECT_EQ(Steps(), (Lines{"20", "7F"})) << code;
        ++reset;
    }
    EXPECT_EQ(reset, 250);
    EXPECT_EQ(Traced(), "");
    EXPECT_TRUE(driver.iswait());
}

TEST_F(DispatchTest, CheckBeingClosedIsCancelled) {
    line.Answer(request::kStatus, answer::CheckOut());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Steps(), (Lines{"20", "10", "7F", "sleep 50", "03", "sleep 50", "29 20", "sleep 50",
                              "29 28", "sleep 50", "7F", "35"}));
    EXPECT_EQ(Traced(), "");
    EXPECT_TRUE(driver.iswait());
}

TEST_F(DispatchTest, SaleCodeRunsTheCheck) {
    TellStory();
    HoldOpenCheck();
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    line.Answer(request::kStatus, answer::SaleCode());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(),
              "> 20\n> 0A\n> 04 15 95 01\n> 02 00 12 01\n| Info:query ks_salecode\n" + opened);
}

TEST_F(DispatchTest, BarcodeRunsTheCheckBehindItsOwnTrace) {
    TellStory();
    HoldOpenCheck();
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    line.Answer(request::kStatus, answer::Barcode());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(),
              "> 20\n> 0A\n> 04 15 95 01\n> 02 00 12 01\n| Info: query ks_salebarcode\n"
              "| Info:query ks_salecode\n" +
                  opened);
}

const std::string kFreeSale =
    "| Info: query ks_salefree\n"
    "> 7F\n"
    "  50 ms\n"
    "> 03\n"
    "| Info: query ks_salebarcode\n"
    "| Info:query ks_salecode\n";

TEST_F(DispatchTest, FreeSaleDropsTheLineAtTheRegisterFirst) {
    TellStory();
    HoldOpenCheck();
    line.Answer(request::kStatus, Frame(0xC6));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(), "> 20\n" + kFreeSale + opened);
}

TEST_F(DispatchTest, KeepsFourQueryTracesForAnAddedLine) {
    TellStory();
    HoldOpenCheck();
    line.Answer(request::kStatus, answer::SaleAdd());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(), "> 20\n| Info: query ks_saleadd\n" + kFreeSale + opened);
}

TEST_F(DispatchAt301Test, FreeSaleIsClearedByKeysOnlyInCheckOut) {
    HoldOpenCheck();
    line.Answer(request::kStatus, Frame(0xC6)).Answer(request::kStatus, answer::Ready());
    driver.execute();
    const Lines steps = Steps();
    EXPECT_EQ(Lines(steps.begin(), steps.begin() + 5),
              (Lines{"20", "7F", "sleep 50", "20", "04 15 94 01"}));
}

TEST_F(DispatchTest, WholeCheckFollowsAnAddedLine) {
    AddLine("x", 100, 1, false, 1);
    line.Answer(request::kStatus, answer::SaleAdd());
    line.Answer(request::kStatistics, answer::Statistics(7, 40));
    SaleNumber(0);
    TakeLines(1);
    CloseCheck(1);
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(line.QueuedAnswers(), 0U);
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_FALSE(driver.iswait());
}

TEST_F(DispatchTest, OpenCheckIsShownOnEveryPassAndIsNoError) {
    HoldOpenCheck();
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    for (int pass = 0; pass < 3; ++pass) {
        line.Answer(request::kStatus, answer::SaleCode());
        EXPECT_EQ(driver.execute(), 0);
    }
    EXPECT_EQ(Count("7E"), 3);
    EXPECT_EQ(Count("21"), 0);
    EXPECT_EQ(StepsFrom("note hook 0"), Lines{});
    EXPECT_TRUE(driver.iswait());
}

TEST_F(DispatchTest, StatusThatCannotBeReadIsTheNeutralState) {
    const Reply bad[] = {Silence(),
                         Bytes{0x00, 0x03, 0x00, 0xA1, 0x00},
                         Reply().EndWith(0),
                         Throwing(ETarvoVesk(echRegKass)),
                         Throwing(std::runtime_error("")),
                         Throwing(1)};
    for (const Reply& reply : bad) {
        world.ClearLog();
        line.Answer(request::kStatus, reply);
        EXPECT_EQ(driver.execute(), 0);
        EXPECT_EQ(Steps(), (Lines{"20"}));
    }
    EXPECT_EQ(Traced(), "");
    EXPECT_TRUE(driver.iswait());
}

TEST_F(DispatchTest, SaleCodeWhoseCountersCannotBeReadIsTheNeutralState) {
    line.Answer(request::kStatus, answer::SaleCode());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Steps(), (Lines{"20", "0A"}));
    EXPECT_EQ(Traced(), "");
    EXPECT_TRUE(driver.iswait());
}

// --- refusals before the check starts

struct Refusal {
    std::string name;
    Bytes state;
    int code;
    std::string traced;
};

class RefusalTest : public DispatchTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusalTest, IsTracedAndReported) {
    line.Answer(request::kStatus, GetParam().state);
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    line.Always(request::kRam, answer::Ram(0));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(TracedFrom("Info:query ks_salecode"),
              "Info:query ks_salecode" + GetParam().traced + "Error Interface\n");
    EXPECT_EQ(Steps().back(), "note hook 0 error " + std::to_string(GetParam().code));
    EXPECT_EQ(Count("36"), 1);  // unlocked, and never locked
    EXPECT_FALSE(driver.iswait());
}

// The check reaches its start with these.
class NoRefusalTest : public DispatchTest, public testing::WithParamInterface<Refusal> {};

TEST_P(NoRefusalTest, StartsTheCheck) {
    line.Answer(request::kStatus, GetParam().state);
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    line.Answer(request::kRam, answer::Ram(0)).Answer(request::kRam, answer::Ram(0));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(StepsFrom("note hook 0").empty(), false);
}

Bytes Added(unsigned char code, unsigned char marked) {
    return Frame(0xA2, {0, 1, 0, 1, 0, 1, 0, 0, 0, code, 0, 0, 1, marked, 0, 0, 0});
}
Bytes Free(unsigned char marked) {
    return Frame(0xC6, {0, 7, 0, 7, 7, marked, 7, 7, 7, 0, 0, 7, 0, 0, 7, 0, 0, 7});
}

const std::string kRegKass = "Warning: echRegKass - Exit";
const std::string kCancelled = "Warning: echCancelCheck - Exit";
const auto kRefusalName = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(
    Execute, RefusalTest,
    testing::Values(Refusal{"MarkedSaleCode", answer::SaleCode(1, 1), 6, kRegKass},
                    Refusal{"MarkedBarcode", answer::Barcode(1), 6, kRegKass},
                    Refusal{"MarkedAddedLine", Added(1, 1), 6, kRegKass},
                    Refusal{"MarkedFreeSale", Free(255), 6, kRegKass},
                    Refusal{"SaleCodeSeven", answer::SaleCode(7), 34, kCancelled},
                    Refusal{"AddedLineSeven", Added(7, 0), 34, kCancelled},
                    Refusal{"MarkedSaleCodeSeven", answer::SaleCode(7, 1), 6, kRegKass}),
    kRefusalName);

INSTANTIATE_TEST_SUITE_P(Execute, NoRefusalTest,
                         testing::Values(Refusal{"SaleCodeSix", answer::SaleCode(6), 0, ""},
                                         Refusal{"SaleCodeEight", answer::SaleCode(8), 0, ""},
                                         Refusal{"SaleCode263", Frame(0xA1, {1, 7, 1, 0, 0, 1, 0}),
                                                 0, ""},
                                         Refusal{"FreeSale", Free(0), 0, ""},
                                         Refusal{"Barcode", answer::Barcode(), 0, ""}),
                         kRefusalName);

TEST_F(DispatchTest, OpenCheckComesBeforeTheMark) {
    HoldOpenCheck();
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    line.Answer(request::kStatus, answer::SaleCode(7, 1));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Count("7E"), 1);
    EXPECT_TRUE(driver.iswait());
}

}  // namespace
}  // namespace test
