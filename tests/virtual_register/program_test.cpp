// tarvo-register as a user starts it: real processes, a real tty.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr int kPatienceMs = 10000;  // only a failure waits so long

class Program {
  public:
    explicit Program(std::vector<std::string> arguments) {
        int to[2];
        int from[2];
        int errors[2];
        EXPECT_EQ(0,
                  ::pipe2(to, O_CLOEXEC) | ::pipe2(from, O_CLOEXEC) | ::pipe2(errors, O_CLOEXEC));
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_adddup2(&files, to[0], 0);
        ::posix_spawn_file_actions_adddup2(&files, from[1], 1);
        ::posix_spawn_file_actions_adddup2(&files, errors[1], 2);
        arguments.insert(arguments.begin(), TARVO_REGISTER);
        std::vector<char*> words;
        words.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) {
            words.push_back(argument.data());
        }
        words.push_back(nullptr);
        EXPECT_EQ(0, ::posix_spawn(&pid_, TARVO_REGISTER, &files, nullptr, words.data(), environ));
        ::posix_spawn_file_actions_destroy(&files);
        ::close(to[0]);
        ::close(from[1]);
        ::close(errors[1]);
        in_ = to[1];
        out_ = from[0];
        errors_ = errors[0];
    }
    ~Program() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        ::close(in_);
        ::close(out_);
        ::close(errors_);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    std::string line() const { return line_of(out_); }
    std::string error_line() const { return line_of(errors_); }
    std::string tty() const {
        const std::string first = line();
        EXPECT_EQ("tty /dev/pts/", first.substr(0, 13)) << error_line();
        return first.substr(4);
    }
    void type(const std::string& text) const {
        EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(in_, text.data(), text.size()));
    }
    void send_signal(int signal) const { ::kill(pid_, signal); }
    // Exit status; 1000 + signal when one ended it.
    int status() {
        int how = 0;
        ::waitpid(pid_, &how, 0);
        pid_ = 0;
        return WIFSIGNALED(how) ? 1000 + WTERMSIG(how) : WEXITSTATUS(how);
    }

  private:
    static std::string line_of(int file) {
        std::string text;
        char letter = 0;
        pollfd waited{file, POLLIN, 0};
        while (::poll(&waited, 1, kPatienceMs) > 0 && ::read(file, &letter, 1) == 1 &&
               letter != '\n') {
            text += letter;
        }
        return text;
    }

    pid_t pid_ = 0;
    int in_ = -1;
    int out_ = -1;
    int errors_ = -1;
};

class Host {
  public:
    explicit Host(const std::string& tty, speed_t speed = B9600)
        : tty_(::open(tty.c_str(), O_RDWR | O_NOCTTY)) {
        termios settings{};
        EXPECT_EQ(0, ::tcgetattr(tty_, &settings)) << tty;
        ::cfsetispeed(&settings, speed);
        ::cfsetospeed(&settings, speed);
        ::tcsetattr(tty_, TCSANOW, &settings);
        ::tcflush(tty_, TCIOFLUSH);
    }
    ~Host() { ::close(tty_); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void send(int command, const std::vector<int>& payload) const {
        std::vector<std::uint8_t> frame{0, static_cast<std::uint8_t>(payload.size() + 3), 0,
                                        static_cast<std::uint8_t>(command)};
        unsigned sum = static_cast<unsigned>(command);
        for (int byte : payload) {
            frame.push_back(static_cast<std::uint8_t>(byte));
            sum += static_cast<unsigned>(byte);
        }
        frame.push_back(static_cast<std::uint8_t>(sum));
        EXPECT_EQ(static_cast<ssize_t>(frame.size()), ::write(tty_, frame.data(), frame.size()));
    }
    // Answer code and payload; empty when nothing comes in time.
    std::vector<int> ask(int command, const std::vector<int>& payload = {},
                         int patience_ms = kPatienceMs) const {
        send(command, payload);
        std::vector<int> answer;
        pollfd waited{tty_, POLLIN, 0};
        std::uint8_t byte = 0;
        while ((answer.size() < 2 || answer.size() < 2 + static_cast<std::size_t>(answer[1])) &&
               ::poll(&waited, 1, patience_ms) > 0 && ::read(tty_, &byte, 1) == 1) {
            answer.push_back(byte);
        }
        if (answer.size() < 5) {
            return {};
        }
        return {answer.begin() + 3, answer.end() - 1};
    }
    void print_check() const {
        std::vector<int> sale(41, 0);
        sale[0] = 'A';
        sale[34] = 5;
        EXPECT_EQ((std::vector<int>{0xC1, 0}), ask(0x21, sale));
        EXPECT_EQ((std::vector<int>{0xE4, 1}), ask(0x25, {6}));
        ask(0x7F);
        EXPECT_EQ(0xC8, ask(0x20).at(0));
        ask(0x7F);
    }

  private:
    int tty_;
};

class TarvoRegister : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/tarvo_register_XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(name));
        folder = name;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    std::string file(const std::string& name) const { return folder + "/" + name; }
    std::string contents(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(file(name)).rdbuf();
        return text.str();
    }
    std::string folder;
};

