// kkm check: prints a check and shows each step of it.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "kkm/check_file.h"
#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// The names in the register's code page. What is lost is told before anything is sent.
std::vector<std::string> RegisterNames(const CheckFile& check, std::ostream& warnings);

// Blocks until the register asks for the check, which is up to its cashier, and until it is
// printed. Done only when the register's counters proved that it was. With JSON the steps go to the
// error stream and one object follows on the other.
ExitStatus RunCheck(const Address& address, const CheckFile& check, bool as_json, Streams& streams);

}  // namespace kkm
