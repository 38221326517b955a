#include <cstring>
#include <map>

#include "support/fixtures.h"

namespace test {
namespace {

using Log = std::vector<std::string>;

class IdentificationTest : public TarvoTest {
  protected:
    // The result of the action, -1 when it throws an ETarvo.
    template <typename Action>
    int Result(Action action) {
        int result = -1;
        CodeOf([&] { result = static_cast<int>(action()); });
        return result;
    }

    int VersionFor(const Bytes& answer) {
        line.Answer(0x34, Frame(0xB4, answer));
        return Result([&] { return kkm.getVersion(); });
    }
};

// --- the line

class InitComTest : public TarvoTest {
  protected:
    InitComTest() {
        std::memset(&world.line, 0xFF, sizeof world.line);
        const _COMMTIMEOUTS none{0, 0, 0, 0, 0};
        port.SetCommTimeouts(&none);
    }

    std::vector<std::uint32_t> Limits() const {
        _COMMTIMEOUTS limits{};
        port.GetCommTimeouts(&limits);
        return {limits.ReadIntervalTimeout, limits.ReadTotalTimeoutMultiplier,
                limits.ReadTotalTimeoutConstant, limits.WriteTotalTimeoutMultiplier,
                limits.WriteTotalTimeoutConstant};
    }

