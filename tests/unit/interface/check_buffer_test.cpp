#include <climits>
#include <limits>
#include <stdexcept>

#include "protocol/tarvo_error.h"
#include "serial/mini_com_error.h"
#include "support/interface_fixture.h"

namespace test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class CheckBufferTest : public InterfaceTest {
  protected:
    static int Add(double price = 1.0, double quantity = 1.0, int section = 1,
                   const std::string& name = "tea") {
        std::string bytes = name;
        return cbAddSale(bytes.data(), price, quantity, section);
    }

    static void Fill(int lines) {
        for (int i = 0; i < lines; ++i) {
            ASSERT_EQ(Add(), 1) << "line " << i + 1;
        }
    }

    // The code of a line that is refused; 0 for one that is taken. A refused line leaves the
    // buffer as it was.
    static int CodeOfAdding(double price, double quantity = 1.0, int section = 1) {
        const int before = cbGetSalesCount();
        const int result = Add(price, quantity, section);
        EXPECT_EQ(result, GetErrorCode() == 0 ? 1 : 0);
        EXPECT_EQ(cbGetSalesCount(), before + result);
        return GetErrorCode();
    }

    static const sale& LastLine() { return kvesk.check().sales.back(); }
};

// --- cbAddSale

TEST_F(CheckBufferTest, LineIsStoredWithItsPlaceholders) {
    EXPECT_EQ(Add(19.99, 3.0, 15, "Bread"), 1);
    EXPECT_EQ(LastLine().title, "Bread");
    EXPECT_EQ(LastLine().section, 15);
    EXPECT_FALSE(LastLine().fractional);
    EXPECT_EQ(LastLine().code, 1);
    EXPECT_EQ(LastLine().barcode, "1234567890123");
    EXPECT_EQ(LastLine().price, 1999U);
    EXPECT_EQ(LastLine().count, 3.0F);
    EXPECT_EQ(world.Log(), Texts{});
}

TEST_F(CheckBufferTest, LinesAreAppended) {
    Add(1.0, 1.0, 1, "first");
    Add(1.0, 1.0, 1, "second");
    EXPECT_EQ(kvesk.check().sales[0].title, "first");
    EXPECT_EQ(kvesk.check().sales[1].title, "second");
}

TEST_F(CheckBufferTest, NameOfAnyLengthAndContentIsTakenAsItStands) {
    EXPECT_EQ(Add(1.0, 1.0, 1, ""), 1);
    EXPECT_EQ(LastLine().title, "");
    EXPECT_EQ(Add(1.0, 1.0, 1, std::string(500, '\x8F')), 1);
    EXPECT_EQ(LastLine().title, std::string(500, '\x8F'));
}

TEST_F(CheckBufferTest, MissingNameIsCode12) {
    EXPECT_EQ(cbAddSale(nullptr, 1.0, 1.0, 1), 0);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(cbGetSalesCount(), 0);
}

TEST_F(CheckBufferTest, SectionIsFrom1To15) {
    const std::vector<std::pair<int, int>> codes{{0, 12},  {1, 0},    {15, 0},       {16, 12},
                                                 {-1, 12}, {257, 12}, {INT_MIN, 12}, {INT_MAX, 12}};
    for (const auto& [section, code] : codes) {
        EXPECT_EQ(CodeOfAdding(1.0, 1.0, section), code) << section;
    }
}

TEST_F(CheckBufferTest, PriceIsRoundedHalfUpToKopecks) {
    const std::vector<std::pair<double, std::uint32_t>> kopecks{
        {0.005, 1},
        {0.01, 1},
        {1.004, 100},
        {10.005, 1001},
        {1.115, 112},
        {99999.99, 9999999},
        {99999.994, 9999999},
        // Multiplied by 100, which is a little less than the halves these look like.
        {1.005, 100},
        {0.285, 28}};
    for (const auto& [price, expected] : kopecks) {
        ASSERT_EQ(Add(price), 1) << price;
        EXPECT_EQ(LastLine().price, expected) << price;
    }
}

