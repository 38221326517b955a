// kkm as it is started, without a process: its library is a fake.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "kkm/command_line.h"
#include "tools/fake_library.h"

namespace kkm {

class CommandsTest : public testing::Test {
  protected:
    CommandsTest() { library.Reset(); }

    int Kkm(std::vector<const char*> arguments, const std::string& input = "") {
        arguments.insert(arguments.begin(), "kkm");
        std::istringstream in(input);
        out.str("");
        err.str("");
        Streams streams{in, out, err, {}, {}};
        return static_cast<int>(
            kkm::Run(static_cast<int>(arguments.size()), arguments.data(), streams));
    }

    test::FakeLibrary& library = test::FakeLibrary::Get();
    std::ostringstream out;
    std::ostringstream err;
};

}  // namespace kkm
