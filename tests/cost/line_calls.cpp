#include "cost/line_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>

#include "cost/heap_count.h"

namespace cost {

const char* const kCallNames[call_count] = {"open", "close",   "read",   "write",
                                            "poll", "tcflush", "usleep", "clock_gettime"};
unsigned long calls[call_count];

namespace {

constexpr int kLine = 1000;  // descriptor of the line that exists only here

Answerer* answerer = nullptr;
std::int64_t now_us = 1'000'000'000;

// What happens on the other side is no cost of the driver.
class Outside {
  public:
    explicit Outside(Call call, bool counted = true) {
        if (was_counting_) {
            counting = false;
        }
        if (counted) {
            ++calls[call];
        }
    }
    ~Outside() {
        if (was_counting_) {
            counting = true;
        }
    }
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

  private:
    bool was_counting_ = counting;
};

template <typename Function>
Function* System(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void Use(Answerer* to) {
    answerer = to;
}

std::int64_t NowUs() {
    return now_us;
}

}  // namespace cost

using cost::Outside;

// The profiler stops counting inside every function of this name.
#define OUTSIDE extern "C" [[gnu::noinline]]

OUTSIDE int outside_open(const char* path, int flags, int mode) {
    const bool ours = cost::answerer != nullptr && std::strcmp(path, cost::kPath) == 0;
    const Outside outside(cost::call_open, ours);
    static const auto system_open = cost::System<int(const char*, int, ...)>("open");
    return ours ? cost::kLine : system_open(path, flags, mode);
}

OUTSIDE int outside_close(int fd) {
    const Outside outside(cost::call_close, fd == cost::kLine);
    static const auto system_close = cost::System<int(int)>("close");
    return fd == cost::kLine ? 0 : system_close(fd);
}

OUTSIDE ssize_t outside_read(int fd, void* to, size_t count) {
    const Outside outside(cost::call_read, fd == cost::kLine);
    if (fd == cost::kLine) {
        size_t done = 0;
        for (; done < count && cost::answerer->HasByte(); ++done) {
            static_cast<unsigned char*>(to)[done] = cost::answerer->NextByte();
        }
        return static_cast<ssize_t>(done);
    }
    static const auto system_read = cost::System<ssize_t(int, void*, size_t)>("read");
    return system_read(fd, to, count);
}

OUTSIDE ssize_t outside_write(int fd, const void* from, size_t count) {
    const Outside outside(cost::call_write, fd == cost::kLine);
    if (fd == cost::kLine) {
        cost::answerer->Take(static_cast<const unsigned char*>(from), count, cost::now_us);
        return static_cast<ssize_t>(count);
    }
    static const auto system_write = cost::System<ssize_t(int, const void*, size_t)>("write");
    return system_write(fd, from, count);
}

OUTSIDE int outside_poll(pollfd* fds, nfds_t count, int timeout) {
    const bool ours = count == 1 && fds->fd == cost::kLine;
    const Outside outside(cost::call_poll, ours);
    if (!ours) {
        static const auto system_poll = cost::System<int(pollfd*, nfds_t, int)>("poll");
        return system_poll(fds, count, timeout);
    }
    if (cost::answerer->HasByte()) {
        fds->revents = POLLIN;
        return 1;
    }
    cost::now_us += std::int64_t{timeout} * 1000;
    fds->revents = 0;
    return 0;
}

OUTSIDE int outside_tcflush(int fd, int queue) {
    const Outside outside(cost::call_tcflush, fd == cost::kLine);
    if (fd == cost::kLine) {
        cost::answerer->Forget();
        return 0;
    }
    static const auto system_tcflush = cost::System<int(int, int)>("tcflush");
    return system_tcflush(fd, queue);
}

OUTSIDE int outside_usleep(useconds_t us) {
    const Outside outside(cost::call_usleep);
    cost::now_us += us;
    static const auto system_usleep = cost::System<int(useconds_t)>("usleep");
    return cost::answerer != nullptr ? 0 : system_usleep(0);
}

OUTSIDE int outside_clock_gettime(clockid_t clock, timespec* to) {
    const Outside outside(cost::call_clock);
    static const auto system_clock_gettime =
        cost::System<int(clockid_t, timespec*)>("clock_gettime");
    if (cost::answerer == nullptr || clock != CLOCK_MONOTONIC) {
        return system_clock_gettime(clock, to);
    }
    to->tv_sec = static_cast<time_t>(cost::now_us / 1'000'000);
    to->tv_nsec = static_cast<long>(cost::now_us % 1'000'000 * 1000);
    return 0;
}

extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const int mode = va_arg(rest, int);
    va_end(rest);
    return outside_open(path, flags, mode);
}

int close(int fd) {
    return outside_close(fd);
}

ssize_t read(int fd, void* to, size_t count) {
    return outside_read(fd, to, count);
}

ssize_t write(int fd, const void* from, size_t count) {
    return outside_write(fd, from, count);
}

// The system's declaration calls the array write-only, so the definition goes by another name.
int CostPoll(pollfd* fds, nfds_t count, int timeout) __asm__("poll");
int CostPoll(pollfd* fds, nfds_t count, int timeout) {
    return outside_poll(fds, count, timeout);
}

int fcntl(int fd, int command, ...) {
    std::va_list rest;
    va_start(rest, command);
    const long argument = va_arg(rest, long);
    va_end(rest);
    static const auto system_fcntl = cost::System<int(int, int, ...)>("fcntl");
    return fd == cost::kLine ? 0 : system_fcntl(fd, command, argument);
}

int tcgetattr(int fd, termios* to) noexcept {
    static const auto system_tcgetattr = cost::System<int(int, termios*)>("tcgetattr");
    if (fd != cost::kLine) {
        return system_tcgetattr(fd, to);
    }
    *to = {};
    return 0;
}

int tcsetattr(int fd, int action, const termios* from) noexcept {
    static const auto system_tcsetattr = cost::System<int(int, int, const termios*)>("tcsetattr");
    return fd == cost::kLine ? 0 : system_tcsetattr(fd, action, from);
}

int tcflush(int fd, int queue) noexcept {
    return outside_tcflush(fd, queue);
}

int usleep(useconds_t us) {
    return outside_usleep(us);
}

int clock_gettime(clockid_t clock, timespec* to) noexcept {
    return outside_clock_gettime(clock, to);
}

}  // extern "C"
