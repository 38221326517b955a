#include <exception>

#include "protocol/tarvo.h"

namespace {

constexpr int kTapeReadAttempts = 20;
constexpr std::size_t kStatisticsSize = 11;

constexpr std::uint32_t kGrandTotalAddress = 0x04F7;
constexpr std::uint32_t kTapeDateAddress = 0x0515;
constexpr std::uint32_t kTapeHourAddress = 0x3700;
constexpr std::uint32_t kTapeMinuteAddress = 0x3701;

// Firmware above this one takes EEPROM addresses of four bytes.
constexpr int kLastWithShortAddress = 399;

// Eight bytes as one signed number. CRowData holds numbers of up to four bytes only.
std::int64_t SignedBigEndian64(const Bytes& bytes) {
    if (bytes.size() != 8) {
        throw std::exception();
    }
    std::uint64_t value = 0;
    for (const unsigned char byte : bytes) {
        value = value << 8U | byte;
    }
    return static_cast<std::int64_t>(value);
}

int HighNibbleTimesTen(std::uint32_t byte) {
    return static_cast<int>(byte & 0xF0U) * 10;
}

int LowNibble(std::uint32_t byte) {
    return static_cast<int>(byte & 0x0FU);
}

}  // namespace

CRowData CTarvo::readEprom(std::uint32_t address, unsigned char count) {
    const auto high = static_cast<unsigned char>(address >> 16U);
    const auto middle = static_cast<unsigned char>(address >> 8U);
    const auto low = static_cast<unsigned char>(address);
    Bytes data = m_ver > kLastWithShortAddress ? frame::NewPayload({0, high, middle, low, count})
                                               : frame::NewPayload({middle, low, count});
    return CRowData(Exchange(commands::kReadEprom, std::move(data)).data);
}

void CTarvo::GetStatistics(TStatistics& statistics) {
    // Kept: the length alone is judged, not the answer code.
    const Bytes data = SendAndGet(kkm_statistics, {}).data;
    if (data.size() != kStatisticsSize) {
        throw ETarvo(this, errProtocol, "CTarvo::getStatistics(count != 11)");
    }
    const PayloadView in(data);
    statistics.number = in.Be16(0);
    statistics.checks = in.Be16(2);
    statistics.sales = in.Be16(4);
    statistics.amount = in.Be32(7) * 0.01;  // of its five bytes, 6 to 10, the first never counts
}

bool CTarvo::readKLSale(std::uint16_t index, KLSale& record) {
    const packet answer = Exchange(commands::kReadKlSale, frame::NewWordPayload(index));
    if (answer.data.size() == 1) {
        return false;
    }
    record = DecodeKLSale(answer.data);
    return true;
}

bool CTarvo::TryReadKLSale(std::uint16_t index, KLSale& record) {
    for (int attempt = 1; attempt <= kTapeReadAttempts; ++attempt) {
        try {
            return readKLSale(index, record);
        } catch (...) {
            // The next attempt follows.
        }
    }
    throw ETarvo(this, errProtocol, "TryReadKLSale");
}

double CTarvo::getNICurrent() {
    double total =
        static_cast<double>(SignedBigEndian64(readEprom(kGrandTotalAddress, 8).bytes())) * 0.01;
    TStatistics statistics;
    GetStatistics(statistics);
    for (std::uint16_t index = 0; index < statistics.sales; ++index) {
        KLSale record;
        if (TryReadKLSale(index, record) && (record.kind == 0 || record.kind == 2)) {
            total += record.sum;
        }
    }
    return total;
}

double CTarvo::getCashSum(int selector) {
    double total = 0.0;
    TStatistics statistics;
    GetStatistics(statistics);
    for (std::uint16_t index = 0; index < statistics.sales; ++index) {
        KLSale record;
        if (!readKLSale(index, record) || static_cast<int>(record.selector) + 1 != selector) {
            continue;
        }
        if (record.kind == 0 || record.kind == 3) {
            total += record.sum;
        } else if (record.kind == 1 || record.kind == 4) {
            total -= record.sum;
        }
    }
    return total;
}

std::tm CTarvo::readKLbegin() {
    const std::uint32_t date = readEprom(kTapeDateAddress, 3).AsDWord();
    const std::uint32_t day = date >> 16U & 0xFFU;
    const std::uint32_t month = date >> 8U & 0xFFU;
    const std::uint32_t year = date & 0xFFU;
    const unsigned hour = readEprom(kTapeHourAddress, 1).AsByte();
    readEprom(kTapeMinuteAddress, 2).AsWord();  // read and not used

    // Kept: not a true packed-decimal decoding. The high nibble is multiplied in place, the day
    // loses its tens and the minute comes from the hour's byte; hosts have always seen these
    // figures.
    std::tm begin{};
    begin.tm_mday = (HighNibbleTimesTen(day) + static_cast<int>(day)) & 0x0F;
    begin.tm_mon = HighNibbleTimesTen(month) + LowNibble(month) - 1;
    begin.tm_year = HighNibbleTimesTen(year) + LowNibble(year) + 100;
    begin.tm_hour = static_cast<int>((hour & 0x3EU) >> 1U);
    begin.tm_min = static_cast<int>(hour >> 5U);
    return begin;
}
