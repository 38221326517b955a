#include "protocol/tarvo.h"
#include "support/time.h"

namespace {

constexpr std::uint32_t kSectionAddress = 0x12;
constexpr unsigned kAfterResetInfoMs = 20;

}  // namespace

void CTarvo::GetStatus(packet& answer) {
    answer.data.clear();
    sendPacket(dev_reque, answer.data);
    GetPacket(answer);
}

void CTarvo::GetStatusInfo(const packet& answer, status_info& status) {
    DecodeStatus(answer, status);
    if (status.command == ks_salecode || status.command == ks_salebarcode) {
        FillFromCounters(status);
    } else if (status.command == ks_kkmon) {
        section_ = status.section;
    }
}

void CTarvo::GetStatusInfo(status_info& status) {
    packet answer{};
    GetStatus(answer);
    GetStatusInfo(answer, status);
}

void CTarvo::FillFromCounters(status_info& status) {
    TStatistics statistics;
    GetStatistics(statistics);
    status.number = statistics.number;
    status.position = static_cast<std::uint16_t>(statistics.checks + 1);
    status.saleNumber = ReadSaleNumber();
    if (section_ == 0) {
        section_ = static_cast<unsigned char>(readEprom(kSectionAddress, 1).AsByte() + 1);
    }
    status.section = section_;
}

bool CTarvo::waitKKMStatus(kkm_command state, std::uint32_t tries) {
    status_info status;
    std::uint32_t count = 0;
    do {
        GetStatusInfo(status);
        ++count;
    } while (status.command != state && count < tries);
    return status.command == state;
}

void CTarvo::resetStatus() {
    Exchange(commands::kReset);
}

void CTarvo::resetStatusInfo(const std::string& text, unsigned char value, kkm_indicator mode) {
    const packet answer = SendAndGet(dev_resetinf, IndicatorLine(text, value, mode));
    if (answer.cmd != kkm_resetinf) {
        throw ETarvo(
            this, errProtocol,
            std::string(commands::kResetInfoText) + ", pac.cmd = " + std::to_string(answer.cmd));
    }
    Sleep(kAfterResetInfoMs);
}
