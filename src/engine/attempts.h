// The retry rules of the check steps.
#pragma once

constexpr int kStepAttempts = 20;
constexpr int kCheckOutAttempts = 10;

// Kept: a step that succeeds on its last attempt has failed. Hosts and service staff rely on a
// register this bad being reported.
constexpr bool Exhausted(int attempts) {
    return attempts >= kStepAttempts;
}

// Calls attempt() until it returns, at most `limit` times. on_failure() runs inside the handler of
// each exception; what it throws itself ends the step. Returns the number of attempts made.
template <typename Attempt, typename OnFailure>
int Attempts(int limit, Attempt attempt, OnFailure on_failure) {
    int attempts = 0;
    for (bool done = false; !done && attempts < limit;) {
        ++attempts;
        try {
            attempt();
            done = true;
        } catch (...) {
            on_failure();
        }
    }
    return attempts;
}

enum class Failure { money, protocol, other };

// What kind of exception is being handled. To be called inside a handler.
Failure CurrentFailure();
