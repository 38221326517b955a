#include <functional>

#include "support/interface_fixture.h"

// The plain names, which no header declares for C++.
#define PLAIN(result, name, parameters) result plain_##name parameters __asm__(#name)

extern "C" {
PLAIN(int, ConnectKKM, (int port));
PLAIN(int, ConnectKKMDevice, (char* device));
PLAIN(void, DisconnectKKM, ());
PLAIN(int, GetErrorCode, ());
PLAIN(char*, GetErrorMsg, ());
PLAIN(const char*, KKMErrorName, (int code));
PLAIN(const char*, KKMErrorAdvice, (int code));
PLAIN(int, cbAddSale, (char* name, double price, double quantity, int section));
PLAIN(int, cbDeleteSale, (int index));
PLAIN(int, cbGetSale, (int index, char** name, double* price, double* quantity, int* section));
PLAIN(int, cbGetSalesCount, ());
PLAIN(void, cbClearSales, ());
PLAIN(double, cbGetSum, ());
PLAIN(int, cbSetCash, (double sum));
PLAIN(double, cbGetCash, ());
PLAIN(void, cbSetReturnMode, (int on));
PLAIN(int, cbGetReturnMode, ());
PLAIN(void, cbSetCreditMode, (int on));
PLAIN(int, cbGetCreditMode, ());
PLAIN(int, cbSetDiscountValue, (int value));
PLAIN(int, cbGetDiscountValue, ());
PLAIN(void, cbSetClearBufMode, (int mode));
PLAIN(int, cbGetClearBufMode, ());
PLAIN(int, cbClearTitle, ());
PLAIN(int, cbClearBottom, ());
PLAIN(int, CheckPrintPrepare, ());
PLAIN(int, CheckClose, ());
PLAIN(int, PrintCheck, ());
PLAIN(int, CheckCancel, ());
PLAIN(int, GetDiscountMode, ());
PLAIN(int, GetSmenaNum, (int* number));
PLAIN(int, GetKLNum, (int* number));
PLAIN(int, GetSaleNum, (int* number));
PLAIN(int, GetCheckCount, (int* count));
PLAIN(int, GetNI, (double* total));
PLAIN(int, GetKKMNum, (int* number));
PLAIN(int, GetCashSum, (int which, double* sum));
PLAIN(int, GetTax, (unsigned char number, double* tax));
PLAIN(int, GetSmenaStatus, (int* status));
PLAIN(int, GetKKMVers, (int* version));
PLAIN(int, ReadSaleFromKL,
      (int number, unsigned char* kind, unsigned char* selector, double* sum, double* amount2,
       double* amount3, double* amount4, double* signed_value, double* quantity,
       unsigned char* marked, unsigned short* code, unsigned char* code0, unsigned char* code1,
       unsigned char* code2, unsigned char* code3));
PLAIN(int, Feed, (int n));
PLAIN(int, KKMPrintStr, (char* text));
PLAIN(int, Lock, ());
PLAIN(int, UnLock, ());
PLAIN(int, ClearIndicator, ());
PLAIN(void, SetSupplierCode, (char* code));
}

