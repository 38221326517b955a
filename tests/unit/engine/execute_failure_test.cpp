#include <stdexcept>

#include "unit/engine/execute_test.h"

namespace test {
namespace {

class FailureTest : public ExecuteTest {
  protected:
    explicit FailureTest(kkm_ver version = kkm_ver_303) : ExecuteTest(version) {
        AddLine("x", 100, 1, false, 1);
    }

    // A sale-query state that the driver refuses with echRegKass before it sends anything.
    void Refuse() {
        QueryForCheck(answer::SaleCode(1, 1));
        driver.execute();
    }

    // The counters before the check cannot be read.
    void FailUnknown() {
        line.Answer(request::kStatus, answer::SaleCode());
        line.Answer(request::kStatistics, answer::Statistics(7, 40));
        SaleNumber(0);
        SaleNumber(0);
        driver.execute();
    }

    // The nth such request, counted from 1, gets the reply.
    void AtRequest(unsigned char command, int nth, const Reply& reply) {
        line.Answers(command, nth - 1, answer::Done(command)).Answer(command, reply);
    }

    // The steps behind the trace that starts the clean-up.
    std::string CleanUp(const std::string& start) const {
        const std::string story = Story();
        const std::size_t at = story.find(start);
        return at == std::string::npos ? "(not started)" : story.substr(at);
    }
};

class FailureAt302Test : public FailureTest {
  protected:
    FailureAt302Test() : FailureTest(kkm_ver_302) {}
};

class FailureAt400Test : public FailureTest {
  protected:
    FailureAt400Test() : FailureTest(kkm_ver_400) {}
};

const std::string kInterface = "| Error Interface\\n\n";
const std::string kUnknown = "| Error: unknown error in print check\\n\n";
const std::string kCancelSequence =
    "> 10\n> 7F\n  50 ms\n> 03\n  50 ms\n> 29 20\n  50 ms\n> 29 28\n  50 ms\n> 7F\n";

// --- clean-up

TEST_F(FailureTest, EngineErrorUnlocksCancelsAndIsReported) {
    TellStory();
    Refuse();
    EXPECT_EQ(CleanUp(kInterface), kInterface + "> 36 01\n" + kCancelSequence + "hook 0 error 6\n");
    EXPECT_FALSE(driver.iswait());
}

TEST_F(FailureAt302Test, EngineErrorCancelsWithoutUnlocking) {
    TellStory();
    Refuse();
    EXPECT_EQ(CleanUp(kInterface), kInterface + kCancelSequence + "hook 0 error 6\n");
}

TEST_F(FailureAt400Test, EngineErrorUnlocksAllTheSame) {
    TellStory();
    Refuse();
    EXPECT_EQ(CleanUp(kInterface), kInterface + "> 36 01\n" + kCancelSequence + "hook 0 error 6\n");
}

TEST_F(FailureTest, OtherErrorUnlocksCancelsAndIsADeviceError) {
    TellStory();
    FailUnknown();
    EXPECT_EQ(CleanUp(kUnknown), kUnknown + "> 36 01\n" + kCancelSequence + "hook 0 error 2\n");
    EXPECT_FALSE(driver.iswait());
}

TEST_F(FailureAt302Test, OtherErrorCancelsWithoutUnlocking) {
    TellStory();
    FailUnknown();
    EXPECT_EQ(CleanUp(kUnknown), kUnknown + kCancelSequence + "hook 0 error 2\n");
}

TEST_F(FailureAt400Test, OtherErrorUnlocksAllTheSame) {
    TellStory();
    FailUnknown();
    EXPECT_EQ(CleanUp(kUnknown), kUnknown + "> 36 01\n" + kCancelSequence + "hook 0 error 2\n");
}

struct BrokenCleanUp {
    std::string name;
    unsigned char command;
    int nth;             // counted from the first request of the clean-up
    std::string engine;  // what is left of the clean-up behind an engine error
    std::string other;   // behind any other
};

class BrokenCleanUpTest : public FailureTest, public testing::WithParamInterface<BrokenCleanUp> {};

TEST_P(BrokenCleanUpTest, BehindAnEngineErrorIsTracedAndReportedAllTheSame) {
    TellStory();
    AtRequest(GetParam().command, GetParam().nth, Silence());
    Refuse();
    EXPECT_EQ(CleanUp(kInterface), kInterface + GetParam().engine + "hook 0 error 6\n");
    EXPECT_FALSE(driver.iswait());
}

TEST_P(BrokenCleanUpTest, KeepsTheFirstFailureBehindAnotherErrorAsTheEnd) {
    TellStory();
    const bool locks_first = GetParam().command == request::kLockSwitch;
    AtRequest(GetParam().command, GetParam().nth + (locks_first ? 1 : 0), Silence());
    FailUnknown();
    EXPECT_EQ(CleanUp(kUnknown), kUnknown + GetParam().other + "hook 0 error 2\n");
    EXPECT_FALSE(driver.iswait());
}

const std::string kClear = "| Error: ClearCheck()  Error\\n\n";
const std::string kClearOther = "| Error: ClearCheck\\n\n";

std::string Until(const std::string& step) {
    return "> 36 01\n" + kCancelSequence.substr(0, kCancelSequence.find(step) + step.size());
}

BrokenCleanUp Broken(const std::string& name, unsigned char command, int nth,
                     const std::string& done) {
    return {name, command, nth, done + kClear, done + kClearOther};
}

INSTANTIATE_TEST_SUITE_P(
    Execute, BrokenCleanUpTest,
    testing::Values(BrokenCleanUp{"Unlock", 0x36, 1,
                                  "> 36 01\n| Error: unlockKey  Error\\n\n" + kCancelSequence,
                                  "> 36 01\n" + kClearOther},
                    Broken("Lock", 0x10, 1, Until("> 10\n")),
                    Broken("FirstReset", 0x7F, 1, Until("> 7F\n")),
                    Broken("Clear", 0x03, 1, Until("> 03\n")),
                    Broken("Key32", 0x29, 1, Until("> 29 20\n")),
                    Broken("Key40", 0x29, 2, Until("> 29 28\n")),
                    Broken("LastReset", 0x7F, 2, "> 36 01\n" + kCancelSequence)),
    [](const auto& info) { return info.param.name; });

TEST_F(FailureTest, UnlockAndCancelMayBothFail) {
    TellStory();
    line.Answer(request::kLockSwitch, Silence());
    line.Answer(request::kLock, Frame(0xB0));
    Refuse();
    EXPECT_EQ(CleanUp(kInterface), kInterface +
                                       "> 36 01\n| Error: unlockKey  Error\\n\n> 10\n"
                                       "| Error: ClearCheck()  Error\\n\nhook 0 error 6\n");
}

TEST_F(FailureTest, UnlockingIsNotRepeatedInTheCleanUp) {
    line.Answers(request::kLockSwitch, 5, Silence());
    Refuse();
    EXPECT_EQ(Count("36"), 1);
}

TEST_F(FailureTest, LoopEndsEvenWhenItIsNotToCloseAfterACheck) {
    driver.setCloseAfterCheck(false);
    Refuse();
    EXPECT_FALSE(driver.iswait());
}

TEST_F(FailureTest, LoopIsEndedBehindTheTraceAndBeforeTheCleanUp) {
    Lines seen;
    const auto see = [&](const std::string& what) {
        seen.push_back(what + (driver.iswait() ? " running" : " ended"));
    };
    world.on_trace = [&](const std::string& text) {
        if (text.rfind("Error", 0) == 0) {
            see(text);
        }
    };
    Reply unlocked = Frame(0xB7);
    unlocked.at_request = [&] { see("unlock"); };
    line.Answer(request::kLockSwitch, unlocked);
    Refuse();
    line.Drop();
    driver.start();
    line.Answer(request::kLockSwitch, Frame(0xB7)).Answer(request::kLockSwitch, unlocked);
    FailUnknown();
    EXPECT_EQ(seen, (Lines{"Error Interface\n running", "unlock ended",
                           "Error: unknown error in print check\n running", "unlock ended"}));
}

TEST_F(FailureTest, HookThatThrowsAtAFailureIsTraced) {
    driver.on_hook = [](unsigned char) { throw 1; };
    Refuse();
    EXPECT_EQ(TracedFrom("Error Interface"),
              "Error Interface\n  \nWarning: DoCheckPrepare event_checkprepare (  )\n");
    world.ClearTraces();
    line.Drop();
    FailUnknown();
    EXPECT_EQ(TracedFrom("Error: unknown"),
              "Error: unknown error in print check\n"
              "  \nWarning: DoCheckPrepare event_checkprepare (  )\n");
}

TEST_F(FailureTest, BufferStaysBehindEveryFailure) {
    Refuse();
    EXPECT_EQ(driver.check().sales.size(), 1U);
    line.Drop();
    FailUnknown();
    EXPECT_EQ(driver.check().sales.size(), 1U);
}

TEST_F(FailureTest, KeepsTheZeroLineOfAnEmptyBuffer) {
    driver.check().clear();
    QueryForCheck();
    SaleNumber(0);
    line.Answer(request::kSale, Frame(0xC1, {1}));
    driver.execute();
    ASSERT_EQ(driver.check().sales.size(), 1U);
    EXPECT_EQ(driver.check().sales[0].price, 0U);
    EXPECT_EQ(Steps().back(), "note hook 0 error 14");
}

// --- what fails a check, and what the host hears

struct FailedStep {
    std::string name;
    unsigned char command;
    int nth;
    Bytes reply;
    std::string handler;
    int code;
};

class FailedStepTest : public FailureTest, public testing::WithParamInterface<FailedStep> {};

TEST_P(FailedStepTest, CancelsTheCheckAndIsReported) {
    TellStory();
    driver.check().cash = 100;
    AtRequest(GetParam().command, GetParam().nth, GetParam().reply);
    GoWell(1);
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(CleanUp(GetParam().handler), GetParam().handler + "> 36 01\n" + kCancelSequence +
                                               "hook 0 error " + std::to_string(GetParam().code) +
                                               "\n");
    EXPECT_EQ(StepsFrom("note hook 100"), Lines{});
    EXPECT_EQ(driver.check().sales.size(), 1U);
    EXPECT_FALSE(driver.iswait());
}

INSTANTIATE_TEST_SUITE_P(
    Execute, FailedStepTest,
    testing::Values(FailedStep{"KeyLock", 0x36, 1, Frame(0xB8), kUnknown, 2},
                    FailedStep{"SilentKeyLock", 0x36, 1, {}, kUnknown, 2},
                    FailedStep{"Price", 0x21, 1, Frame(0xC1, {1}), kInterface, 14},
                    FailedStep{"ResetBehindTheLines", 0x7F, 2, {}, kUnknown, 2},
                    FailedStep{"DiscountCard", 0x24, 1, Frame(0xB4), kUnknown, 2},
                    FailedStep{"ResetBehindTheCard", 0x7F, 3, {}, kUnknown, 2},
                    FailedStep{"CheckType", 0x25, 1, Frame(0xE4, {0}), kInterface, 20},
                    FailedStep{"Cash", 0x28, 1, Frame(0xE8, {1}), kInterface, 20}),
    [](const auto& info) { return info.param.name; });

TEST_F(FailureTest, SaleThatIsNotTakenInTwentyAttemptsFailsTheCheck) {
    QueryForCheck();
    line.Always(request::kRam, answer::Ram(0));
    line.Always(request::kStatus, answer::SaleAdd());
    driver.execute();
    EXPECT_EQ(Count("21"), 20);
    EXPECT_EQ(TracedFrom("Error: TrySendSale"), "Error: TrySendSale in  send 1\nError Interface\n");
    EXPECT_EQ(Steps().back(), "note hook 0 error 2");
}

TEST_F(FailureTest, SecondLineIsNotSentBehindAFailedFirst) {
    AddLine("y", 100, 1, false, 1);
    QueryForCheck();
    SaleNumber(0);
    line.Answer(request::kSale, Frame(0xC1, {1}));
    driver.execute();
    EXPECT_EQ(Count("21"), 1);
}

TEST_F(FailureTest, RefusedDiscountFailsTheCheck) {
    driver.check().discount = 10;
    QueryForCheck();
    TakeLines(1);
    driver.execute();
    EXPECT_EQ(Count("23"), 20);
    EXPECT_EQ(TracedFrom("Error: TrySendDiscount"), "Error: TrySendDiscount try Error Interface\n");
    EXPECT_EQ(Steps().back(), "note hook 0 error 2");
}

TEST_F(FailureTest, EveryOtherExceptionIsADeviceError) {
    const Reply bad[] = {Throwing(ETarvo(&driver, 6, "")), Throwing(ETarvo(&driver, 7, "")),
                         Throwing(EMiniCom(nullptr, errCreateFile, "")),
                         Throwing(std::runtime_error("")), Throwing(1)};
    for (const Reply& reply : bad) {
        world.ClearTraces();
        line.Answer(request::kCard, reply);
        GoWell(1);
        EXPECT_EQ(driver.execute(), 0);
        EXPECT_EQ(Steps().back(), "note hook 0 error 2");
        EXPECT_EQ(TracedFrom("Error"), "Error: unknown error in print check\n");
        line.Drop();
    }
}

TEST_F(FailureTest, EngineErrorIsReportedWithItsCodeWhereverItComesFrom) {
    line.Answer(request::kCard, Throwing(ETarvoVesk(echQuantity)));
    GoWell(1);
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Steps().back(), "note hook 0 error 15");
    EXPECT_EQ(TracedFrom("Error"), "Error Interface\n");
}

// --- the print test

class PrintTestTest : public FailureTest {
  protected:
    // The counters behind the check are those from before it, and this is the register's error.
    void FailPrint(int error) {
        QueryForCheck();
        TakeLines(1);
        line.Answer(request::kStatus, answer::Ready()).Answer(request::kStatus, answer::CheckOut());
        line.Answer(request::kStatistics, answer::Statistics(7, 41));
        SaleNumber(error);  // read from memory like the sale number
        TellStory();
        EXPECT_EQ(driver.execute(), 0);
    }

