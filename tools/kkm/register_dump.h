// All that can be read of a register, and how it is written down as a memory of the virtual one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kkm/connection.h"
#include "kkm/line_client.h"
#include "kkm/streams.h"

namespace kkm {

struct RegisterDump {
    int baud = 0;
    int network = 0;
    int firmware = 0;
    Bytes serial;
    int last_error = 0;
    int tape = 0;
    int checks = 0;
    std::int64_t drawer_kopecks = 0;
    int open_lines = 0;  // of an open check; what they say cannot be read
    Bytes ram;           // zeros where it could not be read
    Bytes eeprom;        // likewise
    int ram_read = 0;    // bytes of it
    int eeprom_read = 0;
    int first_record = 0;        // number of the first of the records
    std::vector<Bytes> records;  // of the control tape, 31 bytes each; zeros for a gap
    int records_read = 0;
    std::vector<Bytes> products;       // 39 bytes each
    std::vector<std::string> missing;  // what could not be read
};

// Asks the register by the tool's own line for everything, goods with the codes 1 to
// `last_product` included. Changes nothing at the register. Half a minute at 9600 baud, and the
// goods besides. What does not come is left out; of what is asked in pieces, only those pieces.
// Throws RegisterFailure when nobody answers, when the firmware is unknown, or when nothing but the
// firmware came.
RegisterDump DumpRegister(const Address& address, int last_product, Streams& streams);

// The text of the memory file. `remark` is its second line.
std::string DumpAsMemory(const RegisterDump& dump, const std::string& remark);

}  // namespace kkm
