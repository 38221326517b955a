// Commands that make the register do one thing: kkm text, feed, lock, unlock, display and cancel.
#pragma once

#include <string>

#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// Prints a line of text (UTF-8), cut to the 16 letters that the register takes.
ExitStatus RunText(const Address& address, const std::string& text, bool as_json, Streams& streams);
// Feeds the paper by 40 lines, so many times.
ExitStatus RunFeed(const Address& address, int times, bool as_json, Streams& streams);
ExitStatus RunLock(const Address& address, bool as_json, Streams& streams);
ExitStatus RunUnlock(const Address& address, bool as_json, Streams& streams);
// Clears the customer display.
ExitStatus RunDisplayClear(const Address& address, bool as_json, Streams& streams);
// Resets the register's state.
ExitStatus RunCancel(const Address& address, bool as_json, Streams& streams);

}  // namespace kkm