    const std::string wrong = "Error:  TestCheckPrint  (  7:8;  41:41)\n";
};

TEST_F(PrintTestTest, AbsentPaperLeavesTheCheckOpen) {
    FailPrint(16);
    EXPECT_EQ(CleanUp("hook 100"),
              "hook 100\n"
              "| Info: TestCheckPrint - begin\\n\n"
              "> 0A\n"
              "| Error:  TestCheckPrint  (  7:8;  41:41)\\n\n"
              "| Info: TryReadError - begin\\n\n"
              "> 04 19 56 01\n"
              "| Info: TryReadError result = 16\\n\n"
              "| Error: TestCheckPrint iPaperAbsent\n"
              "| Error Interface\\n\n"
              "> 36 01\n"
              "hook 0 error 5\n");
    EXPECT_FALSE(driver.iswait());
    EXPECT_EQ(driver.check().sales.size(), 1U);
}

TEST_F(PrintTestTest, AnyOtherErrorCancelsTheCheck) {
    FailPrint(17);
    EXPECT_EQ(CleanUp(kInterface),
              kInterface + "> 36 01\n" + kCancelSequence + "hook 0 error 32\n");
}

TEST_F(PrintTestTest, AbsentPaperWithAFailedUnlockIsReportedAllTheSame) {
    AtRequest(request::kLockSwitch, 2, Silence());
    FailPrint(16);
    EXPECT_EQ(CleanUp(kInterface),
              kInterface + "> 36 01\n| Error: unlockKey  Error\\n\nhook 0 error 5\n");
}

TEST_F(FailureAt302Test, AbsentPaperSendsNothingMore) {
    QueryForCheck();
    TakeLines(1);
    line.Answer(request::kStatus, answer::Ready()).Answer(request::kStatus, answer::CheckOut());
    line.Answer(request::kStatistics, answer::Statistics(7, 41));
    SaleNumber(16);
    driver.execute();
    EXPECT_EQ(StepsFrom("note hook 100"),
              (Lines{"note hook 100", "0A", "04 19 56 01", "note hook 0 error 5"}));
}

TEST_F(FailureTest, CheckThatWasNeverClosedIsFoundByThePrintTest) {
    QueryForCheck();
    TakeLines(1);
    line.Answer(request::kStatus, answer::Ready());
    line.Always(request::kStatus, answer::Ready());
    line.Always(request::kStatistics, answer::Statistics(7, 40));
    SaleNumber(0);
    driver.execute();
    EXPECT_EQ(Steps().back(), "note hook 0 error 32");
    EXPECT_NE(Traced().find("Warning: TryEnableCheckOut 10\n"), std::string::npos);
}

TEST_F(FailureTest, PrintTestTakesTheCountersFromBeforeTheCheck) {
    GoWell(1);
    line.Answer(request::kStatistics, answer::Statistics(8, 41));
    driver.execute();
    EXPECT_EQ(TracedFrom("Info: TestCheckPrint"),
              "Info: TestCheckPrint - begin\nInfo: TestCheckPrint - ok\n");
}

// --- failures outside the check procedure

TEST_F(FailureTest, FailedClearingOfAFreeSaleFailsTheCheck) {
    TellStory();
    line.Answer(request::kStatus, Frame(0xC6));
    line.Answer(request::kClearCheck, Frame(0x84));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(), "> 20\n| Info: query ks_salefree\n> 7F\n  50 ms\n> 03\n" + kUnknown +
                           "> 36 01\n" + kCancelSequence + "hook 0 error 2\n");
}