TEST_F(TarvoRegister, TellsItsTtyAndAnswersThere) {
    Program program({"--firmware", "310"});
    const Host host(program.tty());
    EXPECT_EQ((std::vector<int>{0xB4, 3, 10}), host.ask(0x34));
}

TEST_F(TarvoRegister, AnswersOnlyAtItsOwnSpeed) {
    Program program({"--baud", "57600"});
    const std::string tty = program.tty();
    {
        const Host host(tty, B9600);
        EXPECT_TRUE(host.ask(0x34, {}, 200).empty());
    }
    const Host host(tty, B57600);
    EXPECT_EQ((std::vector<int>{0xB4, 3, 2, 0}), host.ask(0x34));
}

TEST_F(TarvoRegister, PrintsOnTheScreenAndInTheFileAndLogsTheExchange) {
    Program program({"--paper", file("paper"), "--log", file("log"), "--serial", "77"});
    const Host host(program.tty());
    host.print_check();
    EXPECT_EQ("        МАГАЗИН", program.line());
    EXPECT_EQ("       \"У ДОМА\"", program.line());
    EXPECT_EQ("КАССА 77", program.line());
    host.ask(0x0A);
    EXPECT_EQ(0u, contents("paper").find("        МАГАЗИН\n       \"У ДОМА\"\nКАССА 77\n"));
    EXPECT_NE(std::string::npos, contents("paper").find("\n1 x 0.05           =0.05\n"));
    EXPECT_NE(std::string::npos, contents("log").find(" -> close check type 6\n"));
    EXPECT_NE(std::string::npos, contents("log").find(" <- close check answered closed\n"));
}

TEST_F(TarvoRegister, SignalsEndItAndTakeTheLinkAway) {
    for (int signal : {SIGINT, SIGTERM}) {
        Program program({"--link", file("tty")});
        const std::string tty = program.tty();
        EXPECT_EQ(tty, std::filesystem::read_symlink(file("tty")));
        program.send_signal(signal);
        EXPECT_EQ(0, program.status());
        EXPECT_FALSE(std::filesystem::is_symlink(file("tty")));
    }
}

TEST_F(TarvoRegister, ALeftOverLinkIsReplacedAndAFileIsNot) {
    std::filesystem::create_symlink("/nowhere", file("link"));
    Program program({"--link", file("link")});
    const std::string tty = program.tty();
    EXPECT_EQ(tty, std::filesystem::read_symlink(file("link")));
    std::ofstream(file("plain")) << "mine";
    Program other({"--link", file("plain")});
    EXPECT_EQ("tarvo-register: cannot make the link " + file("plain") + ": File exists",
              other.error_line());
    EXPECT_EQ(1, other.status());
    EXPECT_EQ("mine", contents("plain"));
}

TEST_F(TarvoRegister, MemorySurvivesAPowerCut) {
    {
        Program program({"--memory", file("memory"), "--firmware", "310", "--quiet"});
        const Host host(program.tty());
        host.print_check();
        std::vector<int> sale(41, 0);
        sale[34] = 7;
        host.ask(0x21, sale);
        program.send_signal(SIGKILL);
        EXPECT_EQ(1000 + SIGKILL, program.status());
    }
    Program program({"--memory", file("memory")});
    const Host host(program.tty());
    EXPECT_EQ((std::vector<int>{0xB4, 3, 10}), host.ask(0x34));
    EXPECT_EQ((std::vector<int>{0xCB, 0, 1, 0, 1, 0}), host.ask(0x20));
    EXPECT_EQ((std::vector<int>{0x84, 1}), host.ask(0x04, {0x09, 0x14, 1}));
}

