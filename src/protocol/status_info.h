// The register's status record.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "protocol/commands.h"
#include "protocol/frame.h"

// What the register says of its state. Which fields a state fills is decided by DecodeStatus; the
// others keep what they held.
struct status_info {
    kkm_command command = ks_none;  // the state
    std::uint16_t number = 0;       // document number of the state
    std::uint8_t section = 0;       // 1-based section number of the register
    std::uint16_t position = 0;     // line position, 1-based
    std::uint8_t department = 0;    // section of a line
    std::uint16_t code = 0;         // goods code
    std::uint8_t saleNumber = 0;
    bool weighted = false;            // the quantity is a weight
    double quantity = 0.0;            // pieces, or kilograms when weighted
    bool marked = false;              // flag of the line
    std::string text;                 // goods name, barcode or card number
    std::string text2;                // spare
    std::string name;                 // goods name of a line to be sent
    std::uint32_t price = 0;          // kopecks
    std::uint32_t sum;                // kopecks; not set until a state sets it, as the four below
    std::uint8_t reply = 0;           // first data byte of a sale or cash answer
    std::uint8_t attr = 0;            // attribute of the line
    std::uint8_t percent = 0;         // applied to the sum of the line
    std::int32_t kind;                // copy of marked, or a type in the closing states
    std::uint32_t amount;             // kopecks of a discount or closing state
    std::int8_t discountPercent;      // signed
    std::int32_t discountSum;         // kopecks, signed
    std::string text4;                // spare
    std::vector<unsigned char> data;  // spare
};

// Fills the fields that the answer itself carries. A missing byte counts as 0.
void DecodeStatus(const packet& answer, status_info& status);
