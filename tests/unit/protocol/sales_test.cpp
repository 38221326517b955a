#include <cmath>
#include <limits>

#include "support/fault.h"
#include "support/fixtures.h"
#include "support/requests.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

// The answer of a register that waits for a goods code, and what its decoding asks for.
const Reply kAsksForGoodsCode = Frame(0xA1, FromHex("00 2A 03 00 00 02 01"));
const Strings kGoodsCodeSteps = {"0A", "04 15 95 01", "02 00 12 01"};

class SalesTest : public TarvoTest {
  protected:
    SalesTest() {
        kkm.setVersion(kkm_ver_303);
        line.Always(0x0A, Frame(0x8A, Bytes(11)));
        line.Always(0x04, Frame(0x84, {0})).Always(0x02, Frame(0x82, {0}));
    }

    // The request, then the exchanges that the decoding of a goods code costs.
    static Strings Decoded(const std::string& request) {
        Strings steps = kGoodsCodeSteps;
        steps.insert(steps.begin(), request);
        return steps;
    }
};

TEST_F(SalesTest, SaleLineIsOneExchange) {
    line.Answer(request::kSale, Frame(0xC1, {0}));
    status_info info;
    info.name = "ABCDEFGHIJKLMNOP";
    info.price = 1234567;
    info.quantity = 2;
    kkm.sendSaleInfo(info);
    EXPECT_EQ(world.Steps(),
              (Strings{"21 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 00 00 00 00 00 00 00 00 "
                       "00 00 00 00 01 02 03 04 05 06 07 00 00 00 00 00 02"}));
}

TEST_F(SalesTest, LineOfTheBufferIsCopiedFieldByField) {
    line.Answer(request::kSale, Frame(0xC3, {0}));
    sale item;
    item.title = "Milk";
    item.section = 15;
    item.fractional = true;
    item.code = 0x0102;
    item.barcode = "4607";
    item.price = 9999999;
    item.count = 0.35F;
    kkm.sendSaleInfo(item);
    EXPECT_EQ(world.Steps(),
              (Strings{"21 4D 69 6C 6B 20 20 20 20 20 20 20 20 20 20 20 34 36 30 37 00 00 00 00 00 "
                       "00 00 00 00 09 09 09 09 09 09 09 0F 01 01 02 01 5E"}));
}

TEST_F(SalesTest, PieceLineOfTheBuffer) {
    line.Answer(request::kSale, Frame(0xC1, {0}));
    sale item;
    item.count = 300;
    kkm.sendSaleInfo(item);
    EXPECT_EQ(world.Steps().back().substr(35 * 3), "00 00 00 00 00 01 2C");
}

class SaleAnswerTest : public SalesTest {
  protected:
    std::string Send() {
        return FaultOf([&] { kkm.sendSaleInfo(status_info()); });
    }
};

TEST_F(SaleAnswerTest, KeepsBothAnswerCodesOfASale) {
    for (const unsigned char code : Bytes{0xC1, 0xC3}) {
        line.Answer(request::kSale, Frame(code, {0, 7})).Answer(request::kSale, Frame(code));
        EXPECT_EQ(Send(), "");
        EXPECT_EQ(Send(), "");
        line.Answer(request::kSale, Frame(code, {1}))
            .Answer(request::kSale, Frame(code, {0x80, 0}));
        EXPECT_EQ(Send(), "6 CTarvo::send_sale_info:  ");
        EXPECT_EQ(Send(), "6 CTarvo::send_sale_info:  ");
    }
}

TEST_F(SaleAnswerTest, OtherAnswerToASaleIsCode2) {
    for (const unsigned char code : Bytes{0xC0, 0xC2, 0xC4, 0xA1, 0x21}) {
        line.Answer(request::kSale, Frame(code, {1}));
        EXPECT_EQ(Send(), "2 CTarvo::send_sale_info");
    }
    EXPECT_EQ(Send(), kSilenceFault);
}

TEST_F(SaleAnswerTest, UnknownFirmwareGetsNoSale) {
    kkm.setVersion(kkm_ver_unknown);
    EXPECT_EQ(Send(), "7    ");
    EXPECT_EQ(FaultOf([&] { kkm.sendSaleInfo(sale()); }), "7    ");
    EXPECT_EQ(world.Log(), Strings{});
}

