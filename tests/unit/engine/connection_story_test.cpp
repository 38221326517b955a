// Where the traces of a connection stand among what the driver does.
#include "unit/engine/engine_test.h"

namespace test {
namespace {

class ConnectionStoryTest : public testing::Test {
  protected:
    ConnectionStoryTest() {
        world.Reset();
        world.Attach("/dev/ttyS0", &line);
        world.on_trace = [this](const std::string& text) { world.Note(text); };
        line.Always(request::kConfig, Frame(0x7B));
    }
    ~ConnectionStoryTest() override { world.on_trace = nullptr; }

    // Connects to a register that gives its version in the last of these answers.
    void Connect(const std::vector<Bytes>& versions = {Frame(0xB4, {3, 2, 0})}) {
        for (const Bytes& version : versions) {
            line.Answer(request::kVersion, version);
        }
        driver.Connect(1);
    }

    // Opening, line settings, requests, closing and traces in their order.
    Lines Story() const {
        Lines story;
        for (const std::string& event : world.Log()) {
            const std::string what = event.substr(0, event.find(' '));
            if (what == "open" || what == "setattr" || what == "write" || what == "close" ||
                what == "note") {
                story.push_back(event);
            }
        }
        return story;
    }

    World& world = World::Get();
    ScriptedLine line;
    TTarvoVesk driver;
};

TEST_F(ConnectionStoryTest, ConnectingIsToldBeforeTheOldPortIsClosedAndAsDoneBehindTheParameter) {
    Connect();
    world.ClearLog();
    Connect();
    EXPECT_EQ(Story(), (Lines{"note Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n", "close",
                              "open /dev/ttyS0 0x902", "setattr", "write 00 03 00 34 34",
                              "note TTarvoVesk::Connect: getKKMVersion: 303\n",
                              "write 00 05 00 0B 07 01 13", "note Connect - OK\n"}));
}

TEST_F(ConnectionStoryTest, FailureAt9600IsToldBeforeTheSecondSpeedIsSet) {
    Connect({Frame(0xB4, {5, 5}), Frame(0xB4, {3, 2, 0})});
    EXPECT_EQ(
        Story(),
        (Lines{"note Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n", "open /dev/ttyS0 0x902", "setattr",
               "write 00 03 00 34 34", "note TTarvoVesk::Connect: error getKKMVersion\n", "setattr",
               "write 00 03 00 34 34", "write 00 05 00 0B 07 01 13", "note Connect - OK\n"}));
}

TEST_F(ConnectionStoryTest, DisconnectingIsToldBehindTheClosing) {
    Connect();
    world.ClearLog();
    line.Answer(request::kStatus, answer::None());
    driver.Disconnect();
    EXPECT_EQ(Story(), (Lines{"write 00 03 00 20 20", "write 00 05 00 0B 07 00 12", "close",
                              "note Disconnect - OK"}));
}

}  // namespace
}  // namespace test
