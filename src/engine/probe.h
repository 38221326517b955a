// Reading the register back to back until it answers.
#pragma once

#include "support/time.h"

constexpr std::uint64_t kProbeMs = 30000;

// Calls read(), without a pause, until it returns, until 30 s have passed or until an exception
// after which go_on() is false. At least one read is made. True when a read returned.
template <typename Read, typename GoOn>
bool Probe(Read read, GoOn go_on) {
    const std::uint64_t begin_ms = MonotonicMs();
    do {
        try {
            read();
            return true;
        } catch (...) {
            // Only the time limit or the caller ends the reading.
        }
    } while (MonotonicMs() - begin_ms < kProbeMs && go_on());
    return false;
}