TEST_F(SalesTest, SaleTextIsTwoBytesAndEighteenCharacters) {
    line.Always(request::kTitle, Frame(0x97));
    kkm.sendSaleStr(1, 2, "");
    kkm.sendSaleStr(0, 255, "A");
    kkm.sendSaleStr(20, 4, "ABCDEFGHIJKLMNOPQR");
    kkm.sendSaleStr(20, 4, "ABCDEFGHIJKLMNOPQRSTU");
    EXPECT_EQ(world.Steps(),
              (Strings{"27 01 02 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20",
                       "27 00 FF 41 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20",
                       "27 14 04 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52",
                       "27 14 04 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52"}));
}

TEST_F(SalesTest, OtherAnswerToASaleTextIsCode2) {
    line.Answer(request::kTitle, Frame(0x96)).Answer(request::kTitle, Frame(0xA7));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(FaultOf([&] { kkm.sendSaleStr(0, 0, "A"); }), "2 CTarvo::send_salestr - error");
    }
    EXPECT_EQ(FaultOf([&] { kkm.sendSaleStr(0, 0, "A"); }), kSilenceFault);
}

struct WeightCase {
    double weight;
    const char* request;
};

TEST_F(SalesTest, WeightIsItsFirstSixDigits) {
    const double infinity = std::numeric_limits<double>::infinity();
    const WeightCase cases[] = {
        {0, "26 00 00 00 00 00 00"},
        {0.999, "26 00 00 00 00 00 00"},
        {7, "26 00 00 00 00 00 07"},
        {123.999, "26 00 00 00 01 02 03"},
        {12345, "26 00 01 02 03 04 05"},
        {999999, "26 09 09 09 09 09 09"},
        {1234567, "26 01 02 03 04 05 06"},
        {4294967295.0, "26 04 02 09 04 09 06"},
        {4294967297.0, "26 00 00 00 00 00 01"},
        {-1, "26 04 02 09 04 09 06"},
        {infinity, "26 00 00 00 00 00 00"},
        {std::nan(""), "26 00 00 00 00 00 00"},
    };
    line.Always(request::kWeight, Frame(0xB6));
    for (const WeightCase& c : cases) {
        world.ClearLog();
        kkm.sendWeight(c.weight);
        EXPECT_EQ(world.Steps(), (Strings{c.request})) << c.weight;
    }
}

TEST_F(SalesTest, KeepsTheSaleTextOfARefusedWeightAndResetsTheStatus) {
    const std::pair<Reply, const char*> cases[] = {
        {Frame(0xB5), "error=0, command=UnNone"},
        {Frame(0xCD, {1}), "error=0, command=ks_weight"},
        {Frame(0xC1, {5}), "error=5, command=kkm_salecode"},
        {Frame(0xE8, {255}), "error=255, command=UnNone"},
    };
    line.Always(request::kReset, Frame(0x90));
    for (const auto& [answer, text] : cases) {
        world.ClearLog();
        line.Answer(request::kWeight, answer);
        EXPECT_EQ(FaultOf([&] { kkm.sendWeight(1); }),
                  std::string("2 CTarvo::send_sale_info - ") + text);
        EXPECT_EQ(world.Steps(), (Strings{"26 00 00 00 00 00 01", "7F"}));
    }
}

TEST_F(SalesTest, FaultOfTheResetBehindARefusedWeightIsSwallowed) {
    for (const Reply& answer : {Reply(Frame(0x91)), Silence()}) {
        line.Answer(request::kWeight, Frame(0xC0)).Answer(request::kReset, answer);
        EXPECT_EQ(FaultOf([&] { kkm.sendWeight(1); }),
                  "2 CTarvo::send_sale_info - error=0, command=ks_kkmgo");
        EXPECT_EQ(line.QueuedAnswers(), 0U);
    }
}

TEST_F(SalesTest, WeightWithoutAnAnswerIsNotFollowedByAReset) {
    EXPECT_EQ(FaultOf([&] { kkm.sendWeight(1); }), kSilenceFault);
    EXPECT_EQ(world.Steps(), (Strings{"26 00 00 00 00 00 01"}));
}

