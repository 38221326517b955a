#include "support/system.h"

#include <cstdarg>

#include "support/world.h"

namespace test {
namespace {

System* in_use = nullptr;

}  // namespace

System& System::InUse() {
    return in_use != nullptr ? *in_use : World::Get();
}

void System::Use(System* system) {
    in_use = system;
}

}  // namespace test

using test::System;
class CTarvo;
class ETarvo;

extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_close(int fd);
ssize_t __real_read(int fd, void* to, size_t count);
ssize_t __real_write(int fd, const void* from, size_t count);
int __real_poll(pollfd* fds, nfds_t count, int timeout);
int __real_fcntl(int fd, int command, ...);
int __real_tcgetattr(int fd, termios* to);
int __real_tcsetattr(int fd, int action, const termios* from);
int __real_tcflush(int fd, int queue);
int __real_clock_gettime(clockid_t clock, timespec* to);

int __wrap_open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const int mode = va_arg(rest, int);
    va_end(rest);
    return System::InUse().OwnsPath(path) ? System::InUse().Open(path, flags)
                                          : __real_open(path, flags, mode);
}

int __wrap_close(int fd) {
    return System::InUse().Owns(fd) ? System::InUse().Close(fd) : __real_close(fd);
}

ssize_t __wrap_read(int fd, void* to, size_t count) {
    return System::InUse().Owns(fd) ? System::InUse().Read(fd, to, count)
                                    : __real_read(fd, to, count);
}

ssize_t __wrap_write(int fd, const void* from, size_t count) {
    return System::InUse().Owns(fd) ? System::InUse().Write(fd, from, count)
                                    : __real_write(fd, from, count);
}

int __wrap_poll(pollfd* fds, nfds_t count, int timeout) {
    if (count == 1 && System::InUse().Owns(fds->fd)) {
        return System::InUse().Poll(fds->fd, fds->events, timeout, &fds->revents);
    }
    return __real_poll(fds, count, timeout);
}

int __wrap_fcntl(int fd, int command, ...) {
    std::va_list rest;
    va_start(rest, command);
    const long argument = va_arg(rest, long);
    va_end(rest);
    return System::InUse().Owns(fd) ? System::InUse().Fcntl(fd, command, argument)
                                    : __real_fcntl(fd, command, argument);
}

int __wrap_tcgetattr(int fd, termios* to) {
    return System::InUse().Owns(fd) ? System::InUse().GetAttributes(fd, to)
                                    : __real_tcgetattr(fd, to);
}

int __wrap_tcsetattr(int fd, int action, const termios* from) {
    return System::InUse().Owns(fd) ? System::InUse().SetAttributes(fd, action, from)
                                    : __real_tcsetattr(fd, action, from);
}

int __wrap_tcflush(int fd, int queue) {
    return System::InUse().Owns(fd) ? System::InUse().Flush(fd, queue) : __real_tcflush(fd, queue);
}

int __wrap_usleep(useconds_t us) {
    return System::InUse().Usleep(us);
}

int __wrap_clock_gettime(clockid_t clock, timespec* to) {
    if (clock != CLOCK_MONOTONIC) {
        return __real_clock_gettime(clock, to);
    }
    const test::Micros now = System::InUse().LookAtClock();
    to->tv_sec = static_cast<std::time_t>(now / 1'000'000);
    to->tv_nsec = static_cast<long>(now % 1'000'000 * 1000);
    return 0;
}

std::time_t __wrap_time(std::time_t* to) {
    const std::time_t now = System::InUse().WallClock();
    if (to != nullptr) {
        *to = now;
    }
    return now;
}

}  // extern "C"

#define STRING_ARGUMENT "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

void RealTrace(const std::string& file,
               const std::string& text) __asm__("__real__Z12TraceLogFileRK" STRING_ARGUMENT "S6_");
void WrapTrace(const std::string& file,
               const std::string& text) __asm__("__wrap__Z12TraceLogFileRK" STRING_ARGUMENT "S6_");
void RealError(ETarvo* error, CTarvo* source, int code, const std::string& detail) __asm__(
    "__real__ZN6ETarvoC1EP6CTarvoiRK" STRING_ARGUMENT);
void WrapError(ETarvo* error, CTarvo* source, int code, const std::string& detail) __asm__(
    "__wrap__ZN6ETarvoC1EP6CTarvoiRK" STRING_ARGUMENT);

void WrapTrace(const std::string& file, const std::string& text) {
    if (System::InUse().Trace(file, text)) {
        RealTrace(file, text);
    }
}

void WrapError(ETarvo* error, CTarvo* source, int code, const std::string& detail) {
    System::InUse().Detail(code, detail);
    RealError(error, source, code, detail);
}
