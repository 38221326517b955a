// What the shipped library shows to the dynamic linker.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace test {
namespace {

using Names = std::set<std::string>;

// Lines of `nm -D` for the library: the type letter and the name.
std::set<std::pair<char, std::string>> Symbols(const std::string& choice) {
    std::set<std::pair<char, std::string>> symbols;
    const std::string command = std::string(NM_PROGRAM) + " -D " + choice + " " + VESK_LIBRARY;
    FILE* const output = popen(command.c_str(), "r");
    std::array<char, 512> line{};
    while (std::fgets(line.data(), line.size(), output) != nullptr) {
        std::istringstream words(line.data());
        std::string word;
        std::string type;
        std::string name;
        while (words >> word) {
            type = name;
            name = word;
        }
        symbols.insert({type.empty() ? '?' : type[0], name.substr(0, name.find('@'))});
    }
    EXPECT_EQ(pclose(output), 0) << command;
    return symbols;
}

Names ListedExports() {
    Names names;
    std::ifstream list(EXPORTED_SYMBOLS);
    for (std::string line; std::getline(list, line);) {
        names.insert(line);
    }
    return names;
}

TEST(Exports, AreThoseOfTheListAndNoOthers) {
    Names exports;
    for (const auto& [type, name] : Symbols("--defined-only")) {
        exports.insert((type == 'T' ? "function " : "variable ") + name);
    }
    EXPECT_EQ(exports, ListedExports());
}

TEST(Exports, NoSymbolIsUniqueOrWeak) {
    for (const auto& [type, name] : Symbols("--defined-only")) {
        EXPECT_NE(std::string("TBDR").find(type), std::string::npos) << name << " is " << type;
    }
}

Names Imports() {
    Names names;
    for (const auto& [type, name] : Symbols("--undefined-only")) {
        names.insert(name);
    }
    return names;
}

TEST(Exports, PosixCallsAreImportedByTheirPlainNames) {
    const Names imports = Imports();
    for (const char* call : {"open", "close", "read", "write", "poll", "fcntl", "tcgetattr",
                             "tcsetattr", "tcflush", "usleep"}) {
        EXPECT_EQ(imports.count(call), 1U) << call;
    }
    for (const char* variant : {"open64", "__open_2", "__open64_2", "__read_chk", "__poll_chk",
                                "fcntl64", "__fcntl_time64", "__write_chk"}) {
        EXPECT_EQ(imports.count(variant), 0U) << variant;
    }
}

}  // namespace
}  // namespace test
