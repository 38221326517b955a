#include "pty_line.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace virtual_register {
namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void make_raw(int tty) {
    termios settings{};
    if (::tcgetattr(tty, &settings) != 0) {
        return;
    }
    // A host that came first has set it up already, and its settings are its own.
    if ((settings.c_lflag & (ECHO | ICANON)) == 0) {
        return;
    }
    ::cfmakeraw(&settings);
    ::tcsetattr(tty, TCSANOW, &settings);
}

}  // namespace

PtyLine::PtyLine() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    if (master_ < 0) {
        fail("no pseudo terminal");
    }
    char name[64];
    if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
        ::ptsname_r(master_, name, sizeof name) != 0) {
        ::close(master_);
        fail("no tty for the pseudo terminal");
    }
    tty_name_ = name;
    hold_tty();
    if (tty_ < 0) {
        ::close(master_);
        fail(name);
    }
}

PtyLine::~PtyLine() {
    let_go_of_tty();
    ::close(master_);
}

std::vector<std::uint8_t> PtyLine::receive() {
    std::vector<std::uint8_t> bytes(4096);
    const ssize_t count = ::read(master_, bytes.data(), bytes.size());
    if (count <= 0) {
        // EIO is how a master learns that the last one to have the tty open closed it.
        if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            hold_tty();
        }
        return {};
    }
    let_go_of_tty();
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

void PtyLine::send(const std::vector<std::uint8_t>& bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(master_, bytes.data() + done, bytes.size() - done);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return;
        }
    }
}

int PtyLine::host_speed() const {
    termios settings{};
    if (::tcgetattr(master_, &settings) != 0) {
        return 0;
    }
    switch (::cfgetospeed(&settings)) {
        case B9600:
            return 9600;
        case B19200:
            return 19200;
        case B38400:
            return 38400;
        case B57600:
            return 57600;
        case B115200:
            return 115200;
        default:
            return 0;
    }
}

void PtyLine::hold_tty() {
    if (tty_ < 0) {
        tty_ = ::open(tty_name_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (tty_ >= 0) {
            make_raw(tty_);
        }
    }
}

void PtyLine::let_go_of_tty() {
    if (tty_ >= 0) {
        ::close(tty_);
        tty_ = -1;
    }
}

}  // namespace virtual_register