TEST_F(TarvoRegister, WhatCannotBeIsSaidInOneLine) {
    std::ofstream(file("memory")) << "something else\n";
    Program wrong({"--memory", file("memory")});
    EXPECT_EQ("tarvo-register: " + file("memory") + ", line 1: not a register's memory",
              wrong.error_line());
    EXPECT_EQ(1, wrong.status());
    Program nowhere({"--paper", file("no/paper")});
    EXPECT_EQ("tarvo-register: cannot write " + file("no/paper") + ": No such file or directory",
              nowhere.error_line());
    EXPECT_EQ(1, nowhere.status());
    Program firmware({"--firmware", "304"});
    EXPECT_NE(0, firmware.status());
    Program baud({"--baud", "1200"});
    EXPECT_NE(0, baud.status());
}

TEST_F(TarvoRegister, AnEmptyFileIsNotWhatItShouldBe) {
    std::ofstream(file("empty")).close();
    Program memory({"--memory", file("empty")});
    EXPECT_EQ("tarvo-register: " + file("empty") + ", line 1: not a register's memory",
              memory.error_line());
    EXPECT_EQ(1, memory.status());
    Program replay({"--replay", file("empty")});
    EXPECT_EQ("tarvo-register: " + file("empty") + ", line 1: not a recording of a register",
              replay.error_line());
    EXPECT_EQ(1, replay.status());
}

TEST_F(TarvoRegister, AFileThatIsMissingIsStatus1) {
    const std::string why =
        "tarvo-register: cannot read " + file("none") + ": No such file or directory";
    Program replay({"--replay", file("none")});
    EXPECT_EQ(why, replay.error_line());
    EXPECT_EQ(1, replay.status());
    Program receipt({"receipt", "--memory", file("none")});
    EXPECT_EQ(why, receipt.error_line());
    EXPECT_EQ(1, receipt.status());
}

TEST_F(TarvoRegister, AMemoryIsForOneRegisterAtATime) {
    {
        Program first({"--memory", file("memory")});
        first.tty();
        Program second({"--memory", file("memory")});
        EXPECT_EQ(
            "tarvo-register: " + file("memory") + " is the memory of a register that is running",
            second.error_line());
        EXPECT_EQ(1, second.status());
    }
    Program later({"--memory", file("memory")});
    later.tty();
}

TEST_F(TarvoRegister, TellsItsVersion) {
    Program program({"--version"});
    EXPECT_EQ("tarvo-register 1.0.0", program.line());
    EXPECT_EQ(0, program.status());
}

TEST_F(TarvoRegister, OnceIsForOneCheckAtLeast) {
    Program program({"--once", "0"});
    EXPECT_EQ("tarvo-register: --once: Value 0 not in range 1 to 1000000", program.error_line());
    EXPECT_LT(100, program.status());
}

TEST_F(TarvoRegister, TellsOfAFileThatIsFullAndGoesOn) {
    for (const char* option : {"--log", "--record", "--paper"}) {
        Program program({option, "/dev/full", "--cashier", "auto"});
        const std::string tty = program.tty();
        {
            const Host host(tty);
            EXPECT_FALSE(host.ask(0x20).empty());
            host.ask(0x31, {0, 'a', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ',
                            ' ', ' ', 0, 0});  // comes out on the paper
            EXPECT_FALSE(host.ask(0x20).empty());
        }
        EXPECT_EQ("tarvo-register: /dev/full ends here: No space left on device",
                  program.error_line());
        program.send_signal(SIGTERM);
        EXPECT_EQ(1, program.status()) << option;
    }
}

TEST_F(TarvoRegister, AMemoryOfAnotherFirmwareIsNotTaken) {
    {
        Program program({"--memory", file("memory"), "--firmware", "310"});
        program.tty();
    }
    Program program({"--memory", file("memory"), "--firmware", "400"});
    EXPECT_EQ("tarvo-register: " + file("memory") + " is the memory of firmware 310, not 400",
              program.error_line());
    EXPECT_EQ(1, program.status());
}

TEST_F(TarvoRegister, ThePromptActsAsTheCashier) {
    Program program({"--cashier", "prompt"});
    const Host host(program.tty());
    EXPECT_EQ("help tells what can be said", program.line());
    program.type("paper in 5\nhost\nwhat\n");
    EXPECT_EQ("paper is in", program.line());
    EXPECT_EQ("\"what\" is unknown; help tells what can be said", program.line());
    EXPECT_EQ((std::vector<int>{0xA1, 0, 0, 0, 0, 0, 0, 0}), host.ask(0x20));
    program.type("quit\n");
    EXPECT_EQ(0, program.status());
}

