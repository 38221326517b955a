// What stands between model and tty: pacing, the automatic cashier, the pseudo terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "bench.h"
#include "virtual_register/auto_cashier.h"
#include "virtual_register/paced_bytes.h"
#include "virtual_register/pty_line.h"

namespace virtual_register {
namespace {

TEST(PacedBytes, WithoutPaceBytesAreThereAtOnce) {
    PacedBytes line(0);
    line.send(7, 100);
    line.send(8, 100);
    EXPECT_EQ(100, line.next_us());
    EXPECT_EQ(7, line.arrived(100));
    EXPECT_EQ(8, line.arrived(100));
    EXPECT_EQ(std::nullopt, line.arrived(100));
    EXPECT_EQ(std::nullopt, line.next_us());
}

TEST(PacedBytes, WithPaceEachTakesItsTimeAfterTheOneBefore) {
    PacedBytes line(1041);
    line.send(7, 100);
    line.send(8, 100);
    EXPECT_EQ(std::nullopt, line.arrived(1140));
    EXPECT_EQ(7, line.arrived(1141));
    EXPECT_EQ(std::nullopt, line.arrived(2181));
    EXPECT_EQ(8, line.arrived(2182));
    line.send(9, 10000);
    EXPECT_EQ(11041, line.next_us());
    EXPECT_EQ(9, line.arrived(20000));
}

TEST(AutoCashier, AsksAfterTheRegisterWasIdleForAWhile) {
    Bench bench;
    AutoCashier cashier;
    EXPECT_EQ(301000, cashier.act(bench.model, 1000));
    EXPECT_EQ(0xCB, bench.state());
    EXPECT_EQ(301000, cashier.act(bench.model, 300999));
    EXPECT_EQ(0xCB, bench.state());
    EXPECT_EQ(std::nullopt, cashier.act(bench.model, 301000));
    EXPECT_EQ(0xA1, bench.state());
    EXPECT_EQ(std::nullopt, cashier.act(bench.model, 900000));
}

TEST(AutoCashier, AHostThatResetsSeesTheRegisterIdleFirst) {
    Bench bench;
    AutoCashier cashier;
    cashier.act(bench.model, 0);
    cashier.act(bench.model, 300000);
    bench.now_us = 300001;
    bench.reset();
    EXPECT_EQ(600001, cashier.act(bench.model, 300001));
    EXPECT_EQ(0xA0, bench.state());
}

TEST(AutoCashier, LeavesOpenChecksLockedKeyboardsAndEmptyRollsAlone) {
    const auto waits_for_ever = [](Bench& bench) {
        AutoCashier cashier;
        return !cashier.act(bench.model, 0) && !cashier.act(bench.model, 9000000);
    };
    Bench with_check;
    with_check.sell();
    with_check.reset();
    EXPECT_TRUE(waits_for_ever(with_check));
    Bench locked(310);
    locked.send(0x36, {0});
    EXPECT_TRUE(waits_for_ever(locked));
    Bench without_paper;
    without_paper.model.paper_out();
    EXPECT_TRUE(waits_for_ever(without_paper));
    Bench off;
    off.model.power_off();
    EXPECT_TRUE(waits_for_ever(off));
}

TEST(AutoCashier, WaitsForTheEndOfAReceipt) {
    Settings settings;
    settings.print_us_per_line = 1000000;
    Bench bench(303, settings);
    bench.print_check();
    AutoCashier cashier;
    cashier.act(bench.model, 0);
    EXPECT_EQ(600000, cashier.act(bench.model, 300000));
    EXPECT_EQ(std::nullopt, cashier.act(bench.model, 99000000));
    EXPECT_EQ(State::sale_code, bench.model.state());
}

// The other end, as a host has it.
class Host {
  public:
    explicit Host(const std::string& name) : tty_(::open(name.c_str(), O_RDWR | O_NOCTTY)) {}
    ~Host() { ::close(tty_); }
    termios settings() const {
        termios now{};
        EXPECT_EQ(0, ::tcgetattr(tty_, &now));
        return now;
    }
    void set_speed(speed_t speed) const {
        termios now = settings();
        ::cfsetispeed(&now, speed);
        ::cfsetospeed(&now, speed);
        EXPECT_EQ(0, ::tcsetattr(tty_, TCSANOW, &now));
    }
    void write(const std::vector<std::uint8_t>& bytes) const {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(tty_, bytes.data(), bytes.size()));
    }
    std::vector<std::uint8_t> read() const {
        std::vector<std::uint8_t> bytes(100);
        pollfd waited{tty_, POLLIN, 0};
        const ssize_t count =
            ::poll(&waited, 1, 5000) > 0 ? ::read(tty_, bytes.data(), bytes.size()) : 0;
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

  private:
    int tty_;
};

bool has_news(const PtyLine& line) {
    pollfd waited{line.descriptor(), POLLIN, 0};
    return ::poll(&waited, 1, 5000) > 0;
}

TEST(PtyLine, IsRawAndSilentBeforeAHostSetsItUp) {
    PtyLine line;
    const Host host(line.tty_name());
    EXPECT_EQ(0u, host.settings().c_lflag & (ECHO | ICANON | ISIG | IEXTEN));
    EXPECT_EQ(0u, host.settings().c_oflag & OPOST);
    EXPECT_EQ(0u, host.settings().c_iflag & (ICRNL | IXON | ISTRIP));
}

TEST(PtyLine, BytesGoBothWaysUnchanged) {
    PtyLine line;
    const Host host(line.tty_name());
    const std::vector<std::uint8_t> bytes{0x00, 0x03, 0x0D, 0x0A, 0x11, 0x13, 0x7F, 0xFF, 0x04};
    host.write(bytes);
    ASSERT_TRUE(has_news(line));
    EXPECT_EQ(bytes, line.receive());
    line.send(bytes);
    EXPECT_EQ(bytes, host.read());
    EXPECT_TRUE(line.receive().empty());
}

TEST(PtyLine, KnowsTheHostsSpeed) {
    PtyLine line;
    const Host host(line.tty_name());
    host.set_speed(B9600);
    EXPECT_EQ(9600, line.host_speed());
    host.set_speed(B57600);
    EXPECT_EQ(57600, line.host_speed());
    host.set_speed(B300);
    EXPECT_EQ(0, line.host_speed());
}

TEST(PtyLine, SurvivesAHostThatClosesAndOpensAgain) {
    PtyLine line;
    EXPECT_FALSE(line.host_present());
    for (int i = 0; i < 3; ++i) {
        {
            const Host host(line.tty_name());
            host.write({1});
            ASSERT_TRUE(has_news(line));
            EXPECT_EQ((std::vector<std::uint8_t>{1}), line.receive());
            EXPECT_TRUE(line.host_present());
        }
        ASSERT_TRUE(has_news(line));
        EXPECT_TRUE(line.receive().empty());
        EXPECT_FALSE(line.host_present());
        pollfd waited{line.descriptor(), POLLIN, 0};
        EXPECT_EQ(0, ::poll(&waited, 1, 0));  // nothing that a loop would spin on
        const Host host(line.tty_name());
        EXPECT_EQ(0u, host.settings().c_lflag & (ECHO | ICANON));
    }
}

TEST(PtyLine, AHostThatReadsNothingDoesNotStopTheRegister) {
    PtyLine line;
    const Host host(line.tty_name());
    for (int i = 0; i < 1000; ++i) {
        line.send(std::vector<std::uint8_t>(200, 0x55));
    }
    EXPECT_FALSE(host.read().empty());
}

}  // namespace
}  // namespace virtual_register
