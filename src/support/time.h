// Waiting and the one clock of the library.
#pragma once

#include <time.h>

#include <cstdint>

// Suspends the calling thread for ms milliseconds; a signal does not shorten the wait.
void Sleep(unsigned ms);

// Always 0: hosts of the exported function get no clock from this platform.
unsigned long GetTickCount();

// Milliseconds of a clock that never goes back.
std::uint64_t MonotonicMs();
// Microseconds of the same clock.
std::uint64_t MonotonicUs();

// How long something has lasted, by the same clock. To begin costs one look at it and no
// arithmetic: every wait begins one, and hardly any needs to know.
class Stopwatch {
  public:
    Stopwatch() { clock_gettime(CLOCK_MONOTONIC, &begin_); }
    std::uint64_t ElapsedUs() const;

  private:
    timespec begin_{};
};