TEST_F(TarvoRegister, TheAutomaticCashierAsksTheHost) {
    Program program({"--cashier", "auto"});
    const Host host(program.tty());
    int state = 0;
    for (int i = 0; i < 1000 && state != 0xA1; ++i) {
        state = host.ask(0x20).at(0);
        ::usleep(10000);
    }
    EXPECT_EQ(0xA1, state);
}

TEST_F(TarvoRegister, OnceEndsItWhenTheHostHasClosed) {
    Program program({"--once", "2", "--quiet"});
    const std::string tty = program.tty();
    {
        const Host host(tty);
        host.print_check();
    }
    {
        const Host host(tty);
        EXPECT_EQ((std::vector<int>{0x8A, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0x86, 0xA5}), host.ask(0x0A));
        host.print_check();
        EXPECT_EQ((std::vector<int>{0x8A, 0, 1, 0, 2, 0, 2, 0, 0, 1, 0x86, 0xAA}), host.ask(0x0A));
    }
    EXPECT_EQ(0, program.status());
    EXPECT_EQ("", program.line());
}

TEST_F(TarvoRegister, WithPaceBytesTakeTheirTime) {
    Program program({"--pace"});
    const Host host(program.tty());
    timespec begun{};
    timespec ended{};
    ::clock_gettime(CLOCK_MONOTONIC, &begun);
    EXPECT_EQ(96u, host.ask(0x04, {0, 0, 95}).size());
    ::clock_gettime(CLOCK_MONOTONIC, &ended);
    // 8 bytes there and 100 back, ten bits each, at 9600 bits a second.
    const double took = static_cast<double>(ended.tv_sec - begun.tv_sec) +
                        static_cast<double>(ended.tv_nsec - begun.tv_nsec) * 1e-9;
    EXPECT_GT(took, 0.1125 - 0.001);
}

TEST_F(TarvoRegister, OtherOptionsReachTheRegister) {
    Program program(
        {"--net", "9", "--section", "4", "--drawer", "258", "--tax", "16=20", "--tax", "0=7"});
    const Host host(program.tty());
    EXPECT_EQ((std::vector<int>{0xCB, 0, 1, 0, 0, 3}), host.ask(0x20));
    EXPECT_EQ((std::vector<int>{0x8A, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 2}), host.ask(0x0A));
    EXPECT_EQ((std::vector<int>{0x82, 20}), host.ask(0x02, {0x04, 0xE2, 1}));
    EXPECT_EQ((std::vector<int>{0x82, 7}), host.ask(0x02, {0x02, 0xA2, 1}));
}

TEST_F(TarvoRegister, TaxesThatAreNoneAreRefused) {
    for (const char* tax : {"17=1", "1=256", "1", "1=2x", "=5"}) {
        Program program({"--tax", tax});
        EXPECT_EQ(
            std::string("tarvo-register: --tax: ") + tax + " is not N=BYTE with N from 0 to 16",
            program.error_line());
        EXPECT_NE(0, program.status());
    }
}

TEST_F(TarvoRegister, AScenarioHasItsWay) {
    std::ofstream(file("scenario")) << "when version 2 garble 6\n"
                                       "when version 3 then power off\n"
                                       "at 50ms power on\n"
                                       "when sale 9 lose answer\n";
    Program program({"--scenario", file("scenario"), "--log", file("log")});
    {
        const Host host(program.tty());
        EXPECT_EQ((std::vector<int>{0xB4, 3, 2, 0}), host.ask(0x34));
        EXPECT_EQ((std::vector<int>{0xB4, 3, 0xFD, 0}), host.ask(0x34));
        ::usleep(100000);
        EXPECT_EQ((std::vector<int>{0xB4, 3, 2, 0}), host.ask(0x34));
        EXPECT_TRUE(host.ask(0x20, {}, 100).empty());
    }
    program.send_signal(SIGTERM);
    EXPECT_EQ(0, program.status());
    EXPECT_EQ("tarvo-register: never came about: " + file("scenario") +
                  ", line 4: when sale 9 lose answer",
              program.error_line());
    EXPECT_NE(std::string::npos, contents("log").find("\n-- scenario, line 1: when version 2 "
                                                      "garble 6\n"));
    EXPECT_NE(std::string::npos,
              contents("log").find("\n-- scenario, line 3: at 50ms power on (switched on)\n"));
}

