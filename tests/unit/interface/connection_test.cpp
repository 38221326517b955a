#include "support/interface_fixture.h"

namespace test {
namespace {

class ConnectionFunctionsTest : public InterfaceTest {
  protected:
    // Paths that were opened, or tried.
    Texts Opened() const {
        Texts paths;
        for (const std::string& event : world.Log()) {
            if (event.rfind("open ", 0) == 0) {
                paths.push_back(event.substr(5, event.find(' ', 5) - 5));
            }
        }
        return paths;
    }

    Texts ConnectLog() const {
        Texts log;
        for (const std::string& event : world.Log()) {
            if (event.rfind("wait", 0) != 0 && event.rfind("read", 0) != 0) {
                log.push_back(event);
            }
        }
        return log;
    }
};

TEST_F(ConnectionFunctionsTest, RegisterIsFoundAndSwitchedToHostWait) {
    errVeskTarvo = 14;
    line.Answer(0x34, VersionAnswer(kkm_ver_302)).Answer(0x0B, Frame(0x7B));
    EXPECT_EQ(ConnectKKM(1), 1);
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(world.Requests(), (Texts{"34", "0B 07 01"}));
    EXPECT_EQ(kvesk.version(), 302);
}

TEST_F(ConnectionFunctionsTest, PortNumberCountsFromOneInItsLowEightBits) {
    const std::vector<std::pair<int, std::string>> ports{
        {1, "/dev/ttyS0"},           {2, "/dev/ttyS1"},    {255, "/dev/ttyS254"},
        {257, "/dev/ttyS0"},         {-1, "/dev/ttyS254"}, {0, "/dev/ttyS4294967295"},
        {256, "/dev/ttyS4294967295"}};
    for (const auto& [port, path] : ports) {
        world.ClearLog();
        ConnectKKM(port);
        EXPECT_EQ(Opened(), Texts{path}) << port;
    }
}

TEST_F(ConnectionFunctionsTest, MissingPortIsCode1) {
    ListenToErrors();
    EXPECT_EQ(ConnectKKM(9), 0);
    EXPECT_EQ(GetErrorCode(), 1);
    EXPECT_EQ(GetErrorMsg(), nullptr);
    EXPECT_EQ(Events(), Texts{"error 1"});
}

TEST_F(ConnectionFunctionsTest, SilentLineIsCode2) {
    EXPECT_EQ(ConnectKKM(1), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(world.Requests(), (Texts{"34", "34", "0B 07 01"}));
}

TEST_F(ConnectionFunctionsTest, UnknownFirmwareAtBothSpeedsIsCode3) {
    line.Answers(0x34, 2, VersionAnswer(kkm_ver_unknown));
    EXPECT_EQ(ConnectKKM(1), 0);
    EXPECT_EQ(GetErrorCode(), 3);
    EXPECT_EQ(world.Requests(), (Texts{"34", "34"}));
}

TEST_F(ConnectionFunctionsTest, DeviceOfAnyNameIsConnectedAlike) {
    world.Attach("/dev/serial/by-id/usb-0", &line);
    line.Answers(0x34, 2, VersionAnswer(kkm_ver_303)).Answers(0x0B, 2, Frame(0x7B));
    EXPECT_EQ(ConnectKKM(1), 1);
    Texts by_port = ConnectLog();
    ASSERT_FALSE(by_port.empty());
    EXPECT_EQ(by_port.front(), "open /dev/ttyS0 0x902");

    line.Answer(0x20, Frame(0xA0)).Answer(0x0B, Frame(0x7B));
    DisconnectKKM();
    world.ClearLog();
    errVeskTarvo = 14;
    char device[] = "/dev/serial/by-id/usb-0";
    EXPECT_EQ(ConnectKKMDevice(device), 1);
    EXPECT_EQ(GetErrorCode(), 0);
    by_port.front() = "open /dev/serial/by-id/usb-0 0x902";
    EXPECT_EQ(ConnectLog(), by_port);
    EXPECT_EQ(kvesk.version(), 303);
}

TEST_F(ConnectionFunctionsTest, MissingDeviceIsCode1) {
    char device[] = "/dev/ttyUSB7";
    EXPECT_EQ(ConnectKKMDevice(device), 0);
    EXPECT_EQ(GetErrorCode(), 1);
}

TEST_F(ConnectionFunctionsTest, NoDeviceNameIsCode12AndTouchesNothing) {
    Connect();
    ListenToErrors();
    char empty[] = "";
    EXPECT_EQ(ConnectKKMDevice(nullptr), 0);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(ConnectKKMDevice(empty), 0);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(Events(), (Texts{"error 12", "error 12"}));
    EXPECT_EQ(world.Log(), Texts{});
    EXPECT_EQ(kvesk.version(), 303);
    EXPECT_EQ(world.Traced(), "");
}

TEST_F(ConnectionFunctionsTest, ConnectingAgainClosesThePortFirst) {
    Connect();
    EXPECT_EQ(ConnectKKM(9), 0);
    EXPECT_EQ(world.Log(), (Texts{"close", "open /dev/ttyS8 0x902 = error"}));
    EXPECT_EQ(kvesk.version(), 0);
}

TEST_F(ConnectionFunctionsTest, DisconnectReturnsTheRegisterToRest) {
    Connect();
    line.Answer(0x20, Frame(0xC0)).Answer(0x7F, Frame(0x90)).Answer(0x20, Frame(0xA0));
    line.Answer(0x0B, Frame(0x7B));
    errVeskTarvo = 14;
    DisconnectKKM();
    EXPECT_EQ(world.Requests(), (Texts{"20", "7F", "20", "0B 07 00"}));
    EXPECT_EQ(world.Log().back(), "close");
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(kvesk.version(), 0);
}

TEST_F(ConnectionFunctionsTest, KeepsDisconnectWithoutErrorThoughTheCallbackHeardOne) {
    Connect();
    ListenToErrors();
    line.Answer(0x20, Frame(0xA0));  // and then nothing to the parameter
    DisconnectKKM();
    EXPECT_EQ(Events(), Texts{"error 2"});
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(kvesk.version(), 303) << "the failure ends it before the port is closed";
}

TEST_F(ConnectionFunctionsTest, DisconnectWithoutConnectionSucceeds) {
    ListenToErrors();
    errVeskTarvo = 14;
    DisconnectKKM();
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(Events(), Texts{});
    EXPECT_EQ(world.Requests(), Texts{});
}

TEST_F(ConnectionFunctionsTest, SuccessForgetsTheFailureBefore) {
    EXPECT_EQ(ConnectKKM(9), 0);
    line.Answer(0x34, VersionAnswer(kkm_ver_400)).Answer(0x0B, Frame(0x7B));
    EXPECT_EQ(ConnectKKM(1), 1);
    EXPECT_EQ(GetErrorCode(), 0);
}

}  // namespace
}  // namespace test
