// kkm dump: a register's memory in a file.
#pragma once

#include <string>

#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

struct DumpOptions {
    std::string file;         // "-" for the standard output
    int last_product = 2000;  // goods with codes up to this; 0 for none
    bool replace = false;     // a file that is there
};

// Reads what can be read of a register and writes it as a memory of the virtual one. What could not
// be read is told, and the status is then not_read; the file holds the rest.
ExitStatus RunDump(const Address& address, const DumpOptions& options, bool as_json,
                   Streams& streams);

}  // namespace kkm
