// A library that records how it is called and answers what a test wants: linked in place of the
// driver, behind the same public header.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "kkm/register_dump.h"
#include "kkm/register_state.h"

namespace test {

struct FakeLibrary {
    std::vector<std::string> calls;      // "cbAddSale 95 ab a5 a1, 25.50, 2.000, 1"
    std::map<std::string, int> failing;  // function name -> the last error that it leaves
    std::function<void()> on_print;      // what happens within PrintCheck()
    int firmware = 303;
    int error = 0;
    bool throwing_cash = false;
    int unreadable_record = 0;
    double tape_quantity = 2;
    std::vector<kkm::RegisterLook> looks;  // what the tool's own line sees, one after another

    kkm::RegisterDump dump;  // what a dump reads

    static FakeLibrary& Get();
    // Forgets everything.
    void Reset();
    // Records the call and gives its result.
    int Call(const std::string& name, const std::string& arguments = "");
};

}  // namespace test
