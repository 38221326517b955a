#include <stdexcept>

#include "support/interface_fixture.h"

namespace test {
namespace {

const Bytes kWaitsForSale = Frame(0xA1, {0, 0, 0, 0, 0, 0, 0});
const Bytes kStatisticsBefore = Frame(0x8A, {0, 9, 0, 7, 0, 40, 0, 0, 0, 0, 0});
const Bytes kStatisticsAfter = Frame(0x8A, {0, 9, 0, 8, 0, 41, 0, 0, 0, 0, 0});

class CheckPrintingTest : public InterfaceTest {
  protected:
    void AddTea() {
        char name[] = "tea";
        ASSERT_EQ(cbAddSale(name, 1.0, 1.0, 1), 1);
    }

    // Everything that firmware 303 answers while it takes and prints a check of one line.
    void ScriptCheck() {
        line.Answer(0x20, Frame(0xA0)).Answer(0x20, kWaitsForSale);
        line.Answers(0x0A, 2, kStatisticsBefore).Always(0x0A, kStatisticsAfter);
        line.Always(0x02, Frame(0x82, {0}));
        // Sale number: for the status, for the open check, before the line, after it.
        line.Answers(0x04, 3, Frame(0x84, {0})).Answer(0x04, Frame(0x84, {1}));
        line.Always(0x36, Frame(0xB7)).Always(0x7F, Frame(0x90));
        line.Answer(0x21, Frame(0xC1, {0})).Answer(0x20, Frame(0xA2));
        line.Answer(0x27, Frame(0x97)).Answer(0x24, Frame(0xB5));
        line.Answer(0x25, Frame(0xE4, {1})).Answer(0x20, Frame(0xC0)).Answer(0x20, Frame(0xC8));
    }

    static void ListenToAll() {
        ListenToErrors();
        EventQuery = HostEvents::Query;
        EventCheckPrepare = HostEvents::Prepare;
        EventCloseCheck = HostEvents::Close;
    }
};

TEST_F(CheckPrintingTest, PrepareOnlyTellsWhetherThereIsAnError) {
    EXPECT_EQ(CheckPrintPrepare(), 1);
    errVeskTarvo = 14;
    EXPECT_EQ(CheckPrintPrepare(), 0);
    EXPECT_EQ(GetErrorCode(), 14);
    EXPECT_EQ(world.Log(), Texts{});
}

TEST_F(CheckPrintingTest, DiscountModeIsAlwaysOne) {
    EXPECT_EQ(GetDiscountMode(), 1);
    EXPECT_EQ(world.Log(), Texts{});
}

// --- CheckClose

TEST_F(CheckPrintingTest, CheckCloseLooksForAnOpenCheckAndArmsTheLoop) {
    Connect();
    DisconnectKKM();
    Connect();
    ASSERT_FALSE(kvesk.iswait());
    line.Answer(0x20, Frame(0xA0)).Answer(0x04, Frame(0x84, {0}));
    EXPECT_EQ(CheckClose(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"20", "04 15 95 01"}));
    EXPECT_TRUE(kvesk.iswait());
}

TEST_F(CheckPrintingTest, CheckCloseIdentifiesAnUnknownRegisterFirst) {
    ConnectTooEarly(kkm_ver_310);
    line.Answer(0x20, Frame(0xA0)).Answer(0x04, Frame(0x84, {0}));
    EXPECT_EQ(CheckClose(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"34", "20", "04 09 14 01"}));
}

TEST_F(CheckPrintingTest, CheckCloseMakesTheLoopEndWithTheCheck) {
    Connect();
    kvesk.setCloseAfterCheck(false);
    line.Answer(0x20, Frame(0xA0)).Answer(0x04, Frame(0x84, {0}));
    EXPECT_EQ(CheckClose(), 1);
    AddTea();
    ScriptCheck();
    EXPECT_EQ(PrintCheck(), 1);
}

TEST_F(CheckPrintingTest, CheckCloseCancelsWhatIsLeftAtTheRegister) {
    Connect();
    line.Answer(0x20, Frame(0xA0)).Answer(0x04, Frame(0x84, {3}));
    line.Answer(0x35, Frame(0xB5)).Answer(0x20, Frame(0xA3)).Answer(0x0A, kStatisticsBefore);
    line.Answer(0x04, Frame(0x84, {3})).Answer(0x02, Frame(0x82, {0}));
    line.Answer(0x7F, Frame(0x90)).Answer(0x03, Frame(0x83));
    EXPECT_EQ(CheckClose(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"20", "04 15 95 01", "35", "20", "0A", "04 15 95 01",
                                       "02 00 12 01", "7F", "03"}));
}

