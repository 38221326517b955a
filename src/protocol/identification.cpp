#include <fcntl.h>
#include <termios.h>

#include "protocol/ram_map.h"
#include "protocol/tarvo.h"
#include "support/time.h"

namespace {

constexpr tcflag_t kFrame = CS8 | CREAD | CLOCAL;  // 8 data bits, no parity, one stop bit
static_assert((B9600 | kFrame) == 0x8BD, "assigned whole, so the speed must stand in these bits");
static_assert((B57600 | kFrame) == 0x18B1, "assigned whole, so the speed must stand in these bits");

constexpr tcflag_t kLocalOff =
    ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL | TOSTOP | ECHOCTL | ECHOPRT | ECHOKE | IEXTEN;
static_assert(kLocalOff == 0x8F7B, "raw line: no signals, no editing, no echo");

constexpr tcflag_t kInputOff = IGNBRK | INLCR | IGNCR | ICRNL | IUCLC | IXON | IXANY | IXOFF;
static_assert(kInputOff == 0x1FC1, "every byte arrives as it was sent");

// First byte of an answer: 100 * 2 + 200 = 400 ms; each byte: 100 ms.
constexpr _COMMTIMEOUTS kTimeouts{100, 100, 200, 5, 5};

constexpr unsigned kVersionPauseMs = 10;
constexpr unsigned char kKKMNumSize = 8;

tcflag_t ControlFlags(kkm_BaundRate speed) {
    switch (speed) {
        case baud_9600:
            return B9600 | kFrame;
        case baud_57600:
            return B57600 | kFrame;
    }
    return 0;
}

int RawVersion(const Bytes& answer) {
    const PayloadView in(answer);
    return in.Byte(0) * 100 + in.Byte(1);
}

kkm_ver VersionOfRaw(int raw) {
    switch (raw) {
        case 211:
            return kkm_ver_301;
        case 302:
            return kkm_ver_302;
        case 303:
            return kkm_ver_303;
        case 304:
            return kkm_ver_400;
        case 310:
        case 312:
            return kkm_ver_310;
        default:
            return kkm_ver_unknown;
    }
}

}  // namespace

void CTarvo::InitCom(kkm_BaundRate speed) {
    const int handle = port_->handle();
    fcntl(handle, F_SETFL, 0);  // the port was opened without waiting; reads wait from here on
    termios line{};
    if (tcgetattr(handle, &line) != 0) {
        throw ETarvo(this, errProtocol, "CTarvo::InitCom: tcgetattr");
    }
    line.c_cflag = ControlFlags(speed);
    if (line.c_cflag == 0) {
        throw ETarvo(this, errProtocol, "CTarvo::InitCom: speed unknoun");
    }
    line.c_lflag &= ~kLocalOff;
    line.c_iflag &= ~kInputOff;
    line.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    line.c_cc[VMIN] = 0;
    line.c_cc[VTIME] = 0;
    if (tcsetattr(handle, TCSANOW, &line) != 0) {
        throw ETarvo(this, errProtocol, "CTarvo::InitCom: tcsetattr");
    }
    tcflush(handle, TCIOFLUSH);
    port_->SetCommTimeouts(&kTimeouts);
    port_->purgeComm(12);
    port_->EscapeCommFunction(6);
}

int CTarvo::getVersion() {
    const packet answer = Exchange(commands::kGetVersion, {}, kVersionPauseMs);
    const int version = RawVersion(answer.data);
    if (answer.data.size() == 3) {
        return version == 302 && answer.data[2] == 0 ? 303 : 0;
    }
    return version;
}

kkm_ver CTarvo::getKKMVersion(bool mustKnow) {
    const kkm_ver version = VersionOfRaw(getVersion());
    if (version == kkm_ver_unknown && mustKnow) {
        throw ETarvo(this, errVersion, "   ");
    }
    return version;
}

bool CTarvo::CheckVersion(bool mustKnow) {
    if (m_ver == kkm_ver_unknown && mustKnow) {
        throw ETarvo(this, errVersion, "   ");
    }
    return m_ver != kkm_ver_unknown;
}

std::uint16_t CTarvo::getRamAddr(TRamAddr location) {
    if (location == ramZero) {
        return 0;
    }
    if (m_ver == kkm_ver_unknown) {
        throw ETarvo(this, errVersion, "TTarvoM5::GetAddr: unnone version");
    }
    return getRamAddr(m_ver, location);
}

std::uint16_t CTarvo::getRamAddr(kkm_ver version, TRamAddr location) {
    const RamLookup lookup = LookUpRam(version, location);
    if (!lookup.address) {
        throw ETarvo(this, errVersion, lookup.fault);
    }
    return *lookup.address;
}

Bytes CTarvo::RamRequest(TRamAddr location, unsigned char count) {
    const std::uint16_t address = getRamAddr(location);
    return frame::NewPayload(
        {static_cast<unsigned char>(address >> 8U), static_cast<unsigned char>(address), count});
}

CRowData CTarvo::readRam(TRamAddr location, unsigned char count) {
    return CRowData(Exchange(commands::kReadRam, RamRequest(location, count)).data);
}

std::string CTarvo::_ReadKKMNum() {
    return CRowData(Exchange(commands::kKkmNum).data).AsStr();
}

std::string CTarvo::ReadKKMNum() {
    return m_ver > 399 ? _ReadKKMNum() : readRam(ramKKMNum, kKKMNumSize).AsStr();
}

void CTarvo::GenericScan() {
    Exchange(commands::kScan);
}

int CTarvo::getVersionNoSuppleer() {
    return RawVersion(ExchangeNoSuppleer(commands::kGetVersion).data);
}

kkm_ver CTarvo::getKKMVersionNoSuppleer(bool mustKnow) {
    kkm_ver version = kkm_ver_unknown;
    try {
        version = VersionOfRaw(getVersionNoSuppleer());
    } catch (...) {
        // A line without a register is an unknown version.
    }
    if (version == kkm_ver_unknown && mustKnow) {
        throw ETarvo(this, errVersion, "   ");
    }
    return version;
}

CRowData CTarvo::readRamNoSuppleer(TRamAddr location, unsigned char count) {
    return CRowData(ExchangeNoSuppleer(commands::kReadRam, RamRequest(location, count)).data);
}

std::string CTarvo::_ReadKKMNumNoSuppleer() {
    return CRowData(ExchangeNoSuppleer(commands::kKkmNum).data).AsStr();
}

std::string CTarvo::ReadKKMNumNoSuppler() {
    m_ver = getKKMVersionNoSuppleer(false);
    return m_ver > 399 ? _ReadKKMNumNoSuppleer()
                       : readRamNoSuppleer(ramKKMNum, kKKMNumSize).AsStr();
}
