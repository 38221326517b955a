#include "protocol/status_info.h"

#include <algorithm>

#include "support/numbers.h"
#include "support/row_data.h"

namespace {

// Single precision on purpose: 1500 thousandths are 1.500000071246177.
constexpr float kThousandth = 0.001F;

void SetMarked(std::uint8_t flag, status_info& status) {
    status.marked = flag != 0;
    status.kind = status.marked ? 1 : 0;
}

void SetQuantity(std::uint16_t count, std::uint8_t weight_flag, status_info& status) {
    status.quantity = count;
    status.weighted = weight_flag != 0;
    if (status.weighted) {
        status.quantity *= kThousandth;
    }
}

// The states that wait for goods show no quantity until one is entered: that is one piece.
void SetEnteredQuantity(std::uint16_t count, std::uint8_t weight_flag, status_info& status) {
    if (count == 0) {
        SetQuantity(1, 0, status);
    } else {
        SetQuantity(count, weight_flag, status);
    }
}

void DecodeSaleCode(const PayloadView& in, status_info& status) {
    status.code = in.Be16(0);
    status.department = in.Byte(2);
    SetEnteredQuantity(in.Be16(4), in.Byte(3), status);
    SetMarked(in.Byte(6), status);
}

void DecodeSaleBarcode(const PayloadView& in, status_info& status) {
    status.department = in.Byte(0);
    SetEnteredQuantity(in.Be16(2), in.Byte(1), status);
    SetMarked(in.Byte(4), status);
    status.text = in.Text(6, in.Byte(5));
}

void DecodeSaleLine(const PayloadView& in, status_info& status) {
    status.number = in.Be16(0);
    status.position = static_cast<std::uint16_t>(in.Be16(2) + 1);
    status.saleNumber = in.Byte(4);
    status.department = in.Byte(5);
    status.attr = in.Byte(6);
    status.percent = in.Byte(7);
    status.code = in.Be16(8);
    SetQuantity(in.Be16(11), in.Byte(10), status);
    SetMarked(in.Byte(13), status);
    status.price = in.Be24(14);
    status.text = in.TextToEnd(17);
}

void DecodeSaleAdd(const PayloadView& in, status_info& status) {
    DecodeSaleLine(in, status);
    ++status.saleNumber;
    status.sum = static_cast<std::uint32_t>(RoundHalfUp(status.price * status.quantity));
    const std::uint32_t percent_product = status.sum * status.percent;
    status.sum += static_cast<std::uint32_t>(RoundHalfUp(percent_product * 0.01));
}

void DecodeSaleNoAdd(const PayloadView& in, status_info& status) {
    status.number = in.Be16(0);
    status.position = in.Be16(2);
    status.saleNumber = in.Byte(4);
}

void DecodeCheckBufClear(const PayloadView& in, status_info& status) {
    status.number = in.Be16(0);
    status.position = static_cast<std::uint16_t>(in.Be16(2) + 1);
    status.quantity = in.Byte(4);
    SetMarked(in.Byte(5), status);
}

void DecodeSaleFree(const PayloadView& in, status_info& status) {
    status.number = in.Be16(0);
    status.position = in.Be16(2);
    status.saleNumber = in.Byte(4);
    SetMarked(in.Byte(5), status);
    status.department = in.Byte(6);
    status.attr = in.Byte(7);
    status.percent = in.Byte(8);
    SetQuantity(in.Be16(10), in.Byte(9), status);
    status.price = in.Be24(12);
    status.sum = in.Be24(15);
}

void DecodeClosing(const PayloadView& in, status_info& status) {
    status.number = in.Be16(0);
    status.position = in.Be16(2);
    status.quantity = in.Byte(4);
    status.kind = in.Byte(5);
}

void SetDiscountPercent(std::uint8_t percent, bool positive, status_info& status) {
    const unsigned value = positive ? percent : 0U - percent;
    status.discountPercent = static_cast<std::int8_t>(value);
}

void DecodeCheckOut(const PayloadView& in, status_info& status) {
    DecodeClosing(in, status);
    ++status.position;
    status.section = static_cast<std::uint8_t>(in.Byte(6) + 1);
    status.amount = in.Be32(8);
    const bool positive = in.Byte(12) != 0;
    SetDiscountPercent(in.Byte(13), positive, status);
    const std::uint32_t sum = in.Be32(15);
    status.discountSum = static_cast<std::int32_t>(positive ? sum : 0U - sum);
}

void DecodeDiscount(const PayloadView& in, status_info& status) {
    DecodeClosing(in, status);
    status.amount = in.Be32(7);
    SetDiscountPercent(in.Byte(12), in.Byte(11) != 0, status);
}

void DecodeDiscountCard(const PayloadView& in, status_info& status) {
    DecodeClosing(in, status);
    status.amount = CRowData(in.Field(6, 5)).AsULong();
    status.text = in.Text(12, in.Byte(11));
}

void DecodeSwitchedOn(const PayloadView& in, status_info& status) {
    status.number = in.Be16(0);
    status.position = in.Be16(2);
    status.section = static_cast<std::uint8_t>(in.Byte(4) + 1);
}

}  // namespace

void DecodeStatus(const packet& answer, status_info& status) {
    const PayloadView in(answer.data);
    status.command = answer.cmd;
    switch (answer.cmd) {
        case ks_salecode:
            return DecodeSaleCode(in, status);
        case ks_saleadd:
            return DecodeSaleAdd(in, status);
        case ks_salebarcode:
            return DecodeSaleBarcode(in, status);
        case ks_salenoadd:
            return DecodeSaleNoAdd(in, status);
        case kkm_salecode:
        case kkm_cash:
            status.reply = in.Byte(0);
            return;
        case ks_saledel:
            return DecodeSaleLine(in, status);
        case ks_checkbufclear:
            return DecodeCheckBufClear(in, status);
        case ks_salefree:
            return DecodeSaleFree(in, status);
        case ks_checkout:
            return DecodeCheckOut(in, status);
        case ks_discount:
            return DecodeDiscount(in, status);
        case ks_discountcard:
            return DecodeDiscountCard(in, status);
        case ks_kkmon:
            return DecodeSwitchedOn(in, status);
        case ks_smenaclose:
            status.number = in.Be16(0);
            return;
        case ks_weight:
            status.weighted = std::any_of(answer.data.begin(), answer.data.end(),
                                          [](unsigned char byte) { return byte != 0; });
            return;
        default:  // a state without data
            return;
    }
}
