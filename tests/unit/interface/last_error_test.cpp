#include "interface/last_error.h"

#include <functional>
#include <stdexcept>

#include "protocol/tarvo_error.h"
#include "serial/mini_com_error.h"
#include "support/interface_fixture.h"

namespace test {
namespace {

class LastErrorTest : public InterfaceTest {};

TEST_F(LastErrorTest, CodesHaveTheNumbersThatHostsKnow) {
    const std::vector<int> codes{
        echOk,       echNoPort, echDevice,    echNoVersion,   echPaperAbsent, echRegKass,
        echKLRead,   echIndex,  echParam,     echPrice,       echQuantity,    echSalesFull,
        echDiscount, echNoCash, echPrintTest, echCancelCheck, echNotSupported};
    EXPECT_EQ(codes,
              (std::vector<int>{0, 1, 2, 3, 5, 6, 10, 11, 12, 14, 15, 17, 19, 20, 32, 34, 71}));
}

TEST_F(LastErrorTest, ReadingTheCodeDoesNotClearIt) {
    errVeskTarvo = 14;
    EXPECT_EQ(GetErrorCode(), 14);
    EXPECT_EQ(GetErrorCode(), 14);
}

TEST_F(LastErrorTest, KeepsNoTextForAnyCode) {
    EXPECT_EQ(GetErrorMsg(), nullptr);
    SetErrorCode(echDevice);
    EXPECT_EQ(GetErrorMsg(), nullptr);
    EXPECT_EQ(strErrorMsg[0], '\0');
}

TEST_F(LastErrorTest, CallbackHearsTheCodeWithoutText) {
    ListenToErrors();
    SetErrorCode(echPrice);
    EXPECT_EQ(Events(), Texts{"error 14"});
    EXPECT_EQ(GetErrorCode(), 14);
}

TEST_F(LastErrorTest, CallbackFindsTheCodeStored) {
    static int seen;
    seen = -1;
    EventErrorProc = [](int, char*) { seen = GetErrorCode(); };
    SetErrorCode(echIndex);
    EXPECT_EQ(seen, 11);
}

TEST_F(LastErrorTest, CallbackIsNotCalledForSuccess) {
    ListenToErrors();
    errVeskTarvo = 2;
    SetErrorCode(echOk);
    EXPECT_EQ(Events(), Texts{});
    EXPECT_EQ(GetErrorCode(), 0);
}

TEST_F(LastErrorTest, WithoutCallbackOnlyTheCodeTells) {
    SetErrorCode(echNotSupported);
    EXPECT_EQ(GetErrorCode(), 71);
}

TEST_F(LastErrorTest, CallbackThatThrowsIsIgnored) {
    EventErrorProc = [](int, char*) { throw std::runtime_error("host"); };
    EXPECT_NO_THROW(SetErrorCode(echDevice));
    EXPECT_EQ(GetErrorCode(), 2);
    EventErrorProc = [](int, char*) { throw 5; };
    EXPECT_EQ(cbClearBottom(), 0);
    EXPECT_EQ(GetErrorCode(), 71);
}

TEST_F(LastErrorTest, ErrorsAreClearedWithoutACall) {
    ListenToErrors();
    errVeskTarvo = 2;
    EXPECT_EQ(GetDiscountMode(), 1);
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(LastErrorTest, FrameGivesTheEnginesOwnCode) {
    EXPECT_EQ(Guarded([] { throw ETarvoVesk(echKLRead); }), 0);
    EXPECT_EQ(GetErrorCode(), 10);
}

TEST_F(LastErrorTest, FrameTurnsEverythingElseIntoDevice) {
    ListenToErrors();
    const std::vector<std::function<void()>> actions{
        [] { throw ETarvo(&kvesk, errMoney, ""); },
        [] { throw EMiniCom(nullptr, errCreateFile, ""); },
        [] { throw std::runtime_error("anything"); },
        [] { throw 12; },
    };
    for (const auto& action : actions) {
        errVeskTarvo = 0;
        EXPECT_EQ(Guarded(action), 0);
        EXPECT_EQ(GetErrorCode(), 2);
    }
    EXPECT_EQ(Events(), (Texts{"error 2", "error 2", "error 2", "error 2"}));
}

TEST_F(LastErrorTest, FrameReportsAnErrorThatWasOnlySet) {
    EXPECT_EQ(Guarded([] { SetErrorCode(echCancelCheck); }), 0);
    EXPECT_EQ(GetErrorCode(), 34);
}

TEST_F(LastErrorTest, FrameClearsBeforeTheActionRuns) {
    errVeskTarvo = 14;
    int seen = -1;
    EXPECT_EQ(Guarded([&] { seen = errVeskTarvo; }), 1);
    EXPECT_EQ(seen, 0);
}

TEST_F(LastErrorTest, EveryPointerIsRequired) {
    int there = 0;
    EXPECT_NO_THROW(RequireArguments(&there, &there));
    EXPECT_EQ(Guarded([&] { RequireArguments(&there, static_cast<char*>(nullptr)); }), 0);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(Guarded([&] { RequireArguments(static_cast<char*>(nullptr), &there); }), 0);
}

// --- which functions touch the last error

struct Function {
    const char* name;
    std::function<void()> call;
};

// The register answers whatever these ask it for.
class ErrorClearingTest : public InterfaceTest {
  protected:
    void SetUp() override {
        Connect();
        line.Always(0x20, Frame(0xA0)).Always(0x7F, Frame(0x90)).Always(0x07, Frame(0x87));
        line.Always(0x0A, Frame(0x8A, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
        line.Always(0x02, Frame(0x82, {0})).Always(0x04, Frame(0x84, {0}));
        line.Always(0x12, Frame(0x8B, Bytes(31))).Always(0x30, Frame(0xB0));
        line.Always(0x31, Frame(0xB1)).Always(0x36, Frame(0xB7)).Always(0x29, Frame(0xA9));
        line.Always(0x0B, Frame(0x7B)).Always(0x34, VersionAnswer(kkm_ver_303));
        cbAddSale(name, 1.0, 1.0, 1);
    }

    int ReadTape() {
        unsigned char byte = 0;
        unsigned short word = 0;
        return ReadSaleFromKL(1, &byte, &byte, &real, &real, &real, &real, &real, &real, &byte,
                              &word, &byte, &byte, &byte, &byte);
    }

    char name[8] = "tea";
    char text[64] = "";
    char* buffer = text;
    int number = 0;
    double real = 0.0;
};

TEST_F(ErrorClearingTest, TheseLeaveTheLastErrorAlone) {
    const std::vector<Function> functions{
        {"GetErrorCode", [] { GetErrorCode(); }},
        {"GetErrorMsg", [] { GetErrorMsg(); }},
        {"cbGetSalesCount", [] { cbGetSalesCount(); }},
        {"cbGetSum", [] { cbGetSum(); }},
        {"cbGetDiscountValue", [] { cbGetDiscountValue(); }},
        {"cbGetCash", [] { cbGetCash(); }},
        {"cbGetReturnMode", [] { cbGetReturnMode(); }},
        {"cbGetCreditMode", [] { cbGetCreditMode(); }},
        {"CheckPrintPrepare", [] { CheckPrintPrepare(); }},
        {"cbSetCash", [] { cbSetCash(1.0); }},
        {"Sleep", [] { Sleep(1); }},
        {"round", [] { RoundHalfUp(1.5); }},
        {"GetTickCount", [] { GetTickCount(); }},
    };
    for (const Function& function : functions) {
        errVeskTarvo = 14;
        function.call();
        EXPECT_EQ(errVeskTarvo, 14) << function.name;
    }
}

TEST_F(ErrorClearingTest, AllTheOthersClearIt) {
    const std::vector<Function> functions{
        {"cbAddSale", [&] { cbAddSale(name, 1.0, 1.0, 1); }},
        {"cbDeleteSale", [] { cbDeleteSale(2); }},
        {"cbGetSale", [&] { cbGetSale(1, &buffer, &real, &real, &number); }},
        {"cbSetReturnMode", [] { cbSetReturnMode(0); }},
        {"cbSetCreditMode", [] { cbSetCreditMode(0); }},
        {"cbSetDiscountValue", [] { cbSetDiscountValue(1); }},
        {"cbSetClearBufMode", [] { cbSetClearBufMode(1); }},
        {"cbGetClearBufMode", [] { cbGetClearBufMode(); }},
        {"cbClearTitle", [] { cbClearTitle(); }},
        {"cbClearSales", [] { cbClearSales(); }},
        {"GetDiscountMode", [] { GetDiscountMode(); }},
        {"CheckClose", [] { CheckClose(); }},
        {"CheckCancel", [] { CheckCancel(); }},
        {"GetSmenaNum", [&] { GetSmenaNum(&number); }},
        {"GetKLNum", [&] { GetKLNum(&number); }},
        {"GetSaleNum", [&] { GetSaleNum(&number); }},
        {"GetCheckCount", [&] { GetCheckCount(&number); }},
        {"GetKKMNum", [&] { GetKKMNum(&number); }},
        {"GetCashSum", [&] { GetCashSum(1, &real); }},
        {"GetTax", [&] { GetTax(0, &real); }},
        {"GetSmenaStatus", [&] { GetSmenaStatus(&number); }},
        {"GetKKMVers", [&] { GetKKMVers(&number); }},
        {"ReadSaleFromKL", [&] { ReadTape(); }},
        {"Feed", [] { Feed(1); }},
        {"KKMPrintStr", [&] { KKMPrintStr(name); }},
        {"Lock", [] { Lock(); }},
        {"UnLock", [] { UnLock(); }},
        {"ClearIndicator", [] { ClearIndicator(); }},
        {"SetSupplierCode", [&] { SetSupplierCode(name); }},
        {"DisconnectKKM", [] { DisconnectKKM(); }},
        {"ConnectKKM", [] { ConnectKKM(1); }},
    };
    for (const Function& function : functions) {
        errVeskTarvo = 14;
        function.call();
        EXPECT_EQ(errVeskTarvo, 0) << function.name;
    }
}

TEST_F(ErrorClearingTest, GetNIClearsItToo) {
    line.Answer(0x02, Frame(0x82, Bytes(8)));
    errVeskTarvo = 14;
    EXPECT_EQ(GetNI(&real), 1);
    EXPECT_EQ(errVeskTarvo, 0);
}

TEST_F(ErrorClearingTest, ConnectKKMDeviceClearsItToo) {
    char device[] = "/dev/ttyS0";
    errVeskTarvo = 14;
    EXPECT_EQ(ConnectKKMDevice(device), 1);
    EXPECT_EQ(errVeskTarvo, 0);
}

TEST_F(ErrorClearingTest, PrintCheckAndClearBottomReplaceItByTheirOwn) {
    errVeskTarvo = 14;
    line.Always(0x20, Frame(0xA1, {0, 7}));  // the cashier has cancelled
    PrintCheck();
    EXPECT_EQ(errVeskTarvo, 34);
    cbClearBottom();
    EXPECT_EQ(errVeskTarvo, 71);
}

}  // namespace
}  // namespace test
