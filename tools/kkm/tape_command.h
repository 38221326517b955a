// kkm tape: the records of the control tape.
#pragma once

#include <optional>

#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

enum class TapeFormat { table, csv, json };

struct TapeRange {
    int from = 1;
    std::optional<int> to;  // nothing: to the last record
};

// One exchange for each record. On a terminal a bar shows how far it is and how long it takes yet.
// What was read is written even when a later record cannot be read.
ExitStatus RunTape(const Address& address, const TapeRange& range, TapeFormat format,
                   Streams& streams);

}  // namespace kkm
