#include "protocol/tarvo.h"
#include "support/numbers.h"
#include "support/oem_text.h"
#include "support/time.h"

namespace {

constexpr std::size_t kTitleWidth = 18;
constexpr unsigned kCardPauseMs = 50;
constexpr std::size_t kWeightDigits = 6;
constexpr int kLastClearedByKeys = 301;

// States that end an operation well; they have no names of their own.
constexpr auto kWeightTaken = commands::Answer(0xB6);
constexpr auto kCheckCleared = commands::Answer(0x83);

std::string StateText(const char* operation, const status_info& status) {
    return std::string(operation) + " - error=" + std::to_string(status.reply) +
           ", command=" + cmdToStr(status.command);
}

}  // namespace

void CTarvo::sendSaleInfo(const status_info& line) {
    SendSale(SaleFieldsOf(line));
}

void CTarvo::sendSaleInfo(const sale& line) {
    SendSale(SaleFieldsOf(line));
}

void CTarvo::SendSale(const SaleFields& line) {
    CheckVersion(true);
    const packet answer = SendAndGet(dev_salecode, MakeSaleBlock(line));
    if (answer.cmd != kkm_salecode && answer.cmd != kkm_saleaccepted) {
        throw ETarvo(this, errProtocol, "CTarvo::send_sale_info");
    }
    if (PayloadView(answer.data).Byte(0) != 0) {
        throw ETarvo(this, errMoney, "CTarvo::send_sale_info:  ");
    }
}

void CTarvo::sendSaleStr(unsigned char sale_index, unsigned char line_index,
                         const std::string& text) {
    Bytes data = frame::NewPayload(2 + kTitleWidth);
    data[0] = sale_index;
    data[1] = line_index;
    PutOemText(text, data.data() + 2, kTitleWidth);
    Exchange(commands::kSaleStr, std::move(data));
}

void CTarvo::sendWeight(double weight) {
    // Cut to 32 bits first, so that both word sizes send the same digits.
    Bytes digits = ULtoHex(static_cast<std::uint32_t>(SplitDouble(weight).whole));
    if (digits.size() < kWeightDigits) {
        digits.insert(digits.begin(), kWeightDigits - digits.size(), 0);
    }
    digits.resize(kWeightDigits);
    const status_info status = ExchangeStatus(dev_weight, std::move(digits));
    if (status.command == kWeightTaken) {
        return;
    }
    try {
        resetStatus();
    } catch (...) {
        // The refused weight is what the caller must hear of.
    }
    throw ETarvo(this, errProtocol, StateText("CTarvo::send_sale_info", status));
}

void CTarvo::sendDiscount(std::int8_t percent) {
    const status_info status = ExchangeStatus(
        commands::kDiscount.request, frame::NewPayload({static_cast<unsigned char>(percent)}));
    if (status.command != commands::kDiscount.answer) {
        throw ETarvo(this, errProtocol, commands::kDiscount.fault);
    }
}

void CTarvo::sendDiscountCard(unsigned char kind, const std::string& number) {
    Bytes data = frame::NewPayload({1, kind, 0});
    if (!number.empty()) {
        data[2] = static_cast<unsigned char>(number.size() + 1);
        data.resize(3 + number.size() + 1);
        PutOemText(number, data.data() + 3, number.size());
    }
    Exchange(commands::kDiscountCard, std::move(data), kCardPauseMs);
}

void CTarvo::sendCash(std::uint32_t amount) {
    const status_info status = ExchangeStatus(
        commands::kCash.request, frame::NewPayload({0, static_cast<unsigned char>(amount >> 24U),
                                                    static_cast<unsigned char>(amount >> 16U),
                                                    static_cast<unsigned char>(amount >> 8U),
                                                    static_cast<unsigned char>(amount)}));
    if (status.command != commands::kCash.answer) {
        throw ETarvo(this, errProtocol, commands::kCash.fault);
    }
    if (status.reply != 0) {
        throw ETarvo(this, errMoney, commands::kCash.fault);
    }
}

void CTarvo::outCheck(kkm_check type) {
    const packet answer =
        Exchange(commands::kOutCheck, frame::NewPayload({static_cast<unsigned char>(type)}));
    if (PayloadView(answer.data).Byte(0) == 0) {
        throw ETarvo(this, errMoney, "CTarvo::check_out, !pack.data[0]");
    }
}

void CTarvo::sendQuerySale() {
    const status_info status = ExchangeStatus(commands::kQuerySale.request);
    if (status.command != commands::kQuerySale.answer) {
        throw ETarvo(this, errProtocol, commands::kQuerySale.fault);
    }
}

void CTarvo::ClearCheck() {
    CheckVersion(true);
    if (m_ver <= kLastClearedByKeys) {
        ClearCheckByKeys();
        return;
    }
    const status_info status = ExchangeStatus(kkm_clearcheck);
    if (status.command != kCheckCleared) {
        throw ETarvo(this, errProtocol, StateText("CTarvo::send_check_clear", status));
    }
}

void CTarvo::ClearCheckByKeys() {
    status_info status;
    GetStatusInfo(status);
    if (status.command != ks_checkout) {
        return;
    }
    while (status.command == ks_checkout) {
        sendKey(key_clear);
        GetStatusInfo(status);
    }
    do {
        sendKey(key_clear);
        sendKey(key_confirm);
        GetStatusInfo(status);
    } while (status.command != ks_checkbufclear);
    resetStatus();
}
