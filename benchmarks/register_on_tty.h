// A register in a process of its own, whose bytes take the time of a real line.
#pragma once

#include <memory>

#include "system/register_process.h"

namespace bench {

// The register's own timers get the system's finest resolution, so that what is measured is not
// its lateness; this process keeps the usual one.
std::unique_ptr<test::RegisterProcess> StartRegister(int firmware, int baud);

}  // namespace bench
