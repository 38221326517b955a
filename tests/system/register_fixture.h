// A register in its own process, the library in this one, a tty between them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "system/host.h"
#include "system/register_process.h"
#include "virtual_register/memory.h"

namespace test {

// The host's callbacks: what they have heard, and what is done when the check has been asked for.
struct HostEvents {
    std::vector<std::string> heard;
    std::function<void()> at_query;
    static HostEvents& Get();
};

class RegisterTest : public testing::Test {
  protected:
    RegisterTest();

    // Starts a register with its memory in a file and its paper in another. An earlier one must
    // have ended; its memory is then that of the new one.
    void Start(int firmware, const std::vector<std::string>& more = {});
    void Connect();

    bool Add(const std::string& cp866_name, double price, double quantity, int section);
    // The cashier asks for the check, and the host prints it. The error code, 0 on success.
    int Print(const std::string& asking = "host");

    // What the register keeps at this moment.
    virtual_register::Memory Memory() const;
    // The last check that it has registered.
    virtual_register::PrintedCheck LastCheck() const;
    // What stands on the paper, as UTF-8. Ends the register.
    std::string Paper();

    static const std::vector<std::string>& Heard() { return HostEvents::Get().heard; }
    using Texts = std::vector<std::string>;

    static constexpr auto kMemoryFile = "register.mem";

    WorkingFolder folder;
    Library library;
    std::optional<RegisterProcess> kkm;
};

}  // namespace test
