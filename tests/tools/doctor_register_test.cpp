// Registers that keep a till from printing, staged behind a pseudo-terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "kkm/doctor.h"

namespace kkm {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kStatus = 0x20;

const Bytes kVersion302 = {0x00, 0x05, 0x07, 0xB4, 0x03, 0x02, 0xC0};
const Bytes kIdle = {0x00, 0x03, 0x07, 0xA0, 0xA7};

// A piece of an answer, and how long the register is silent before it.
struct Piece {
    int wait_ms;
    Bytes bytes;
};
using Answer = std::vector<Piece>;

// Answers requests on a tty of its own as it is told: the command, how many of it came before, and
// the speed of the line.
class StagedRegister {
  public:
    using Script = std::function<Answer(std::uint8_t command, int nth, speed_t speed)>;

    explicit StagedRegister(Script script) : script_(std::move(script)) {
        char name[64];
        EXPECT_EQ(openpty(&master_, &slave_, name, nullptr, nullptr), 0);
        termios raw{};
        tcgetattr(slave_, &raw);
        cfmakeraw(&raw);
        tcsetattr(slave_, TCSANOW, &raw);
        name_ = name;
        thread_ = std::thread([this] { Serve(); });
    }
    ~StagedRegister() {
        ended_ = true;
        thread_.join();
        close(master_);
        close(slave_);
    }
    StagedRegister(const StagedRegister&) = delete;
    StagedRegister& operator=(const StagedRegister&) = delete;

    const std::string& device() const { return name_; }

  private:
    void Serve() {
        Bytes request;
        while (!ended_) {
            pollfd waiting{master_, POLLIN, 0};
            std::uint8_t byte = 0;
            if (poll(&waiting, 1, 5) <= 0 || read(master_, &byte, 1) != 1) {
                continue;
            }
            request.push_back(byte);
            if (request.size() > 1 && request.size() == 2U + request[1]) {
                Reply(request[3]);
                request.clear();
            }
        }
    }

    void Reply(std::uint8_t command) {
        termios line{};
        tcgetattr(slave_, &line);
        int& count = command == kStatus ? statuses_ : others_;
        for (const Piece& piece : script_(command, count++, cfgetospeed(&line))) {
            std::this_thread::sleep_for(std::chrono::milliseconds(piece.wait_ms));
            EXPECT_EQ(write(master_, piece.bytes.data(), piece.bytes.size()),
                      static_cast<ssize_t>(piece.bytes.size()));
        }
    }

    Script script_;
    std::string name_;
    int master_ = -1;
    int slave_ = -1;
    int statuses_ = 0;
    int others_ = 0;
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

Answer Good(std::uint8_t command) {
    return {{0, command == kStatus ? kIdle : kVersion302}};
}

std::vector<std::string> KeysOf(const std::vector<Finding>& findings) {
    std::vector<std::string> keys;
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.advice.empty(), finding.grade == Grade::good) << finding.key;
        keys.push_back(finding.key);
    }
    return keys;
}

TEST(DoctorRegister, GoodRegister) {
    const StagedRegister staged([](std::uint8_t command, int, speed_t) { return Good(command); });
    const auto findings = ExamineRegister(staged.device());
    EXPECT_THAT(KeysOf(findings), ElementsAre("answer", "firmware", "first_byte", "gap", "state"));
    EXPECT_EQ(findings[0].what, "a register answers at 9600 baud, network number 7");
    EXPECT_EQ(findings[1].what, "firmware 302");
}

TEST(DoctorRegister, RegisterThatAnswersAtOneSpeedOnly) {
    const StagedRegister staged([](std::uint8_t command, int, speed_t speed) {
        return speed == B57600 ? Good(command) : Answer{{0, {0xF8, 0x00, 0x80}}};
    });
    const auto findings = ExamineRegister(staged.device());
    ASSERT_THAT(KeysOf(findings),
                ElementsAre("answer", "firmware", "first_byte", StartsWith("gap"), "state"));
    EXPECT_EQ(findings[0].what, "a register answers at 57600 baud, network number 7");
}

TEST(DoctorRegister, SilentRegister) {
    const StagedRegister staged([](std::uint8_t, int, speed_t) { return Answer{}; });
    EXPECT_THAT(KeysOf(ExamineRegister(staged.device())), ElementsAre("silent"));
}

TEST(DoctorRegister, GarbledAnswers) {
    const StagedRegister staged([](std::uint8_t, int, speed_t) {
        return Answer{{0, {0x00, 0x05, 0x07, 0xB4, 0x03, 0x02, 0xC1}}};
    });
    EXPECT_THAT(KeysOf(ExamineRegister(staged.device())), ElementsAre("garbled"));
}

TEST(DoctorRegister, AnswerThatEndsEarly) {
    const StagedRegister staged([](std::uint8_t, int, speed_t) {
        return Answer{{0, {0x00, 0x05, 0x07}}};
    });
    EXPECT_THAT(KeysOf(ExamineRegister(staged.device())), ElementsAre("garbled"));
}

