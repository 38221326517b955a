#include <algorithm>

#include "support/fault.h"
#include "support/fixtures.h"
#include "support/requests.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

class StatusTest : public TarvoTest {
  protected:
    StatusTest() {
        kkm.setVersion(kkm_ver_303);
        line.Always(request::kStatistics, Frame(0x8A, FromHex("01 02 03 04 05 06 00 00 00 00 00")));
        line.Always(request::kRam, Frame(0x84, {9}));
        line.Always(request::kEprom, Frame(0x82, {4}));
    }

    status_info Poll() {
        status_info status;
        kkm.GetStatusInfo(status);
        return status;
    }
};

const Reply kGoodsCode = Frame(0xA1, FromHex("00 2A 03 00 00 02 01"));
const Reply kBarcode = Frame(0xA3, FromHex("03 00 00 02 01 02 34 36"));

TEST_F(StatusTest, StatusRequestIsOneExchange) {
    line.Answer(request::kStatus, Frame(0xC0, {1, 2}));
    packet answer{};
    kkm.GetStatus(answer);
    EXPECT_EQ(answer.cmd, ks_kkmgo);
    EXPECT_EQ(answer.data, (Bytes{1, 2}));
    EXPECT_EQ(world.Steps(), (Strings{"20"}));
}

TEST_F(StatusTest, StateWithoutCountersIsOneExchange) {
    line.Answer(request::kStatus, Frame(0xA7, FromHex("00 05 00 06 07")));
    const status_info status = Poll();
    EXPECT_EQ(status.command, ks_salenoadd);
    EXPECT_EQ(status.number, 5);
    EXPECT_EQ(status.position, 6);
    EXPECT_EQ(status.saleNumber, 7);
    EXPECT_EQ(status.section, 0);
    EXPECT_EQ(world.Steps(), (Strings{"20"}));
}

TEST_F(StatusTest, DecodingAReceivedAnswerSendsNothing) {
    status_info status;
    kkm.GetStatusInfo({ks_smenaclose, {1, 2}}, status);
    EXPECT_EQ(status.number, 258);
    EXPECT_EQ(world.Log(), Strings{});
}

TEST_F(StatusTest, EnteredGoodsCostThreeMoreExchanges) {
    for (const auto& [state, reply] :
         {std::pair{ks_salecode, kGoodsCode}, {ks_salebarcode, kBarcode}}) {
        kkm.initClass();
        kkm.setCom(&port);
        kkm.setVersion(kkm_ver_303);
        world.ClearLog();
        line.Answer(request::kStatus, reply);
        const status_info status = Poll();
        EXPECT_EQ(status.command, state);
        EXPECT_EQ(status.department, 3);
        EXPECT_EQ(status.quantity, 2.0);
        EXPECT_EQ(status.number, 258);
        EXPECT_EQ(status.position, 773);
        EXPECT_EQ(status.saleNumber, 9);
        EXPECT_EQ(status.section, 5);
        EXPECT_EQ(world.Steps(), (Strings{"20", "0A", "04 15 95 01", "02 00 12 01"}));
    }
}

TEST_F(StatusTest, Firmware400AnswersTheSaleNumberToACommand) {
    kkm.setVersion(kkm_ver_400);
    line.Answer(request::kStatus, kGoodsCode).Answer(0x37, Frame(0xB7, {8}));
    EXPECT_EQ(Poll().saleNumber, 8);
    EXPECT_EQ(world.Steps(), (Strings{"20", "0A", "37", "02 00 00 00 12 01"}));
}

TEST_F(StatusTest, PositionBehindTheLastCheckWraps) {
    line.Always(request::kStatistics, Frame(0x8A, FromHex("00 00 FF FF 00 00 00 00 00 00 00")));
    line.Answer(request::kStatus, kGoodsCode);
    EXPECT_EQ(Poll().position, 0);
}

TEST_F(StatusTest, SectionIsReadOnceAndKept) {
    line.Answers(request::kStatus, 3, kGoodsCode);
    EXPECT_EQ(Poll().section, 5);
    line.Always(request::kEprom, Frame(0x82, {7}));
    world.ClearLog();
    EXPECT_EQ(Poll().section, 5);
    EXPECT_EQ(Poll().section, 5);
    EXPECT_EQ(world.Steps(), (Strings{"20", "0A", "04 15 95 01", "20", "0A", "04 15 95 01"}));
}

