// Status decoding: every answer code, every length.
#include <cmath>

#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "protocol/status_info.h"

namespace fuzz {
namespace {

status_info Unset() {
    status_info status;
    status.sum = 0xDEADBEEF;
    status.kind = -77;
    status.amount = 0xDEADBEEF;
    status.discountPercent = 77;
    status.discountSum = -77;
    return status;
}

bool SameNumbers(const status_info& a, const status_info& b) {
    return a.command == b.command && a.number == b.number && a.section == b.section &&
           a.position == b.position && a.department == b.department && a.code == b.code &&
           a.saleNumber == b.saleNumber && a.weighted == b.weighted &&
           std::equal_to<>()(a.quantity, b.quantity) && a.marked == b.marked &&
           a.price == b.price && a.sum == b.sum && a.reply == b.reply && a.attr == b.attr &&
           a.percent == b.percent && a.kind == b.kind && a.amount == b.amount &&
           a.discountPercent == b.discountPercent && a.discountSum == b.discountSum;
}

bool CarriesData(int code) {
    switch (code) {
        case 0xA1:
        case 0xA2:
        case 0xA3:
        case 0xA7:
        case 0xC1:
        case 0xC4:
        case 0xC5:
        case 0xC6:
        case 0xC8:
        case 0xC9:
        case 0xCA:
        case 0xCB:
        case 0xCC:
        case 0xCD:
        case 0xE8:
            return true;
        default:
            return false;
    }
}

void DecodeOne(int code, const Bytes& bytes) {
    const packet answer{static_cast<kkm_command>(code), bytes};
    status_info status = Unset();
    DecodeStatus(answer, status);
    Note(status.quantity);
    Note(status.sum);
    Require(status.command == code, "the state is the answer code");
    Require(status.text.size() <= bytes.size(), "a text comes out of the answer");
    Require(
        status.text2.empty() && status.name.empty() && status.text4.empty() && status.data.empty(),
        "the spare fields stay as they were");
    Require(std::isfinite(status.quantity) && status.quantity >= 0, "a quantity is a number");

    Bytes padded = bytes;
    padded.resize(bytes.size() + 24);
    status_info with_zeros = Unset();
    DecodeStatus({answer.cmd, padded}, with_zeros);
    Require(SameNumbers(status, with_zeros), "a missing byte reads as 0");

    if (!CarriesData(code)) {
        status_info before = Unset();
        before.command = answer.cmd;
        Require(SameNumbers(status, before) && status.text.empty(),
                "a state without data changes the state only");
    }
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const int code = input.Byte();
    fuzz::DecodeOne(code, input.Rest());
    return 0;
}