TEST(DoctorRegister, OneAnswerTooLate) {
    const StagedRegister staged([](std::uint8_t command, int nth, speed_t) {
        return command == kStatus && nth == 4 ? Answer{{450, kIdle}} : Good(command);
    });
    const auto findings = ExamineRegister(staged.device());
    ASSERT_THAT(KeysOf(findings), ElementsAre("answer", "firmware", "first_byte_too_late",
                                              StartsWith("gap"), "state"));
    EXPECT_THAT(findings[2].what, HasSubstr(" ms, the driver waits 400 ms"));
}

TEST(DoctorRegister, OneAnswerNearlyTooLate) {
    const StagedRegister staged([](std::uint8_t command, int nth, speed_t) {
        return command == kStatus && nth == 4 ? Answer{{330, kIdle}} : Good(command);
    });
    EXPECT_THAT(KeysOf(ExamineRegister(staged.device())),
                ElementsAre("answer", "firmware", "first_byte_nearly_too_late", StartsWith("gap"),
                            "state"));
}

TEST(DoctorRegister, OnePauseBetweenBytesTooLong) {
    const StagedRegister staged([](std::uint8_t command, int nth, speed_t) {
        return command == kStatus && nth == 4 ? Answer{{0, {0x00, 0x03}}, {150, {0x07, 0xA0, 0xA7}}}
                                              : Good(command);
    });
    const auto findings = ExamineRegister(staged.device());
    ASSERT_THAT(KeysOf(findings),
                ElementsAre("answer", "firmware", "first_byte", "gap_too_late", "state"));
    EXPECT_THAT(findings[3].what, HasSubstr(" ms, the driver waits 100 ms"));
}

TEST(DoctorRegister, LostAnswer) {
    const StagedRegister staged([](std::uint8_t command, int nth, speed_t) {
        return command == kStatus && nth == 4 ? Answer{} : Good(command);
    });
    const auto findings = ExamineRegister(staged.device());
    ASSERT_THAT(KeysOf(findings), ElementsAre("answer", "firmware", "answers_lost", "first_byte",
                                              StartsWith("gap"), "state"));
    EXPECT_EQ(findings[2].what, "1 of 10 answers did not come whole");
}

TEST(DoctorRegister, UnknownFirmware) {
    const StagedRegister staged([](std::uint8_t, int, speed_t) {
        return Answer{{0, {0x00, 0x05, 0x07, 0xB4, 0x02, 0x63, 0x20}}};
    });
    const auto findings = ExamineRegister(staged.device());
    ASSERT_THAT(KeysOf(findings), ElementsAre("answer", "unknown_firmware"));
    EXPECT_EQ(findings[1].what, "the driver does not know this firmware (2.99)");
}

TEST(DoctorRegister, FirmwareIsNamedAsTheDriverNamesIt) {
    const std::pair<Bytes, const char*> versions[] = {
        {{0x00, 0x05, 0x07, 0xB4, 0x02, 0x0B, 0xC8}, "firmware 301"},
        {{0x00, 0x05, 0x07, 0xB4, 0x03, 0x04, 0xC2}, "firmware 400"},
        {{0x00, 0x05, 0x07, 0xB4, 0x03, 0x0C, 0xCA}, "firmware 310"},
    };
    for (const auto& [version, text] : versions) {
        const StagedRegister staged([&version = version](std::uint8_t command, int, speed_t) {
            return Answer{{0, command == kStatus ? kIdle : version}};
        });
        const auto findings = ExamineRegister(staged.device());
        ASSERT_GE(findings.size(), 2U);
        EXPECT_EQ(findings[1].what, text);
    }
}

TEST(DoctorRegister, AnotherDeviceThatSpeaksInFrames) {
    const StagedRegister staged([](std::uint8_t, int, speed_t) { return Answer{{0, kIdle}}; });
    EXPECT_THAT(KeysOf(ExamineRegister(staged.device())), ElementsAre("answer", "wrong_answer"));
}

TEST(DoctorRegister, StatesThatNeedAHand) {
    const std::pair<Bytes, const char*> states[] = {
        {{0x00, 0x03, 0x07, 0xCE, 0xD5}, "keyboard_locked"},
        {{0x00, 0x03, 0x07, 0xC8, 0xCF}, "check_open"},
        {{0x00, 0x03, 0x07, 0xC9, 0xD0}, "check_open"},
        {{0x00, 0x03, 0x07, 0xCA, 0xD1}, "check_open"},
        {{0x00, 0x03, 0x07, 0xCC, 0xD3}, "shift_closed"},
    };
    for (const auto& [status, key] : states) {
        const StagedRegister staged([&status = status](std::uint8_t command, int, speed_t) {
            return Answer{{0, command == kStatus ? status : kVersion302}};
        });
        const auto findings = ExamineRegister(staged.device());
        EXPECT_THAT(KeysOf(findings),
                    ElementsAre("answer", "firmware", "first_byte", StartsWith("gap"), key));
        EXPECT_EQ(findings.back().grade == Grade::bad, key == std::string("check_open"));
    }
}

TEST(DoctorRegister, LineThatCannotBeSet) {
    EXPECT_THAT(KeysOf(ExamineRegister("/dev/null")), ElementsAre("line_failed"));
}

}  // namespace
}  // namespace kkm
