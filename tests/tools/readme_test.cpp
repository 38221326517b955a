// What the README says is what there is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

using testing::HasSubstr;

std::string File(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(PROJECT_FOLDER "/" + name).rdbuf();
    return text.str();
}

// First match group of every match.
std::set<std::string> AllMatches(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator i(text.begin(), text.end(), regex), end; i != end; ++i) {
        found.insert((*i)[1]);
    }
    return found;
}

TEST(Readme, ShowsTheHostThatIsCompiled) {
    EXPECT_THAT(File("README.md"),
                HasSubstr("```cpp program\n" + File("examples/host.cpp") + "```\n"));
}

TEST(Readme, NamesEveryFunctionOfTheHeader) {
    const std::string header = File("include/VeskTarvoM5/VeskTarvoM5.h");
    const std::string for_hosts = header.substr(0, header.find("@name Support routines"));
    const auto functions = AllMatches(for_hosts, R"(VESK_API [a-z][^;(]*[ *](\w+)\()");
    EXPECT_GE(functions.size(), 45U);
    const std::string readme = File("README.md");
    for (const std::string& function : functions) {
        EXPECT_NE(readme.find("`" + function + "("), std::string::npos) << function;
    }
}

TEST(Readme, ExplainsEveryErrorCodeOfTheHeader) {
    const std::string readme = File("README.md");
    const std::string header = File("include/VeskTarvoM5/VeskTarvoM5.h");
    const std::regex code(R"((ech\w+) = (\d+))");
    int codes = 0;
    for (std::sregex_iterator i(header.begin(), header.end(), code), end; i != end; ++i) {
        if ((*i)[1] == "echOk") {
            continue;
        }
        ++codes;
        const std::string row = "| " + (*i)[2].str() + " | `" + (*i)[1].str() + "` | ";
        EXPECT_NE(readme.find(row), std::string::npos) << row;
    }
    EXPECT_EQ(codes, 16);
}

TEST(Readme, LinksLeadToFiles) {
    for (const std::string& link : AllMatches(File("README.md"), R"(\]\(([^)]+)\))")) {
        EXPECT_NE(File(link), "") << link;
    }
}

}  // namespace
