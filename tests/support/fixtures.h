// Fixtures: a world with a scripted line on /dev/ttyS0, and the driver's parts on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/tarvo_vesk.h"
#include "protocol/tarvo.h"
#include "support/scripted_line.h"
#include "support/world.h"

namespace test {

class WorldTest : public testing::Test {
  protected:
    WorldTest() {
        world.Reset();
        world.Attach("/dev/ttyS0", &line);
    }

    World& world = World::Get();
    ScriptedLine line;
};

// An open port with the protocol's time limits and a protocol object on it. The recorded log starts
// empty.
class TarvoTest : public WorldTest {
  protected:
    TarvoTest() {
        port.Open(1);
        kkm.setCom(&port);
        kkm.InitCom(baud_57600);
        world.ClearLog();
    }

    // Code of the ETarvo that the action throws; 0 when it throws nothing.
    template <typename Action>
    static int CodeOf(Action action) {
        try {
            action();
        } catch (const ETarvo& e) {
            return e.code();
        }
        return 0;
    }

    // Detail of the last protocol error.
    std::string LastDetail() const {
        return world.Details().empty() ? "(none)" : world.Details().back().text;
    }

    CMiniCom port;
    CTarvo kkm;
};

// A whole driver object, connected without traffic: the firmware is set by the test.
template <typename Driver>
class DriverTest : public WorldTest {
  protected:
    explicit DriverTest(kkm_ver version = kkm_ver_303) {
        // Only the opening of the port is wanted here; the search for the register is cut short.
        try {
            driver.Connect(1);
        } catch (const ETarvoVesk&) {
        }
        driver.setVersion(version);
        world.ClearLog();
        world.ClearTraces();
    }

    template <typename Action>
    static int VeskCodeOf(Action action) {
        try {
            action();
        } catch (const ETarvoVesk& e) {
            return e.getCode();
        }
        return 0;
    }

    Driver driver;
};

class TTarvoVeskTest : public DriverTest<TTarvoVesk> {
  protected:
    using DriverTest::DriverTest;
};

}  // namespace test