TEST_F(FailureTest, FailedCancellingOfACheckOutGoesThroughTheHandlers) {
    TellStory();
    line.Answer(request::kStatus, answer::CheckOut());
    line.Answer(request::kQuery, Silence());
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(CleanUp(kUnknown), kUnknown + "> 36 01\n" + kCancelSequence + "hook 0 error 2\n");
    world.ClearLog();
    driver.start();
    line.Answer(request::kStatus, answer::CheckOut());
    line.Answer(request::kQuery, Throwing(ETarvoVesk(echRegKass)));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(CleanUp(kInterface), kInterface + "> 36 01\n" + kCancelSequence + "hook 0 error 6\n");
    EXPECT_FALSE(driver.iswait());
}

TEST_F(FailureTest, FailedResetOfAnyStateGoesThroughTheHandlers) {
    TellStory();
    line.Answer(request::kStatus, answer::Ready());
    line.Answer(request::kReset, Frame(0x91));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(Story(),
              "> 20\n> 7F\n" + kUnknown + "> 36 01\n" + kCancelSequence + "hook 0 error 2\n");
    EXPECT_FALSE(driver.iswait());
}

TEST_F(FailureTest, UnreadableSaleNumberIsNoClosedCheck) {
    TellStory();
    line.Answer(request::kStatus, Frame(0xC6));
    line.Answer(request::kRam, Frame(0x84));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(CleanUp("| Info:query"), "| Info:query ks_salecode\n> 04 15 95 01\n" + kUnknown +
                                           "> 36 01\n" + kCancelSequence + "hook 0 error 2\n");
}

TEST_F(FailureTest, FailedMessageAboutAnOpenCheckIsADeviceError) {
    line.Answer(request::kStatus, Frame(0xC6));
    line.Answer(request::kRam, answer::Ram(1));
    line.Answer(request::kResetInfo, Frame(0x90));
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(TracedFrom("Warning"),
              "Warning:Check is opened - ExitError: unknown error in print check\n");
    EXPECT_EQ(Steps().back(), "note hook 0 error 2");
}

TEST_F(FailureTest, CutLineFailsTheCheckAndEverythingBehindIt) {
    driver.on_hook = [this](unsigned char step) {
        if (step == 0) {
            line.Cut();
        }
    };
    GoWell(1);
    EXPECT_EQ(driver.execute(), 0);
    EXPECT_EQ(TracedFrom("Error: TryReadSaleNumber"),
              "Error: TryReadSaleNumber (count)Error Interface\n"
              "Error: unlockKey  Error\nError: ClearCheck()  Error\n");
    EXPECT_EQ(Steps().back(), "note hook 0 error 2");
    EXPECT_FALSE(driver.iswait());
}

}  // namespace
}  // namespace test
