#include "protocol/tarvo.h"

void CTarvo::writeDBSale(const dbsale& product) {
    if (!ProductPriceFits(product.price)) {
        throw ETarvo(this, errProduct, "CTarvo::write_dbsale, pr.size()>6");
    }
    const Bytes block = MakeProductBlock(product);
    const packet answer = Exchange(commands::kWriteDbsale, block);
    const PayloadView in(answer.data);
    if (in.Byte(0) == 0) {
        throw ETarvo(this, errProduct, "CTarvo::write_dbsale, !pack.data[0]");
    }
    if (in.Byte(1) != block[37] || in.Byte(2) != block[38]) {
        throw ETarvo(this, errProtocol,
                     "CTarvo::write_dbsale, (pack.data[0]!=data[37])||(pack.data[0]!=data[38])");
    }
}

dbsale CTarvo::readDbsale(std::uint16_t number) {
    const packet answer = Exchange(commands::kReadDbsale, frame::NewWordPayload(number));
    return DecodeProduct(answer.data);
}
