#include "protocol/ram_map.h"

#include <cstdio>

#include "support/fixtures.h"

namespace test {
namespace {

// "0x1A5C", or the fault.
std::string Found(int version, int location) {
    const RamLookup lookup =
        LookUpRam(static_cast<kkm_ver>(version), static_cast<TRamAddr>(location));
    if (!lookup.address) {
        return lookup.fault;
    }
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", static_cast<unsigned>(*lookup.address));
    return text;
}

void ExpectColumn(int version, const std::vector<std::string>& cells) {
    int location = 0;
    for (const std::string& cell : cells) {
        EXPECT_EQ(Found(version, location), cell) << version << " location " << location;
        ++location;
    }
}

TEST(RamMap, Firmware301) {
    const std::string prefix = "TTarvoM5::GetAddr: kkm_ver_301 - ";
    ExpectColumn(301, {"0x1A5C", prefix + "unnone address", "0x1594", "0x150D",
                       prefix + "unnone ramCodeInput", prefix + "unnone ramSaleBarCode", "0x0000",
                       "0x00C0", prefix + "unnone address", prefix + "unnone address"});
}

TEST(RamMap, Firmware302And303ShareAColumnAndItsName) {
    const std::string prefix = "TTarvoM5::GetAddr: kkm_ver_302 - ";
    for (const int version : {302, 303}) {
        ExpectColumn(version,
                     {"0x1A5D", prefix + "unnone address", "0x1595", "0x1956",
                      prefix + "unnone ramCodeInput", prefix + "unnone ramSaleBarCode", "0x0000",
                      "0x00C0", prefix + "unnone address", prefix + "unnone address"});
    }
}

TEST(RamMap, Firmware310HasNoErrorByte) {
    const std::string prefix = "TTarvoM5::GetAddr: kkm_ver_310 - ";
    ExpectColumn(310, {"0x1658", prefix + "unnone address", "0x0914", prefix + "unnone address",
                       prefix + "unnone ramCodeInput", prefix + "unnone ramSaleBarCode", "0x0000",
                       "0x00C0", prefix + "unnone address", prefix + "unnone address"});
}

TEST(RamMap, LocationOutsideTheListHasNoAddress) {
    for (const int location : {8, 9, 100, 255, 65536, -1, -2147483647 - 1}) {
        EXPECT_EQ(Found(301, location), "TTarvoM5::GetAddr: kkm_ver_301 - unnone address");
    }
}

TEST(RamMap, OtherFirmwareHasNoMap) {
    for (const int version : {0, 1, 299, 300, 304, 309, 311, 399, 400, 401, -1}) {
        ExpectColumn(version, std::vector<std::string>(10, "TTarvoM5::GetAddr: Unnone version"));
    }
}

TEST(RamMap, FoundAddressHasNoFault) {
    EXPECT_EQ(LookUpRam(kkm_ver_301, ramCheckTitle).fault, "");
}

class RamAddressTest : public TarvoTest {
  protected:
    // The address, or -1 with the detail of the error in place.
    int AddressOf(TRamAddr location) {
        int address = -1;
        const int code = CodeOf([&] { address = kkm.getRamAddr(location); });
        EXPECT_EQ(code, address == -1 ? 7 : 0);
        return address;
    }
};

TEST_F(RamAddressTest, ZeroIsAddressZeroForEveryFirmware) {
    for (const kkm_ver version : {kkm_ver_unknown, kkm_ver_300, kkm_ver_301, kkm_ver_302,
                                  kkm_ver_303, kkm_ver_310, kkm_ver_400}) {
        kkm.setVersion(version);
        EXPECT_EQ(AddressOf(ramZero), 0) << version;
    }
}

TEST_F(RamAddressTest, UnknownFirmwareIsCode7) {
    for (int location = 0; location < 8; ++location) {
        EXPECT_EQ(AddressOf(static_cast<TRamAddr>(location)), -1);
        EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: unnone version");
    }
}

TEST_F(RamAddressTest, KnownFirmwareIsLookedUp) {
    kkm.setVersion(kkm_ver_303);
    EXPECT_EQ(AddressOf(ramKKMNum), 0x1A5D);
    kkm.setVersion(kkm_ver_310);
    EXPECT_EQ(AddressOf(ramSaleNumber), 0x0914);
    EXPECT_EQ(AddressOf(ramError), -1);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: kkm_ver_310 - unnone address");
}

TEST_F(RamAddressTest, Firmware400IsServedByCommands) {
    kkm.setVersion(kkm_ver_400);
    for (int location = 0; location < 8; ++location) {
        EXPECT_EQ(AddressOf(static_cast<TRamAddr>(location)), -1);
        EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: Unnone version");
    }
}

TEST_F(RamAddressTest, GivenFirmwareIsLookedUpWhateverTheObjectKnows) {
    kkm.setVersion(kkm_ver_400);
    EXPECT_EQ(kkm.getRamAddr(kkm_ver_301, ramError), 0x150D);
    EXPECT_EQ(kkm.getRamAddr(kkm_ver_302, ramCheckBottom), 0x00C0);
    EXPECT_EQ(CodeOf([&] { kkm.getRamAddr(kkm_ver_unknown, ramError); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: Unnone version");
}

TEST_F(RamAddressTest, KeepsTheGivenFirmwareWithoutAddressZero) {
    EXPECT_EQ(CodeOf([&] { kkm.getRamAddr(kkm_ver_301, ramZero); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: kkm_ver_301 - unnone address");
    EXPECT_EQ(CodeOf([&] { kkm.getRamAddr(kkm_ver_400, ramZero); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: Unnone version");
}

}  // namespace
}  // namespace test
