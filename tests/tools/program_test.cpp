// kkm and the examples as their users start them: real programs, the shipped library, a register on
// a tty, real time.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A virtual register: started with its options, ended with the object.
class RegisterProcess {
  public:
    explicit RegisterProcess(std::vector<std::string> options) {
        std::array<int, 2> keyboard{};
        std::array<int, 2> screen{};
        if (pipe2(keyboard.data(), O_CLOEXEC) != 0 || pipe2(screen.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipes");
        }
        options.insert(options.begin(), REGISTER_PROGRAM);
        std::vector<char*> arguments;
        for (std::string& option : options) {
            arguments.push_back(option.data());
        }
        arguments.push_back(nullptr);
        pid_ = fork();
        if (pid_ == 0) {
            dup2(keyboard[0], STDIN_FILENO);
            dup2(screen[1], STDOUT_FILENO);
            execv(REGISTER_PROGRAM, arguments.data());
            _exit(127);
        }
        close(keyboard[0]);
        close(screen[1]);
        keyboard_ = keyboard[1];
        screen_ = fdopen(screen[0], "r");
        std::array<char, 100> line{};
        if (std::fscanf(screen_, "tty %99s", line.data()) == 1) {
            tty_ = line.data();
        }
    }
    ~RegisterProcess() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        std::fclose(screen_);
        close(keyboard_);
    }
    RegisterProcess(const RegisterProcess&) = delete;
    RegisterProcess& operator=(const RegisterProcess&) = delete;

    const std::string& tty() const { return tty_; }
    void Type(const std::string& command) const {
        const std::string line = command + "\n";
        EXPECT_EQ(write(keyboard_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    }

  private:
    pid_t pid_ = 0;
    int keyboard_ = -1;
    std::FILE* screen_ = nullptr;
    std::string tty_;
};

// Each test has a folder of its own for paper and trace files.
class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        char name[] = "/tmp/kkm-test-XXXXXX";
        folder_ = mkdtemp(name);
    }
    ~ProgramTest() override {
        for (const char* file : {"paper", "VeskTarvoM5.log"}) {
            unlink((folder_ + "/" + file).c_str());
        }
        rmdir(folder_.c_str());
    }

    // Exit status of a command line, started in the folder.
    int Sh(const std::string& command) {
        const std::string line = "cd " + folder_ + " && " + command + " 2>&1";
        std::FILE* const from = popen(line.c_str(), "r");
        output.clear();
        for (int c = std::fgetc(from); c != EOF; c = std::fgetc(from)) {
            output += static_cast<char>(c);
        }
        const int status = pclose(from);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int Kkm(const RegisterProcess& at, const std::string& arguments) {
        return Sh(KKM_PROGRAM " --device " + at.tty() + " " + arguments);
    }
    std::string File(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder_ + "/" + name).rdbuf();
        return text.str();
    }
    std::string PaperOption() const { return folder_ + "/paper"; }

    std::string output;

  private:
    std::string folder_;
};

TEST_F(ProgramTest, ExampleCheckComesOutOnThePaper) {
    const RegisterProcess kassa({"--quiet", "--cashier", "auto", "--paper", PaperOption()});
    EXPECT_EQ(Kkm(kassa, "check " PROJECT_FOLDER "/examples/check.json"), 0);
    EXPECT_THAT(output, testing::EndsWith("  the check is printed\n"));
    const std::string paper = File("paper");
    for (const char* text : {"Хлеб ржаной", "Сыр Российский весовой", "Молоко 3,2 %", "СКИДКА -5%",
                             "=379.53", "500.00", "120.47"}) {
        EXPECT_THAT(paper, HasSubstr(text));
    }
    EXPECT_THAT(File("VeskTarvoM5.log"), StartsWith("Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"));
}

TEST_F(ProgramTest, ReadmeShowsThatPaper) {
    const RegisterProcess kassa({"--quiet", "--cashier", "auto", "--paper", PaperOption()});
    EXPECT_EQ(Kkm(kassa, "check " PROJECT_FOLDER "/examples/check.json"), 0);
    std::ostringstream readme;
    readme << std::ifstream(PROJECT_FOLDER "/README.md").rdbuf();
    // The time of printing is the one thing that differs.
    const std::regex time("ЧЕК 1 [^\n]*");
    const std::string paper = std::regex_replace(File("paper"), time, "ЧЕК 1");
    EXPECT_THAT(std::regex_replace(readme.str(), time, "ЧЕК 1"),
                HasSubstr("```text\n" + paper + "```\n"));
}

TEST_F(ProgramTest, StatusIsWhatTheRegisterHolds) {
    const RegisterProcess kassa(
        {"--quiet", "--firmware", "310", "--baud", "57600", "--serial", "00000777"});
    EXPECT_EQ(Kkm(kassa, "status --json"), 0);
    EXPECT_THAT(output, HasSubstr("\"firmware\": 310,\n  \"serial_number\": 777,\n"));
    EXPECT_THAT(output, HasSubstr("\"checks\": 0,\n  \"next_sale\": 1\n"));
}

TEST_F(ProgramTest, CountersOfAnEmptyTapeAreZero) {
    const RegisterProcess kassa({"--quiet"});
    EXPECT_EQ(Kkm(kassa, "counters"), 0);
    EXPECT_THAT(output, HasSubstr("grand total   0.00\ncash          0.00\n"));
}

TEST_F(ProgramTest, CheckWithoutPaperIsStatus7) {
    const RegisterProcess kassa({"--quiet", "--cashier", "prompt"});
    kassa.Type("paper out");
    kassa.Type("host");
    EXPECT_EQ(Kkm(kassa, "check " PROJECT_FOLDER "/examples/check.json"), 7);
    EXPECT_THAT(output, HasSubstr("(error 5, echPaperAbsent)"));
}

TEST_F(ProgramTest, DeviceThatIsNotThereIsStatus4) {
    EXPECT_EQ(Sh(KKM_PROGRAM " --device /nowhere/tty status"), 4);
    EXPECT_THAT(output, StartsWith("kkm: no connection to /nowhere/tty (error 1, echNoPort)\n"));
}

TEST_F(ProgramTest, WaitingForTheCashierEndsByASignal) {
    const RegisterProcess kassa({"--quiet"});
    EXPECT_EQ(Sh("timeout --foreground 2 " KKM_PROGRAM " --device " + kassa.tty() +
                 " check " PROJECT_FOLDER "/examples/check.json"),
              124);
    EXPECT_THAT(output, testing::EndsWith("(Ctrl-C gives up)\n"));
}

TEST_F(ProgramTest, HostExamplePrintsItsCheck) {
    const RegisterProcess kassa({"--quiet", "--cashier", "auto", "--paper", PaperOption()});
    EXPECT_EQ(Sh(HOST_EXAMPLE " " + kassa.tty()), 0);
    EXPECT_EQ(output, "printed check 1\n");
    EXPECT_THAT(File("paper"), HasSubstr("Cheese"));
}

TEST_F(ProgramTest, HostExampleWithoutADeviceSaysWhatFailed) {
    EXPECT_EQ(Sh(HOST_EXAMPLE), 1);
    EXPECT_THAT(output, StartsWith("connect: An argument is out of its range or a null pointer."));
}

}  // namespace
