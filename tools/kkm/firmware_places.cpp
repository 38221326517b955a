#include "kkm/firmware_places.h"

namespace kkm {
namespace {

constexpr int kFirstWithWideEeprom = 400;

}  // namespace

Places PlacesOf(int firmware) {
    switch (firmware) {
        case 301:
            return {0x1A5C, 0x1594, 0x150D};
        case 302:
        case 303:
            return {0x1A5D, 0x1595, 0x1956};
        case 310:
        case 312:
            return {0x1658, 0x0914, -1};
        default:
            return {};
    }
}

// 0 for firmware that is not known.
int FirmwareOf(const Bytes& version) {
    if (version.size() < 2) {
        return 0;
    }
    const int raw = version[0] * 100 + version[1];
    if (version.size() == 3) {
        return raw == 302 && version[2] == 0 ? 303 : 0;
    }
    switch (raw) {
        case 211:
            return 301;
        case 304:
            return 400;
        case 302:
        case 303:
        case 310:
        case 312:
            return raw;
        default:
            return 0;
    }
}

Bytes RamRequest(int address, std::uint8_t count) {
    return {static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address), count};
}

Bytes EepromRequest(int firmware, int address, std::uint8_t count) {
    Bytes request = RamRequest(address, count);
    if (firmware >= kFirstWithWideEeprom) {
        request.insert(request.begin(), 2, 0);
    }
    return request;
}

}  // namespace kkm
