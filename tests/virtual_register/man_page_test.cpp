// The man page tells of everything that the program and its scenarios know.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>

#include "virtual_register/act.h"
#include "virtual_register/scenario.h"

namespace virtual_register {
namespace {

std::string man_page() {
    std::ostringstream page;
    page << std::ifstream(PROJECT_FOLDER "/docs/man/tarvo-register.1").rdbuf();
    return page.str();
}

std::string help(const std::string& arguments) {
    std::FILE* const from = ::popen((TARVO_REGISTER " " + arguments + " --help").c_str(), "r");
    std::string text;
    std::array<char, 4096> bytes{};
    for (std::size_t count = 0; (count = std::fread(bytes.data(), 1, bytes.size(), from)) > 0;) {
        text.append(bytes.data(), count);
    }
    ::pclose(from);
    return text;
}

TEST(ManPage, TellsOfEveryOption) {
    const std::string page = man_page();
    const std::regex option("\n  (?:-h,)?-(-[a-z-]+)");
    for (const char* command : {"", "receipt"}) {
        const std::string text = help(command);
        int options = 0;
        for (std::sregex_iterator at(text.begin(), text.end(), option), end; at != end; ++at) {
            const std::string name = (*at)[1];
            EXPECT_NE(std::string::npos, page.find("Fl " + name)) << name;
            ++options;
        }
        EXPECT_GE(options, *command == '\0' ? 20 : 4) << text;
    }
}

TEST(ManPage, TellsOfEveryActOfThePrompt) {
    const std::string page = man_page();
    std::istringstream lines(kActsHelp);
    for (std::string line; std::getline(lines, line);) {
        const std::string act = line.substr(0, line.find(' '));
        EXPECT_NE(std::string::npos, page.find("Cm " + act)) << act;
    }
}

TEST(ManPage, ItsScenariosAreScenarios) {
    const std::string page = man_page();
    const std::regex line("\n((?:when|at) [^\n]*)");
    int lines = 0;
    for (std::sregex_iterator at(page.begin(), page.end(), line), end; at != end; ++at) {
        EXPECT_NO_THROW(Scenario(std::string((*at)[1]))) << (*at)[1];
        ++lines;
    }
    EXPECT_EQ(4, lines);
}

}  // namespace
}  // namespace virtual_register