TEST_F(SalesTest, AnswersOfStateCommandsAreDecodedBeforeTheyAreJudged) {
    for (const unsigned char command :
         Bytes{request::kWeight, request::kDiscount, request::kCash, request::kQuery, 0x03}) {
        line.Answer(command, kAsksForGoodsCode);
    }
    kkm.setVersion(kkm_ver_303);
    const auto steps_of = [&](auto action) {
        kkm.initClass();
        kkm.setCom(&port);
        kkm.setVersion(kkm_ver_303);
        world.ClearLog();
        EXPECT_EQ(CodeOf(action), 2);
        return world.Steps();
    };
    Strings weight = Decoded("26 00 00 00 00 00 01");
    weight.emplace_back("7F");
    EXPECT_EQ(steps_of([&] { kkm.sendWeight(1); }), weight);
    EXPECT_EQ(steps_of([&] { kkm.sendDiscount(1); }), Decoded("23 01"));
    EXPECT_EQ(steps_of([&] { kkm.sendCash(1); }), Decoded("28 00 00 00 00 01"));
    EXPECT_EQ(steps_of([&] { kkm.sendQuerySale(); }), Decoded("35"));
    EXPECT_EQ(steps_of([&] { kkm.ClearCheck(); }), Decoded("03"));
}

TEST_F(SalesTest, DiscountIsOneSignedByte) {
    line.Always(request::kDiscount, Frame(0xB4));
    for (const int percent : {0, 10, -10, 127, -128}) {
        kkm.sendDiscount(static_cast<std::int8_t>(percent));
    }
    EXPECT_EQ(world.Steps(), (Strings{"23 00", "23 0A", "23 F6", "23 7F", "23 80"}));
}

TEST_F(SalesTest, OtherAnswerToADiscountIsCode2) {
    for (const unsigned char code : Bytes{0xB3, 0xB5, 0xC9}) {
        line.Answer(request::kDiscount, Frame(code));
        EXPECT_EQ(FaultOf([&] { kkm.sendDiscount(1); }),
                  "2 CTarvo::send_discount - si.command!=kkm_discount");
    }
    EXPECT_EQ(FaultOf([&] { kkm.sendDiscount(1); }), kSilenceFault);
}

TEST_F(SalesTest, DiscountCardCarriesItsNumberBehindItsLength) {
    line.Always(request::kCard, Frame(0xB5));
    kkm.sendDiscountCard(0, "");
    kkm.sendDiscountCard(255, "");
    kkm.sendDiscountCard(2, "7");
    kkm.sendDiscountCard(3, "1234567890123456");
    EXPECT_EQ(world.Steps(),
              (Strings{"24 01 00 00", "sleep 50", "24 01 FF 00", "sleep 50", "24 01 02 02 37 00",
                       "sleep 50", "24 01 03 11 31 32 33 34 35 36 37 38 39 30 31 32 33 34 35 36 00",
                       "sleep 50"}));
}

TEST_F(SalesTest, KeepsThePauseBetweenSendingACardAndReadingItsAnswer) {
    line.Answer(request::kCard, Frame(0xB5));
    kkm.sendDiscountCard(0, "");
    const Strings begin(world.Log().begin(), world.Log().begin() + 6);
    EXPECT_EQ(begin, (Strings{"sleep 10", "flush", "write 00 06 00 24 01 00 00 25", "sleep 50",
                              "sleep 10", "wait 400"}));
}

TEST_F(SalesTest, KeepsTheEmptyTextOfARefusedDiscountCard) {
    line.Answer(request::kCard, Frame(0xB4)).Answer(request::kCard, Frame(0xCA));
    EXPECT_EQ(FaultOf([&] { kkm.sendDiscountCard(0, ""); }), "2 ");
    EXPECT_EQ(FaultOf([&] { kkm.sendDiscountCard(0, "1"); }), "2 ");
    EXPECT_EQ(FaultOf([&] { kkm.sendDiscountCard(0, ""); }), kSilenceFault);
}

TEST_F(SalesTest, CashIsABigEndianAmountBehindAZero) {
    line.Always(request::kCash, Frame(0xE8, {0, 9}));
    for (const std::uint32_t amount : {0U, 258U, 0x01020304U, 0xFFFFFFFFU}) {
        kkm.sendCash(amount);
    }
    EXPECT_EQ(world.Steps(), (Strings{"28 00 00 00 00 00", "28 00 00 00 01 02", "28 00 01 02 03 04",
                                      "28 00 FF FF FF FF"}));
}

