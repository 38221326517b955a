#include <stdexcept>

#include "unit/engine/engine_test.h"

namespace test {
namespace {

// A line whose opening can be made to fail like the driver's own layers do, and whose closing is
// seen.
class OpeningLine : public ScriptedLine {
  public:
    void Opened() override {
        if (at_open) {
            at_open();
        }
    }
    void Closed() override {
        if (at_close) {
            at_close();
        }
    }
    std::function<void()> at_open;
    std::function<void()> at_close;
};

class ConnectionTest : public testing::Test {
  protected:
    ConnectionTest() {
        world.Reset();
        world.Attach("/dev/ttyS0", &line);
        line.Always(request::kConfig, Frame(0x7B));
    }

    // Code that Connect throws; 0 when it succeeds.
    int Connect(unsigned char port = 1) {
        return CodeOf([&] { driver.Connect(port); });
    }

    template <typename Action>
    static int CodeOf(Action action) {
        try {
            action();
        } catch (const ETarvoVesk& e) {
            return e.getCode();
        }
        return 0;
    }

    void ConnectWell() {
        line.Answer(request::kVersion, version_303);
        ASSERT_EQ(Connect(), 0);
        world.ClearLog();
        world.ClearTraces();
    }

    const Bytes version_303 = Frame(0xB4, {3, 2, 0});
    const Bytes version_unknown = Frame(0xB4, {5, 5});
    const std::string hello = "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n";
    const std::string not_found = "TTarvoVesk::Connect: error getKKMVersion\n";

