// kkm and the examples as their users start them: real programs, the shipped library, a register on
// a tty, real time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "tools/program_fixture.h"

namespace test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr auto kCheckExample = "check " PROJECT_FOLDER "/examples/check.json";

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

TEST_F(ProgramTest, TotalOfACheckIsThePapersAndNotTheLibrarysSum) {
    std::ofstream("small.json")
        << R"({"lines": [{"name": "Tea", "price": 15, "quantity": 0.009}], "cash": 0.14})";
    RegisterProcess kassa({"--paper", "paper"});
    kassa.Say("host");
    EXPECT_EQ(Kkm(kassa, "check --json small.json"), 0);
    EXPECT_THAT(output, HasSubstr("\"total\": 0.14"));
    EXPECT_THAT(folder.Content("paper"), HasSubstr("=0.14\n"));
}

TEST_F(ProgramTest, StatusIsWhatTheRegisterHolds) {
    const RegisterProcess kassa({"--firmware", "310", "--baud", "57600", "--serial", "00000777"});
    EXPECT_EQ(Kkm(kassa, "status --json"), 0);
    EXPECT_THAT(output, HasSubstr("\"state\": \"ks_kkmon\",\n  \"state_code\": 203,\n"
                                  "  \"baud\": 57600,\n"));
    EXPECT_THAT(output, HasSubstr("\"firmware\": 310,\n  \"serial_number\": 777,\n"));
    EXPECT_THAT(output, HasSubstr("\"checks\": 0,\n  \"next_sale\": 1\n"));
}

TEST_F(ProgramTest, CountersOfAnEmptyTapeAreZero) {
    const RegisterProcess kassa({});
    EXPECT_EQ(Kkm(kassa, "counters"), 0);
    EXPECT_THAT(output, HasSubstr("grand total   0.00\ncash          0.00\n"));
}

TEST_F(ProgramTest, CheckWithoutPaperIsStatus8) {
    RegisterProcess kassa({});
    kassa.Say("paper out");
    kassa.Say("host");
    EXPECT_EQ(Kkm(kassa, kCheckExample), 8);
    EXPECT_THAT(output, HasSubstr("(error 5, echPaperAbsent)"));
}

TEST_F(ProgramTest, DeviceThatIsNotThereIsStatus6) {
    EXPECT_EQ(Sh(KKM_PROGRAM " --device /nowhere/tty status"), 6);
    EXPECT_THAT(output, StartsWith("kkm: no connection to /nowhere/tty (error 1, echNoPort)\n"));
}

TEST_F(ProgramTest, DoctorFindsAGoodTillWell) {
    const RegisterProcess kassa({"--firmware", "303"});
    EXPECT_EQ(Kkm(kassa, "doctor"), 0);
    EXPECT_THAT(output, HasSubstr("a register answers at 9600 baud"));
    EXPECT_THAT(output, HasSubstr("firmware 303\n"));
    EXPECT_THAT(output, EndsWith("nothing to mend\n"));
}

TEST_F(ProgramTest, DoctorTellsOfTheRegistersLastError) {
    for (const char* firmware : {"302", "310"}) {
        RegisterProcess kassa({"--firmware", firmware});
        kassa.Say("paper out");
        kassa.Say("shift open");
        kassa.Say("shift close");  // whose report does not come out
        EXPECT_EQ(Kkm(kassa, "doctor"), 0);
        EXPECT_THAT(output, HasSubstr("note  the register's last error: 16, no paper\n"))
            << firmware;
    }
}

TEST_F(ProgramTest, TapeShowsThePrintedLines) {
    RegisterProcess kassa({});
    kassa.Say("host");
    EXPECT_EQ(Kkm(kassa, kCheckExample), 0);
    EXPECT_EQ(Kkm(kassa, "tape --csv --from 2"), 0);
    EXPECT_EQ(output,
              "number,kind,selector,sum,amount2,amount3,amount4,signed_value,quantity,marked,code,"
              "code_bytes\r\n"
              "2,0,0,222.87,680.00,11.73,0.00,-5,0.345,no,1,45678901\r\n"
              "3,0,0,75.91,79.90,3.99,0.00,-5,1.000,no,1,45678901\r\n");
    EXPECT_EQ(Sh(KKM_PROGRAM " explain VeskTarvoM5.log"), 0);
    EXPECT_THAT(output, HasSubstr("check 1: printed\n  2 x 42.50  Хлеб ржаной (section 1)\n"));
}

