#include <fstream>
#include <sstream>
#include <stdexcept>

#include "unit/engine/execute_test.h"

namespace test {
namespace {

// --- the conversation of a whole check with each firmware

struct WholeCheck {
    kkm_ver version;
    int discount;
    int mode;
    std::uint32_t cash;
};

class WholeCheckTest : public ExecuteTest, public testing::WithParamInterface<WholeCheck> {};

std::string ReadFile(const std::string& name) {
    std::ifstream file(UNIT_TESTS_DIR "/engine/golden/" + name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Requests, waits, traces and what the host is told, in order. The second line is weighed and has
// a name of two pieces.
TEST_P(WholeCheckTest, IsThisConversation) {
    driver.setVersion(GetParam().version);
    AddLine("Bread", 1999, 2, false, 3);
    AddLine("Apples of the garden", 12000, 0.305F, true, 1);
    driver.check().discount = GetParam().discount;
    driver.check().mode = GetParam().mode;
    driver.check().cash = GetParam().cash;
    GoWell(2);
    TellStory();
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(), ReadFile("check_" + std::to_string(GetParam().version) + ".txt"));
    EXPECT_EQ(line.QueuedAnswers(), 0U);
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_FALSE(driver.iswait());
}

INSTANTIATE_TEST_SUITE_P(
    ByFirmware, WholeCheckTest,
    testing::Values(WholeCheck{kkm_ver_301, 0, 0, 10000}, WholeCheck{kkm_ver_302, -10, 0, 10000},
                    WholeCheck{kkm_ver_303, 0, 1, 258}, WholeCheck{kkm_ver_310, 15, 2, 10000},
                    WholeCheck{kkm_ver_400, 0, 0, 0}),
    [](const auto& info) { return "Is" + std::to_string(info.param.version); });

// --- what a check leaves behind

class CheckTest : public ExecuteTest {
  protected:
    explicit CheckTest(kkm_ver version = kkm_ver_303) : ExecuteTest(version) {}

    void AddPlainLine() { AddLine("x", 100, 1, false, 1); }

    void PrintOneLine() {
        AddPlainLine();
        GoWell(1);
        driver.execute();
    }
};

class CheckAt302Test : public CheckTest {
  protected:
    CheckAt302Test() : CheckTest(kkm_ver_302) {}
};

class CheckAt400Test : public CheckTest {
  protected:
    CheckAt400Test() : CheckTest(kkm_ver_400) {}
};

TEST_F(CheckTest, EmptiesTheBufferAndEndsTheLoop) {
    driver.check().mode = 1;
    driver.check().discount = 5;
    driver.check().cash = 100;
    PrintOneLine();
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_EQ(driver.check().mode, 0);
    EXPECT_EQ(driver.check().discount, 0);
    EXPECT_EQ(driver.check().cash, 0U);
    EXPECT_FALSE(driver.iswait());
}

TEST_F(CheckTest, BufferStaysWithTheClearModeOff) {
    EXPECT_TRUE(driver.clearBuffer());
    driver.setClearBuffer(false);
    EXPECT_FALSE(driver.clearBuffer());
    driver.check().mode = 1;
    PrintOneLine();
    EXPECT_EQ(driver.check().sales.size(), 1U);
    EXPECT_EQ(driver.check().mode, 1);
    EXPECT_FALSE(driver.iswait());
}

TEST_F(CheckTest, LoopGoesOnWhenItIsNotToCloseAfterTheCheck) {
    driver.setCloseAfterCheck(false);
    PrintOneLine();
    EXPECT_TRUE(driver.iswait());
    EXPECT_TRUE(driver.check().sales.empty());
}

TEST_F(CheckTest, PrintCheckPollsUntilTheRegisterAsksForTheCheck) {
    AddPlainLine();
    line.Answer(request::kStatus, answer::None())
        .Answer(request::kStatus, Silence())
        .Answer(request::kStatus, answer::Ready());
    GoWell(1);
    driver.PrintCheck();
    EXPECT_EQ(line.QueuedAnswers(), 0U);
    EXPECT_EQ(TracedFrom("Info: TestCheckPrint"),
              "Info: TestCheckPrint - begin\nInfo: TestCheckPrint - ok\n");
}

TEST_F(CheckTest, EmptyBufferIsPrintedAsOneZeroLine) {
    GoWell(1);
    driver.execute();
    EXPECT_EQ(world.Requests()[8],
              "21 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
              "00 00 00 00 00 00 00 00 01 01 00 01 00 00");
    EXPECT_EQ(TracedFrom("Info: TrySendSale ").substr(0, 92),
              "Info: TrySendSale ;title =  ;barcode = ; code = 1; count = 0; price = 0; "
              "section = 1\nInfo: T");
    EXPECT_EQ(Count("21"), 1);
    EXPECT_EQ(Count("27"), 0);
    EXPECT_EQ(StepsFrom("sleep 3500"), (Lines{"sleep 3500", "note hook 100", "0A", "36 01"}));
    EXPECT_TRUE(driver.check().sales.empty());
}

TEST_F(CheckTest, KeepsTheZeroLineWithTheClearModeOff) {
    driver.setClearBuffer(false);
    GoWell(1);
    driver.execute();
    ASSERT_EQ(driver.check().sales.size(), 1U);
    const sale& zero = driver.check().sales[0];
    EXPECT_EQ(zero.title, "");
    EXPECT_EQ(zero.barcode, "");
    EXPECT_EQ(zero.section, 1);
    EXPECT_TRUE(zero.fractional);
    EXPECT_EQ(zero.code, 1);
    EXPECT_EQ(zero.price, 0U);
    EXPECT_EQ(zero.count, 0.0F);
}

TEST_F(CheckTest, KeepsLinesCountedAfterTheHostWasTold) {
    driver.setClearBuffer(false);
    driver.on_hook = [this](unsigned char step) {
        if (step == 100) {
            AddPlainLine();
        }
    };
    AddPlainLine();
    QueryForCheck();
    TakeLines(1);
    CloseCheck(2);
    driver.execute();
    EXPECT_EQ(TracedFrom("Info: TestCheckPrint - ok"), "Info: TestCheckPrint - ok\n");
}

TEST_F(CheckTest, LineThatTheHostAddsAtTheStartIsPrinted) {
    driver.on_hook = [this](unsigned char step) {
        if (step == 0) {
            AddPlainLine();
        }
    };
    GoWell(1);
    driver.execute();
    EXPECT_EQ(Count("27"), 1);
    EXPECT_EQ(Count("21"), 1);
}

TEST_F(CheckTest, NoDiscountIsAnEmptyCard) {
    PrintOneLine();
    EXPECT_EQ(Count("23"), 0);
    const Lines steps = StepsFrom("24 01 00 00");
    EXPECT_EQ(Lines(steps.begin(), steps.begin() + 5),
              (Lines{"24 01 00 00", "sleep 50", "7F", "sleep 50", "25 06"}));
}

TEST_F(CheckTest, DiscountIsSentWithoutACard) {
    driver.check().discount = -99;
    PrintOneLine();
    EXPECT_EQ(Count("24"), 0);
    const Lines steps = StepsFrom("23 9D");
    EXPECT_EQ(Lines(steps.begin(), steps.begin() + 5),
              (Lines{"23 9D", "20", "7F", "sleep 50", "25 06"}));
}

TEST_F(CheckTest, TwentyLinesTakeOnlyTheClocksTime) {
    for (int i = 0; i < 20; ++i) {
        AddPlainLine();
    }
    GoWell(20);
    driver.execute();
    EXPECT_EQ(line.QueuedAnswers(), 0U);
    EXPECT_EQ(Count("21"), 20);
    EXPECT_EQ(StepsFrom("sleep 13000"), (Lines{"sleep 13000", "note hook 100", "0A", "36 01"}));
}

TEST_F(CheckTest, HookThatThrowsChangesNothingElse) {
    driver.on_hook = [](unsigned char) { throw std::runtime_error("host"); };
    PrintOneLine();
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_EQ(line.QueuedAnswers(), 0U);
    const std::string warning = "  \nWarning: DoCheckPrepare event_checkprepare (  )\n";
    std::vector<std::string> seen;
    for (const TraceEntry& entry : world.Traces()) {
        if (entry.text.find("Warning") != std::string::npos) {
            seen.push_back(entry.text);
        }
    }
    EXPECT_EQ(seen, (Lines{warning, warning}));
}

TEST_F(CheckTest, EngineErrorOfTheHookIsSwallowedToo) {
    driver.on_hook = [](unsigned char) { throw ETarvoVesk(echRegKass); };
    PrintOneLine();
    EXPECT_TRUE(driver.check().sales.empty());
}

// --- key lock

TEST_F(CheckAt302Test, KeyboardIsNotLocked) {
    PrintOneLine();
    EXPECT_EQ(Count("36"), 0);
    EXPECT_EQ(Count("10"), 0);
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

TEST_F(CheckAt400Test, KeyboardIsNotLocked) {
    PrintOneLine();
    EXPECT_EQ(Count("36"), 0);
    EXPECT_EQ(Count("10"), 0);
}

TEST_F(CheckTest, UnlockingIsTriedNineteenTimes) {
    line.Answer(request::kLockSwitch, Frame(0xB7));
    line.Answers(request::kLockSwitch, 18, Silence());
    PrintOneLine();
    EXPECT_EQ(Count("36"), 20);
    EXPECT_EQ(Traced().find("unlockKey"), std::string::npos);
}

TEST_F(CheckTest, FailedUnlockingIsTracedAndTheCheckIsGood) {
    line.Answer(request::kLockSwitch, Frame(0xB7));
    line.Answers(request::kLockSwitch, 19, Silence());  // the twentieth success is too late
    PrintOneLine();
    EXPECT_EQ(Count("36"), 21);
    EXPECT_EQ(TracedFrom("Info: TestCheckPrint - ok"),
              "Info: TestCheckPrint - ok\nError TTarvoVesk::execute unlockKey\n");
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_FALSE(driver.iswait());
    Lines steps{"note hook 100", "0A"};
    steps.insert(steps.end(), 20, "36 01");
    EXPECT_EQ(StepsFrom("note hook 100"), steps);
}

// --- copies

TEST_F(CheckTest, NoCopyIsPrintedUnlessAskedFor) {
    PrintOneLine();
    EXPECT_EQ(Count("29"), 0);
}

TEST_F(CheckTest, CopiesFollowThePrintTest) {
    driver.setCopyCount(2);
    AddPlainLine();
    GoWell(1);
    line.Always(request::kStatistics, answer::Statistics(8, 41));
    driver.execute();
    EXPECT_EQ(StepsFrom("note hook 100"), (Lines{"note hook 100", "0A", "0A", "29 2B", "sleep 20",
                                                 "0A", "0A", "29 2B", "sleep 20", "0A", "36 01"}));
}

TEST_F(CheckTest, NegativeCopyCountPrintsNone) {
    driver.setCopyCount(-1);
    PrintOneLine();
    EXPECT_EQ(Count("29"), 0);
}

TEST_F(CheckTest, CopyThatCannotBePrintedIsTheLastAndTheCheckIsGood) {
    driver.setCopyCount(2);
    PrintOneLine();  // nothing answers the probe of the first copy
    EXPECT_EQ(Count("29"), 0);
    EXPECT_EQ(TracedFrom("Info: TryPrintDoubleCheck"),
              "Info: TryPrintDoubleCheck - begin\n"
              "Info: TryPrintDoubleCheck no inteface for DoubleCheck\n");
    EXPECT_EQ(Steps().back(), "36 01");
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_FALSE(driver.iswait());
}

TEST_F(CheckTest, ExceptionOfACopyIsTracedAndEndsTheCopies) {
    driver.setCopyCount(3);
    line.Always(request::kStatistics, answer::Statistics(8, 41));
    int copies = 0;
    world.on_trace = [&](const std::string& text) {
        if (text == "Info: TryPrintDoubleCheck - begin\n" && ++copies == 2) {
            throw std::runtime_error("");
        }
    };
    PrintOneLine();
    EXPECT_EQ(Count("29"), 1);
    EXPECT_EQ(TracedFrom("Info: TryPrintDoubleCheck - ok"),
              "Info: TryPrintDoubleCheck - ok\n"
              "Info: TryPrintDoubleCheck - begin\n"
              "Error TTarvoVesk::execute TryPrintDoubleCheck\n");
    EXPECT_TRUE(driver.check().sales.empty());
    EXPECT_FALSE(driver.iswait());
}

}  // namespace
}  // namespace test