    using Numbers = std::vector<std::uint32_t>;
};

TEST_F(InitComTest, StepsComeInOrder) {
    kkm.InitCom(baud_9600);
    // 4 is the setting of the status flags; the line is flushed by itself and by the port.
    EXPECT_EQ(world.Log(), (Log{"fcntl 4 0", "getattr", "setattr", "flush", "flush"}));
}

TEST_F(InitComTest, ControlFlagsAreAssignedWhole) {
    kkm.InitCom(baud_9600);
    EXPECT_EQ(world.line.c_cflag, 0x8BDU);
    kkm.InitCom(baud_57600);
    EXPECT_EQ(world.line.c_cflag, 0x18B1U);
}

TEST_F(InitComTest, OtherFlagsLoseWhatARawLineMustNotHave) {
    kkm.InitCom(baud_57600);
    EXPECT_EQ(world.line.c_lflag, ~0x8F7BU);
    EXPECT_EQ(world.line.c_iflag, ~0x1FC1U);
    EXPECT_EQ(world.line.c_oflag, ~0x1U);
}

TEST_F(InitComTest, ReadsNeverWaitInTheKernel) {
    kkm.InitCom(baud_57600);
    for (std::size_t i = 0; i < NCCS; ++i) {
        const bool cleared = i == 6 /* VMIN */ || i == 5 /* VTIME */;
        EXPECT_EQ(world.line.c_cc[i], cleared ? 0 : 0xFF) << i;
    }
}

TEST_F(InitComTest, FlagsThatAreOffStayOff) {
    std::memset(&world.line, 0, sizeof world.line);
    kkm.InitCom(baud_9600);
    EXPECT_EQ(world.line.c_cflag, 0x8BDU);
    EXPECT_EQ(world.line.c_lflag, 0U);
    EXPECT_EQ(world.line.c_iflag, 0U);
    EXPECT_EQ(world.line.c_oflag, 0U);
}

TEST_F(InitComTest, TimeLimitsOfAnExchangeAreSet) {
    kkm.InitCom(baud_9600);
    EXPECT_EQ(Limits(), (Numbers{100, 100, 200, 5, 5}));
}

TEST_F(InitComTest, AttributesThatCannotBeReadAreCode2) {
    world.getattr_fails = true;
    EXPECT_EQ(CodeOf([&] { kkm.InitCom(baud_9600); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::InitCom: tcgetattr");
    EXPECT_EQ(world.Log(), (Log{"fcntl 4 0", "getattr = error"}));
    EXPECT_EQ(Limits(), Numbers(5, 0));
}

TEST_F(InitComTest, KeepsReadingTheAttributesBeforeTheSpeedIsJudged) {
    world.getattr_fails = true;
    EXPECT_EQ(CodeOf([&] { kkm.InitCom(static_cast<kkm_BaundRate>(1200)); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::InitCom: tcgetattr");
}

TEST_F(InitComTest, OtherSpeedsAreCode2) {
    for (const int speed : {0, 1, -1, 1200, 9599, 9601, 19200, 38400, 57599, 57601, 115200}) {
        world.ClearLog();
        EXPECT_EQ(CodeOf([&] { kkm.InitCom(static_cast<kkm_BaundRate>(speed)); }), 2) << speed;
        EXPECT_EQ(LastDetail(), "CTarvo::InitCom: speed unknoun");
        EXPECT_EQ(world.Log(), (Log{"fcntl 4 0", "getattr"}));
    }
    EXPECT_EQ(Limits(), Numbers(5, 0));
}

TEST_F(InitComTest, AttributesThatCannotBeSetAreCode2) {
    world.setattr_fails = true;
    EXPECT_EQ(CodeOf([&] { kkm.InitCom(baud_57600); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::InitCom: tcsetattr");
    EXPECT_EQ(world.Log(), (Log{"fcntl 4 0", "getattr", "setattr = error"}));
    EXPECT_EQ(Limits(), Numbers(5, 0));
}

TEST_F(InitComTest, ClosedPortHasNoAttributes) {
    port.Close();
    world.ClearLog();
    EXPECT_EQ(CodeOf([&] { kkm.InitCom(baud_9600); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::InitCom: tcgetattr");
    EXPECT_EQ(world.Log(), Log{});
}

// --- the version

TEST_F(IdentificationTest, KeepsTheExtraPauseOfTheVersionQuery) {
    line.Answer(0x34, Frame(0xB4, {0x03, 0x03}));
    EXPECT_EQ(kkm.getVersion(), 303);
    const Log log = world.Log();
    EXPECT_EQ(Log(log.begin(), log.begin() + 6), (Log{"sleep 10", "flush", "write 00 03 00 34 34",
                                                      "sleep 10", "sleep 10", "wait 400"}));
    EXPECT_EQ(world.Steps(), (Log{"34", "sleep 10"}));
}

TEST_F(IdentificationTest, VersionIsHundredTimesTheFirstByteAndTheSecond) {
    EXPECT_EQ(VersionFor({0x02, 0x0B}), 211);
    EXPECT_EQ(VersionFor({0x03, 0x0C}), 312);
    EXPECT_EQ(VersionFor({0x00, 0x00}), 0);
    EXPECT_EQ(VersionFor({0xFF, 0xFF}), 25755);
}

TEST_F(IdentificationTest, KeepsTheRuleOfTheThreeBytes) {
    EXPECT_EQ(VersionFor({0x03, 0x02, 0x00}), 303);
    EXPECT_EQ(VersionFor({0x02, 0x66, 0x00}), 303);  // 200 + 102
    EXPECT_EQ(VersionFor({0x03, 0x02, 0x01}), 0);
    EXPECT_EQ(VersionFor({0x03, 0x02, 0xFF}), 0);
    EXPECT_EQ(VersionFor({0x03, 0x03, 0x00}), 0);
    EXPECT_EQ(VersionFor({0x03, 0x01, 0x00}), 0);
    EXPECT_EQ(VersionFor({0x02, 0x0B, 0x00}), 0);
}

TEST_F(IdentificationTest, LongerAnswersKeepTheNumber) {
    EXPECT_EQ(VersionFor({0x03, 0x02, 0x01, 0x00}), 302);
    EXPECT_EQ(VersionFor({0x03, 0x04, 0x09, 0x09, 0x09}), 304);
}

TEST_F(IdentificationTest, MissingVersionBytesReadAsZero) {
    EXPECT_EQ(VersionFor({0x03}), 300);
    EXPECT_EQ(VersionFor({}), 0);
}

TEST_F(IdentificationTest, OtherAnswerToTheVersionQueryIsCode2) {
    for (const unsigned char code : Bytes{0x34, 0xB3, 0xB5, 0x84}) {
        line.Answer(0x34, Frame(code, {0x03, 0x03}));
        EXPECT_EQ(CodeOf([&] { kkm.getVersion(); }), 2);
        EXPECT_EQ(LastDetail(), "CTarvo::get_version - pack.cmd !=kkm_querysale");
    }
}

TEST_F(IdentificationTest, EachNumberHasItsVersion) {
    const std::map<int, int> versions = {{211, 301}, {302, 302}, {303, 303},
                                         {304, 400}, {310, 310}, {312, 310}};
    world.SetLogging(false);
    for (unsigned high = 0; high <= 5; ++high) {
        for (unsigned low = 0; low <= 255; ++low) {
            const int raw = static_cast<int>(high * 100 + low);
            const auto row = versions.find(raw);
            line.Answer(0x34, Frame(0xB4, {static_cast<unsigned char>(high),
                                           static_cast<unsigned char>(low)}));
            EXPECT_EQ(kkm.getKKMVersion(false), row == versions.end() ? 0 : row->second) << raw;
        }
    }
}

TEST_F(IdentificationTest, KeepsTheFoundVersionToTheCaller) {
    line.Answer(0x34, Frame(0xB4, {0x03, 0x02, 0x00}));
    EXPECT_EQ(kkm.getKKMVersion(true), 303);
    EXPECT_EQ(kkm.version(), 0);
}

TEST_F(IdentificationTest, UnknownVersionIsCode7WhenItMustBeKnown) {
    line.Always(0x34, Frame(0xB4, {0x03, 0x03, 0x00}));
    EXPECT_EQ(CodeOf([&] { kkm.getKKMVersion(true); }), 7);
    EXPECT_EQ(LastDetail(), "   ");
    EXPECT_EQ(Result([&] { return kkm.getKKMVersion(false); }), 0);
}

TEST_F(IdentificationTest, SilenceIsNoVersion) {
    EXPECT_THROW(kkm.getVersion(), EMiniCom);
    EXPECT_THROW(kkm.getKKMVersion(false), EMiniCom);
    EXPECT_THROW(kkm.getKKMVersion(true), EMiniCom);
    line.Answer(0x34, Frame(0x84));
    EXPECT_EQ(CodeOf([&] { kkm.getKKMVersion(false); }), 2);
}

TEST_F(IdentificationTest, CheckOfTheVersionSendsNothing) {
    EXPECT_FALSE(kkm.CheckVersion(false));
    EXPECT_EQ(CodeOf([&] { kkm.CheckVersion(true); }), 7);
    kkm.setVersion(kkm_ver_301);
    EXPECT_TRUE(kkm.CheckVersion(false));
    EXPECT_TRUE(kkm.CheckVersion(true));
    EXPECT_EQ(world.Log(), Log{});
}

// --- memory and the register's number

TEST_F(IdentificationTest, MemoryIsReadByAddressAndCount) {
    kkm.setVersion(kkm_ver_310);
    line.Answer(0x04, Frame(0x84, {'0', '1', '2', '3', '4', '5', '6', '7'}));
    EXPECT_EQ(kkm.readRam(ramKKMNum, 8).AsStr(), "01234567");
    EXPECT_EQ(world.Steps(), Log{"04 16 58 08"});
}

TEST_F(IdentificationTest, LengthOfTheMemoryAnswerIsTheCallersBusiness) {
    kkm.setVersion(kkm_ver_301);
    line.Answer(0x04, Frame(0x84, {0x01}));
    EXPECT_EQ(kkm.readRam(ramSaleNumber, 200).bytes(), Bytes{0x01});
    line.Answer(0x04, Frame(0x84));
    EXPECT_EQ(kkm.readRam(ramSaleNumber, 0).bytes(), Bytes{});
    EXPECT_EQ(world.Steps(), (Log{"04 15 94 C8", "04 15 94 00"}));
}

TEST_F(IdentificationTest, AddressZeroIsReadWithAnUnknownVersion) {
    line.Answer(0x04, Frame(0x84, {0x11, 0x22}));
    EXPECT_EQ(kkm.readRam(ramZero, 2).bytes(), (Bytes{0x11, 0x22}));
    EXPECT_EQ(world.Steps(), Log{"04 00 00 02"});
}

TEST_F(IdentificationTest, LocationWithoutAddressSendsNothing) {
    EXPECT_EQ(CodeOf([&] { kkm.readRam(ramKKMNum, 8); }), 7);
    EXPECT_EQ(CodeOf([&] { kkm.readRamNoSuppleer(ramKKMNum, 8); }), 7);
    kkm.setVersion(kkm_ver_310);
    EXPECT_EQ(CodeOf([&] { kkm.readRam(ramError, 1); }), 7);
    EXPECT_EQ(CodeOf([&] { kkm.readRamNoSuppleer(ramError, 1); }), 7);
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(IdentificationTest, OtherAnswerToAMemoryReadIsCode2) {
    kkm.setVersion(kkm_ver_303);
    line.Always(0x04, Frame(0x82, {0x01}));
    EXPECT_EQ(CodeOf([&] { kkm.readRam(ramError, 1); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::readEprom, pack.cmd!=readEprom");
    EXPECT_EQ(CodeOf([&] { kkm.readRamNoSuppleer(ramError, 1); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::readEprom, pack.cmd!=readEprom");
}

TEST_F(IdentificationTest, NumberByCommandIsTheWholePayload) {
    line.Answer(0x15, Frame(0x95, {'A', 0x00, 0xFF}));
    EXPECT_EQ(kkm._ReadKKMNum(), std::string("A\0\xFF", 3));
    EXPECT_EQ(world.Steps(), Log{"15"});

    line.Answer(0x15, Frame(0x94, {'A'}));
    EXPECT_EQ(CodeOf([&] { kkm._ReadKKMNum(); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::ReadKKMNum(pac.cmd!=kkm_kkmnum)");
}

TEST_F(IdentificationTest, FirmwareDecidesHowTheNumberIsRead) {
    const std::pair<kkm_ver, const char*> requests[] = {
        {kkm_ver_301, "04 1A 5C 08"}, {kkm_ver_302, "04 1A 5D 08"},
        {kkm_ver_303, "04 1A 5D 08"}, {kkm_ver_310, "04 16 58 08"},
        {kkm_ver_400, "15"},          {static_cast<kkm_ver>(401), "15"},
    };
    line.Always(0x04, Frame(0x84, {'0', '0', '0', '0', '0', '0', '1', '2'}));
    line.Always(0x15, Frame(0x95, {'7'}));
    for (const auto& [version, request] : requests) {
        kkm.setVersion(version);
        world.ClearLog();
        EXPECT_EQ(kkm.ReadKKMNum(), version >= 400 ? "7" : "00000012");
        EXPECT_EQ(world.Steps(), Log{request});
    }
}

TEST_F(IdentificationTest, NumberOfFirmware399WouldBeAMemoryRead) {
    kkm.setVersion(static_cast<kkm_ver>(399));
    EXPECT_EQ(CodeOf([&] { kkm.ReadKKMNum(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: Unnone version");
    kkm.setVersion(kkm_ver_unknown);
    EXPECT_EQ(CodeOf([&] { kkm.ReadKKMNum(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: unnone version");
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(IdentificationTest, ScanOnlyJudgesTheAnswer) {
    line.Answer(0x35, Frame(0xB5, {1, 2, 3}));
    kkm.GenericScan();
    EXPECT_EQ(world.Steps(), Log{"35"});
}

TEST_F(IdentificationTest, KeepsTheTextOfTheScansFault) {
    line.Answer(0x35, Frame(0xB4));
    EXPECT_EQ(CodeOf([&] { kkm.GenericScan(); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::CancelCheckOut(pac.cmd!=kkm_cancelcheckout)");
}

// --- the second family

class SecondFamilyTest : public IdentificationTest {};

TEST_F(SecondFamilyTest, VersionHasNoExtraPause) {
    line.Answer(0x34, Frame(0xB4, {0x03, 0x03}));
    EXPECT_EQ(kkm.getVersionNoSuppleer(), 303);
    EXPECT_EQ(world.Steps(), Log{"34"});
    EXPECT_EQ(world.Log()[2], "write 00 03 00 34 34");
    EXPECT_EQ(world.Log()[4], "wait 400");
}

TEST_F(SecondFamilyTest, VersionKnowsNoRuleOfThreeBytes) {
    const std::pair<Bytes, int> answers[] = {
        {{0x03, 0x02, 0x00}, 302},
        {{0x03, 0x02, 0x01}, 302},
        {{0x03, 0x03, 0x00}, 303},
        {{0x02, 0x0B}, 211},
        {{0x03}, 300},
        {{}, 0},
    };
    for (const auto& [answer, version] : answers) {
        line.Answer(0x34, Frame(0xB4, answer));
        EXPECT_EQ(kkm.getVersionNoSuppleer(), version);
    }
}

TEST_F(SecondFamilyTest, OtherAnswersHaveTheSameTexts) {
    line.Answer(0x34, Frame(0x84));
    EXPECT_EQ(CodeOf([&] { kkm.getVersionNoSuppleer(); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::get_version - pack.cmd !=kkm_querysale");
    line.Answer(0x15, Frame(0x84));
    EXPECT_EQ(CodeOf([&] { kkm._ReadKKMNumNoSuppleer(); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::ReadKKMNum(pac.cmd!=kkm_kkmnum)");
}

TEST_F(SecondFamilyTest, EachNumberHasTheSameVersion) {
    const std::pair<Bytes, int> answers[] = {
        {{0x02, 0x0B}, 301}, {{0x03, 0x02, 0x01}, 302}, {{0x03, 0x03}, 303}, {{0x03, 0x04}, 400},
        {{0x03, 0x0A}, 310}, {{0x03, 0x0C}, 310},       {{0x03, 0x0B}, 0},   {{0x04, 0x00}, 0},
    };
    for (const auto& [answer, version] : answers) {
        line.Answer(0x34, Frame(0xB4, answer));
        EXPECT_EQ(kkm.getKKMVersionNoSuppleer(false), version);
    }
    EXPECT_EQ(kkm.version(), 0);
}

TEST_F(SecondFamilyTest, EveryFailureIsAnUnknownVersion) {
    EXPECT_EQ(kkm.getKKMVersionNoSuppleer(false), 0);  // silence
    line.Answer(0x34, Frame(0x84));
    EXPECT_EQ(kkm.getKKMVersionNoSuppleer(false), 0);
    line.Answer(0x34, Bytes{0x01, 0x03});
    EXPECT_EQ(kkm.getKKMVersionNoSuppleer(false), 0);
    line.FailWrite(-5);
    EXPECT_EQ(kkm.getKKMVersionNoSuppleer(false), 0);
}

TEST_F(SecondFamilyTest, UnknownVersionIsCode7WhenItMustBeKnown) {
    EXPECT_EQ(CodeOf([&] { kkm.getKKMVersionNoSuppleer(true); }), 7);
    EXPECT_EQ(LastDetail(), "   ");
    line.Answer(0x34, Frame(0xB4, {0x03, 0x0B}));
    EXPECT_EQ(CodeOf([&] { kkm.getKKMVersionNoSuppleer(true); }), 7);
    line.Answer(0x34, Frame(0xB4, {0x03, 0x0A}));
    EXPECT_EQ(Result([&] { return kkm.getKKMVersionNoSuppleer(true); }), 310);
}

TEST_F(SecondFamilyTest, MemoryReadIsTheSameFrame) {
    kkm.setVersion(kkm_ver_302);
    line.Answer(0x04, Frame(0x84, {0x05}));
    EXPECT_EQ(kkm.readRamNoSuppleer(ramSaleNumber, 1).bytes(), Bytes{0x05});
    EXPECT_EQ(world.Steps(), Log{"04 15 95 01"});
}

TEST_F(SecondFamilyTest, NumberIsReadBehindTheVersionWhichIsKept) {
    line.Answer(0x34, Frame(0xB4, {0x03, 0x0C}));
    line.Answer(0x04, Frame(0x84, {'0', '0', '0', '0', '0', '0', '4', '2'}));
    EXPECT_EQ(kkm.ReadKKMNumNoSuppler(), "00000042");
    EXPECT_EQ(kkm.version(), 310);
    EXPECT_EQ(world.Steps(), (Log{"34", "04 16 58 08"}));
}

TEST_F(SecondFamilyTest, NumberOfFirmware400IsReadByCommand) {
    line.Answer(0x34, Frame(0xB4, {0x03, 0x04}));
    line.Answer(0x15, Frame(0x95, {'4', 0x00, '2'}));
    EXPECT_EQ(kkm.ReadKKMNumNoSuppler(), std::string("4\0002", 3));
    EXPECT_EQ(kkm.version(), 400);
    EXPECT_EQ(world.Steps(), (Log{"34", "15"}));
}

TEST_F(SecondFamilyTest, NumberWithoutAVersionForgetsTheOldOne) {
    kkm.setVersion(kkm_ver_400);
    EXPECT_EQ(CodeOf([&] { kkm.ReadKKMNumNoSuppler(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: unnone version");
    EXPECT_EQ(kkm.version(), 0);
    EXPECT_EQ(world.Steps(), Log{"34"});
}

}  // namespace
}  // namespace test
