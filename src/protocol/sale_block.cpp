#include "protocol/sale_block.h"

#include <algorithm>

#include "support/numbers.h"
#include "support/oem_text.h"

namespace {

// Bytes common to both blocks. A name fills one byte more than it owns; the barcode, when there is
// one, takes that byte back.
constexpr std::size_t kNameSize = 16;
constexpr std::size_t kBarcodeAt = 15;
constexpr std::size_t kBarcodeSize = 13;
constexpr std::size_t kPriceAt = 28;
constexpr std::size_t kSalePriceSize = 7;
constexpr std::size_t kProductPriceSize = 6;
constexpr std::size_t kDepartmentAt = 35;
constexpr std::size_t kWeightedAt = 36;
constexpr std::size_t kCodeAt = 37;
constexpr std::size_t kQuantityAt = 39;

static_assert(kBarcodeAt + kBarcodeSize == kPriceAt, "the price follows the barcode");
static_assert(kPriceAt + kSalePriceSize == kDepartmentAt, "the department follows the price");

void PutBarcode(const std::string& barcode, Bytes& block) {
    const auto length = static_cast<std::ptrdiff_t>(std::min(barcode.size(), kBarcodeSize));
    std::copy(barcode.begin(), barcode.begin() + length,
              block.begin() + static_cast<std::ptrdiff_t>(kBarcodeAt));
}

void PutBe16(std::uint32_t value, std::size_t at, Bytes& block) {
    block[at] = static_cast<unsigned char>(value >> 8U);
    block[at + 1] = static_cast<unsigned char>(value);
}

}  // namespace

std::int64_t QuantityCount(double quantity, bool weighted) {
    if (weighted) {
        const SplitNumber thousandths = SplitDouble(quantity * 1000.0);
        return thousandths.fraction >= 0.5 ? thousandths.whole + 1 : thousandths.whole;
    }
    const std::int64_t pieces = SplitDouble(quantity).whole;
    return pieces == 1 ? 0 : pieces;  // the register reads 0 as one piece
}

SaleFields SaleFieldsOf(const status_info& line) {
    return {line.name,  line.text,       line.quantity, line.weighted,
            line.price, line.department, line.code};
}

SaleFields SaleFieldsOf(const sale& line) {
    return {line.title, line.barcode, line.count, line.fractional,
            line.price, line.section, line.code};
}

Bytes MakeSaleBlock(const SaleFields& line) {
    Bytes block = frame::NewPayload(kSaleBlockSize);
    if (!line.name.empty()) {
        PutOemText(line.name, block.data(), kNameSize);
    }
    PutBarcode(line.barcode, block);
    PutDigits(line.price, block.data() + kPriceAt, kSalePriceSize);
    block[kDepartmentAt] = line.department;
    block[kWeightedAt] = line.weighted ? 1 : 0;
    PutBe16(line.code, kCodeAt, block);
    const std::int64_t count = QuantityCount(line.quantity, line.weighted);
    // A signed division, so that -1 is 00 FF and -300 is FF D4.
    block[kQuantityAt] = static_cast<unsigned char>(count / 256);
    block[kQuantityAt + 1] = static_cast<unsigned char>(count % 256);
    return block;
}

bool ProductPriceFits(std::uint32_t price) {
    return ULtoHex(price).size() <= kProductPriceSize;
}

Bytes MakeProductBlock(const dbsale& product) {
    Bytes block = frame::NewPayload(kProductBlockSize);
    PutOemText(product.name, block.data(), kNameSize);
    PutBarcode(product.text, block);
    PutDigits(product.price, block.data() + kPriceAt, kProductPriceSize);
    block[kDepartmentAt] = product.department;
    block[kWeightedAt] = product.weighted;
    PutBe16(product.code, kCodeAt, block);
    return block;
}

dbsale DecodeProduct(const Bytes& answer) {
    const PayloadView in(answer);
    dbsale product;
    if (in.Byte(0) == 0) {
        return product;
    }
    product.name = FromOem(in.Text(1, 14));
    product.text = in.Text(16, 12);
    for (char& digit : product.text) {
        digit = static_cast<char>(digit + 0x20);
    }
    for (const unsigned char digit : in.Field(29, kProductPriceSize)) {
        product.price = product.price * 10 + digit;
    }
    product.department = in.Byte(36);
    product.weighted = in.Byte(37) != 0 ? 1 : 0;
    product.code = in.Be16(38);
    return product;
}
