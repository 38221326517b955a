// A host that defines the POSIX calls itself and plays a register through them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <deque>

#include "system/host.h"

namespace {

constexpr int kPort = 5000;  // descriptor of the port that exists only here

struct Seen {
    std::vector<std::string> calls;
    std::deque<unsigned char> answer;
    std::size_t largest_read = 0;
};

Seen& TheHost() {
    static Seen seen;
    return seen;
}

void Note(const std::string& call) {
    TheHost().calls.push_back(call);
}

void Answer(unsigned char code, const std::vector<unsigned char>& payload) {
    std::vector<unsigned char> frame{0x00, static_cast<unsigned char>(payload.size() + 3), 0x01,
                                     code};
    frame.insert(frame.end(), payload.begin(), payload.end());
    unsigned sum = 0;
    for (std::size_t i = 2; i < frame.size(); ++i) {
        sum += frame[i];
    }
    frame.push_back(static_cast<unsigned char>(sum));
    TheHost().answer.assign(frame.begin(), frame.end());
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    if (std::strncmp(path, "/dev/ttyS", 9) == 0) {
        Note(std::string("open ") + path);
        return kPort;
    }
    std::va_list rest;
    va_start(rest, flags);
    const int mode = va_arg(rest, int);
    va_end(rest);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int close(int fd) {
    if (fd == kPort) {
        Note("close");
        return 0;
    }
    return static_cast<int>(syscall(SYS_close, fd));
}

ssize_t read(int fd, void* to, size_t count) {
    if (fd != kPort) {
        return syscall(SYS_read, fd, to, count);
    }
    Seen& host = TheHost();
    host.largest_read = std::max(host.largest_read, count);
    *static_cast<unsigned char*>(to) = host.answer.front();
    host.answer.pop_front();
    return 1;
}

ssize_t write(int fd, const void* from, size_t count) {
    if (fd != kPort) {
        return syscall(SYS_write, fd, from, count);
    }
    const unsigned char command = static_cast<const unsigned char*>(from)[3];
    Note("write " + std::to_string(command));
    if (command == 0x34) {
        Answer(0xB4, {0x03, 0x02, 0x00});
    } else {
        Answer(0x7B, {});
    }
    return static_cast<ssize_t>(count);
}

// The system's declaration calls the array write-only, so the definition goes by another name.
int HostPoll(pollfd* fds, nfds_t count, int timeout) __asm__("poll");
int HostPoll(pollfd* fds, nfds_t count, int timeout) {
    if (count == 1 && fds->fd == kPort) {
        const bool waits = !TheHost().answer.empty();
        fds->revents = waits ? POLLIN : 0;
        return waits ? 1 : 0;
    }
    return static_cast<int>(syscall(SYS_poll, fds, count, timeout));
}

int fcntl(int fd, int command, ...) {
    std::va_list rest;
    va_start(rest, command);
    const long argument = va_arg(rest, long);
    va_end(rest);
    if (fd == kPort) {
        Note("fcntl " + std::to_string(command) + " " + std::to_string(argument));
        return 0;
    }
    return static_cast<int>(syscall(SYS_fcntl, fd, command, argument));
}

int tcgetattr(int /*fd*/, termios* to) noexcept {
    Note("tcgetattr");
    *to = {};
    return 0;
}

int tcsetattr(int /*fd*/, int /*action*/, const termios* from) noexcept {
    Note("tcsetattr " + std::to_string(from->c_cflag));
    return 0;
}

int tcflush(int /*fd*/, int /*queue*/) noexcept {
    Note("tcflush");
    return 0;
}

int usleep(useconds_t us) {
    Note("usleep " + std::to_string(us));
    return 0;
}

}  // extern "C"

namespace test {
namespace {

TEST(Interposition, HostSeesEveryCallOfTheLibrary) {
    const WorkingFolder folder;
    {
        const Library library;
        TheHost() = {};
        EXPECT_EQ(library.ConnectKKM(255), 1);
        int version = 0;
        EXPECT_EQ(library.GetKKMVers(&version), 1);
        EXPECT_EQ(version, 303);
    }
    const std::string read_and_write = std::to_string(F_SETFL) + " 0";
    EXPECT_EQ(TheHost().calls,
              (std::vector<std::string>{
                  "open /dev/ttyS254", "fcntl " + read_and_write, "tcgetattr", "tcsetattr 2237",
                  "tcflush", "tcflush",                                   // line set up
                  "usleep 10000", "tcflush", "write 52", "usleep 10000",  // version asked for
                  "usleep 10000",                                         // its one pause more
                  "usleep 10000", "tcflush", "write 11", "usleep 10000",  // host-wait switched on
                  "close"}));
    EXPECT_EQ(TheHost().largest_read, 1U) << "one byte for each call";
}

}  // namespace
}  // namespace test