TEST_F(SalesTest, CashIsTakenWhenTheReplyIsZeroOrMissing) {
    line.Answer(request::kCash, Frame(0xE8));
    EXPECT_EQ(FaultOf([&] { kkm.sendCash(1); }), "");
}

TEST_F(SalesTest, RefusedCashIsCode6AndAnotherAnswerCode2) {
    const std::string text = " CTarvo::send_cash - pack.cmd !=kkm_cash";
    line.Answer(request::kCash, Frame(0xE8, {1})).Answer(request::kCash, Frame(0xE8, {0x80}));
    line.Answer(request::kCash, Frame(0xE7, {0})).Answer(request::kCash, Frame(0xC1, {1}));
    const auto pay = [&] { kkm.sendCash(1); };
    EXPECT_EQ(FaultOf(pay), "6" + text);
    EXPECT_EQ(FaultOf(pay), "6" + text);
    EXPECT_EQ(FaultOf(pay), "2" + text);
    EXPECT_EQ(FaultOf(pay), "2" + text);
    EXPECT_EQ(FaultOf(pay), kSilenceFault);
}

TEST_F(SalesTest, CheckIsClosedWithItsType) {
    line.Always(request::kCheckOut, Frame(0xE4, {1}));
    for (const int type : {0, 1, 2, 3, 4, 6}) {
        kkm.outCheck(static_cast<kkm_check>(type));
    }
    EXPECT_EQ(world.Steps(), (Strings{"25 00", "25 01", "25 02", "25 03", "25 04", "25 06"}));
}

TEST_F(SalesTest, KeepsANonZeroByteTheSuccessOfAClosing) {
    const auto close = [&] { kkm.outCheck(check_return); };
    line.Answer(request::kCheckOut, Frame(0xE4, {0x80}))
        .Answer(request::kCheckOut, Frame(0xE4, {0, 1}));
    line.Answer(request::kCheckOut, Frame(0xE4));
    EXPECT_EQ(FaultOf(close), "");
    EXPECT_EQ(FaultOf(close), "6 CTarvo::check_out, !pack.data[0]");
    EXPECT_EQ(FaultOf(close), "6 CTarvo::check_out, !pack.data[0]");
}

TEST_F(SalesTest, OtherAnswerToAClosingIsCode2) {
    for (const unsigned char code : Bytes{0xE3, 0xE5, 0xC8}) {
        line.Answer(request::kCheckOut, Frame(code, {1}));
        EXPECT_EQ(FaultOf([&] { kkm.outCheck(check_return); }),
                  "2 CTarvo::check_out, pack.cmd!=kkm_checkuot");
    }
    EXPECT_EQ(FaultOf([&] { kkm.outCheck(check_return); }), kSilenceFault);
}

TEST_F(SalesTest, SaleQueryIsOneExchange) {
    line.Answer(request::kQuery, Frame(0xB5, {1}));
    EXPECT_EQ(FaultOf([&] { kkm.sendQuerySale(); }), "");
    EXPECT_EQ(world.Steps(), (Strings{"35"}));
}

TEST_F(SalesTest, OtherAnswerToASaleQueryIsCode2) {
    for (const unsigned char code : Bytes{0xB4, 0xB6, 0xC0}) {
        line.Answer(request::kQuery, Frame(code));
        EXPECT_EQ(FaultOf([&] { kkm.sendQuerySale(); }),
                  "2 CTarvo::send_querysale - pack.cmd !=kkm_querysale");
    }
    EXPECT_EQ(FaultOf([&] { kkm.sendQuerySale(); }), kSilenceFault);
}

class ClearCheckTest : public SalesTest {
  protected:
    ClearCheckTest() {
        kkm.setVersion(kkm_ver_301);
        line.Always(request::kKey, Frame(0xA9)).Always(request::kReset, Frame(0x90));
    }

    void StatusesAre(const Bytes& states) {
        for (const unsigned char state : states) {
            line.Answer(request::kStatus, Frame(state));
        }
    }

    std::string Clear() {
        return FaultOf([&] { kkm.ClearCheck(); });
    }
};

TEST_F(ClearCheckTest, FirmwareAbove301ClearsByCommand) {
    line.Always(0x03, Frame(0x83));
    for (const int version : {302, 303, 310, 400}) {
        kkm.setVersion(static_cast<kkm_ver>(version));
        world.ClearLog();
        EXPECT_EQ(Clear(), "");
        EXPECT_EQ(world.Steps(), (Strings{"03"}));
    }
}