    World& world = World::Get();
    OpeningLine line;
    TTarvoVesk driver;
};

TEST_F(ConnectionTest, RegisterAt9600IsFoundWithTheseCallsAndBytes) {
    line.Answer(request::kVersion, version_303);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(world.Log(), (Lines{"open /dev/ttyS0 0x902",
                                  "fcntl 4 0",
                                  "getattr",
                                  "setattr",
                                  "flush",
                                  "flush",
                                  "sleep 10",
                                  "flush",
                                  "write 00 03 00 34 34",
                                  "sleep 10",
                                  "sleep 10",
                                  "wait 400",
                                  "wait 100",
                                  "read 00",
                                  "wait 100",
                                  "read 06",
                                  "wait 800",
                                  "wait 100",
                                  "read 00",
                                  "wait 100",
                                  "read B4",
                                  "wait 100",
                                  "read 03",
                                  "wait 100",
                                  "read 02",
                                  "wait 100",
                                  "read 00",
                                  "wait 100",
                                  "read B9",
                                  "sleep 10",
                                  "flush",
                                  "write 00 05 00 0B 07 01 13",
                                  "sleep 10",
                                  "wait 400",
                                  "wait 100",
                                  "read 00",
                                  "wait 100",
                                  "read 03",
                                  "wait 500",
                                  "wait 100",
                                  "read 00",
                                  "wait 100",
                                  "read 7B",
                                  "wait 100",
                                  "read 7B"}));
    EXPECT_EQ(world.line.c_cflag, 0x8BDU);
    EXPECT_EQ(driver.version(), 303);
    EXPECT_EQ(world.Traced(),
              "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"
              "TTarvoVesk::Connect: getKKMVersion: 303\n"
              "Connect - OK\n");
}

TEST_F(ConnectionTest, VersionIsKeptAndTraced) {
    const std::vector<std::pair<Bytes, int>> versions = {
        {{2, 11}, 301}, {{3, 2}, 302}, {{3, 3}, 303}, {{3, 10}, 310}, {{3, 12}, 310}, {{3, 4}, 400},
    };
    for (const auto& [payload, version] : versions) {
        world.ClearTraces();
        line.Answer(request::kVersion, Frame(0xB4, payload));
        EXPECT_EQ(Connect(), 0);
        EXPECT_EQ(driver.version(), version);
        EXPECT_EQ(world.Traced(), hello + "TTarvoVesk::Connect: getKKMVersion: " +
                                      std::to_string(version) + "\nConnect - OK\n");
    }
}

TEST_F(ConnectionTest, RegisterAt57600IsFoundBehindASilentFailureAt9600) {
    std::vector<unsigned> speeds;
    Reply silence;
    silence.at_request = [&] { speeds.push_back(world.line.c_cflag); };
    line.Answer(request::kVersion, silence);
    line.Answer(request::kVersion, version_303);
    EXPECT_EQ(Connect(), 0);
    speeds.push_back(world.line.c_cflag);
    EXPECT_EQ(speeds, (std::vector<unsigned>{0x8BD, 0x18B1}));
    EXPECT_EQ(world.Requests(), (Lines{"34", "34", "0B 07 01"}));
    EXPECT_EQ(world.Traced(), hello + not_found + "Connect - OK\n");
    EXPECT_EQ(driver.version(), 303);
}

TEST_F(ConnectionTest, UnknownVersionAt9600IsTracedOnceAndTriedAt57600) {
    line.Answer(request::kVersion, version_unknown);
    line.Answer(request::kVersion, version_303);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(world.Traced(), hello + not_found + "Connect - OK\n");
    EXPECT_EQ(world.Requests(), (Lines{"34", "34", "0B 07 01"}));
    EXPECT_TRUE(world.Details().empty());  // an unknown version is no error of the protocol here
}

TEST_F(ConnectionTest, UnknownVersionAtBothSpeedsIsNoVersion) {
    line.Answers(request::kVersion, 2, version_unknown);
    EXPECT_EQ(Connect(), 3);
    EXPECT_TRUE(world.Details().empty());
    EXPECT_EQ(world.Requests(), (Lines{"34", "34"}));
    EXPECT_EQ(world.Traced(), hello + not_found);
    EXPECT_EQ(driver.version(), 0);
}

TEST_F(ConnectionTest, SilenceThenUnknownVersionIsNoVersion) {
    line.Answer(request::kVersion, Silence());
    line.Answer(request::kVersion, version_unknown);
    EXPECT_EQ(Connect(), 3);
}

TEST_F(ConnectionTest, SilenceAtBothSpeedsIsADeviceErrorBehindTheParameter) {
    EXPECT_EQ(Connect(), 2);
    EXPECT_EQ(world.Requests(), (Lines{"34", "34", "0B 07 01"}));
    EXPECT_EQ(world.Traced(), hello + not_found);
}

TEST_F(ConnectionTest, UnknownVersionThenSilenceIsADeviceError) {
    line.Answer(request::kVersion, version_unknown);
    EXPECT_EQ(Connect(), 2);
}

TEST_F(ConnectionTest, BrokenAnswerAtTheSecondSpeedIsADeviceError) {
    line.Answer(request::kVersion, Silence());
    line.Answer(request::kVersion, Frame(0xB5, {3, 2}));
    EXPECT_EQ(Connect(), 2);
    EXPECT_EQ(world.Requests(), (Lines{"34", "34", "0B 07 01"}));
}

TEST_F(ConnectionTest, FailedConnectLeavesThePortOpen) {
    EXPECT_EQ(Connect(), 2);
    EXPECT_EQ(std::count(world.Log().begin(), world.Log().end(), "close"), 0);
}

TEST_F(ConnectionTest, LineThatCannotBeSetUpIsADeviceErrorWithoutTraffic) {
    world.getattr_fails = true;
    EXPECT_EQ(Connect(), 2);
    EXPECT_TRUE(world.Requests().empty());
    EXPECT_EQ(world.Traced(), hello + not_found);
    world.getattr_fails = false;
    world.setattr_fails = true;
    EXPECT_EQ(Connect(), 2);
    EXPECT_TRUE(world.Requests().empty());
}

TEST_F(ConnectionTest, LineThatCannotBeSetUpAtTheSecondSpeedSkipsTheParameter) {
    Reply silence;
    silence.at_request = [&] { world.getattr_fails = true; };
    line.Answer(request::kVersion, silence);
    EXPECT_EQ(Connect(), 2);
    EXPECT_EQ(world.Requests(), (Lines{"34"}));
}

TEST_F(ConnectionTest, MissingPortIsNoPort) {
    EXPECT_EQ(Connect(9), 1);
    EXPECT_EQ(world.Log(), (Lines{"open /dev/ttyS8 0x902 = error"}));
    EXPECT_EQ(world.Traced(), hello);
}

TEST_F(ConnectionTest, PathIsOpenedAsItStands) {
    world.Attach("/dev/serial/by-id/register", &line);
    line.Answer(request::kVersion, version_303);
    EXPECT_EQ(CodeOf([&] { driver.ConnectDevice("/dev/serial/by-id/register"); }), 0);
    EXPECT_EQ(world.Log().front(), "open /dev/serial/by-id/register 0x902");
    EXPECT_EQ(driver.version(), 303);
    EXPECT_EQ(CodeOf([&] { driver.ConnectDevice("/dev/serial/by-id/other"); }), 1);
    EXPECT_EQ(driver.version(), 0);
}

TEST_F(ConnectionTest, FailuresOfTheOpeningBecomeTheseCodes) {
    const auto code_of = [&](const auto& exception) {
        line.at_open = [&] { throw exception; };
        return Connect();
    };
    const int protocol[] = {2, 1, 2, 1, 2, 2, 2, 2};
    for (int code = 0; code < 8; ++code) {
        EXPECT_EQ(code_of(ETarvo(&driver, code, "")), protocol[code]) << code;
    }
    EXPECT_EQ(code_of(EMiniCom(nullptr, errCreateFile, "")), 1);
    EXPECT_EQ(code_of(EMiniCom(nullptr, errReadFile, "")), 2);
    EXPECT_EQ(code_of(EMiniCom(nullptr, errUnknown, "")), 2);
    EXPECT_EQ(code_of(ETarvoVesk(echCancelCheck)), 34);
    EXPECT_EQ(code_of(std::runtime_error("")), 2);
    EXPECT_EQ(code_of(1), 2);
    EXPECT_TRUE(world.Requests().empty());
}

TEST_F(ConnectionTest, EngineErrorOfTheFirstRequestIsIgnored) {
    line.Answer(request::kVersion, Throwing(ETarvoVesk(echCancelCheck)));
    line.Answer(request::kVersion, version_303);
    EXPECT_EQ(Connect(), 0);
}

TEST_F(ConnectionTest, EngineErrorOfTheSecondRequestLeavesUnchanged) {
    line.Answer(request::kVersion, Silence());
    line.Answer(request::kVersion, Throwing(ETarvoVesk(echCancelCheck)));
    EXPECT_EQ(Connect(), 34);
    EXPECT_EQ(world.Requests(), (Lines{"34", "34"}));
}

TEST_F(ConnectionTest, EngineErrorOfTheParameterLeavesUnchanged) {
    line.Answer(request::kVersion, version_303);
    line.Answer(request::kConfig, Throwing(ETarvoVesk(echCancelCheck)));
    EXPECT_EQ(Connect(), 34);
}

TEST_F(ConnectionTest, PortErrorOfTheParameterIsIgnoredWhateverItsCode) {
    line.Answer(request::kVersion, version_303);
    line.Answer(request::kConfig, Throwing(EMiniCom(nullptr, errCreateFile, "")));
    EXPECT_EQ(Connect(), 0);
}

TEST_F(ConnectionTest, ConnectEndsTheLoopAndClosesThePortFirst) {
    ConnectWell();
    driver.start();
    bool waiting_at_close = true;
    line.at_close = [&] { waiting_at_close = driver.iswait(); };
    EXPECT_EQ(Connect(9), 1);
    EXPECT_FALSE(waiting_at_close);
    EXPECT_EQ(world.Log(), (Lines{"close", "open /dev/ttyS8 0x902 = error"}));
    EXPECT_FALSE(driver.iswait());
    EXPECT_EQ(driver.version(), 0);
}

TEST_F(ConnectionTest, ParameterOfALostConnectionIsNotSwitchedOff) {
    ConnectWell();
    EXPECT_EQ(Connect(9), 1);
    world.ClearTraces();
    EXPECT_NO_THROW(driver.Disconnect());
    EXPECT_EQ(world.Traced(), "Disconnect - OK");
}

TEST_F(ConnectionTest, DisconnectReturnsTheRegisterToNeutralAndSwitchesTheParameterOff) {
    ConnectWell();
    driver.start();
    line.Answer(request::kStatus, answer::CheckOut())
        .Answer(request::kStatus, answer::SaleAdd())
        .Answer(request::kStatus, answer::None())
        .Always(request::kReset, answer::Reset());
    driver.Disconnect();
    EXPECT_EQ(world.Steps(), (Lines{"20", "7F", "20", "7F", "20", "0B 07 00"}));
    EXPECT_EQ(world.Log().back(), "close");
    EXPECT_EQ(world.Traced(), "Disconnect - OK");
    EXPECT_EQ(driver.version(), 0);
    EXPECT_FALSE(driver.iswait());
}

TEST_F(ConnectionTest, DisconnectResetsAsLongAsTheRegisterAnswers) {
    ConnectWell();
    line.Answers(request::kStatus, 1000, answer::Ready())
        .Answer(request::kStatus, answer::None())
        .Always(request::kReset, answer::Reset());
    driver.Disconnect();
    EXPECT_EQ(world.Requests().size(), 2002U);
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

TEST_F(ConnectionTest, DisconnectGivesUpAtTheFirstFailure) {
    ConnectWell();
    line.Answer(request::kStatus, answer::Ready());  // and no answer to the reset
    driver.Disconnect();
    EXPECT_EQ(world.Requests(), (Lines{"20", "7F", "0B 07 00"}));
    EXPECT_EQ(world.Log().back(), "close");
    EXPECT_EQ(world.Traced(), "Disconnect - OK");
}

TEST_F(ConnectionTest, DisconnectOfASilentRegisterClosesThePort) {
    ConnectWell();
    driver.Disconnect();
    EXPECT_EQ(world.Requests(), (Lines{"20", "0B 07 00"}));
    EXPECT_EQ(world.Log().back(), "close");
}

TEST_F(ConnectionTest, FailureToSwitchTheParameterOffLeavesDisconnect) {
    ConnectWell();
    line.Always(request::kConfig, Silence());
    EXPECT_THROW(driver.Disconnect(), EMiniCom);
    EXPECT_EQ(world.Traced(), "");
    EXPECT_EQ(driver.version(), 303);
    // The port is still open and the parameter still to be switched off.
    line.Always(request::kConfig, Frame(0x7B));
    world.ClearLog();
    driver.Disconnect();
    EXPECT_EQ(world.Requests(), (Lines{"20", "0B 07 00"}));
    EXPECT_EQ(world.Log().back(), "close");
}

TEST_F(ConnectionTest, DisconnectBeforeAnyConnectSendsNothing) {
    EXPECT_NO_THROW(driver.Disconnect());
    EXPECT_TRUE(world.Requests().empty());
    EXPECT_EQ(world.Traced(), "Disconnect - OK");
}

TEST_F(ConnectionTest, SecondDisconnectLeavesTheParameterAlone) {
    ConnectWell();
    driver.Disconnect();
    world.ClearLog();
    world.ClearTraces();
    EXPECT_NO_THROW(driver.Disconnect());
    EXPECT_TRUE(world.Requests().empty());
    EXPECT_EQ(world.Traced(), "Disconnect - OK");
}

class RefusedParameterTest : public ConnectionTest, public testing::WithParamInterface<Bytes> {};

TEST_P(RefusedParameterTest, ConnectsAndIsNotSwitchedOffAtDisconnect) {
    line.Answer(request::kVersion, version_303);
    line.Always(request::kConfig, GetParam());
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(world.Requests(), (Lines{"34", "0B 07 01"}));
    EXPECT_EQ(world.Traced(), hello + "TTarvoVesk::Connect: getKKMVersion: 303\nConnect - OK\n");
    world.ClearLog();
    driver.Disconnect();
    EXPECT_EQ(world.Requests(), (Lines{"20"}));
}

INSTANTIATE_TEST_SUITE_P(ByAnswer, RefusedParameterTest,
                         testing::Values(Frame(0x7C), Bytes(),
                                         Bytes{0x00, 0x03, 0x00, 0x7B, 0x00}));

}  // namespace
}  // namespace test
