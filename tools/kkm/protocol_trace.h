// TarvoM5.log, the protocol's trace: a line for each fault of an exchange, with the time.
#pragma once

#include <string>
#include <vector>

namespace kkm {

// The same fault several times in a row.
struct ProtocolFaults {
    std::string first;  // "2026-11-21 10:05:03", the host's local time
    std::string last;
    int count = 0;
    int network_number = 0;
    int code = 0;
};

// In the order of the file. Text that is none of the driver's is passed over.
std::vector<ProtocolFaults> ReadProtocolTrace(const std::string& trace);

// What a code of the protocol means, and what to do. For codes that it does not have, too.
std::string ProtocolFaultText(int code);

}  // namespace kkm
