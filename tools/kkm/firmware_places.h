// What differs between the firmware versions when their memory is asked.
#pragma once

#include "kkm/line_client.h"

namespace kkm {

// A request and the code of its answer.
struct Query {
    std::uint8_t request;
    std::uint8_t answer;
};

// Where older firmware keeps what later firmware tells by command; -1 for nowhere.
struct Places {
    int serial = -1;
    int sale_number = -1;
    int last_error = -1;
};

constexpr Query kReadEeprom{0x02, 0x82};
constexpr Query kReadRam{0x04, 0x84};
constexpr Query kVersion{0x34, 0xB4};
constexpr Query kSaleNumber{0x37, 0xB7};
constexpr Query kLastError{0x38, 0xB8};

// By the data of the answer to kVersion; 0 for firmware that is not known.
int FirmwareOf(const Bytes& version);
Places PlacesOf(int firmware);

// The data of a request for `count` bytes from `address` on.
Bytes RamRequest(int address, std::uint8_t count);
Bytes EepromRequest(int firmware, int address, std::uint8_t count);

}  // namespace kkm
