// Waiting and the one clock of the library.
#pragma once

#include <cstdint>

// Suspends the calling thread for ms milliseconds; a signal does not shorten the wait.
void Sleep(unsigned ms);

// Always 0: hosts of the exported function get no clock from this platform.
unsigned long GetTickCount();

// Milliseconds of a clock that never goes back.
std::uint64_t MonotonicMs();
// Microseconds of the same clock.
std::uint64_t MonotonicUs();
