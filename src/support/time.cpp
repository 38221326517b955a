#include "support/time.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace {

// usleep counts its microseconds in 32 bits, a long check waits longer than those hold.
constexpr std::uint64_t kLongestNapUs = 4'000'000'000;

std::uint64_t ToUs(const timespec& time) {
    // Nanoseconds within a second fit 32 bits, and are divided more cheaply there.
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000 +
           static_cast<std::uint32_t>(time.tv_nsec) / 1'000;
}

}  // namespace

std::uint64_t MonotonicUs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return ToUs(now);
}

std::uint64_t MonotonicMs() {
    return MonotonicUs() / 1'000;
}

std::uint64_t Stopwatch::ElapsedUs() const {
    return MonotonicUs() - ToUs(begin_);
}

void Sleep(unsigned ms) {
    const std::uint64_t wait_us = std::uint64_t{ms} * 1'000;
    std::uint64_t left_us = wait_us;
    const Stopwatch slept;
    do {
        const std::uint64_t nap_us = std::min(left_us, kLongestNapUs);
        if (usleep(static_cast<useconds_t>(nap_us)) == 0) {
            left_us -= nap_us;
        } else if (errno == EINTR) {
            const std::uint64_t slept_us = slept.ElapsedUs();
            left_us = slept_us < wait_us ? std::min(left_us, wait_us - slept_us) : 0;
        } else {
            return;
        }
    } while (left_us > 0);
}

unsigned long GetTickCount() {
    return 0;
}
