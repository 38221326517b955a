#include "support/time.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace {

// usleep counts its microseconds in 32 bits, a long check waits longer than those hold.
constexpr std::uint64_t kLongestNapUs = 4'000'000'000;

}  // namespace

std::uint64_t MonotonicUs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1'000;
}

std::uint64_t MonotonicMs() {
    return MonotonicUs() / 1'000;
}

void Sleep(unsigned ms) {
    std::uint64_t left_us = std::uint64_t{ms} * 1'000;
    const std::uint64_t end_us = MonotonicUs() + left_us;
    do {
        const std::uint64_t nap_us = std::min(left_us, kLongestNapUs);
        if (usleep(static_cast<useconds_t>(nap_us)) == 0) {
            left_us -= nap_us;
        } else if (errno == EINTR) {
            const std::uint64_t now_us = MonotonicUs();
            left_us = now_us < end_us ? std::min(left_us, end_us - now_us) : 0;
        } else {
            return;
        }
    } while (left_us > 0);
}

unsigned long GetTickCount() {
    return 0;
}
