// kkm watch: the register's state and counters as they change.
#pragma once

#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

struct WatchOptions {
    int interval_ms = 500;
    int looks = 0;  // 0: until a signal ends it
    bool as_json = false;
};

// Asks again and again and writes a line whenever something has changed: time, state, counters. It
// uses the tool's own line, so that nothing at the register changes by being watched. A register
// that does not answer is a line too.
ExitStatus RunWatch(const Address& address, const WatchOptions& options, Streams& streams);

}  // namespace kkm