TEST_F(StatusTest, SectionThatWrapsToZeroIsReadAgain) {
    line.Answers(request::kStatus, 2, kGoodsCode);
    line.Always(request::kEprom, Frame(0x82, {0xFF}));
    EXPECT_EQ(Poll().section, 0);
    EXPECT_EQ(Poll().section, 0);
    EXPECT_EQ(world.Steps(), (Strings{"20", "0A", "04 15 95 01", "02 00 12 01",  //
                                      "20", "0A", "04 15 95 01", "02 00 12 01"}));
}

TEST_F(StatusTest, SwitchedOnStateTellsTheSectionForLater) {
    line.Answer(request::kStatus, Frame(0xCB, {0, 0, 0, 0, 6}))
        .Answer(request::kStatus, kGoodsCode);
    EXPECT_EQ(Poll().section, 7);
    EXPECT_EQ(Poll().section, 7);
    EXPECT_EQ(world.Steps(), (Strings{"20", "20", "0A", "04 15 95 01"}));
}

TEST_F(StatusTest, SwitchedOnStateReplacesTheSection) {
    line.Answer(request::kStatus, kGoodsCode)
        .Answer(request::kStatus, Frame(0xCB, {0, 0, 0, 0, 11}));
    line.Answer(request::kStatus, kBarcode);
    EXPECT_EQ(Poll().section, 5);
    EXPECT_EQ(Poll().section, 12);
    EXPECT_EQ(Poll().section, 12);
}

TEST_F(StatusTest, SectionOfAClosingCheckIsNotKept) {
    line.Answer(request::kStatus, Frame(0xC8, {0, 0, 0, 0, 0, 0, 8}))
        .Answer(request::kStatus, kGoodsCode);
    EXPECT_EQ(Poll().section, 9);
    EXPECT_EQ(Poll().section, 5);
    EXPECT_EQ(world.Requests().back(), "02 00 12 01");
}

TEST_F(StatusTest, EmptySaleNumberOrSectionIsAFault) {
    line.Always(request::kStatus, kGoodsCode);
    line.Always(request::kRam, Frame(0x84));
    EXPECT_EQ(FaultOf([&] { Poll(); }), "other");
    line.Always(request::kRam, Frame(0x84, {9}));
    line.Answer(request::kEprom, Frame(0x82));
    EXPECT_EQ(FaultOf([&] { Poll(); }), "other");
    // Nothing was kept of the section that did not come.
    EXPECT_EQ(Poll().section, 5);
}

TEST_F(StatusTest, FaultsOfTheExtraExchangesPassThrough) {
    line.Always(request::kStatus, kGoodsCode);
    line.Answer(request::kEprom, Frame(0x83, {4}));
    EXPECT_EQ(FaultOf([&] { Poll(); }), "2 CTarvo::readEprom, pack.cmd!=read_eprom");
    line.Answer(request::kRam, Frame(0x82, {4}));
    EXPECT_EQ(FaultOf([&] { Poll(); }), "2 CTarvo::readEprom, pack.cmd!=readEprom");
    line.Answer(request::kStatistics, Frame(0x8A, Bytes(10)));
    EXPECT_EQ(FaultOf([&] { Poll(); }), "2 CTarvo::getStatistics(count != 11)");
    kkm.setVersion(kkm_ver_unknown);
    EXPECT_EQ(FaultOf([&] { Poll(); }), "7 TTarvoM5::GetAddr: unnone version");
}

TEST_F(StatusTest, SilenceOnTheStatusRequestPassesThrough) {
    EXPECT_EQ(FaultOf([&] { Poll(); }), kSilenceFault);
    packet answer{};
    EXPECT_EQ(FaultOf([&] { kkm.GetStatus(answer); }), kSilenceFault);
}

class WaitStatusTest : public StatusTest {
  protected:
    // So many polls in another state, then the wanted one for ever.
    void ComesOnPoll(int poll) {
        line.Answers(request::kStatus, poll - 1, Frame(0xC0));
        line.Always(request::kStatus, Frame(0xC8));
    }
};

TEST_F(WaitStatusTest, StateIsPolledUntilItComes) {
    for (const int poll : {1, 2, 99, 100}) {
        ComesOnPoll(poll);
        world.ClearLog();
        EXPECT_TRUE(kkm.waitKKMStatus(ks_checkout, 100));
        EXPECT_EQ(world.Steps(), Strings(static_cast<std::size_t>(poll), "20"));
    }
}

TEST_F(WaitStatusTest, StateBehindTheLastTryIsMissed) {
    ComesOnPoll(101);
    EXPECT_FALSE(kkm.waitKKMStatus(ks_checkout, 100));
    EXPECT_EQ(world.Steps(), Strings(100, "20"));
}

