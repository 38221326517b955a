// Whole runs of kkm on a library of the test's own.
#include "kkm/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "tools/fake_library.h"

namespace kkm {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto kBread = R"({"lines": [{"name": "Хлеб", "price": 25.5, "quantity": 2}]})";

class CommandLineTest : public testing::Test {
  protected:
    CommandLineTest() { library.Reset(); }

    // Exit status of a run with these arguments.
    int Kkm(std::vector<const char*> arguments, const std::string& input = "") {
        arguments.insert(arguments.begin(), "kkm");
        std::istringstream in(input);
        out.str("");
        err.str("");
        Streams streams{in, out, err, {}, {}};
        return static_cast<int>(
            kkm::Run(static_cast<int>(arguments.size()), arguments.data(), streams));
    }
    int Check(const std::string& json) { return Kkm({"--port", "1", "check", "-"}, json); }

    test::FakeLibrary& library = test::FakeLibrary::Get();
    std::ostringstream out;
    std::ostringstream err;
};

TEST_F(CommandLineTest, HelpIsNoError) {
    EXPECT_EQ(Kkm({"--help"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("Exit status:"));
    EXPECT_EQ(Kkm({"check", "--help"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("\"lines\": ["));
    EXPECT_EQ(Kkm({"--version"}), 0);
    EXPECT_EQ(out.str(), "kkm 1.0.0\n");
    EXPECT_THAT(library.calls, ElementsAre());
}

TEST_F(CommandLineTest, WrongCommandLinesAreStatus2) {
    const std::pair<std::vector<const char*>, const char*> wrong[] = {
        {{}, "kkm: A subcommand is required (kkm --help tells more)\n"},
        {{"status"}, "kkm: --device or --port is required (kkm --help tells more)\n"},
        {{"--device", "a", "--port", "1", "status"}, "--device excludes --port"},
        {{"--port", "0", "status"}, "--port: Value 0 not in range 1 to 255"},
        {{"--port", "256", "status"}, "--port: Value 256 not in range 1 to 255"},
        {{"--port", "1", "check"}, "FILE is required"},
        {{"--port", "1", "check", "--firmware", "302", "-"}, "--firmware requires --dry-run"},
        {{"--port", "1", "sell"}, "kkm: there is no command sell ("},
        {{"--port", "1", "tape", "--from", "0"}, "--from: Value 0 not in range 1 to 65535"},
        {{"--port", "1", "display"}, "--clear is required"},
        {{"--port", "1", "text"}, "TEXT is required"},
        {{"--port", "1", "check", "--dry-run", "--firmware", "300", "-"}, "300"},
        {{"run", "--port", "1", "--", "true"}, "--device is required"},
    };
    for (const auto& [arguments, message] : wrong) {
        EXPECT_EQ(Kkm(arguments), 2) << message;
        EXPECT_THAT(err.str(), HasSubstr(message));
    }
    EXPECT_THAT(library.calls, ElementsAre());
}

TEST_F(CommandLineTest, RegisterIsNamedBeforeOrBehindTheCommand) {
    EXPECT_EQ(Kkm({"status", "--device", "/dev/ttyUSB0"}), 0);
    EXPECT_EQ(library.calls.front(), "ConnectKKMDevice /dev/ttyUSB0");
    library.Reset();
    EXPECT_EQ(Kkm({"--port", "2", "status"}), 0);
    EXPECT_EQ(library.calls.front(), "ConnectKKM 2");
}

TEST_F(CommandLineTest, StatusShowsTheRegister) {
    EXPECT_EQ(Kkm({"--port", "1", "status"}), 0);
    EXPECT_EQ(out.str(),
              "register       port 1\n"
              "firmware       303\n"
              "serial number  12345\n"
              "shift          open\n"
              "control tape   7\n"
              "checks         31\n"
              "next sale      58\n");
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(library.calls.back(), "DisconnectKKM");
}

TEST_F(CommandLineTest, CountersShowTheMoney) {
    EXPECT_EQ(Kkm({"--port", "1", "counters"}), 0);
    EXPECT_EQ(out.str(),
              "control tape  7\n"
              "checks        31\n"
              "next sale     58\n"
              "grand total   379.53\n"
              "cash          120.50\n");
    EXPECT_THAT(library.calls, testing::Contains("GetCashSum 1"));
}

TEST_F(CommandLineTest, FiguresAreWrittenAsJson) {
    EXPECT_EQ(Kkm({"--port", "1", "counters", "--json"}), 0);
    EXPECT_EQ(out.str(),
              "{\n"
              "  \"tape_number\": 7,\n"
              "  \"checks\": 31,\n"
              "  \"next_sale\": 58,\n"
              "  \"grand_total\": 379.53,\n"
              "  \"cash\": 120.5\n"
              "}\n");
    EXPECT_EQ(Kkm({"--device", "/dev/ttyS0", "status", "--json"}), 0);
    EXPECT_EQ(out.str(),
              "{\n"
              "  \"device\": \"/dev/ttyS0\",\n"
              "  \"firmware\": 303,\n"
              "  \"serial_number\": 12345,\n"
              "  \"shift_open\": true,\n"
              "  \"tape_number\": 7,\n"
              "  \"checks\": 31,\n"
              "  \"next_sale\": 58\n"
              "}\n");
}

TEST_F(CommandLineTest, RegisterThatIsNotThereIsStatus6) {
    library.failing["ConnectKKM"] = 1;
    EXPECT_EQ(Kkm({"--port", "1", "status"}), 6);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(),
              "kkm: no connection to port 1 (error 1, echNoPort)\n"
              "     A first sentence says what happened to the register. A second one, which is\n"
              "     longer than the first and does not fit its line, says what to do.\n");
    EXPECT_THAT(library.calls, ElementsAre("ConnectKKM 1"));
}

TEST_F(CommandLineTest, FigureThatCannotBeReadIsStatus9) {
    for (const char* function :
         {"GetKLNum", "GetCheckCount", "GetSaleNum", "GetNI", "GetCashSum"}) {
        library.Reset();
        library.failing[function] = 2;
        EXPECT_EQ(Kkm({"--port", "1", "counters"}), 9) << function;
        EXPECT_EQ(out.str(), "");
        EXPECT_THAT(err.str(), HasSubstr("could not be read (error 2, echDevice)"));
        EXPECT_EQ(library.calls.back(), "DisconnectKKM");
    }
    for (const char* function : {"GetKKMVers", "GetKKMNum", "GetSmenaStatus"}) {
        library.Reset();
        library.failing[function] = 2;
        EXPECT_EQ(Kkm({"--port", "1", "status"}), 9) << function;
    }
}

TEST_F(CommandLineTest, ProgramsGetTheFailureAsJson) {
    library.failing["GetNI"] = 2;
    EXPECT_EQ(Kkm({"--port", "1", "counters", "--json"}), 9);
    EXPECT_EQ(out.str(),
              "{\n"
              "  \"error\": {\n"
              "    \"what\": \"the grand total could not be read\",\n"
              "    \"code\": 2,\n"
              "    \"name\": \"echDevice\",\n"
              "    \"advice\": \"A first sentence says what happened to the register. A second "
              "one, which is longer than the first and does not fit its line, says what to do.\",\n"
              "    \"exit_status\": 9\n"
              "  }\n"
              "}\n");
    EXPECT_THAT(err.str(), HasSubstr("error 2"));
}

TEST_F(CommandLineTest, CheckGoesThroughTheLibraryInOrder) {
    EXPECT_EQ(Check(R"({"lines": [{"name": "Хлеб", "price": 25.5, "quantity": 2},
                                  {"name": "b", "price": 1, "section": 3}],
                        "discount": -5, "cash": 100})"),
              0);
    EXPECT_THAT(library.calls,
                ElementsAre("ConnectKKM 1", "GetKKMVers", "cbAddSale 95 ab a5 a1, 25.50, 2.000, 1",
                            "cbAddSale 62, 1.00, 1.000, 3", "cbSetReturnMode 0",
                            "cbSetCreditMode 0", "cbSetDiscountValue -5", "cbSetCash 100.00",
                            "CheckClose", "PrintCheck", "DisconnectKKM"));
    EXPECT_EQ(err.str(), "");
}

TEST_F(CommandLineTest, StepsOfACheckAreShownAsTheyGo) {
    library.on_print = [] {
        EventQuery();
        EventCheckPrepare(0);
        EventCheckPrepare(100);
    };
    EXPECT_EQ(Check(kBread), 0);
    EXPECT_EQ(out.str(),
              "  connecting to port 1\n"
              "  firmware 303\n"
              "  1 line, total 51.00\n"
              "  preparing the register\n"
              "  waiting for the register to ask for the check (Ctrl-C gives up)\n"
              "  sending 1 line and printing\n"
              "  closed; comparing the register's counters\n"
              "  leaving the register\n"
              "  the check is printed\n");
}

TEST_F(CommandLineTest, BufferIsToldInWords) {
    const std::pair<const char*, const char*> checks[] = {
        {R"("mode": "return")", "  2 lines, a return, total 3.00\n"},
        {R"("mode": "credit")", "  2 lines, a credit, total 3.00\n"},
        {R"("discount": -10)", "  2 lines, discount 10 %, total 2.70\n"},
        {R"("discount": 10)", "  2 lines, surcharge 10 %, total 3.30\n"},
    };
    for (const auto& [field, text] : checks) {
        library.Reset();
        const std::string lines = R"("lines": [{"name":"a","price":1},{"name":"b","price":2}])";
        EXPECT_EQ(Check("{" + lines + ", " + field + "}"), 0);
        EXPECT_THAT(out.str(), HasSubstr(text));
    }
}

TEST_F(CommandLineTest, CallbacksAreTakenBack) {
    EXPECT_EQ(Check(kBread), 0);
    EXPECT_EQ(EventQuery, nullptr);
    EXPECT_EQ(EventCheckPrepare, nullptr);
    EXPECT_EQ(EventErrorProc, nullptr);
    EXPECT_THAT(library.calls, testing::Not(testing::Contains(HasSubstr("heard"))));
}

TEST_F(CommandLineTest, CheckThatIsBeingPrintedOutlivesCtrlC) {
    library.on_print = [] {
        EventQuery();
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            std::raise(signal);
        }
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(Check(kBread), 0);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_THAT(said, testing::StartsWith("\nkkm: a check is being printed; this ends when the "
                                          "register is done\n"));
    struct sigaction now {};
    sigaction(SIGINT, nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
}

TEST_F(CommandLineTest, CashIsLeftAloneWhenNotGiven) {
    EXPECT_EQ(Check(kBread), 0);
    EXPECT_THAT(library.calls, testing::Not(testing::Contains(HasSubstr("cbSetCash"))));
}

TEST_F(CommandLineTest, CashTheFirmwareWillNotTakeIsTold) {
    const std::string with_cash = R"({"lines": [{"name":"a","price":1}], "cash": 5})";
    for (const int firmware : {310, 400}) {
        library.Reset();
        library.firmware = firmware;
        EXPECT_EQ(Check(with_cash), 0);
        EXPECT_EQ(err.str(), "kkm: firmware " + std::to_string(firmware) +
                                 " takes no cash from a program: the check will be paid exactly\n");
    }
    for (const int firmware : {301, 303}) {
        library.Reset();
        library.firmware = firmware;
        EXPECT_EQ(Check(with_cash), 0);
        EXPECT_EQ(err.str(), "");
    }
}

TEST_F(CommandLineTest, NameTheFirmwareWillCutIsTold) {
    const std::string of_72(72, 'a');
    EXPECT_EQ(Check(R"({"lines": [{"name":")" + of_72 + R"(","price":1}]})"), 0);
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(Check(R"({"lines": [{"name":")" + of_72 + R"(b","price":1}]})"), 0);
    EXPECT_EQ(err.str(), "kkm: sale line 1: only 72 letters of the name are printed\n");
    library.Reset();
    library.firmware = 301;
    EXPECT_EQ(Check(R"({"lines": [{"name":"123456789012345","price":1},
                                  {"name":"1234567890123456","price":1}]})"),
              0);
    EXPECT_EQ(err.str(), "kkm: sale line 2: only 15 letters of the name are printed\n");
}

TEST_F(CommandLineTest, LettersTheRegisterLacksAreTold) {
    EXPECT_EQ(Check(R"({"lines": [{"name":"a","price":1},{"name":"«b»","price":1}]})"), 0);
    EXPECT_EQ(err.str(), "kkm: sale line 2: the register lacks and prints as '?': « »\n");
    EXPECT_EQ(library.calls[3], "cbAddSale 3f 62 3f, 1.00, 1.000, 1");
}

TEST_F(CommandLineTest, FileThatIsNoCheckIsStatus5) {
    EXPECT_EQ(Check("{}"), 5);
    EXPECT_EQ(err.str(), "kkm: standard input: lines: is missing\n");
    EXPECT_EQ(Kkm({"--port", "1", "check", "/nowhere"}), 5);
    EXPECT_EQ(err.str(), "kkm: /nowhere: No such file or directory\n");
    EXPECT_THAT(library.calls, ElementsAre());
}

TEST_F(CommandLineTest, CheckThatIsRefusedBeforePrintingIsStatus7) {
    library.failing["cbAddSale"] = 14;
    EXPECT_EQ(Check(kBread), 7);
    EXPECT_THAT(err.str(), HasSubstr("kkm: sale line 1 was refused (error 14, echOther)\n"));
    library.Reset();
    library.failing["cbSetDiscountValue"] = 19;
    EXPECT_EQ(Check(kBread), 7);
    library.Reset();
    library.failing["CheckClose"] = 6;
    EXPECT_EQ(Check(kBread), 7);
    EXPECT_THAT(err.str(), HasSubstr("kkm: the register does not take the check (error 6"));
    EXPECT_THAT(library.calls, testing::Not(testing::Contains("PrintCheck")));
}

// Leaving resets the register, which prints a check that was left in its closing.
TEST_F(CommandLineTest, RegisterIsLeftAsItIsWhileACheckMayBeOpen) {
    for (const auto& [function, code] :
         {std::pair{"cbAddSale", 14}, {"CheckClose", 2}, {"PrintCheck", 2}, {"PrintCheck", 32}}) {
        library.Reset();
        library.failing[function] = code;
        EXPECT_NE(Check(kBread), 0);
        EXPECT_THAT(library.calls, testing::Not(testing::Contains("DisconnectKKM"))) << function;
    }
    library.Reset();
    library.failing["PrintCheck"] = 20;
    EXPECT_EQ(Check(kBread), 3);
    EXPECT_EQ(library.calls.back(), "DisconnectKKM");
}

TEST_F(CommandLineTest, CheckThatWasNotPrintedIsStatus3) {
    for (const int code : {6, 14, 20, 34}) {
        library.Reset();
        library.failing["PrintCheck"] = code;
        EXPECT_EQ(Check(kBread), 3) << code;
        EXPECT_THAT(err.str(),
                    HasSubstr("kkm: the check was not printed (error " + std::to_string(code)));
    }
}

TEST_F(CommandLineTest, CheckThatNobodyCanVouchForIsStatus4) {
    for (const int code : {2, 32}) {
        library.Reset();
        library.failing["PrintCheck"] = code;
        EXPECT_EQ(Check(kBread), 4) << code;
        EXPECT_THAT(err.str(), HasSubstr("kkm: the check is not confirmed as printed (error " +
                                         std::to_string(code)));
    }
}

TEST_F(CommandLineTest, ProgramsGetThePrintedCheckAsJson) {
    EXPECT_EQ(Kkm({"--port", "1", "check", "--json", "-"}, kBread), 0);
    EXPECT_EQ(out.str(),
              "{\n"
              "  \"printed\": true,\n"
              "  \"firmware\": 303,\n"
              "  \"lines\": 1,\n"
              "  \"total\": 51.0\n"
              "}\n");
    EXPECT_THAT(err.str(), HasSubstr("  the check is printed\n"));
}

TEST_F(CommandLineTest, PaperThatRanOutIsStatus8) {
    library.failing["PrintCheck"] = 5;
    EXPECT_EQ(Check(kBread), 8);
    EXPECT_THAT(err.str(), HasSubstr("(error 5, "));
}

TEST_F(CommandLineTest, WhatNobodyForesawIsStatus1) {
    library.throwing_cash = true;
    EXPECT_EQ(Check(R"({"lines": [{"name":"a","price":1}], "cash": 5})"), 1);
    EXPECT_EQ(err.str(), "kkm: the line died\n");
}

}  // namespace
}  // namespace kkm
