// The register's protocol, operation by operation.
#include "simulation/required_driver.h"

namespace simulation {
namespace {

constexpr Failed kProtocol{Failing::protocol};
constexpr Failed kOther{Failing::other};

// Places in the register's memory by firmware; -1 where it has none. 302 serves 303 too.
struct Places {
    int serial;
    int sale_number;
    int error;
};

Places PlacesOf(int version) {
    switch (version) {
        case 301:
            return {0x1A5C, 0x1594, 0x150D};
        case 302:
        case 303:
            return {0x1A5D, 0x1595, 0x1956};
        case 310:
            return {0x1658, 0x0914, -1};
        default:
            return {-1, -1, -1};
    }
}

}  // namespace

void RequiredDriver::KnowVersion() const {
    if (version_ == 0) {
        throw kProtocol;
    }
}

Reply RequiredDriver::Ask(std::uint8_t command, const Payload& payload, std::uint8_t answer,
                          unsigned pause_ms) {
    const Reply reply = talk_->Exchange(command, payload, pause_ms);
    if (reply.code != answer) {
        throw kProtocol;
    }
    return reply;
}

int RequiredDriver::SerialPlace() const {
    return PlacesOf(version_).serial;
}

int RequiredDriver::AskVersion() {
    const Reply reply = Ask(0x34, {}, 0xB4, 10);
    const unsigned raw = reply.At(0) * 100 + reply.At(1);
    if (reply.size == 3) {
        return raw == 302 && reply.At(2) == 0 ? 303 : 0;
    }
    switch (raw) {
        case 211:
            return 301;
        case 302:
            return 302;
        case 303:
            return 303;
        case 304:
            return 400;
        case 310:
        case 312:
            return 310;
        default:
            return 0;
    }
}

Reply RequiredDriver::ReadRam(int location, std::uint8_t count) {
    if (location < 0) {
        throw kProtocol;
    }
    return Ask(0x04,
               {static_cast<unsigned char>(location / 256),
                static_cast<unsigned char>(location % 256), count},
               0x84);
}

unsigned RequiredDriver::ReadRamByte(int location) {
    const Reply reply = ReadRam(location, 1);
    if (reply.size == 0) {
        throw kOther;
    }
    return reply.At(0);
}

Reply RequiredDriver::ReadEeprom(std::uint32_t address, std::uint8_t count) {
    const auto high = static_cast<unsigned char>(address / 256);
    const auto low = static_cast<unsigned char>(address % 256);
    if (version_ > 399) {
        return Ask(0x02, {0, 0, high, low, count}, 0x82);
    }
    return Ask(0x02, {high, low, count}, 0x82);
}

unsigned RequiredDriver::ReadEepromByte(std::uint32_t address) {
    const Reply reply = ReadEeprom(address, 1);
    if (reply.size == 0) {
        throw kOther;
    }
    return reply.At(0);
}

unsigned RequiredDriver::SaleNumber() {
    if (version_ <= 399) {
        return ReadRamByte(PlacesOf(version_).sale_number);
    }
    const Reply reply = Ask(0x37, {}, 0xB7);
    if (reply.size == 0) {
        throw kOther;
    }
    return reply.At(0);
}

unsigned RequiredDriver::RegisterError() {
    if (version_ <= 303) {
        return ReadRamByte(PlacesOf(version_).error);
    }
    const Reply reply = Ask(0x38, {}, 0xB8);
    if (reply.size == 0) {
        throw kOther;
    }
    return reply.At(0);
}

RequiredDriver::Statistics RequiredDriver::ReadStatistics() {
    const Reply reply = talk_->Exchange(0x0A, {});
    if (reply.size != 11) {
        throw kProtocol;
    }
    tape_records_ = static_cast<int>(reply.Word(4));
    return {static_cast<int>(reply.Word(0)), static_cast<int>(reply.Word(2)),
            static_cast<int>(reply.Word(4))};
}

RequiredDriver::Status RequiredDriver::Decode(const Reply& reply) {
    Status status;
    status.state = reply.code;
    switch (reply.code) {
        case 0xA1:
            status.code = static_cast<std::uint16_t>(reply.Word(0));
            status.marked = reply.At(6) != 0;
            break;
        case 0xA3:
            status.marked = reply.At(4) != 0;
            break;
        case 0xC1:
        case 0xE8:
            status.reply = static_cast<std::uint8_t>(reply.At(0));
            break;
        case 0xCB:
            section_ = static_cast<std::uint8_t>(reply.At(4) + 1);
            break;
        case 0xA2:
        case 0xC4:
            status.code = static_cast<std::uint16_t>(reply.Word(8));
            status.marked = reply.At(13) != 0;
            break;
        case 0xC5:
        case 0xC6:
            status.marked = reply.At(5) != 0;
            break;
        default:
            break;
    }
    if (reply.code == 0xA1 || reply.code == 0xA3) {
        ReadStatistics();
        SaleNumber();
        if (section_ == 0) {
            section_ = static_cast<std::uint8_t>(ReadEepromByte(0x12) + 1);
        }
    }
    return status;
}

RequiredDriver::Status RequiredDriver::ReadStatus() {
    return Decode(talk_->Exchange(0x20, {}));
}

bool RequiredDriver::WaitFor(std::uint8_t state) {
    for (int poll = 0; poll < 100; ++poll) {
        if (ReadStatus().state == state) {
            return true;
        }
    }
    return false;
}

void RequiredDriver::Reset() {
    Ask(0x7F, {}, 0x90);
}

void RequiredDriver::Key(std::uint8_t key) {
    KnowVersion();
    if (Decode(talk_->Exchange(0x29, {key})).state != 0xA9) {
        throw kProtocol;
    }
}

void RequiredDriver::SimpleLock() {
    Ask(0x10, {}, 0xAF);
}

void RequiredDriver::LockSwitch(bool unlock) {
    Ask(0x36, {static_cast<unsigned char>(unlock ? 1 : 0)}, 0xB7);
}

void RequiredDriver::LockKeyboard() {
    if (version_ > 302) {
        LockSwitch(false);
    } else {
        SimpleLock();
    }
}

void RequiredDriver::UnlockKeyboard() {
    if (version_ > 302) {
        LockSwitch(true);
    } else if (ReadStatus().state == 0xCE) {
        Reset();
    }
}

void RequiredDriver::ClearCheck() {
    KnowVersion();
    if (version_ <= 301) {
        ClearCheckByKeys();
    } else if (Decode(talk_->Exchange(0x03, {})).state != 0x83) {
        throw kProtocol;
    }
}

void RequiredDriver::ClearCheckByKeys() {
    if (ReadStatus().state != 0xC8) {
        return;
    }
    const std::uint32_t exchange = talk_->Exchanges();
    const Micros now = talk_->Now();
    try {
        PressKeysUntilCleared();
    } catch (const Failed&) {
        LeaveOutExchanges(exchange, now);
        throw;
    }
    LeaveOutExchanges(exchange, now);
    Reset();
}

void RequiredDriver::PressKeysUntilCleared() {
    do {
        Key(0x20);
    } while (ReadStatus().state == 0xC8);
    do {
        Key(0x20);
        Key(0x28);
    } while (ReadStatus().state != 0xC5);
}

void RequiredDriver::QuerySale() {
    if (Decode(talk_->Exchange(0x35, {})).state != 0xB5) {
        throw kProtocol;
    }
}

// An empty line of the indicator.
void RequiredDriver::ShowText(std::uint8_t value) {
    Payload line(16, ' ');
    line.push_back(value);
    line.push_back(2);
    Ask(0x07, line, 0x87);
    talk_->Sleep(100);
}

}  // namespace simulation
