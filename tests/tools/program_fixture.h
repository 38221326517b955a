// kkm as its users start it, with a register on a tty.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "support/temp_directory.h"
#include "system/register_process.h"

namespace test {

// Each test has a folder of its own for paper and trace files.
class ProgramTest : public testing::Test {
  protected:
    // Exit status of a command line.
    int Sh(const std::string& command) {
        std::FILE* const from = popen((command + " 2>&1").c_str(), "r");
        output.clear();
        for (int c = std::fgetc(from); c != EOF; c = std::fgetc(from)) {
            output += static_cast<char>(c);
        }
        const int status = pclose(from);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int Kkm(const RegisterProcess& at, const std::string& arguments) {
        return Sh(KKM_PROGRAM " --device " + at.Tty() + " " + arguments);
    }

    TempDirectory folder;
    std::string output;
};

}  // namespace test