namespace test {
namespace {

class CNamesTest : public InterfaceTest {
  protected:
    char name[8] = "tea";
};

// --- the buffer, where the state of the driver tells that a call has arrived

TEST_F(CNamesTest, BufferIsFilledAndRead) {
    EXPECT_EQ(plain_cbAddSale(name, 19.99, 1.5, 7), 1);
    EXPECT_EQ(plain_cbAddSale(name, 1.0, 1.0, 16), 0);
    EXPECT_EQ(plain_GetErrorCode(), 12);
    EXPECT_EQ(plain_GetErrorMsg(), nullptr);
    EXPECT_EQ(plain_CheckPrintPrepare(), 0);
    EXPECT_EQ(plain_cbGetSalesCount(), 1);
    EXPECT_DOUBLE_EQ(plain_cbGetSum(), 29.99);

    char text[8] = "";
    char* buffer = text;
    double price = 0.0;
    double quantity = 0.0;
    int section = 0;
    EXPECT_EQ(plain_cbGetSale(1, &buffer, &price, &quantity, &section), 1);
    EXPECT_STREQ(text, "tea");
    EXPECT_DOUBLE_EQ(price, 19.99);
    EXPECT_EQ(quantity, 1.5);
    EXPECT_EQ(section, 7);

    EXPECT_EQ(plain_cbDeleteSale(2), 0);
    EXPECT_EQ(plain_cbDeleteSale(1), 1);
    EXPECT_EQ(cbGetSalesCount(), 0);
}

TEST_F(CNamesTest, ModesAreSetAndRead) {
    plain_cbSetReturnMode(1);
    EXPECT_EQ(plain_cbGetReturnMode(), 1);
    EXPECT_EQ(plain_cbGetCreditMode(), 0);
    plain_cbSetCreditMode(1);
    EXPECT_EQ(plain_cbGetReturnMode(), 0);
    EXPECT_EQ(plain_cbGetCreditMode(), 1);
    EXPECT_EQ(plain_cbSetDiscountValue(-7), 1);
    EXPECT_EQ(plain_cbGetDiscountValue(), -7);
    plain_cbClearSales();
    EXPECT_EQ(cbGetDiscountValue(), 0);
    plain_cbSetClearBufMode(0);
    EXPECT_EQ(plain_cbGetClearBufMode(), 0);
    EXPECT_EQ(plain_cbClearBottom(), 0);
    EXPECT_EQ(GetErrorCode(), 71);
    EXPECT_EQ(plain_GetDiscountMode(), 1);
    plain_SetSupplierCode(nullptr);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(plain_cbGetCash(), 0.0);
}

TEST_F(CNamesTest, CashLetsNothingOut) {
    ListenToErrors();
    EXPECT_EQ(plain_cbSetCash(5.0), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(Events(), Texts{"error 2"});
    Connect();
    errVeskTarvo = 14;
    EXPECT_EQ(plain_cbSetCash(5.0), 1);
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(kvesk.check().cash, 500U);
}

TEST_F(CNamesTest, CodesHaveTheSameTexts) {
    EXPECT_STREQ(plain_KKMErrorName(5), "echPaperAbsent");
    EXPECT_EQ(plain_KKMErrorAdvice(5), KKMErrorAdvice(5));
}

// --- the register, where the requests tell

TEST_F(CNamesTest, ConnectionIsMadeAndEnded) {
    char device[] = "/dev/ttyS1";
    EXPECT_EQ(plain_ConnectKKM(3), 0);
    EXPECT_EQ(plain_ConnectKKMDevice(device), 0);
    EXPECT_EQ(world.Log(),
              (Texts{"open /dev/ttyS2 0x902 = error", "open /dev/ttyS1 0x902 = error"}));
    Connect();
    line.Answer(0x20, Frame(0xA0)).Answer(0x0B, Frame(0x7B));
    plain_DisconnectKKM();
    EXPECT_EQ(world.Requests(), (Texts{"20", "0B 07 00"}));
}

struct Call {
    const char* name;
    std::function<int()> call;
    std::vector<std::string> requests;
};

TEST_F(CNamesTest, CallsReachTheRegister) {
    int number = 0;
    double real = 0.0;
    const std::vector<Call> calls{
        {"GetSmenaNum", [&] { return plain_GetSmenaNum(&number); }, {"0A"}},
        {"GetKLNum", [&] { return plain_GetKLNum(&number); }, {"0A"}},
        {"GetSaleNum", [&] { return plain_GetSaleNum(&number); }, {"0A"}},
        {"GetCheckCount", [&] { return plain_GetCheckCount(&number); }, {"0A"}},
        {"GetKKMNum", [&] { return plain_GetKKMNum(&number); }, {"04 1A 5D 08"}},
        {"GetNI", [&] { return plain_GetNI(&real); }, {"02 04 F7 08"}},
        {"GetCashSum", [&] { return plain_GetCashSum(1, &real); }, {"0A"}},
        {"GetTax", [&] { return plain_GetTax(16, &real); }, {"02 04 E2 01"}},
        {"GetSmenaStatus", [&] { return plain_GetSmenaStatus(&number); }, {"02 05 29 01"}},
        {"Feed", [] { return plain_Feed(2); }, {"30 28"}},
        {"Lock", [] { return plain_Lock(); }, {"36 00"}},
        {"UnLock", [] { return plain_UnLock(); }, {"36 01"}},
        {"CheckClose", [] { return plain_CheckClose(); }, {"20"}},
        {"CheckCancel", [] { return plain_CheckCancel(); }, {"20"}},
        {"KKMPrintStr",
         [&] { return plain_KKMPrintStr(name); },
         {"31 00 74 65 61 20 20 20 20 20 20 20 20 20 20 20 20 20 00 00"}},
        {"ClearIndicator",
         [] { return plain_ClearIndicator(); },
         {"07 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 00 02"}}};
    Connect();
    for (const Call& call : calls) {
        world.ClearLog();
        EXPECT_EQ(call.call(), 0) << call.name << ": nobody answers";
        EXPECT_EQ(GetErrorCode(), 2) << call.name;
        EXPECT_EQ(world.Requests(), call.requests) << call.name;
    }
    EXPECT_EQ(plain_GetKKMVers(&number), 1);
    EXPECT_EQ(number, 303);
    EXPECT_EQ(plain_cbClearTitle(), 1);
}

TEST_F(CNamesTest, CheckIsPrinted) {
    Connect();
    line.Answer(0x20, Frame(0xA1, {0, 7})).Answer(0x0A, Frame(0x8A, Bytes(11)));
    line.Always(0x04, Frame(0x84, {0})).Always(0x02, Frame(0x82, {0}));
    EXPECT_EQ(plain_PrintCheck(), 0);
    EXPECT_EQ(GetErrorCode(), 34);
}

TEST_F(CNamesTest, TapeRecordIsReadIntoTheSameParameters) {
    Bytes answer(31);
    for (std::size_t i = 0; i < answer.size(); ++i) {
        answer[i] = static_cast<unsigned char>(i + 1);
    }
    Connect();
    line.Always(0x12, Frame(0x8B, answer));
    struct {
        unsigned char bytes[7] = {};
        double reals[6] = {};
        unsigned short word = 0;
    } r;
    EXPECT_EQ(plain_ReadSaleFromKL(3, &r.bytes[0], &r.bytes[1], &r.reals[0], &r.reals[1],
                                   &r.reals[2], &r.reals[3], &r.reals[4], &r.reals[5], &r.bytes[2],
                                   &r.word, &r.bytes[3], &r.bytes[4], &r.bytes[5], &r.bytes[6]),
              1);
    EXPECT_EQ(world.Requests(), Texts{"12 00 02"});
    EXPECT_EQ(std::vector<int>(r.bytes, r.bytes + 7),
              (std::vector<int>{29, 30, 0, 18, 19, 20, 21}));
    EXPECT_DOUBLE_EQ(r.reals[0], 505950.78);
    EXPECT_DOUBLE_EQ(r.reals[1], 4608.09);
    EXPECT_DOUBLE_EQ(r.reals[2], 6581.88);
    EXPECT_DOUBLE_EQ(r.reals[3], 8555.67);
    EXPECT_DOUBLE_EQ(r.reals[4], 16.0);
    EXPECT_DOUBLE_EQ(r.reals[5], 6.94);
    EXPECT_EQ(r.word, 0x1718);
}

}  // namespace
}  // namespace test