TEST_F(TarvoRegister, AMistakeInAScenarioIsSaidWithFileAndLine) {
    std::ofstream(file("scenario")) << "# one\nwhen sale loose answer\n";
    Program program({"--scenario", file("scenario")});
    EXPECT_EQ("tarvo-register: " + file("scenario") + ", line 2: \"loose\" is unknown",
              program.error_line());
    EXPECT_EQ(1, program.status());
    Program missing({"--scenario", file("none")});
    EXPECT_EQ("tarvo-register: cannot read " + file("none") + ": No such file or directory",
              missing.error_line());
    EXPECT_EQ(1, missing.status());
}

TEST_F(TarvoRegister, QuitInAScenarioEndsIt) {
    std::ofstream(file("scenario")) << "at 10ms quit\n";
    Program program({"--scenario", file("scenario")});
    const Host host(program.tty());
    host.ask(0x34);
    EXPECT_EQ(0, program.status());
}

TEST_F(TarvoRegister, KeepsReceiptsAsFilesAndNumbersThemOn) {
    for (const char* number : {"000001", "000002"}) {
        Program program({"--receipt-dir", file("a/b"), "--quiet"});
        {
            const Host host(program.tty());
            host.print_check();
            host.ask(0x34);
        }
        program.send_signal(SIGTERM);
        EXPECT_EQ(0, program.status());
        const std::string path = std::string("a/b/receipt-") + number;
        EXPECT_EQ(0u, contents(path + ".txt").find("        МАГАЗИН\n"));
        EXPECT_NE(std::string::npos, contents(path + ".svg").find(">МАГАЗИН</text>"));
        EXPECT_EQ(0u, contents(path + ".png").find("\x89PNG\r\n"));
    }
}

TEST_F(TarvoRegister, KeepsWhatWasNotCutOffWhenItEnds) {
    Program program({"--receipt-dir", folder, "--quiet"});
    {
        const Host host(program.tty());
        std::vector<int> text(19, ' ');
        text[1] = 'x';
        host.ask(0x31, text);
    }
    program.send_signal(SIGTERM);
    EXPECT_EQ(0, program.status());
    EXPECT_EQ("x\n", contents("receipt-000001.txt"));
}

TEST_F(TarvoRegister, AFolderThatCannotBeIsSaid) {
    std::ofstream(file("plain")) << "mine";
    Program program({"--receipt-dir", file("plain") + "/x"});
    EXPECT_EQ("tarvo-register: cannot keep receipts in " + file("plain") + "/x: Not a directory",
              program.error_line());
    EXPECT_EQ(1, program.status());
}

TEST_F(TarvoRegister, ShowsTheLastReceiptOfAMemory) {
    {
        Program program({"--memory", file("memory"), "--quiet"});
        const std::string tty = program.tty();
        Program early({"receipt", "--memory", file("memory")});
        EXPECT_EQ("tarvo-register: " + file("memory") + " knows no check", early.error_line());
        EXPECT_EQ(1, early.status());
        const Host host(tty);
        host.print_check();
        host.ask(0x34);
    }
    Program text({"receipt", "--memory", file("memory")});
    EXPECT_EQ("        МАГАЗИН", text.line());
    EXPECT_EQ(0, text.status());
    Program svg({"receipt", "--memory", file("memory"), "--format", "svg"});
    EXPECT_EQ(0u, svg.line().find("<svg "));
    EXPECT_EQ(0, svg.status());
    Program png({"receipt", "--memory", file("memory"), "--output", file("last.png")});
    EXPECT_EQ(0, png.status());
    EXPECT_EQ(0u, contents("last.png").find("\x89PNG\r\n"));
    Program picture({"receipt", "--memory", file("memory"), "--output", file("last.bmp")});
    EXPECT_EQ("tarvo-register: --output: " + file("last.bmp") +
                  " ends with neither .txt, .svg nor .png; --format says what it is to be",
              picture.error_line());
    EXPECT_LT(100, picture.status());
    EXPECT_FALSE(std::filesystem::exists(file("last.bmp")));
    const std::string full =
        TARVO_REGISTER " receipt --memory " + file("memory") + " >/dev/full 2>/dev/null";
    EXPECT_EQ(1, WEXITSTATUS(std::system(full.c_str())));
    Program nowhere({"receipt", "--memory", file("memory"), "--output", file("no/last.svg")});
    EXPECT_EQ("tarvo-register: cannot write " + file("no/last.svg") + ": No such file or directory",
              nowhere.error_line());
    EXPECT_EQ(1, nowhere.status());
}