TEST_F(CheckBufferTest, PriceOutsideOneKopeckAndTheLimitIsCode14) {
    for (const double price : {0.0, 0.004, -0.01, -5.0, 99999.995, 100000.0, 42949673.96, 1e300,
                               -1e300, kNaN, kInfinity, -kInfinity, 92233720368547758.08}) {
        EXPECT_EQ(CodeOfAdding(price), 14) << price;
    }
}

TEST_F(CheckBufferTest, Firmware300TakesPricesOfSixDigits) {
    kvesk.setVersion(kkm_ver_300);
    EXPECT_EQ(CodeOfAdding(9999.99), 0);
    EXPECT_EQ(LastLine().price, 999999U);
    EXPECT_EQ(CodeOfAdding(9999.995), 14);
    EXPECT_EQ(CodeOfAdding(10000.0), 14);
    EXPECT_EQ(CodeOfAdding(0.004), 14);
    kvesk.setVersion(kkm_ver_301);
    EXPECT_EQ(CodeOfAdding(10000.0), 0);
}

TEST_F(CheckBufferTest, QuantityLimitsOfPiecesAndOfWeights) {
    const std::vector<std::pair<double, int>> codes{
        {65.0, 0},     {65535.0, 0},    {65536.0, 15},    {64.999, 0},  {65.001, 15},  {65.5, 15},
        {65534.5, 15}, {0.0, 0},        {-1.0, 0},        {-70.5, 0},   {-65536.0, 0}, {kNaN, 15},
        {1e300, 15},   {kInfinity, 15}, {-kInfinity, 15}, {-1e300, 15}, {-1e39, 15},   {-1e38, 0}};
    for (const auto& [quantity, code] : codes) {
        EXPECT_EQ(CodeOfAdding(1.0, quantity), code) << quantity;
        if (code == 0) {
            kvesk.check().clear();
        }
    }
}

TEST_F(CheckBufferTest, QuantityIsKeptInSinglePrecision) {
    Add(1.0, 0.1);
    EXPECT_EQ(LastLine().count, 0.1F);
}

TEST_F(CheckBufferTest, KeepsTheFractionOfTheHostsOwnNumber) {
    Add(1.0, 1.00000001);  // exactly one as a single-precision number
    EXPECT_TRUE(LastLine().fractional);
    EXPECT_EQ(LastLine().count, 1.0F);
    Add(1.0, 1.5);
    EXPECT_TRUE(LastLine().fractional);
    Add(1.0, 2.0);
    EXPECT_FALSE(LastLine().fractional);
    Add(1.0, -1.5);
    EXPECT_FALSE(LastLine().fractional) << "below zero nothing counts as a fraction";
}

TEST_F(CheckBufferTest, OldAndUnknownFirmwareTakes19Lines) {
    for (const kkm_ver version : {kkm_ver_unknown, kkm_ver_300, kkm_ver_301, kkm_ver_302}) {
        kvesk.setVersion(version);
        cbClearSales();
        Fill(19);
        EXPECT_EQ(CodeOfAdding(1.0), 17) << version;
        EXPECT_EQ(cbGetSalesCount(), 19) << version;
    }
    EXPECT_EQ(world.Requests(), Texts{}) << "the version is taken as it stands";
}

TEST_F(CheckBufferTest, LaterFirmwareHasNoLineLimit) {
    for (const kkm_ver version : {kkm_ver_303, kkm_ver_310, kkm_ver_400}) {
        kvesk.setVersion(version);
        cbClearSales();
        Fill(60);
        EXPECT_EQ(cbGetSalesCount(), 60) << version;
    }
}

TEST_F(CheckBufferTest, FirstFaultOf17Then12Then14Then15Counts) {
    EXPECT_EQ(CodeOfAdding(0.0, 70000.0, 0), 12);
    EXPECT_EQ(CodeOfAdding(0.0, 70000.0, 1), 14);
    EXPECT_EQ(CodeOfAdding(1.0, 70000.0, 1), 15);
    Fill(19);
    EXPECT_EQ(CodeOfAdding(0.0, 70000.0, 0), 17);
}

TEST_F(CheckBufferTest, RefusedLineIsToldToTheHost) {
    ListenToErrors();
    Add(0.0);
    EXPECT_EQ(Events(), Texts{"error 14"});
}

// --- cbDeleteSale

