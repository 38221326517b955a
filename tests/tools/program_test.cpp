// kkm and the examples as their users start them: real programs, the shipped library, a register on
// a tty, real time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "support/temp_directory.h"
#include "system/register_process.h"

namespace test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr auto kCheckExample = "check " PROJECT_FOLDER "/examples/check.json";

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

TEST_F(ProgramTest, ExampleCheckComesOutOnThePaper) {
    RegisterProcess kassa({"--paper", "paper"});
    kassa.Say("host");
    EXPECT_EQ(Kkm(kassa, kCheckExample), 0);
    EXPECT_THAT(output, EndsWith("  the check is printed\n"));
    const std::string paper = folder.Content("paper");
    for (const char* text : {"Хлеб ржаной", "Сыр Российский весовой", "Молоко 3,2 %", "СКИДКА -5%",
                             "=379.53", "500.00", "120.47"}) {
        EXPECT_THAT(paper, HasSubstr(text));
    }
    EXPECT_THAT(folder.Content("VeskTarvoM5.log"),
                StartsWith("Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"));
}

TEST_F(ProgramTest, ReadmeShowsThatPaper) {
    RegisterProcess kassa({"--paper", "paper"});
    kassa.Say("host");
    EXPECT_EQ(Kkm(kassa, kCheckExample), 0);
    const std::string paper = folder.Content("paper");
    std::ostringstream readme;
    readme << std::ifstream(PROJECT_FOLDER "/README.md").rdbuf();
    // The time of printing, in the line of the check's number, is the one thing that differs.
    const std::string number = "\nЧЕК 1 ";
    const auto before = paper.find(number);
    ASSERT_NE(before, std::string::npos);
    const auto behind = paper.find('\n', before + 1);
    EXPECT_THAT(readme.str(), HasSubstr("```text\n" + paper.substr(0, before) + number));
    EXPECT_THAT(readme.str(), HasSubstr(paper.substr(behind) + "```\n"));
}

TEST_F(ProgramTest, StatusIsWhatTheRegisterHolds) {
    const RegisterProcess kassa({"--firmware", "310", "--baud", "57600", "--serial", "00000777"});
    EXPECT_EQ(Kkm(kassa, "status --json"), 0);
    EXPECT_THAT(output, HasSubstr("\"firmware\": 310,\n  \"serial_number\": 777,\n"));
    EXPECT_THAT(output, HasSubstr("\"checks\": 0,\n  \"next_sale\": 1\n"));
}

TEST_F(ProgramTest, CountersOfAnEmptyTapeAreZero) {
    const RegisterProcess kassa({});
    EXPECT_EQ(Kkm(kassa, "counters"), 0);
    EXPECT_THAT(output, HasSubstr("grand total   0.00\ncash          0.00\n"));
}

TEST_F(ProgramTest, CheckWithoutPaperIsStatus7) {
    RegisterProcess kassa({});
    kassa.Say("paper out");
    kassa.Say("host");
    EXPECT_EQ(Kkm(kassa, kCheckExample), 7);
    EXPECT_THAT(output, HasSubstr("(error 5, echPaperAbsent)"));
}

TEST_F(ProgramTest, DeviceThatIsNotThereIsStatus4) {
    EXPECT_EQ(Sh(KKM_PROGRAM " --device /nowhere/tty status"), 4);
    EXPECT_THAT(output, StartsWith("kkm: no connection to /nowhere/tty (error 1, echNoPort)\n"));
}

TEST_F(ProgramTest, WaitingForTheCashierEndsByASignal) {
    const RegisterProcess kassa({});
    EXPECT_EQ(
        Sh("timeout --foreground 2 " KKM_PROGRAM " --device " + kassa.Tty() + " " + kCheckExample),
        124);
    EXPECT_THAT(output, EndsWith("(Ctrl-C gives up)\n"));
}

TEST_F(ProgramTest, HostExamplePrintsItsCheck) {
    RegisterProcess kassa({"--paper", "paper"});
    kassa.Say("host");
    EXPECT_EQ(Sh(HOST_EXAMPLE " " + kassa.Tty()), 0);
    EXPECT_EQ(output, "printed check 1\n");
    EXPECT_THAT(folder.Content("paper"), HasSubstr("Cheese"));
}

TEST_F(ProgramTest, HostExampleWithoutADeviceSaysWhatFailed) {
    EXPECT_EQ(Sh(HOST_EXAMPLE), 1);
    EXPECT_THAT(output, StartsWith("connect: An argument is out of its range or a null pointer."));
}

}  // namespace
}  // namespace test
