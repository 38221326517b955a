// kkm status, counters and taxes: figures that the register gives.
#pragma once

#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// What the register is and where it stands: state with its figures, firmware, serial number, shift,
// counters. A dozen exchanges.
ExitStatus RunStatus(const Address& address, bool as_json, Streams& streams);

// The counters, the grand total and the sum of cash payments. Reads every record of the control
// tape twice, so a long shift takes its time.
ExitStatus RunCounters(const Address& address, bool as_json, Streams& streams);

// The settings of taxes 0 to 16. As many exchanges.
ExitStatus RunTaxes(const Address& address, bool as_json, Streams& streams);

}  // namespace kkm
