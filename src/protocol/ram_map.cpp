#include "protocol/ram_map.h"

#include <array>

namespace {

constexpr std::size_t kLocations = ramCheckBottom + 1;

struct Cell {
    std::uint16_t address;
    const char* fault;  // null where there is an address
};

struct Column {
    const char* fault_prefix;
    std::array<Cell, kLocations> cells;
};

constexpr auto kNoAddress = "unnone address";
constexpr Cell kNone{0, kNoAddress};
constexpr Cell kNoCodeInput{0, "unnone ramCodeInput"};
constexpr Cell kNoBarCode{0, "unnone ramSaleBarCode"};

constexpr Cell At(std::uint16_t address) {
    return {address, nullptr};
}

// In the order of TRamAddr: KKMNum, Reserved, SaleNumber, Error, CodeInput, SaleBarCode,
// CheckTitle, CheckBottom.
constexpr Column k301{
    "TTarvoM5::GetAddr: kkm_ver_301 - ",
    {At(0x1A5C), kNone, At(0x1594), At(0x150D), kNoCodeInput, kNoBarCode, At(0x0000), At(0x00C0)}};
constexpr Column k302{
    "TTarvoM5::GetAddr: kkm_ver_302 - ",
    {At(0x1A5D), kNone, At(0x1595), At(0x1956), kNoCodeInput, kNoBarCode, At(0x0000), At(0x00C0)}};
constexpr Column k310{
    "TTarvoM5::GetAddr: kkm_ver_310 - ",
    {At(0x1658), kNone, At(0x0914), kNone, kNoCodeInput, kNoBarCode, At(0x0000), At(0x00C0)}};

const Column* ColumnOf(kkm_ver version) {
    switch (version) {
        case kkm_ver_301:
            return &k301;
        case kkm_ver_302:
        case kkm_ver_303:
            return &k302;
        case kkm_ver_310:
            return &k310;
        default:  // firmware 400 is served by commands
            return nullptr;
    }
}

}  // namespace

RamLookup LookUpRam(kkm_ver version, TRamAddr location) {
    const Column* const column = ColumnOf(version);
    if (column == nullptr) {
        return {std::nullopt, "TTarvoM5::GetAddr: Unnone version"};
    }
    const auto index = static_cast<unsigned>(location);
    const Cell cell = index < kLocations ? column->cells[index] : kNone;
    if (cell.fault != nullptr) {
        return {std::nullopt, std::string(column->fault_prefix) + cell.fault};
    }
    return {cell.address, {}};
}
