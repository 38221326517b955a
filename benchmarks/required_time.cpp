#include "required_time.h"

#include <dlfcn.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <numeric>

namespace bench {

namespace {

constexpr std::int64_t kBitsPerByte = 10;

template <typename Function>
Function* System(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

RequiredTime& Required() {
    static RequiredTime required;
    return required;
}

void RequiredTime::Begin(int baud) {
    *this = RequiredTime();
    byte_us_ = 1'000'000 * kBitsPerByte / baud;
}

std::int64_t RequiredTime::End() {
    EndExchange();
    return total_us_;
}

unsigned RequiredTime::Exchanges() const {
    return std::accumulate(requests_.begin(), requests_.end(), 0U);
}

// A pause between the request and the answer runs beside the line's time, any other by itself.
void RequiredTime::Slept(std::int64_t us) {
    if (under_way_ && received_ == 0) {
        slept_us_ += us;
    } else {
        EndExchange();
        total_us_ += us;
    }
}

void RequiredTime::Wrote(const unsigned char* frame, std::size_t count) {
    EndExchange();
    under_way_ = true;
    slept_us_ = 0;
    sent_ = static_cast<std::int64_t>(count);
    received_ = 0;
    ++requests_[count > 3 ? frame[3] : 0];
}

void RequiredTime::EndExchange() {
    if (under_way_) {
        total_us_ += std::max(slept_us_, (sent_ + received_) * byte_us_);
    }
    under_way_ = false;
}

}  // namespace bench

using bench::Required;
using bench::System;

extern "C" {

ssize_t read(int fd, void* to, size_t count) {
    static const auto system_read = System<ssize_t(int, void*, size_t)>("read");
    const ssize_t result = system_read(fd, to, count);
    if (count == 1 && result == 1) {
        Required().ReadByte();
    }
    return result;
}

ssize_t write(int fd, const void* from, size_t count) {
    static const auto system_write = System<ssize_t(int, const void*, size_t)>("write");
    // Every request begins with a zero byte, no text does.
    const auto* const bytes = static_cast<const unsigned char*>(from);
    if (count > 0 && bytes[0] == 0) {
        Required().Wrote(bytes, count);
    }
    return system_write(fd, from, count);
}

// The system's declaration calls the array write-only, so the definition goes by another name.
int BenchPoll(pollfd* fds, nfds_t count, int timeout) __asm__("poll");
int BenchPoll(pollfd* fds, nfds_t count, int timeout) {
    static const auto system_poll = System<int(pollfd*, nfds_t, int)>("poll");
    const int result = system_poll(fds, count, timeout);
    if (result == 0) {
        Required().WaitedInVain(std::int64_t{timeout} * 1'000);
    }
    return result;
}

int usleep(useconds_t us) {
    static const auto system_usleep = System<int(useconds_t)>("usleep");
    Required().Slept(us);
    return system_usleep(us);
}

}  // extern "C"
