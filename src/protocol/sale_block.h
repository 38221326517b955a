// The data blocks of a sale line and of a product record.
#pragma once

#include <cstdint>
#include <string>

#include "protocol/sale.h"
#include "protocol/status_info.h"
#include "support/payload.h"

// A goods record of the register's product database.
struct dbsale {
    std::string name;
    std::string text;         // barcode
    std::uint32_t price = 0;  // kopecks
    std::uint8_t department = 0;
    std::uint8_t weighted = 0;  // 1 for weighed goods
    std::uint32_t code = 0;     // the low 16 bits are sent
};

constexpr std::size_t kSaleBlockSize = 41;
constexpr std::size_t kProductBlockSize = 39;

// The quantity as it goes on the wire: thousandths, half up, of a weighed line; pieces of any
// other, one piece being 0.
std::int64_t QuantityCount(double quantity, bool weighted);

// What a sale line consists of. The texts must outlive it.
struct SaleFields {
    const std::string& name;
    const std::string& barcode;
    double quantity;
    bool weighted;
    std::uint32_t price;  // kopecks
    std::uint8_t department;
    std::uint16_t code;
};

SaleFields SaleFieldsOf(const status_info& line);
SaleFields SaleFieldsOf(const sale& line);
Bytes MakeSaleBlock(const SaleFields& line);
inline Bytes MakeSaleBlock(const status_info& line) {
    return MakeSaleBlock(SaleFieldsOf(line));
}

// True when the price fits the product record, whose field is a digit shorter than a sale line's.
bool ProductPriceFits(std::uint32_t price);
Bytes MakeProductBlock(const dbsale& product);

// The answer to a product query; empty when the register has no such record.
dbsale DecodeProduct(const Bytes& answer);
