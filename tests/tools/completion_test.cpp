// What the shell offers, asked through the command line as the shell asks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "kkm/command_line.h"

namespace kkm {
namespace {

std::string Offered(std::vector<const char*> words) {
    words.insert(words.begin(), {"kkm", "--complete"});
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    Streams streams{in, out, err, {}, {}};
    EXPECT_EQ(Run(static_cast<int>(words.size()), words.data(), streams), ExitStatus::done);
    EXPECT_EQ(err.str(), "");
    return out.str();
}

TEST(Completion, CommandsByTheirBeginning) {
    EXPECT_EQ(Offered({"wa"}), "watch\n");
    EXPECT_EQ(Offered({"ta"}), "taxes\ntape\n");
    EXPECT_THAT(Offered({""}), testing::HasSubstr("doctor\n"));
    EXPECT_EQ(Offered({}), Offered({""}));
    EXPECT_EQ(Offered({"nonsense"}), "");
}

TEST(Completion, OptionsOfTheCommandAndOfTheProgram) {
    EXPECT_EQ(Offered({"tape", "--"}),
              "--help\n--from\n--to\n--csv\n--version\n--device\n--port\n--json\n");
    EXPECT_EQ(Offered({"--device", "/dev/ttyS0", "tape", "--f"}), "--from\n");
    EXPECT_EQ(Offered({"--j"}), "--json\n");
}

TEST(Completion, RunTakesItsOwnOptionsOnly) {
    EXPECT_EQ(Offered({"run", "--"}), "--help\n--device\n--port\n--directory\n");
    EXPECT_EQ(Offered({"run", "--", "--d"}), "");
}

TEST(Completion, ValuesOfAChoice) {
    EXPECT_EQ(Offered({"check", "--firmware", "3"}), "301\n302\n303\n310\n");
}

TEST(Completion, FilesAreLeftToTheShell) {
    EXPECT_EQ(Offered({"check", ""}), "");
    EXPECT_EQ(Offered({"--device", ""}), "");
    EXPECT_EQ(Offered({"--device", "tape", ""}), Offered({""}));
}

}  // namespace
}  // namespace kkm
