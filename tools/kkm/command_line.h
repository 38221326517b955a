// The command line: its options, its help and the way to the commands.
#pragma once

#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// Everything that kkm does. Nothing is thrown.
ExitStatus Run(int argc, const char* const* argv, Streams& streams);

}  // namespace kkm
