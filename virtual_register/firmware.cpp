#include "firmware.h"

#include <algorithm>
#include <iterator>

namespace virtual_register {

const Firmware* find_firmware(int number) {
    // A check of the older makes fits 19 lines of memory; later ones count lines in one byte.
    constexpr std::size_t kOldCheck = 19;
    constexpr std::size_t kNewCheck = 255;
    constexpr std::uint32_t kSixDigits = 999999;
    constexpr std::uint32_t kSevenDigits = 9999999;
    static const RamMap ram301{0x1A5C, 0x1594, 0x150D};
    static const RamMap ram302{0x1A5D, 0x1595, 0x1956};
    static const RamMap ram310{0x1658, 0x0914, std::nullopt};
    static const RamMap ram400{};
    static const Firmware made[] = {
        {300, {3, 0}, ram301, kOldCheck, kSixDigits, false, false},
        {301, {2, 11}, ram301, kOldCheck, kSevenDigits, false, false},
        {302, {3, 2}, ram302, kOldCheck, kSevenDigits, false, true},
        {303, {3, 2, 0}, ram302, kNewCheck, kSevenDigits, false, true},
        {310, {3, 10}, ram310, kNewCheck, kSevenDigits, false, true},
        {312, {3, 12}, ram310, kNewCheck, kSevenDigits, false, true},
        {400, {3, 4}, ram400, kNewCheck, kSevenDigits, true, true},
    };
    const auto* found =
        std::find_if(std::begin(made), std::end(made),
                     [number](const Firmware& one) { return one.number == number; });
    return found == std::end(made) ? nullptr : found;
}

}  // namespace virtual_register
