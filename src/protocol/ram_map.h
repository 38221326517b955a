// Where each firmware keeps the values that are read from its memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "protocol/commands.h"

struct RamLookup {
    std::optional<std::uint16_t> address;
    std::string fault;  // why there is no address
};

// ramZero is not in the map: it is address 0 for every firmware, and the caller's business.
RamLookup LookUpRam(kkm_ver version, TRamAddr location);