TEST_F(WaitStatusTest, OnePollIsMadeEvenWithoutTries) {
    ComesOnPoll(1);
    EXPECT_TRUE(kkm.waitKKMStatus(ks_checkout, 0));
    EXPECT_FALSE(kkm.waitKKMStatus(ks_kkmgo, 0));
    EXPECT_EQ(world.Steps(), Strings(2, "20"));
}

TEST_F(WaitStatusTest, PollsFollowWithoutAPause) {
    ComesOnPoll(3);
    const Micros start = world.Now();
    kkm.waitKKMStatus(ks_checkout, 100);
    EXPECT_EQ((world.Now() - start) / 1000, 60U);  // the pauses of three exchanges
}

TEST_F(WaitStatusTest, FaultOfAPollPassesThrough) {
    line.Answer(request::kStatus, Frame(0xC0));
    EXPECT_EQ(FaultOf([&] { kkm.waitKKMStatus(ks_checkout, 100); }), kSilenceFault);
    EXPECT_EQ(world.Steps(), Strings(2, "20"));
}

TEST_F(WaitStatusTest, PollInAGoodsStateMakesItsExtraExchanges) {
    line.Answer(request::kStatus, kGoodsCode);
    line.Always(request::kStatus, Frame(0xC8));
    EXPECT_TRUE(kkm.waitKKMStatus(ks_checkout, 2));
    EXPECT_EQ(world.Steps(), (Strings{"20", "0A", "04 15 95 01", "02 00 12 01", "20"}));
}

class ResetTest : public TarvoTest {};

TEST_F(ResetTest, ResetIsOneExchange) {
    line.Answer(0x7F, Frame(0x90));
    kkm.resetStatus();
    EXPECT_EQ(world.Steps(), (Strings{"7F"}));
}

TEST_F(ResetTest, OtherAnswerToAResetIsCode2) {
    for (const unsigned char code : Bytes{0x8F, 0x91, 0x7F, 0xFF}) {
        line.Answer(0x7F, Frame(code));
        EXPECT_EQ(FaultOf([&] { kkm.resetStatus(); }),
                  "2 CTarvoOnline::reset_status (pac.cmd!=kkm_reset)");
    }
    EXPECT_EQ(FaultOf([&] { kkm.resetStatus(); }), kSilenceFault);
}

struct InfoCase {
    const char* text;
    unsigned char value;
    kkm_indicator mode;
    const char* request;
};

TEST_F(ResetTest, InfoResetSendsSixteenCharactersValueAndMode) {
    const InfoCase cases[] = {
        {"", 0, indicator_line, "7E 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00 02"},
        {"A", 16, indicator_line, "7E 41 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 10 02"},
        {"ABCDEFGHIJKLMNO", 0xFF, static_cast<kkm_indicator>(1),
         "7E 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 20 FF 01"},
        {"ABCDEFGHIJKLMNOP", 1, static_cast<kkm_indicator>(0),
         "7E 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 01 00"},
        {"ABCDEFGHIJKLMNOPQRST", 16, indicator_line,
         "7E 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 10 02"},
        {"\x8F\xE0", 16, indicator_line,
         "7E 8F E0 20 20 20 20 20 20 20 20 20 20 20 20 20 20 10 02"},
    };
    line.Always(0x7E, Frame(0x91));
    for (const InfoCase& c : cases) {
        world.ClearLog();
        kkm.resetStatusInfo(c.text, c.value, c.mode);
        EXPECT_EQ(world.Steps(), (Strings{c.request, "sleep 20"}));
    }
}

TEST_F(ResetTest, InfoResetPausesAfterTheAnswer) {
    line.Answer(0x7E, Frame(0x91));
    kkm.resetStatusInfo("", 0, indicator_line);
    EXPECT_EQ(world.Log().back(), "sleep 20");
}

TEST_F(ResetTest, OtherAnswerToAnInfoResetIsNamedInTheFault) {
    const std::string fault =
        "2 CTarvoOnline::reset_status_info(pac.cmd!=kkm_reset_info), pac.cmd = ";
    const auto reset = [&] { kkm.resetStatusInfo("A", 16, indicator_line); };
    line.Answer(0x7E, Frame(0x90)).Answer(0x7E, Frame(0x05)).Answer(0x7E, Frame(0xFF));
    EXPECT_EQ(FaultOf(reset), fault + "144");
    EXPECT_EQ(FaultOf(reset), fault + "5");
    EXPECT_EQ(FaultOf(reset), fault + "255");
    EXPECT_EQ(FaultOf(reset), kSilenceFault);
    EXPECT_EQ(std::count(world.Log().begin(), world.Log().end(), "sleep 20"), 0);
}

}  // namespace
}  // namespace test
