// The commands beside check, status and counters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "support/temp_directory.h"
#include "tools/commands_fixture.h"

namespace kkm {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

TEST_F(CommandsTest, ServicesSayWhatTheyDid) {
    const std::tuple<std::vector<const char*>, const char*, const char*> services[] = {
        {{"--port", "1", "feed", "3"}, "Feed 3", "the paper is fed\n"},
        {{"--port", "1", "feed"}, "Feed 1", "the paper is fed\n"},
        {{"--port", "1", "unlock"}, "UnLock", "the keyboard is unlocked\n"},
        {{"--port", "1", "display", "--clear"}, "ClearIndicator", "the display is cleared\n"},
        {{"--port", "1", "cancel"},
         "CheckClose",
         "nothing is open; the register's state is reset\n"},
    };
    for (const auto& [arguments, call, said] : services) {
        library.Reset();
        EXPECT_EQ(Kkm(arguments), 0);
        EXPECT_THAT(library.calls, ElementsAre("ConnectKKM 1", call, "DisconnectKKM"));
        EXPECT_EQ(out.str(), said);
    }
    EXPECT_EQ(Kkm({"--port", "1", "lock", "--json"}), 0);
    EXPECT_EQ(out.str(), "{\n  \"done\": \"the keyboard is locked\"\n}\n");
}

TEST_F(CommandsTest, LockOutlivesTheLeaving) {
    library.firmware = 303;
    EXPECT_EQ(Kkm({"--port", "1", "lock"}), 0);
    EXPECT_THAT(library.calls, ElementsAre("ConnectKKM 1", "GetKKMVers", "Lock", "DisconnectKKM"));
    library.Reset();
    library.firmware = 302;  // whose lock ends with a reset
    EXPECT_EQ(Kkm({"--port", "1", "lock"}), 0);
    EXPECT_THAT(library.calls, ElementsAre("ConnectKKM 1", "GetKKMVers", "Lock"));
}

TEST_F(CommandsTest, CancelThatFailsLeavesTheRegisterAsItIs) {
    library.failing["CheckClose"] = 2;
    EXPECT_EQ(Kkm({"--port", "1", "cancel"}), 7);
    EXPECT_THAT(library.calls, ElementsAre("ConnectKKM 1", "CheckClose"));
    EXPECT_THAT(err.str(), HasSubstr("kkm: what is open could not be cancelled and is left as it "
                                     "is (error 2, echDevice)\n"));
    library.Reset();
    library.failing["CheckClose"] = 6;  // a lock is in the way: its reset, then once more
    EXPECT_EQ(Kkm({"--port", "1", "cancel"}), 7);
    EXPECT_THAT(library.calls,
                ElementsAre("ConnectKKM 1", "CheckClose", "CheckCancel", "CheckClose"));
}

TEST_F(CommandsTest, ServiceThatFailsIsStatus7) {
    library.failing["UnLock"] = 2;
    EXPECT_EQ(Kkm({"--port", "1", "unlock"}), 7);
    EXPECT_EQ(out.str(), "");
    EXPECT_THAT(err.str(), HasSubstr("kkm: the register did not do it (error 2, echDevice)\n"));
}

TEST_F(CommandsTest, TextGoesOutInTheRegistersCodePage) {
    EXPECT_EQ(Kkm({"--port", "1", "text", "Ура «"}), 0);
    EXPECT_THAT(library.calls, testing::Contains("KKMPrintStr 93 e0 a0 20 3f"));
    EXPECT_EQ(err.str(), "kkm: the register lacks and prints as '?': «\n");
    EXPECT_EQ(Kkm({"--port", "1", "text", "12345678901234567"}), 0);
    EXPECT_EQ(err.str(), "kkm: only 16 letters are printed: 1234567890123456\n");
}

TEST_F(CommandsTest, TaxesAreSeventeen) {
    EXPECT_EQ(Kkm({"--port", "1", "taxes"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("tax 3   18\n"));
    EXPECT_THAT(out.str(), EndsWith("tax 16  0\n"));
    library.failing["GetTax"] = 2;
    EXPECT_EQ(Kkm({"--port", "1", "taxes"}), 9);
}

TEST_F(CommandsTest, TapeIsATable) {
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--from", "9", "--to", "10"}), 0);
    EXPECT_EQ(
        out.str(),
        "number  kind  selector    sum  amount2  amount3  amount4  signed_value  quantity  marked  "
        "code  code_bytes\n"
        "     9     0         1  89.75    42.50     4.25     0.00            -5     2.000      no  "
        "   7    45678901\n"
        "    10     0         1  90.75    42.50     4.25     0.00            -5     2.000      no  "
        "   7    45678901\n");
}

TEST_F(CommandsTest, TapeEndsWithTheLastRecord) {
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--from", "57", "--csv"}), 0);  // the next sale is 58
    EXPECT_EQ(out.str(),
              "number,kind,selector,sum,amount2,amount3,amount4,signed_value,quantity,marked,code,"
              "code_bytes\r\n"
              "57,0,1,137.75,42.50,4.25,0.00,-5,2.000,no,7,45678901\r\n");
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--from", "58", "--json"}), 0);
    EXPECT_EQ(out.str(), "{\n  \"records\": []\n}\n");
}

TEST_F(CommandsTest, RecordsBeforeAnUnreadableOneAreShown) {
    library.unreadable_record = 3;
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--csv"}), 9);
    EXPECT_THAT(out.str(), HasSubstr("\r\n2,0,1,82.75,"));
    EXPECT_THAT(out.str(), testing::Not(HasSubstr("\r\n3,")));
    EXPECT_THAT(err.str(), HasSubstr("kkm: record 3 could not be read (error 10,"));
}

TEST_F(CommandsTest, ProgramsLearnWhereTheTapeEndedEarly) {
    library.unreadable_record = 3;
    library.tape_quantity = 345 * 0.001;
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--json", "--from", "2"}), 9);
    EXPECT_THAT(out.str(), HasSubstr("\"quantity\": 0.345,\n"));
    EXPECT_THAT(out.str(), HasSubstr("  ],\n  \"error\": {\n"
                                     "    \"what\": \"record 3 could not be read\",\n"
                                     "    \"code\": 10,\n"));
}

TEST_F(CommandsTest, ProgramsGetEveryErrorAsJson) {
    const std::tuple<std::vector<const char*>, const char*, int> wrong[] = {
        {{"status", "--json"}, "--device or --port is required (kkm --help tells more)", 2},
        {{"--json", "explain", "999"},
         "999 is no code of an error, a state or a key, and no file: No such file or directory",
         5},
        {{"--json", "explain", "/dev/null"},
         "/dev/null tells of no connection, no check and no fault of the protocol",
         5},
        {{"check", "--json", "--dry-run", "/nowhere"}, "/nowhere: No such file or directory", 5},
        {{"--port", "1", "check", "--json", "-"}, "standard input: lines: is missing", 5},
    };
    for (const auto& [arguments, what, status] : wrong) {
        EXPECT_EQ(Kkm(arguments, "{}"), status);
        EXPECT_EQ(out.str(), "{\n  \"error\": {\n    \"what\": \"" + std::string(what) +
                                 "\",\n    \"exit_status\": " + std::to_string(status) +
                                 "\n  }\n}\n");
        EXPECT_EQ(err.str(), "kkm: " + std::string(what) + "\n");
    }
    EXPECT_EQ(Kkm({"run", "--", "true", "--json"}), 2);
    EXPECT_EQ(out.str(), "");
}

TEST_F(CommandsTest, WatchWritesWhatChanges) {
    const RegisterLook idle{{9600, 0xA0, {}}, RegisterCounters{1, 30, 57}};
    const RegisterLook printed{{9600, 0xA0, {}}, RegisterCounters{1, 31, 58}};
    library.looks = {idle, idle, printed};
    EXPECT_EQ(Kkm({"--port", "1", "watch", "--looks", "4", "--interval", "50"}), 0);
    std::istringstream lines(out.str());
    for (const char* line :
         {"  0xA0 ks_none: idle, control tape 1, checks 30, sales 57",
          "  0xA0 ks_none: idle, control tape 1, checks 31, sales 58", "  no answer"}) {
        std::string seen;
        std::getline(lines, seen);
        EXPECT_EQ(seen.substr(8), line);  // behind the time
    }
    EXPECT_EQ(lines.peek(), EOF);
    EXPECT_EQ(Kkm({"--port", "1", "watch", "--looks", "1"}), 6);
}

// The driver resets the register's state when it leaves, and the check would come out.
TEST_F(CommandsTest, WhatConnectsLeavesAnOpenCheckAlone) {
    const std::vector<std::vector<const char*>> commands = {
        {"status"}, {"counters"},  {"taxes"},
        {"tape"},   {"text", "a"}, {"feed", "1"},
        {"lock"},   {"unlock"},    {"display", "--clear"}};
    for (const int state : {0xC0, 0xC8, 0xC9, 0xCA, 0xCE}) {
        for (std::vector<const char*> command : commands) {
            library.Reset();
            library.looks = {{{9600, state, {}}, RegisterCounters{1, 30, 57}, 2}};
            command.insert(command.begin(), {"--port", "1"});
            EXPECT_EQ(Kkm(command), 7) << command[2];
            EXPECT_THAT(library.calls, ElementsAre()) << command[2];
            EXPECT_THAT(err.str(), HasSubstr("kkm: a check is open at the register (0xC"));
            EXPECT_THAT(err.str(), HasSubstr("let the cashier finish or cancel the check"));
        }
    }
    for (const int state : {0xC0, 0xC6, 0xCE}) {
        library.looks = {{{9600, state, {}}, RegisterCounters{1, 30, 57}, 0}};
        EXPECT_EQ(Kkm({"--port", "1", "counters"}), 0);
    }
}

TEST_F(CommandsTest, StatusStillShowsTheStateOfAnOpenCheck) {
    const RegisterLook closing{{9600, 0xC9, {0, 1, 0, 9, 2, 6}}, RegisterCounters{1, 30, 57}};
    library.looks = {closing};
    EXPECT_EQ(Kkm({"--port", "1", "status"}), 7);
    EXPECT_THAT(out.str(), HasSubstr("0xC9 ks_discount: is taking a discount\n"));
    EXPECT_THAT(out.str(), EndsWith("control tape  1\nchecks        30\n"));
    library.looks = {closing};
    EXPECT_EQ(Kkm({"--port", "1", "status", "--json"}), 7);
    EXPECT_THAT(out.str(), HasSubstr("\"state\": \"ks_discount\",\n"));
    EXPECT_THAT(out.str(), HasSubstr("\"exit_status\": 7\n"));
    library.looks = {closing};
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--json"}), 7);
    EXPECT_THAT(out.str(),
                testing::StartsWith("{\n  \"error\": {\n    \"what\": \"a check is open"));
}

TEST_F(CommandsTest, WatchOfADeviceThatIsNotThereEnds) {
    EXPECT_EQ(Kkm({"--device", "/nowhere/tty", "watch"}), 6);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "kkm: /nowhere/tty: No such file or directory\n");
    if (geteuid() != 0) {  // whom no mode keeps out
        const test::TempDirectory folder;
        std::ofstream("device").close();
        ASSERT_EQ(chmod("device", 0), 0);
        EXPECT_EQ(Kkm({"--device", "device", "watch"}), 6);
        EXPECT_EQ(err.str(), "kkm: device: Permission denied\n");
    }
}

TEST_F(CommandsTest, TapeThatEndsBeforeItBeginsIsAWrongCommandLine) {
    EXPECT_EQ(Kkm({"--port", "1", "tape", "--from", "5", "--to", "2"}), 2);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "kkm: --to: is before --from (kkm --help tells more)\n");
    EXPECT_THAT(library.calls, ElementsAre());
}

TEST_F(CommandsTest, WordThatIsNoCommandIsNamed) {
    EXPECT_EQ(Kkm({"bogus"}), 2);
    EXPECT_THAT(err.str(), testing::StartsWith("kkm: there is no command bogus "));
    EXPECT_EQ(Kkm({"--port", "1", "bogus"}), 2);
    EXPECT_THAT(err.str(), testing::StartsWith("kkm: there is no command bogus "));
    EXPECT_EQ(Kkm({}), 2);
    EXPECT_THAT(err.str(), HasSubstr("subcommand is required"));
}

TEST_F(CommandsTest, DoctorAsksNoRegisterOnADeviceThatIsMissing) {
    EXPECT_EQ(Kkm({"--device", "/nowhere/tty", "doctor"}), 10);
    EXPECT_THAT(out.str(), HasSubstr("bad   /nowhere/tty does not exist\n"));
    EXPECT_THAT(out.str(), EndsWith("1 thing to mend\n"));
    EXPECT_THAT(library.calls, ElementsAre());
    EXPECT_EQ(Kkm({"--device", "/nowhere/tty", "doctor", "--json"}), 10);
    EXPECT_THAT(out.str(), HasSubstr("\"finding\": \"device_missing\""));
}

}  // namespace
}  // namespace kkm
