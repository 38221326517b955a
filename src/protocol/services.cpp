#include "protocol/tarvo.h"

namespace {

constexpr unsigned char kTitleSize = 95;
constexpr unsigned char kBottomSize = 57;

Bytes TextOrZeros(const std::string& text, std::size_t zeros_when_empty) {
    return text.empty() ? Bytes(zeros_when_empty) : Bytes(text.begin(), text.end());
}

}  // namespace

std::tm CTarvo::readTime() {
    const Bytes data = Exchange(commands::kReadTime).data;
    if (data.size() != 7) {
        throw ETarvo(this, errProtocol, commands::kReadTime.fault);
    }
    std::tm time{};
    time.tm_sec = data[0];
    time.tm_min = data[1];
    time.tm_hour = data[2];
    time.tm_mday = data[3];
    time.tm_mon = data[4] - 1;
    time.tm_year = data[5] * 256 + data[6] - 1900;
    return time;
}

void CTarvo::writeCfgParam(kkm_cfg parameter, unsigned char value) {
    Bytes data = frame::NewPayload({static_cast<unsigned char>(parameter), value});
    sendPacket(commands::kWriteCfg.request, data);
    CheckVersion(true);
    packet answer{};
    GetPacket(answer);
    Judge(answer, commands::kWriteCfg);
}

void CTarvo::feed(unsigned char lines) {
    Exchange(commands::kFeed, frame::NewPayload({lines}));
}

void CTarvo::writeCheckTitle(const std::string& text) {
    Exchange(commands::kWriteTitle, TextOrZeros(text, 1));
}

void CTarvo::writeCheckBottom(const std::string& text) {
    Exchange(commands::kWriteBottom, TextOrZeros(text, 2));
}

std::string CTarvo::readCheckTitle() {
    return readRam(ramCheckTitle, kTitleSize).AsStr();
}

std::string CTarvo::readCheckBottom() {
    return readRam(ramCheckBottom, kBottomSize).AsStr();
}

unsigned char CTarvo::ReadError() {
    if (m_ver > 303) {
        return CRowData(Exchange(commands::kReadError).data).AsByte();
    }
    return readRam(ramError, 1).AsByte();
}

unsigned char CTarvo::ReadSaleNumberCmd() {
    if (m_ver <= 399) {
        throw ETarvo(this, errVersion, "CTarvo::ReadSaleNumberCmd - kkm_ver_400");
    }
    return CRowData(Exchange(commands::kSaleNumber).data).AsByte();
}

unsigned char CTarvo::ReadSaleNumber() {
    return m_ver <= 399 ? readRam(ramSaleNumber, 1).AsByte() : ReadSaleNumberCmd();
}

void CTarvo::CancelCheckOut() {
    Exchange(commands::kCancelCheckOut);
}
