#include "protocol/kl_sale.h"

KLSale DecodeKLSale(const Bytes& answer) {
    const PayloadView in(answer);
    KLSale record;
    record.sum = in.Be32(2) * 0.01;
    record.amount2 = in.Be24(6) * 0.01;
    record.amount3 = in.Be24(9) * 0.01;
    record.amount4 = in.Be24(12) * 0.01;
    record.signed_value = static_cast<std::int8_t>(in.Byte(15));
    record.number = in.Byte(16) + 1;
    for (std::size_t i = 0; i < record.code_bytes.size(); ++i) {
        record.code_bytes[i] = in.Byte(17 + i);
    }
    record.code = in.Be16(22);
    const std::uint16_t thousandths = in.Be16(26);
    record.quantity = (thousandths == 0 ? 1000 : thousandths) * 0.001;
    record.kind = in.Byte(28);
    record.selector = in.Byte(29);
    record.marked = in.Byte(30) == 1;
    return record;
}
