// The man page tells of everything that the command line takes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "kkm/command_line.h"

namespace kkm {
namespace {

std::string ManPage() {
    std::ostringstream page;
    page << std::ifstream(PROJECT_FOLDER "/docs/man/kkm.1").rdbuf();
    return page.str();
}

std::vector<std::string> WordsBehind(std::vector<const char*> words) {
    words.insert(words.begin(), {"kkm", "--complete"});
    std::istringstream in;
    std::stringstream out;
    std::ostringstream err;
    Streams streams{in, out, err, {}, {}};
    Run(static_cast<int>(words.size()), words.data(), streams);
    std::vector<std::string> offered;
    for (std::string word; std::getline(out, word);) {
        offered.push_back(word);
    }
    return offered;
}

TEST(ManPage, TellsOfEveryCommandAndItsOptions) {
    const std::string page = ManPage();
    const auto commands = WordsBehind({""});
    EXPECT_GE(commands.size(), 15U);
    for (const std::string& command : commands) {
        EXPECT_THAT(page, testing::HasSubstr("Cm " + command)) << command;
        for (const std::string& option : WordsBehind({command.c_str(), "--"})) {
            EXPECT_THAT(page, testing::HasSubstr("Fl " + option.substr(1))) << command;
        }
    }
}

TEST(ManPage, TellsEveryExitStatus) {
    const std::string page = ManPage();
    for (const char* status :
         {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "125", "130"}) {
        EXPECT_THAT(page, testing::HasSubstr("\n.It " + std::string(status) + "\n"));
    }
}

}  // namespace
}  // namespace kkm