class Replayed : public TarvoRegister {
  protected:
    // A recorded check whose first answer to the sale got lost.
    void SetUp() override {
        TarvoRegister::SetUp();
        std::ofstream(file("scenario")) << "when read-time delay 20ms\nwhen sale lose answer\n";
        Program program({"--record", file("recording"), "--scenario", file("scenario"),
                         "--firmware", "310", "--baud", "57600", "--quiet"});
        {
            const Host host(program.tty(), B57600);
            host.ask(0x06);
            std::vector<int> sale(41, 0);
            sale[34] = 5;
            EXPECT_TRUE(host.ask(0x21, sale, 50).empty());
            EXPECT_EQ((std::vector<int>{0x84, 1}), host.ask(0x04, {0x09, 0x14, 1}));
            host.print_check();
            host.ask(0x0A);
        }
        program.send_signal(SIGTERM);
        EXPECT_EQ(0, program.status());
    }
    std::vector<std::string> words() const {
        return {"--replay", file("recording"), "--log", file("log")};
    }
};

TEST_F(Replayed, AHostThatSaysTheSameIsAnsweredTheSame) {
    Program program(words());
    {
        const Host host(program.tty(), B57600);
        timespec begun{};
        timespec ended{};
        ::clock_gettime(CLOCK_MONOTONIC, &begun);
        EXPECT_EQ(8u, host.ask(0x06).size());
        ::clock_gettime(CLOCK_MONOTONIC, &ended);
        EXPECT_GT((ended.tv_sec - begun.tv_sec) * 1000000000LL + ended.tv_nsec - begun.tv_nsec,
                  19000000);
        std::vector<int> sale(41, 0);
        sale[34] = 5;
        EXPECT_TRUE(host.ask(0x21, sale, 50).empty());
        host.ask(0x04, {0x09, 0x14, 1});
        EXPECT_EQ((std::vector<int>{0x84, 1}), host.ask(0x04, {0x09, 0x14, 1})) << "once more";
        host.print_check();
        EXPECT_EQ((std::vector<int>{0x8A, 0, 1, 0, 1, 0, 2, 0, 0, 1, 0x86, 0xAA}), host.ask(0x0A));
    }
    EXPECT_EQ(0, program.status());
    EXPECT_NE(std::string::npos, contents("log").find("-> statistics\n<- as in line "));
}

TEST_F(Replayed, AHostThatSaysSomethingElseIsToldAndTheRegisterEnds) {
    Program program(words());
    const Host host(program.tty(), B57600);
    host.ask(0x06);
    host.send(0x25, {6});
    EXPECT_EQ(3, program.status());
    EXPECT_EQ("tarvo-register: " + file("recording") +
                  ": after 1 of 9 exchanges came \"close check type 6\" where line 6 of the "
                  "recording has \"sale \"\" barcode ............. price 0.05 x 1 department 0 "
                  "code 0\"",
              program.error_line());
}

TEST_F(Replayed, AHostThatEndsEarlyIsTold) {
    Program program(words());
    {
        const Host host(program.tty(), B57600);
        host.ask(0x06);
    }
    program.send_signal(SIGTERM);
    EXPECT_EQ(3, program.status());
    EXPECT_EQ("tarvo-register: " + file("recording") + ": the host came to exchange 1 of 9",
              program.error_line());
}

TEST_F(Replayed, TheRecordingIsReadable) {
    const std::string text = contents("recording");
    EXPECT_EQ(0u, text.find("tarvo-register recording 1\n; firmware 310, serial 00012345\n"
                            "line baud 57600\n"));
    EXPECT_NE(std::string::npos, text.find(" -> 0003000606  ; read time\n"));
    EXPECT_NE(std::string::npos, text.find(" <- 000401840186  ; read ram answered 01\n"));
}

TEST_F(Replayed, AReplayIsNoRegisterAndTakesNoneOfItsOptions) {
    Program program({"--replay", file("recording"), "--firmware", "310"});
    EXPECT_NE(std::string::npos, program.error_line().find("--firmware excludes --replay"));
    EXPECT_NE(0, program.status());
    std::ofstream(file("wrong")) << "something\n";
    Program wrong({"--replay", file("wrong")});
    EXPECT_EQ("tarvo-register: " + file("wrong") + ", line 1: not a recording of a register",
              wrong.error_line());
    EXPECT_EQ(1, wrong.status());
}

}  // namespace
