#include "interface/vesk.h"

#include <stdexcept>

#include "protocol/tarvo_error.h"
#include "support/interface_fixture.h"

namespace test {
namespace {

class VeskTest : public InterfaceTest {
  protected:
    static void ListenToAll() {
        ListenToErrors();
        EventQuery = HostEvents::Query;
        EventCheckPrepare = HostEvents::Prepare;
        EventCloseCheck = HostEvents::Close;
    }
};

TEST_F(VeskTest, StartedCheckAsksTheHostAndTellsTheStep) {
    ListenToAll();
    kvesk.event_checkprepare(0, nullptr);
    EXPECT_EQ(Events(), (Texts{"query", "prepare 0"}));
}

TEST_F(VeskTest, LaterStepsOnlyTellTheStep) {
    ListenToAll();
    kvesk.event_checkprepare(100, nullptr);
    kvesk.event_checkprepare(1, nullptr);
    EXPECT_EQ(Events(), (Texts{"prepare 100", "prepare 1"}));
}

TEST_F(VeskTest, StepsNeedNeitherCallback) {
    EventCheckPrepare = HostEvents::Prepare;
    kvesk.event_checkprepare(0, nullptr);
    EventCheckPrepare = nullptr;
    EventQuery = HostEvents::Query;
    kvesk.event_checkprepare(0, nullptr);
    EventQuery = nullptr;
    kvesk.event_checkprepare(0, nullptr);
    EXPECT_EQ(Events(), (Texts{"prepare 0", "query"}));
}

TEST_F(VeskTest, QueryThatThrowsKeepsTheFirstStepFromTheHost) {
    ListenToAll();
    EventQuery = [] { throw std::runtime_error("the host's own"); };
    EXPECT_THROW(kvesk.event_checkprepare(0, nullptr), std::runtime_error);
    EXPECT_EQ(Events(), Texts{});
    EXPECT_EQ(GetErrorCode(), 0);
}

TEST_F(VeskTest, StepsLeaveTheLastErrorAlone) {
    errVeskTarvo = 14;
    kvesk.event_checkprepare(0, nullptr);
    EXPECT_EQ(errVeskTarvo, 14);
}

TEST_F(VeskTest, ErrorSetsTheCodeAndNothingElse) {
    ListenToAll();
    const ETarvoVesk error(echNoCash);
    kvesk.event_checkprepare(0, &error);
    EXPECT_EQ(Events(), Texts{"error 20"});
    EXPECT_EQ(GetErrorCode(), 20);
}

TEST_F(VeskTest, EngineReachesTheHostsCallbacks) {
    ListenToAll();
    TTarvoVesk& engine = kvesk;
    engine.event_checkprepare(100, nullptr);
    EXPECT_EQ(Events(), Texts{"prepare 100"});
}

TEST_F(VeskTest, EngineOnItsOwnHasAnEmptyHook) {
    ListenToAll();
    class Engine : public TTarvoVesk {
    } engine;
    const ETarvoVesk error(echNoCash);
    engine.event_checkprepare(0, nullptr);
    engine.event_checkprepare(0, &error);
    EXPECT_EQ(Events(), Texts{});
    EXPECT_EQ(GetErrorCode(), 0);
}

TEST_F(VeskTest, CloseCallbackIsCalledWhenThereIsOne) {
    kvesk.OnCheckClose();
    ListenToAll();
    kvesk.OnCheckClose();
    EXPECT_EQ(Events(), Texts{"close"});
}

TEST_F(VeskTest, UnknownFirmwareIsAskedForOnceAndKept) {
    ConnectTooEarly(kkm_ver_310);
    kvesk.Identify();
    EXPECT_EQ(world.Requests(), Texts{"34"});
    EXPECT_EQ(kvesk.version(), 310);
    kvesk.Identify();
    EXPECT_EQ(world.Requests(), Texts{"34"});
}

TEST_F(VeskTest, KnownFirmwareIsNotAskedFor) {
    Connect(kkm_ver_301);
    kvesk.Identify();
    EXPECT_EQ(world.Requests(), Texts{});
    EXPECT_EQ(kvesk.version(), 301);
}

TEST_F(VeskTest, FirmwareThatNobodyKnowsIsCode7) {
    ConnectTooEarly(kkm_ver_unknown);
    int code = 0;
    try {
        kvesk.Identify();
    } catch (const ETarvo& e) {
        code = e.code();
    }
    EXPECT_EQ(code, 7);
    EXPECT_EQ(world.Details().back().text, "   ");
    EXPECT_EQ(kvesk.version(), 0);
}

}  // namespace
}  // namespace test