TEST_F(ProgramTest, WatchSeesWithoutTouching) {
    const RegisterProcess kassa({});
    EXPECT_EQ(Kkm(kassa, "watch --looks 2 --interval 50 --json"), 0);
    EXPECT_THAT(output, HasSubstr("\"state\":\"ks_kkmon\",\"state_code\":203,"));
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1);
}

TEST_F(ProgramTest, WatchThatIsInterruptedEndsWell) {
    const RegisterProcess kassa({});
    EXPECT_EQ(Sh("timeout --foreground --preserve-status -s INT 1 " KKM_PROGRAM " --device " +
                 kassa.Tty() + " watch --interval 60000"),
              0);
    EXPECT_THAT(output, HasSubstr("0xCB ks_kkmon"));
}

TEST_F(ProgramTest, WaitingForTheCashierIsInterruptedWithStatus130) {
    const RegisterProcess kassa({});
    EXPECT_EQ(
        Sh("sh -c 'timeout --foreground --preserve-status -s INT 2 " KKM_PROGRAM " --device " +
           kassa.Tty() + " " + kCheckExample + "; exit $?'"),
        130);
}

TEST_F(ProgramTest, ShellCompletesCommands) {
    EXPECT_EQ(Sh("bash -c '. " PROJECT_FOLDER "/packaging/completions/kkm; "
                 "COMP_WORDS=(" KKM_PROGRAM " tape --f); COMP_CWORD=2; _kkm; "
                 "echo ${COMPREPLY[*]}; complete -p kkm'"),
              0);
    EXPECT_EQ(output, "--from\ncomplete -o default -F _kkm kkm\n");
}

TEST_F(ProgramTest, RunGivesTheHostItsPort) {
    const RegisterProcess kassa({});
    const int status = Sh(KKM_PROGRAM " run --device " + kassa.Tty() +
                          " --port 77 -- " KKM_PROGRAM " --port 77 counters");
    if (status == 125) {  // a kernel that gives no namespaces: said in words
        EXPECT_THAT(output, HasSubstr("namespace"));
        return;
    }
    EXPECT_EQ(status, 0);
    EXPECT_THAT(output, HasSubstr("checks        0\n"));
}

TEST_F(ProgramTest, RunPassesTheStatusOn) {
    const RegisterProcess kassa({});
    const std::string run = KKM_PROGRAM " run --device " + kassa.Tty() + " -- ";
    const int status = Sh(run + "sh -c 'exit 42'");
    EXPECT_TRUE(status == 42 || status == 125) << status << output;
    EXPECT_EQ(Sh(KKM_PROGRAM " run --device /nowhere/tty -- true"), 125);
    EXPECT_EQ(output, "kkm: /nowhere/tty: No such file or directory\n");
}

TEST_F(ProgramTest, WaitingForTheCashierEndsByASignal) {
    const RegisterProcess kassa({});
    EXPECT_EQ(
        Sh("timeout --foreground 2 " KKM_PROGRAM " --device " + kassa.Tty() + " " + kCheckExample),
        124);
    EXPECT_THAT(output, EndsWith("(Ctrl-C gives up)\n"));
}

TEST_F(ProgramTest, ResultsThatCannotBeWrittenAreStatus1) {
    const RegisterProcess kassa({});
    const std::string kkm = "(" KKM_PROGRAM " --device " + kassa.Tty() + " ";
    for (const char* command :
         {"counters", "tape", "status --json", "watch --looks 1", "explain 2", "--help",
          "check --dry-run " PROJECT_FOLDER "/examples/check.json"}) {
        EXPECT_EQ(Sh(kkm + command + " >/dev/full)"), 1) << command;
        EXPECT_THAT(output, EndsWith("kkm: the results could not be written\n"));
    }
}

TEST_F(ProgramTest, PrintedCheckStaysPrintedWhenThatCannotBeWritten) {
    RegisterProcess kassa({"--paper", "paper"});
    kassa.Say("host");
    EXPECT_EQ(Sh("(" KKM_PROGRAM " --device " + kassa.Tty() + " " + kCheckExample +
                 " --json >/dev/full)"),
              0);
    EXPECT_THAT(output, EndsWith("could not be written; the check is printed\n"));
}

TEST_F(ProgramTest, ReaderThatWentAwayIsNoFailure) {
    // The sleep lets the reader go first.
    EXPECT_EQ(Sh("bash -c '(sleep 0.2; exec " KKM_PROGRAM " --help) | true; "
                 "echo ${PIPESTATUS[0]}'"),
              0);
    EXPECT_EQ(output, "0\n");
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
