// kkm run: an unchanged host program that finds the register at its own port number.
#pragma once

#include <string>
#include <vector>

#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

struct RunOptions {
    std::string device;             // what stands in for the port
    int port = 1;                   // of the host: 1 is /dev/ttyS0
    std::string directory;          // to start in; empty: this one
    std::vector<std::string> host;  // program and arguments
};

// Runs the program in a mount namespace of its own in which /dev/ttyS(port - 1) is the device, and
// gives the program's own exit status, 128 + the signal that ended it, or not_started with a word
// on why the namespace cannot be had. Works without root where the kernel lets users make
// namespaces.
int RunHost(const RunOptions& options, Streams& streams);

}  // namespace kkm
