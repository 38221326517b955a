// Records that the register keeps: the statistics counters and the control tape.
#pragma once

#include <array>
#include <cstdint>

#include "support/payload.h"

// The running counters.
struct TStatistics {
    std::uint16_t number = 0;  // control-tape number
    std::uint16_t checks = 0;  // check counter
    std::uint16_t sales = 0;   // sale counter: records on the control tape
    double amount = 0.0;       // running amount, currency units
};

// One record of the control tape. Money in currency units.
struct KLSale {
    double sum = 0.0;
    double amount2 = 0.0;
    double amount3 = 0.0;
    double amount4 = 0.0;
    double signed_value = 0.0;
    std::int32_t number = 0;
    double quantity = 0.0;
    std::uint32_t kind = 0;
    std::uint32_t selector = 0;
    bool marked = false;
    std::array<unsigned char, 5> code_bytes{};
    std::uint16_t code = 0;
};

// A missing byte counts as 0.
KLSale DecodeKLSale(const Bytes& answer);