TEST_F(CheckBufferTest, LineIsDeletedByItsNumberFromOne) {
    Add(1.0, 1.0, 1, "first");
    Add(1.0, 1.0, 1, "second");
    Add(1.0, 1.0, 1, "third");
    EXPECT_EQ(cbDeleteSale(2), 1);
    EXPECT_EQ(cbGetSalesCount(), 2);
    EXPECT_EQ(kvesk.check().sales[1].title, "third");
    EXPECT_EQ(cbDeleteSale(1), 1);
    EXPECT_EQ(kvesk.check().sales[0].title, "third");
    EXPECT_EQ(cbDeleteSale(1), 1);
    EXPECT_EQ(cbGetSalesCount(), 0);
}

TEST_F(CheckBufferTest, NoSuchLineToDeleteIsCode11) {
    ListenToErrors();
    EXPECT_EQ(cbDeleteSale(1), 0);
    EXPECT_EQ(GetErrorCode(), 11);
    EXPECT_EQ(Events(), Texts{"error 11"});
    Fill(2);
    for (const int index : {0, 3, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(cbDeleteSale(index), 0) << index;
        EXPECT_EQ(GetErrorCode(), 11) << index;
        EXPECT_EQ(cbGetSalesCount(), 2) << index;
    }
}

// --- cbGetSale

class GetSaleTest : public CheckBufferTest {
  protected:
    int Get(int index) { return cbGetSale(index, &name, &price, &quantity, &section); }

    void ExpectUntouched() const {
        EXPECT_EQ(std::string(text), "untouched");
        EXPECT_EQ(price, -1.0);
        EXPECT_EQ(quantity, -2.0);
        EXPECT_EQ(section, -3);
    }

    char text[600] = "untouched";
    char* name = text;
    double price = -1.0;
    double quantity = -2.0;
    int section = -3;
};

TEST_F(GetSaleTest, LineIsReadBackInTheHostsUnits) {
    Add(1.0, 1.0, 1, "first");
    Add(19.99, 0.1, 7, "second");
    EXPECT_EQ(Get(2), 1);
    EXPECT_EQ(std::string(text), "second");
    EXPECT_EQ(price, 19.990000000000002) << "kopecks times 0.01, not divided by 100";
    EXPECT_EQ(quantity, 0.10000000149011612) << "as stored";
    EXPECT_EQ(section, 7);
    EXPECT_EQ(name, text);
    EXPECT_EQ(Get(1), 1);
    EXPECT_EQ(std::string(text), "first");
}

TEST_F(GetSaleTest, NameIsCopiedWholeWithItsTerminator) {
    Add(1.0, 1.0, 1, std::string(500, 'x'));
    text[501] = '#';
    EXPECT_EQ(Get(1), 1);
    EXPECT_EQ(std::string(text), std::string(500, 'x'));
    EXPECT_EQ(text[501], '#');
    Add(1.0, 1.0, 1, "");
    EXPECT_EQ(Get(2), 1);
    EXPECT_EQ(std::string(text), "");
}

TEST_F(GetSaleTest, NoSuchLineIsCode11) {
    for (const int index : {0, 1, -1}) {
        EXPECT_EQ(Get(index), 0) << index;
        EXPECT_EQ(GetErrorCode(), 11) << index;
    }
    Fill(2);
    for (const int index : {0, 3, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(Get(index), 0) << index;
        EXPECT_EQ(GetErrorCode(), 11) << index;
    }
    ExpectUntouched();
}

TEST_F(GetSaleTest, AnyMissingPointerIsCode12) {
    Fill(1);
    char* nowhere = nullptr;
    EXPECT_EQ(cbGetSale(1, nullptr, &price, &quantity, &section), 0);
    EXPECT_EQ(GetErrorCode(), 12);
    const std::vector<int> results{cbGetSale(1, &nowhere, &price, &quantity, &section),
                                   cbGetSale(1, &name, nullptr, &quantity, &section),
                                   cbGetSale(1, &name, &price, nullptr, &section),
                                   cbGetSale(1, &name, &price, &quantity, nullptr)};
    EXPECT_EQ(results, (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(GetErrorCode(), 12);
    ExpectUntouched();
}

// --- the whole buffer

TEST_F(CheckBufferTest, ClearingResetsLinesModeDiscountAndCash) {
    Connect();
    Fill(2);
    cbSetReturnMode(1);
    cbSetDiscountValue(-10);
    cbSetCash(5.0);
    cbClearSales();
    EXPECT_EQ(cbGetSalesCount(), 0);
    EXPECT_EQ(cbGetReturnMode(), 0);
    EXPECT_EQ(cbGetDiscountValue(), 0);
    EXPECT_EQ(kvesk.check().cash, 0U);
}

TEST_F(CheckBufferTest, SumIsInCurrencyUnits) {
    EXPECT_EQ(cbGetSum(), 0.0);
    Add(3.05);
    EXPECT_EQ(cbGetSum(), 3.0500000000000003) << "kopecks times 0.01, not divided by 100";
    cbClearSales();
    Add(19.99, 3.0);
    EXPECT_EQ(cbGetSum(), 59.97);
    cbSetDiscountValue(-10);
    EXPECT_EQ(cbGetSum(), 53.97);
}

// --- cash

class CashTest : public CheckBufferTest {
  protected:
    static std::uint32_t CashOf(double sum) {
        EXPECT_EQ(cbSetCash(sum), 1);
        return kvesk.check().cash;
    }
};

TEST_F(CashTest, CashIsRoundedHalfUpToKopecks) {
    Connect();
    EXPECT_EQ(CashOf(50.0), 5000U);
    EXPECT_EQ(CashOf(50.004), 5000U);
    EXPECT_EQ(CashOf(50.005), 5001U);
    EXPECT_EQ(CashOf(0.0), 0U);
    EXPECT_EQ(world.Requests(), Texts{});
}

TEST_F(CashTest, CashThatDoesNotFitIsCutTo32Bits) {
    Connect();
    EXPECT_EQ(CashOf(42949672.95), 4294967295U);
    EXPECT_EQ(CashOf(42949672.96), 0U);
    EXPECT_EQ(CashOf(42949673.96), 100U);
    EXPECT_EQ(CashOf(-0.01), 4294967295U);
    for (const double sum : {kNaN, kInfinity, -kInfinity, 1e300, -1e300}) {
        kvesk.check().cash = 7;
        EXPECT_EQ(CashOf(sum), 0U) << sum;
    }
}

TEST_F(CashTest, Firmware300TakesNoCash) {
    kvesk.setVersion(kkm_ver_300);
    kvesk.check().cash = 7;
    EXPECT_EQ(CashOf(50.0), 0U);
}

TEST_F(CashTest, UnknownFirmwareIsAskedFor) {
    ConnectTooEarly();
    EXPECT_EQ(CashOf(50.0), 5000U);
    EXPECT_EQ(world.Requests(), Texts{"34"});
}

TEST_F(CashTest, SucceedsWhateverTheLastErrorIs) {
    Connect();
    ListenToErrors();
    errVeskTarvo = 14;
    EXPECT_EQ(cbSetCash(1.0), 1);
    EXPECT_EQ(errVeskTarvo, 14);
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(CashTest, KeepsLettingTheProtocolsErrorOut) {
    ConnectTooEarly(kkm_ver_unknown);
    ListenToErrors();
    kvesk.check().cash = 7;
    errVeskTarvo = 14;
    EXPECT_THROW(cbSetCash(50.0), ETarvo);
    EXPECT_EQ(errVeskTarvo, 14);
    EXPECT_EQ(kvesk.check().cash, 7U);
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(CashTest, KeepsLettingThePortsErrorOut) {
    EXPECT_THROW(cbSetCash(50.0), EMiniCom) << "closed";
    ConnectInVain();
    EXPECT_THROW(cbSetCash(50.0), EMiniCom) << "silent";
    EXPECT_THROW(cbSetCash(50.0), std::exception) << "all that a host can name";
}

TEST_F(CashTest, KeepsTheCashToItself) {
    Connect();
    cbSetCash(50.0);
    EXPECT_EQ(cbGetCash(), 0.0);
}

// --- modes

TEST_F(CheckBufferTest, KeepsTheReturnModeThroughAZero) {
    EXPECT_EQ(cbGetReturnMode(), 0);
    cbSetReturnMode(1);
    EXPECT_EQ(cbGetReturnMode(), 1);
    EXPECT_EQ(kvesk.check().mode, 1);
    cbSetReturnMode(0);
    EXPECT_EQ(cbGetReturnMode(), 1);
    cbClearSales();
    EXPECT_EQ(cbGetReturnMode(), 0);
}

TEST_F(CheckBufferTest, KeepsTheCreditModeThroughAZero) {
    EXPECT_EQ(cbGetCreditMode(), 0);
    cbSetCreditMode(-1);
    EXPECT_EQ(cbGetCreditMode(), 1);
    EXPECT_EQ(kvesk.check().mode, 2);
    cbSetCreditMode(0);
    EXPECT_EQ(cbGetCreditMode(), 1);
}

TEST_F(CheckBufferTest, ZeroTurnsNoModeOn) {
    cbSetReturnMode(0);
    cbSetCreditMode(0);
    EXPECT_EQ(kvesk.check().mode, 0);
    cbSetReturnMode(1);
    cbSetCreditMode(0);
    EXPECT_EQ(kvesk.check().mode, 1);
}

TEST_F(CheckBufferTest, ReturnAndCreditReplaceEachOther) {
    cbSetReturnMode(1);
    cbSetCreditMode(1);
    EXPECT_EQ(cbGetReturnMode(), 0);
    EXPECT_EQ(cbGetCreditMode(), 1);
    cbSetReturnMode(2);
    EXPECT_EQ(cbGetReturnMode(), 1);
    EXPECT_EQ(cbGetCreditMode(), 0);
}

TEST_F(CheckBufferTest, DiscountIsFromMinus99To99) {
    for (const int percent : {-99, -1, 0, 1, 99}) {
        EXPECT_EQ(cbSetDiscountValue(percent), 1) << percent;
        EXPECT_EQ(cbGetDiscountValue(), percent);
    }
}

TEST_F(CheckBufferTest, DiscountOutOfRangeIsCode19AndLosesTheEarlierOne) {
    ListenToErrors();
    for (const int percent : {100, -100, INT_MIN, INT_MAX}) {
        cbSetDiscountValue(-10);
        EXPECT_EQ(cbSetDiscountValue(percent), 0) << percent;
        EXPECT_EQ(GetErrorCode(), 19) << percent;
        EXPECT_EQ(cbGetDiscountValue(), 0) << percent;
    }
    EXPECT_EQ(Events(), (Texts{"error 19", "error 19", "error 19", "error 19"}));
}

TEST_F(CheckBufferTest, BufferIsClearedAfterACheckUnlessSwitchedOff) {
    EXPECT_EQ(cbGetClearBufMode(), 1);
    cbSetClearBufMode(0);
    EXPECT_EQ(cbGetClearBufMode(), 0);
    cbSetClearBufMode(2);
    EXPECT_EQ(cbGetClearBufMode(), 1);
    cbSetClearBufMode(-1);
    EXPECT_EQ(cbGetClearBufMode(), 0);
    EXPECT_FALSE(kvesk.clearBuffer());
    cbSetClearBufMode(1);
    EXPECT_EQ(cbGetClearBufMode(), 1);
}

// --- titles

TEST_F(CheckBufferTest, ClearTitleOnlyIdentifies) {
    ConnectTooEarly();
    EXPECT_EQ(cbClearTitle(), 1);
    EXPECT_EQ(world.Requests(), Texts{"34"});
    EXPECT_EQ(cbClearTitle(), 1);
    EXPECT_EQ(world.Requests(), Texts{"34"});
}

TEST_F(CheckBufferTest, ClearTitleWithoutRegisterIsCode2) {
    ConnectInVain();
    EXPECT_EQ(cbClearTitle(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
}

TEST_F(CheckBufferTest, KeepsClearBottomUnsupported) {
    Connect();
    ListenToErrors();
    EXPECT_EQ(cbClearBottom(), 0);
    EXPECT_EQ(GetErrorCode(), 71);
    EXPECT_EQ(Events(), Texts{"error 71"});
    EXPECT_EQ(world.Log(), Texts{});
}

}  // namespace
}  // namespace test
