// Records of the control tape and of the product database, and the blocks that are sent.
#include <cmath>

#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "protocol/kl_sale.h"
#include "protocol/sale_block.h"

namespace fuzz {
namespace {

bool Within(double value, double lowest, double highest) {
    return value >= lowest && value <= highest;  // false for NaN
}

bool Same(double a, double b) {
    return !(a < b) && !(a > b);
}

void TapeRecord(const Bytes& answer) {
    const KLSale record = DecodeKLSale(answer);
    Note(record.sum);
    Note(record.quantity);
    Require(Within(record.sum, 0, 42949672.96), "a sum has 32 bits of hundredths");
    for (const double amount : {record.amount2, record.amount3, record.amount4}) {
        Require(Within(amount, 0, 167772.16), "an amount has 24 bits of hundredths");
    }
    Require(Within(record.signed_value, -128, 127), "the signed value is a byte");
    Require(record.number >= 1 && record.number <= 256, "the number is a byte plus 1");
    Require(Within(record.quantity, 0.001, 65.536), "a quantity is never 0");

    Bytes padded = answer;
    padded.resize(answer.size() + 31);
    const KLSale with_zeros = DecodeKLSale(padded);
    Require(Same(record.sum, with_zeros.sum) && Same(record.quantity, with_zeros.quantity) &&
                record.kind == with_zeros.kind && record.selector == with_zeros.selector &&
                record.marked == with_zeros.marked && record.code == with_zeros.code &&
                record.code_bytes == with_zeros.code_bytes,
            "a missing byte reads as 0");
}

void ProductRecord(const Bytes& answer) {
    const dbsale product = DecodeProduct(answer);
    Require(product.name.size() <= 14 && product.text.size() <= 12, "texts keep to their fields");
    Require(product.code <= 0xFFFF && product.weighted <= 1, "numbers keep to their fields");
    if (answer.empty() || answer[0] == 0) {
        Require(product.name.empty() && product.text.empty() && product.price == 0 &&
                    product.department == 0 && product.code == 0,
                "no record is an empty record");
    }
}

std::uint32_t Digits(const Bytes& block, std::size_t at, std::size_t count) {
    std::uint32_t number = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        Require(block[i] <= 9, "a price is made of digits");
        number = number * 10 + block[i];
    }
    return number;
}

void ProductBlock(Input& input) {
    dbsale product;
    product.name = input.Text(40);
    product.text = input.Text(40);
    product.price = input.Word32();
    product.department = input.Byte();
    product.weighted = input.Byte();
    product.code = input.Word32();
    Require(ProductPriceFits(product.price) == (product.price <= 999999), "six digits fit");
    const Bytes block = MakeProductBlock(product);
    Require(block.size() == 39, "a product record has 39 bytes");
    Require(Digits(block, 28, 6) == product.price % 1000000, "the last six digits are sent");
    Require(block[34] == 0 && block[35] == product.department, "the price ends before byte 34");
}

void SaleBlock(Input& input) {
    status_info line;
    line.name = input.Text(40);
    line.text = input.Text(40);
    line.price = input.Word32();
    line.department = input.Byte();
    line.weighted = input.Flag();
    line.code = static_cast<std::uint16_t>(input.Word32());
    line.quantity = input.Double();
    const Bytes block = MakeSaleBlock(line);
    NoteBytes(block.data(), block.size());
    Require(block.size() == 41, "a sale line has 41 bytes");
    Require(Digits(block, 28, 7) == line.price % 10000000, "the last seven digits are sent");
    Require(block[35] == line.department && block[36] == (line.weighted ? 1 : 0),
            "department and weight follow the price");
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    switch (input.Choice(4)) {
        case 0:
            fuzz::TapeRecord(input.Rest());
            break;
        case 1:
            fuzz::ProductRecord(input.Rest());
            break;
        case 2:
            fuzz::ProductBlock(input);
            break;
        default:
            fuzz::SaleBlock(input);
            break;
    }
    return 0;
}