TEST_F(CheckPrintingTest, CheckCloseInAStateWithoutSalesIsCode6) {
    Connect();
    ListenToErrors();
    line.Always(0x20, Frame(0xA0)).Answer(0x04, Frame(0x84, {3})).Answer(0x35, Frame(0xB5));
    EXPECT_EQ(CheckClose(), 0);
    EXPECT_EQ(GetErrorCode(), 6);
    EXPECT_EQ(Events(), Texts{"error 6"});
}

TEST_F(CheckPrintingTest, CheckCloseWithoutAnswerIsCode2) {
    Connect();
    EXPECT_EQ(CheckClose(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    ConnectInVain();
    EXPECT_EQ(CheckClose(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(world.Requests(), Texts{"34"});
}

// --- PrintCheck

TEST_F(CheckPrintingTest, CheckIsPrintedAndTheHostHearsOfItsSteps) {
    Connect();
    ListenToAll();
    AddTea();
    ScriptCheck();
    errVeskTarvo = 14;
    EXPECT_EQ(PrintCheck(), 1);
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(Events(), (Texts{"query", "prepare 0", "prepare 100"}));
    EXPECT_EQ(cbGetSalesCount(), 0) << "the buffer is emptied";
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

TEST_F(CheckPrintingTest, KeepsTheCloseCallbackSilent) {
    Connect();
    EventCloseCheck = HostEvents::Close;
    AddTea();
    ScriptCheck();
    EXPECT_EQ(PrintCheck(), 1);
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(CheckPrintingTest, BufferStaysWhenClearingIsOff) {
    Connect();
    cbSetClearBufMode(0);
    AddTea();
    ScriptCheck();
    EXPECT_EQ(PrintCheck(), 1);
    EXPECT_EQ(cbGetSalesCount(), 1);
}

TEST_F(CheckPrintingTest, CallbacksThatThrowDoNotStopTheCheck) {
    Connect();
    EventQuery = [] { throw std::runtime_error("host"); };
    EventCheckPrepare = [](unsigned char) { throw 1; };
    AddTea();
    ScriptCheck();
    EXPECT_EQ(PrintCheck(), 1);
    EXPECT_EQ(GetErrorCode(), 0);
}

TEST_F(CheckPrintingTest, CallbackMayFillTheBuffer) {
    Connect();
    EventQuery = [] {
        char name[] = "tea";
        cbAddSale(name, 1.0, 1.0, 1);
    };
    ScriptCheck();
    EXPECT_EQ(PrintCheck(), 1);
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

TEST_F(CheckPrintingTest, CancelledCheckIsCode34AndToldOnce) {
    Connect();
    ListenToAll();
    AddTea();
    line.Answer(0x20, Frame(0xA1, {0, 7})).Answer(0x0A, kStatisticsBefore);
    line.Always(0x04, Frame(0x84, {0})).Always(0x02, Frame(0x82, {0}));
    EXPECT_EQ(PrintCheck(), 0);
    EXPECT_EQ(GetErrorCode(), 34);
    EXPECT_EQ(Events(), Texts{"error 34"});
    EXPECT_EQ(cbGetSalesCount(), 1);
}

TEST_F(CheckPrintingTest, LineCutInMidCheckIsCode2) {
    Connect();
    ListenToErrors();
    AddTea();
    line.Answer(0x20, kWaitsForSale).Answers(0x0A, 2, kStatisticsBefore);
    line.Answers(0x04, 2, Frame(0x84, {0})).Answer(0x02, Frame(0x82, {0}));
    line.Answer(0x36, Frame(0xB7));
    EXPECT_EQ(PrintCheck(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(Events(), Texts{"error 2"});
}

// --- CheckCancel

TEST_F(CheckPrintingTest, CheckCancelReadsAndResetsTheStatusOnly) {
    ConnectTooEarly();
    line.Answer(0x20, Frame(0xC0)).Answer(0x7F, Frame(0x90));
    EXPECT_EQ(CheckCancel(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"20", "7F"}));
}

TEST_F(CheckPrintingTest, CheckCancelNeedsBothAnswers) {
    Connect();
    EXPECT_EQ(CheckCancel(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(world.Requests(), Texts{"20"});
    line.Answer(0x20, Frame(0xA0)).Answer(0x7F, Frame(0x91));
    EXPECT_EQ(CheckCancel(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
}

}  // namespace
}  // namespace test
