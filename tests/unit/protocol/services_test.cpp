#include <typeinfo>

#include "support/fixtures.h"

namespace test {
namespace {

using Log = std::vector<std::string>;

constexpr auto kWriteDetail = "CTarvo::write_checktitle, pack.cmd!=kkm_writechecktitle";

constexpr kkm_ver Version(int number) {
    return static_cast<kkm_ver>(number);
}

class ServicesTest : public TarvoTest {
  protected:
    // The action sends one request and takes no other answer code than the one given.
    template <typename Action>
    void ExpectAnswer(unsigned char request, int answer, const std::string& detail, Action action) {
        for (int code = 0; code <= 255; ++code) {
            line.Answer(request, Frame(static_cast<unsigned char>(code), {0x01}));
            EXPECT_EQ(CodeOf(action), code == answer ? 0 : 2) << code;
            if (code != answer) {
                EXPECT_EQ(LastDetail(), detail);
            }
        }
    }

    // The action throws what a decoder of values throws at a length that it does not take.
    template <typename Action>
    static void ExpectRefusedLength(Action action) {
        try {
            action();
            ADD_FAILURE() << "nothing thrown";
        } catch (const std::exception& e) {
            EXPECT_EQ(typeid(e), typeid(std::exception));
        }
    }
};

// --- clock

TEST_F(ServicesTest, ClockIsDecodedFromSevenBytes) {
    line.Answer(0x06, Frame(0x86, {0x1E, 0x2D, 0x0C, 0x0F, 0x06, 0x07, 0xD8}));
    const std::tm time = kkm.readTime();
    EXPECT_EQ(time.tm_sec, 30);
    EXPECT_EQ(time.tm_min, 45);
    EXPECT_EQ(time.tm_hour, 12);
    EXPECT_EQ(time.tm_mday, 15);
    EXPECT_EQ(time.tm_mon, 5);
    EXPECT_EQ(time.tm_year, 108);
    EXPECT_EQ(time.tm_wday, 0);
    EXPECT_EQ(time.tm_yday, 0);
    EXPECT_EQ(time.tm_isdst, 0);
    EXPECT_EQ(world.Steps(), Log{"06"});
}

TEST_F(ServicesTest, ClockIsNotCheckedForSense) {
    line.Answer(0x06, Frame(0x86, {0xFF, 0xFE, 0xFD, 0xFC, 0x00, 0x00, 0x00}));
    const std::tm time = kkm.readTime();
    EXPECT_EQ(time.tm_sec, 255);
    EXPECT_EQ(time.tm_min, 254);
    EXPECT_EQ(time.tm_hour, 253);
    EXPECT_EQ(time.tm_mday, 252);
    EXPECT_EQ(time.tm_mon, -1);
    EXPECT_EQ(time.tm_year, -1900);
}

TEST_F(ServicesTest, ClockOfAnotherLengthIsCode2) {
    for (const std::size_t length : {0U, 1U, 6U, 8U, 14U}) {
        line.Answer(0x06, Frame(0x86, Bytes(length, 0x01)));
        EXPECT_EQ(CodeOf([&] { kkm.readTime(); }), 2) << length;
        EXPECT_EQ(LastDetail(), "CTarvo::read_time");
    }
}

TEST_F(ServicesTest, OtherAnswerToTheClockIsCode2) {
    line.Answer(0x06, Frame(0x85, Bytes(7, 0x01)));
    EXPECT_EQ(CodeOf([&] { kkm.readTime(); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::read_time");
}

// --- configuration

TEST_F(ServicesTest, ParameterIsWrittenWithItsValue) {
    kkm.setVersion(kkm_ver_301);
    line.Always(0x0B, Frame(0x7B));
    kkm.writeCfgParam(cfg_host_wait, 1);
    kkm.writeCfgParam(cfg_host_wait, 0);
    kkm.writeCfgParam(static_cast<kkm_cfg>(255), 254);
    EXPECT_EQ(world.Steps(), (Log{"0B 07 01", "0B 07 00", "0B FF FE"}));
}

TEST_F(ServicesTest, OtherAnswerToAParameterIsCode2) {
    kkm.setVersion(kkm_ver_301);
    ExpectAnswer(0x0B, 0x7B, kWriteDetail, [&] { kkm.writeCfgParam(cfg_host_wait, 1); });
}

TEST_F(ServicesTest, KeepsSendingTheParameterBeforeTheVersionIsAsked) {
    line.Answer(0x0B, Frame(0x7B));
    EXPECT_EQ(CodeOf([&] { kkm.writeCfgParam(cfg_host_wait, 1); }), 7);
    // The answer stays on the line until the next request drops it.
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "flush", "write 00 05 00 0B 07 01 13"}));
    EXPECT_GT(port.waitComEvent(0), 0);

    line.Answer(0x30, Frame(0xB0));
    EXPECT_EQ(CodeOf([&] { kkm.feed(1); }), 0);
}

// --- paper, header and footer

TEST_F(ServicesTest, PaperIsFedByLines) {
    line.Always(0x30, Frame(0xB0));
    kkm.feed(0);
    kkm.feed(5);
    kkm.feed(255);
    EXPECT_EQ(world.Steps(), (Log{"30 00", "30 05", "30 FF"}));
    ExpectAnswer(0x30, 0xB0, kWriteDetail, [&] { kkm.feed(1); });
}

TEST_F(ServicesTest, HeaderIsWrittenByteForByte) {
    line.Always(0x0C, Frame(0x7C));
    kkm.writeCheckTitle(std::string("A\0\x8F\xFF", 4));
    kkm.writeCheckTitle("");
    EXPECT_EQ(world.Steps(), (Log{"0C 41 00 8F FF", "0C 00"}));
    ExpectAnswer(0x0C, 0x7C, kWriteDetail, [&] { kkm.writeCheckTitle("x"); });
}

TEST_F(ServicesTest, FooterIsWrittenByteForByte) {
    line.Always(0x0D, Frame(0x7D));
    kkm.writeCheckBottom(std::string("A\0\x8F\xFF", 4));
    kkm.writeCheckBottom("");
    EXPECT_EQ(world.Steps(), (Log{"0D 41 00 8F FF", "0D 00 00"}));
    ExpectAnswer(0x0D, 0x7D, kWriteDetail, [&] { kkm.writeCheckBottom("x"); });
}

TEST_F(ServicesTest, LongTextsAreNotCut) {
    line.Always(0x0C, Frame(0x7C));
    line.Always(0x0D, Frame(0x7D));
    kkm.writeCheckTitle(std::string(240, 'T'));
    kkm.writeCheckBottom(std::string(240, 'B'));
    // "0C" and 240 times " 54".
    EXPECT_EQ(world.Requests()[0].size(), 2U + 240 * 3);
    EXPECT_EQ(world.Requests()[1].size(), 2U + 240 * 3);
}

TEST_F(ServicesTest, HeaderAndFooterAreReadFromMemory) {
    for (const int version : {301, 302, 303, 310}) {
        kkm.setVersion(Version(version));
        world.ClearLog();
        line.Answer(0x04, Frame(0x84, Bytes(95, 'T')));
        line.Answer(0x04, Frame(0x84, Bytes(57, 'B')));
        EXPECT_EQ(kkm.readCheckTitle(), std::string(95, 'T'));
        EXPECT_EQ(kkm.readCheckBottom(), std::string(57, 'B'));
        EXPECT_EQ(world.Steps(), (Log{"04 00 00 5F", "04 00 C0 39"}));
    }
}

TEST_F(ServicesTest, HeaderAndFooterKeepWhatTheRegisterSent) {
    kkm.setVersion(kkm_ver_310);
    line.Answer(0x04, Frame(0x84, {'A', 0x00, 'B'}));
    line.Answer(0x04, Frame(0x84));
    EXPECT_EQ(kkm.readCheckTitle(), std::string("A\0B", 3));
    EXPECT_EQ(kkm.readCheckBottom(), "");
}

TEST_F(ServicesTest, HeaderAndFooterOfFirmware400CannotBeRead) {
    kkm.setVersion(kkm_ver_400);
    EXPECT_EQ(CodeOf([&] { kkm.readCheckTitle(); }), 7);
    EXPECT_EQ(CodeOf([&] { kkm.readCheckBottom(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: Unnone version");
    EXPECT_EQ(world.Log(), Log{});
}

// --- last error

TEST_F(ServicesTest, FirmwareDecidesHowTheErrorIsRead) {
    const std::pair<int, const char*> requests[] = {
        {301, "04 15 0D 01"}, {302, "04 19 56 01"}, {303, "04 19 56 01"},
        {304, "38"},          {310, "38"},          {400, "38"},
    };
    line.Always(0x04, Frame(0x84, {0x10}));
    line.Always(0x38, Frame(0xB8, {0x11, 0x22}));
    for (const auto& [version, request] : requests) {
        kkm.setVersion(Version(version));
        world.ClearLog();
        EXPECT_EQ(kkm.ReadError(), version > 303 ? 0x11 : 0x10);
        EXPECT_EQ(world.Steps(), Log{request});
    }
}

TEST_F(ServicesTest, ErrorOfAnUnknownRegisterIsCode7) {
    EXPECT_EQ(CodeOf([&] { kkm.ReadError(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: unnone version");
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(ServicesTest, OtherAnswerToTheErrorIsCode2) {
    kkm.setVersion(kkm_ver_310);
    ExpectAnswer(0x38, 0xB8, "CTarvo::ReadError(count != 1)", [&] { kkm.ReadError(); });
}

TEST_F(ServicesTest, EmptyErrorIsRefused) {
    line.Always(0x04, Frame(0x84));
    line.Always(0x38, Frame(0xB8));
    kkm.setVersion(kkm_ver_303);
    ExpectRefusedLength([&] { kkm.ReadError(); });
    kkm.setVersion(kkm_ver_310);
    ExpectRefusedLength([&] { kkm.ReadError(); });
}

// --- sale number

TEST_F(ServicesTest, FirmwareDecidesHowTheSaleNumberIsRead) {
    const std::pair<int, const char*> requests[] = {
        {301, "04 15 94 01"}, {302, "04 15 95 01"}, {303, "04 15 95 01"},
        {310, "04 09 14 01"}, {400, "37"},          {401, "37"},
    };
    line.Always(0x04, Frame(0x84, {0x05, 0x77}));
    line.Always(0x37, Frame(0xB7, {0xFF, 0x77}));
    for (const auto& [version, request] : requests) {
        kkm.setVersion(Version(version));
        world.ClearLog();
        EXPECT_EQ(kkm.ReadSaleNumber(), version >= 400 ? 0xFF : 0x05);
        EXPECT_EQ(world.Steps(), Log{request});
    }
}

TEST_F(ServicesTest, SaleNumberOfAnUnknownRegisterIsCode7) {
    EXPECT_EQ(CodeOf([&] { kkm.ReadSaleNumber(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: unnone version");
    kkm.setVersion(Version(399));
    EXPECT_EQ(CodeOf([&] { kkm.ReadSaleNumber(); }), 7);
    EXPECT_EQ(LastDetail(), "TTarvoM5::GetAddr: Unnone version");
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(ServicesTest, SaleNumberByCommandNeedsFirmware400) {
    for (const int version : {0, 301, 310, 399}) {
        kkm.setVersion(Version(version));
        EXPECT_EQ(CodeOf([&] { kkm.ReadSaleNumberCmd(); }), 7) << version;
        EXPECT_EQ(LastDetail(), "CTarvo::ReadSaleNumberCmd - kkm_ver_400");
    }
    EXPECT_EQ(world.Log(), Log{});
    kkm.setVersion(kkm_ver_400);
    line.Answer(0x37, Frame(0xB7, {0x13}));
    EXPECT_EQ(kkm.ReadSaleNumberCmd(), 0x13);
}

TEST_F(ServicesTest, OtherAnswerToTheSaleNumberIsCode2) {
    kkm.setVersion(kkm_ver_400);
    ExpectAnswer(0x37, 0xB7, "CTarvo::ReadSaleNumberCmd - errInterface",
                 [&] { kkm.ReadSaleNumberCmd(); });
}

TEST_F(ServicesTest, EmptySaleNumberNeverMeansNoSaleOpen) {
    line.Always(0x04, Frame(0x84));
    line.Always(0x37, Frame(0xB7));
    kkm.setVersion(kkm_ver_310);
    ExpectRefusedLength([&] { kkm.ReadSaleNumber(); });
    kkm.setVersion(kkm_ver_400);
    ExpectRefusedLength([&] { kkm.ReadSaleNumber(); });
}

// --- check-out

TEST_F(ServicesTest, CheckOutIsCancelledByCommand) {
    line.Answer(0x2A, Frame(0xAA));
    kkm.CancelCheckOut();
    EXPECT_EQ(world.Steps(), Log{"2A"});
    ExpectAnswer(0x2A, 0xAA, "CTarvo::CancelCheckOut(pac.cmd!=kkm_cancelcheckout)",
                 [&] { kkm.CancelCheckOut(); });
}

TEST_F(ServicesTest, SilencePassesThrough) {
    EXPECT_THROW(kkm.readTime(), EMiniCom);
    EXPECT_THROW(kkm.feed(1), EMiniCom);
    EXPECT_THROW(kkm.writeCheckTitle("x"), EMiniCom);
    EXPECT_THROW(kkm.writeCheckBottom("x"), EMiniCom);
    EXPECT_THROW(kkm.CancelCheckOut(), EMiniCom);
    kkm.setVersion(kkm_ver_400);
    EXPECT_THROW(kkm.writeCfgParam(cfg_host_wait, 1), EMiniCom);
    EXPECT_THROW(kkm.ReadError(), EMiniCom);
    EXPECT_THROW(kkm.ReadSaleNumber(), EMiniCom);
}

}  // namespace
}  // namespace test
