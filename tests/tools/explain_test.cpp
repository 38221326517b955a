// Codes and trace files explained.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_directory.h"
#include "tools/commands_fixture.h"

namespace kkm {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

using ExplainTest = CommandsTest;

TEST_F(ExplainTest, ProgramsGetTheWholeStoryOfATrace) {
    const test::TempDirectory folder;
    std::ofstream("trace") << "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"
                              "TTarvoVesk::Connect: getKKMVersion: 303\n"
                              "Connect - OK\n"
                              "Info: TrySendSale ;title = Tea ;barcode = 1; code = 1; "
                              "count = 0.345; price = 4250; section = 3\n"
                              "Info: TrySendCheckCash checkCash = 50000\n"
                              "Info: TestCheckPrint - ok\n"
                              "Disconnect - OK";
    EXPECT_EQ(Kkm({"explain", "--json", "trace"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("\"quantity\": 0.345,\n"));
    EXPECT_THAT(out.str(), HasSubstr("\"cash\": 500.0,\n"));
    EXPECT_THAT(out.str(), HasSubstr("    {\n      \"event\": \"connected\",\n"
                                     "      \"about\": \"firmware 303\",\n"
                                     "      \"checks_before\": 0\n    },\n"
                                     "    {\n      \"event\": \"disconnected\",\n"
                                     "      \"about\": \"\",\n"
                                     "      \"checks_before\": 1\n    }\n"));
}

TEST_F(ExplainTest, ExplainTakesNamesInAnyCase) {
    EXPECT_EQ(Kkm({"explain", "ECHnoport"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("error 1 (0x01), echNoPort\n"));
    EXPECT_EQ(Kkm({"explain", "KS_NONE"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("state 160 (0xA0), ks_none\n"));
    EXPECT_EQ(Kkm({"explain", "Key 0x2b"}), 0);
    EXPECT_EQ(Kkm({"explain", "ks_non"}), 5);
}

TEST_F(ExplainTest, ExplainTellsTheFaultsOfTheProtocol) {
    const test::TempDirectory folder;
    std::ofstream("TarvoM5.log") << "2026:11:21 9:5:3 DevNum=0, Code=4, Msg=     , DbgMsg =\n"
                                    "2026:11:21 9:5:4 DevNum=3, Code=6, Msg=  , DbgMsg =\n"
                                    "2026:11:21 9:6:4 DevNum=3, Code=6, Msg=  , DbgMsg =\n";
    EXPECT_EQ(Kkm({"explain", "TarvoM5.log"}), 0);
    EXPECT_EQ(out.str(),
              "2026-11-21 09:05:03: protocol fault 4\n"
              "  another register answered: only one may be on this line\n"
              "2026-11-21 09:05:04 to 2026-11-21 09:06:04, 2 times: protocol fault 6 at register "
              "3\n"
              "  the register refused a price or a sum, or there is too little money\n");
    EXPECT_EQ(Kkm({"explain", "TarvoM5.log", "--json"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("\"checks\": [],\n"));
    EXPECT_THAT(out.str(), HasSubstr("      \"first\": \"2026-11-21 09:05:04\",\n"
                                     "      \"last\": \"2026-11-21 09:06:04\",\n"
                                     "      \"count\": 2,\n"));
}

TEST_F(ExplainTest, ExplainsCodesOfEveryKind) {
    EXPECT_EQ(Kkm({"explain", "2"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("error 2 (0x02), echDevice\n  A first sentence"));
    EXPECT_EQ(Kkm({"explain", "0xC8"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("state 200 (0xC8), ks_checkout\n"));
    EXPECT_EQ(Kkm({"explain", "ks_keylock"}), 0);
    EXPECT_EQ(out.str(),
              "state 206 (0xCE), ks_keylock\n"
              "  The register is in this state: the keyboard is locked.\n");
    EXPECT_EQ(Kkm({"explain", "0x2B", "--json"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("\"text\": \"prints a copy of the last check\""));
    EXPECT_EQ(Kkm({"explain", "nonsense"}), 5);
    EXPECT_THAT(err.str(), HasSubstr("kkm: nonsense is no code of an error, a state or a key"));
}

TEST_F(ExplainTest, OnlyTheEndOfAHugeTraceIsRetold) {
    const test::TempDirectory folder;
    std::ofstream trace("huge.log");
    trace << "Disconnect - OK";
    trace.seekp(40 << 20);  // a hole, which costs no disk
    trace << "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\nConnect - OK\n";
    trace.close();
    EXPECT_EQ(Kkm({"explain", "huge.log"}), 0);
    EXPECT_EQ(out.str(), "connected\n");
    EXPECT_EQ(err.str(), "kkm: only the last 32 MiB of huge.log are retold\n");
}

TEST_F(ExplainTest, DirectoryIsNoTrace) {
    EXPECT_EQ(Kkm({"explain", "/"}), 5);
    EXPECT_THAT(err.str(), EndsWith("and no file: Is a directory\n"));
}

}  // namespace
}  // namespace kkm