TEST_F(ClearCheckTest, OtherAnswerToAClearingNamesReplyAndState) {
    kkm.setVersion(kkm_ver_302);
    line.Answer(0x03, Frame(0x82)).Answer(0x03, Frame(0xC8)).Answer(0x03, Frame(0xC1, {9}));
    EXPECT_EQ(Clear(), "2 CTarvo::send_check_clear - error=0, command=UnNone");
    EXPECT_EQ(Clear(), "2 CTarvo::send_check_clear - error=0, command=ks_checkout");
    EXPECT_EQ(Clear(), "2 CTarvo::send_check_clear - error=9, command=kkm_salecode");
    EXPECT_EQ(Clear(), kSilenceFault);
}

TEST_F(ClearCheckTest, UnknownFirmwareIsAskedNothing) {
    kkm.setVersion(kkm_ver_unknown);
    EXPECT_EQ(Clear(), "7    ");
    EXPECT_EQ(world.Log(), Strings{});
}

TEST_F(ClearCheckTest, KeysArePressedOnlyInACheckThatIsBeingClosed) {
    for (const int version : {300, 301}) {
        kkm.setVersion(static_cast<kkm_ver>(version));
        for (const unsigned char state : Bytes{0xC0, 0xC5, 0xC7, 0xC9, 0xA0, 0xA2}) {
            world.ClearLog();
            StatusesAre({state});
            EXPECT_EQ(Clear(), "");
            EXPECT_EQ(world.Steps(), (Strings{"20"}));
        }
    }
}

TEST_F(ClearCheckTest, KeysAreRepeatedUntilTheStatesCome) {
    StatusesAre({0xC8, 0xC8, 0xC8, 0xC0, 0xC8, 0xC4, 0xC5});
    EXPECT_EQ(Clear(), "");
    EXPECT_EQ(world.Steps(), (Strings{"20",                    //
                                      "29 20", "20",           //
                                      "29 20", "20",           //
                                      "29 20", "20",           //
                                      "29 20", "29 28", "20",  //
                                      "29 20", "29 28", "20",  //
                                      "29 20", "29 28", "20",  //
                                      "7F"}));
}

TEST_F(ClearCheckTest, KeepsTheSecondKeysEvenWhenTheBufferIsAlreadyClear) {
    StatusesAre({0xC8, 0xC5, 0xC5});
    EXPECT_EQ(Clear(), "");
    EXPECT_EQ(world.Steps(), (Strings{"20", "29 20", "20", "29 20", "29 28", "20", "7F"}));
}

TEST_F(ClearCheckTest, KeyLoopsHaveNoBound) {
    StatusesAre(Bytes(1001, 0xC8));
    StatusesAre(Bytes(1000, 0xC0));
    StatusesAre({0xC5});
    EXPECT_EQ(Clear(), "");
    EXPECT_EQ(world.Requests().size(), 1U + 2 * 1001 + 3 * 1000 + 1);
}

TEST_F(ClearCheckTest, TransportFaultEndsEitherLoop) {
    StatusesAre({0xC8, 0xC8});
    EXPECT_EQ(Clear(), kSilenceFault);
    EXPECT_EQ(world.Steps(), (Strings{"20", "29 20", "20", "29 20", "20"}));
    StatusesAre({0xC8, 0xC0});
    world.ClearLog();
    EXPECT_EQ(Clear(), kSilenceFault);
    EXPECT_EQ(world.Steps(), (Strings{"20", "29 20", "20", "29 20", "29 28", "20"}));
}

TEST_F(ClearCheckTest, FaultOfTheLastResetPassesThrough) {
    line.Always(request::kReset, Frame(0x91));
    StatusesAre({0xC8, 0xC0, 0xC5});
    EXPECT_EQ(Clear(), "2 CTarvoOnline::reset_status (pac.cmd!=kkm_reset)");
}

TEST_F(ClearCheckTest, Firmware300CannotPressTheKeys) {
    kkm.setVersion(kkm_ver_300);
    StatusesAre({0xC8});
    EXPECT_EQ(Clear(), "7       ");
    EXPECT_EQ(world.Steps(), (Strings{"20"}));
}

}  // namespace
}  // namespace test
