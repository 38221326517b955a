// The exported functions on the one driver instance, as a host meets them after loading.
#pragma once

#include <new>
#include <string>
#include <utility>
#include <vector>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "interface/last_error.h"
#include "interface/vesk.h"
#include "support/fixtures.h"

namespace test {

// What the host's callbacks have seen, in order.
struct HostEvents {
    static std::vector<std::string>& All() {
        static std::vector<std::string> events;
        return events;
    }
    static void Error(int code, char* text) {
        All().push_back("error " + std::to_string(code) + (text == nullptr ? "" : " with text"));
    }
    static void Query() { All().push_back("query"); }
    static void Prepare(unsigned char step) { All().push_back("prepare " + std::to_string(step)); }
    static void Close() { All().push_back("close"); }
};

class InterfaceTest : public WorldTest {
  protected:
    InterfaceTest() { Fresh(); }
    ~InterfaceTest() override { Fresh(); }

    // What a register of the firmware answers to the version request.
    static Bytes VersionAnswer(kkm_ver version) {
        switch (version) {
            case kkm_ver_301:
                return Frame(0xB4, {0x02, 0x0B});
            case kkm_ver_302:
                return Frame(0xB4, {0x03, 0x02});
            case kkm_ver_303:
                return Frame(0xB4, {0x03, 0x02, 0x00});
            case kkm_ver_310:
                return Frame(0xB4, {0x03, 0x0A});
            case kkm_ver_400:
                return Frame(0xB4, {0x03, 0x04});
            default:
                return Frame(0xB4, {0x09, 0x09});
        }
    }

    // Connects for real and forgets how.
    void Connect(kkm_ver version = kkm_ver_303) {
        line.Answer(0x34, VersionAnswer(version)).Answer(0x0B, Frame(0x7B));
        ASSERT_EQ(ConnectKKM(1), 1);
        world.ClearLog();
        world.ClearTraces();
    }

    // An open port on which nobody has answered so far.
    void ConnectInVain() {
        ASSERT_EQ(ConnectKKM(1), 0);
        world.ClearLog();
        world.ClearTraces();
    }

    // As ConnectInVain, but the register answers from now on.
    void ConnectTooEarly(kkm_ver version = kkm_ver_303) {
        ConnectInVain();
        line.Always(0x34, VersionAnswer(version));
    }

    static void ListenToErrors() { EventErrorProc = HostEvents::Error; }
    static const std::vector<std::string>& Events() { return HostEvents::All(); }

    using Texts = std::vector<std::string>;

  private:
    static void Fresh() {
        kvesk.~TVesk();
        new (&kvesk) TVesk();
        errVeskTarvo = echOk;
        EventErrorProc = nullptr;
        EventQuery = nullptr;
        EventCheckPrepare = nullptr;
        EventCloseCheck = nullptr;
        HostEvents::All().clear();
    }
};

}  // namespace test
