#include "tools/fake_library.h"

#include <cstdio>
#include <stdexcept>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/doctor.h"

namespace test {
namespace {

std::string Hex(const char* text) {
    std::string hex;
    for (; *text != '\0'; ++text) {
        char byte[4];
        std::snprintf(byte, sizeof byte, "%s%02x", hex.empty() ? "" : " ",
                      static_cast<unsigned>(static_cast<unsigned char>(*text)));
        hex += byte;
    }
    return hex;
}

std::string Fixed(double number, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
}

struct Buffer {
    int lines = 0;
    int discount = 0;
    bool is_return = false;
    bool is_credit = false;
};
Buffer buffer;

}  // namespace

FakeLibrary& FakeLibrary::Get() {
    static FakeLibrary library;
    return library;
}

void FakeLibrary::Reset() {
    *this = FakeLibrary();
    buffer = Buffer();
}

int FakeLibrary::Call(const std::string& name, const std::string& arguments) {
    calls.push_back(arguments.empty() ? name : name + " " + arguments);
    const auto found = failing.find(name);
    error = found == failing.end() ? 0 : found->second;
    return error == 0 ? 1 : 0;
}

template <typename Value>
int Query(const char* name, Value* to, Value value) {
    const int result = FakeLibrary::Get().Call(name);
    if (result == 1) {
        *to = value;
    }
    return result;
}

}  // namespace test

using test::buffer;
using test::FakeLibrary;

void (*EventErrorProc)(int, char*) = nullptr;
void (*EventQuery)() = nullptr;
void (*EventCheckPrepare)(unsigned char) = nullptr;

int ConnectKKM(int port) {
    return FakeLibrary::Get().Call("ConnectKKM", std::to_string(port));
}
int ConnectKKMDevice(char* device) {
    return FakeLibrary::Get().Call("ConnectKKMDevice", device);
}
void DisconnectKKM() {
    FakeLibrary::Get().Call("DisconnectKKM");
    if (EventErrorProc != nullptr) {
        FakeLibrary::Get().calls.emplace_back("(an error while leaving is heard)");
    }
}
int GetErrorCode() {
    return FakeLibrary::Get().error;
}
const char* KKMErrorName(int code) {
    switch (code) {
        case echNoPort:
            return "echNoPort";
        case echDevice:
            return "echDevice";
        default:
            return "echOther";
    }
}
const char* KKMErrorAdvice(int /*code*/) {
    return "A first sentence says what happened to the register. A second one, which is longer "
           "than the first and does not fit its line, says what to do.";
}

int cbAddSale(char* name, double price, double quantity, int section) {
    const std::string arguments = test::Hex(name) + ", " + test::Fixed(price, 2) + ", " +
                                  test::Fixed(quantity, 3) + ", " + std::to_string(section);
    if (FakeLibrary::Get().Call("cbAddSale", arguments) == 0) {
        return 0;
    }
    ++buffer.lines;
    return 1;
}
int cbGetSalesCount() {
    return buffer.lines;
}
int cbSetCash(double sum) {
    FakeLibrary::Get().Call("cbSetCash", test::Fixed(sum, 2));
    if (FakeLibrary::Get().throwing_cash) {
        throw std::runtime_error("the line died");
    }
    return 1;
}
void cbSetReturnMode(int on) {
    FakeLibrary::Get().Call("cbSetReturnMode", std::to_string(on));
    buffer.is_return = on != 0;
}
int cbGetReturnMode() {
    return buffer.is_return ? 1 : 0;
}
void cbSetCreditMode(int on) {
    FakeLibrary::Get().Call("cbSetCreditMode", std::to_string(on));
    buffer.is_credit = on != 0;
}
int cbGetCreditMode() {
    return buffer.is_credit ? 1 : 0;
}
int cbSetDiscountValue(int value) {
    buffer.discount = value;
    return FakeLibrary::Get().Call("cbSetDiscountValue", std::to_string(value));
}
int cbGetDiscountValue() {
    return buffer.discount;
}

void cbClearSales() {
    buffer = test::Buffer();
}

int CheckClose() {
    return FakeLibrary::Get().Call("CheckClose");
}
int PrintCheck() {
    if (FakeLibrary::Get().on_print) {
        FakeLibrary::Get().on_print();
    }
    const int result = FakeLibrary::Get().Call("PrintCheck");
    if (result == 0 && EventErrorProc != nullptr) {
        EventErrorProc(FakeLibrary::Get().error, nullptr);
    }
    return result;
}

int GetKKMVers(int* version) {
    return test::Query("GetKKMVers", version, FakeLibrary::Get().firmware);
}
int GetKKMNum(int* number) {
    return test::Query("GetKKMNum", number, 12345);
}
int GetSmenaStatus(int* status) {
    return test::Query("GetSmenaStatus", status, 1);
}
int GetKLNum(int* number) {
    return test::Query("GetKLNum", number, 7);
}
int GetCheckCount(int* count) {
    return test::Query("GetCheckCount", count, 31);
}
int GetSaleNum(int* number) {
    return test::Query("GetSaleNum", number, 58);
}
int GetNI(double* total) {
    return test::Query("GetNI", total, 379.53);
}
int GetCashSum(int which, double* sum) {
    const int result = FakeLibrary::Get().Call("GetCashSum", std::to_string(which));
    *sum = 120.5;
    return result;
}
int GetTax(unsigned char number, double* tax) {
    return test::Query("GetTax", tax, number == 3 ? 18.0 : 0.0);
}
int ReadSaleFromKL(int number, unsigned char* kind, unsigned char* selector, double* sum,
                   double* amount2, double* amount3, double* amount4, double* signed_value,
                   double* quantity, unsigned char* marked, unsigned short* code,
                   unsigned char* code0, unsigned char* code1, unsigned char* code2,
                   unsigned char* code3) {
    if (FakeLibrary::Get().Call("ReadSaleFromKL", std::to_string(number)) == 0 ||
        number == FakeLibrary::Get().unreadable_record) {
        FakeLibrary::Get().error = echKLRead;
        return 0;
    }
    *kind = 0;
    *selector = 1;
    *sum = 80.75 + number;
    *amount2 = 42.5;
    *amount3 = 4.25;
    *amount4 = 0;
    *signed_value = -5;
    *quantity = FakeLibrary::Get().tape_quantity;
    *marked = 0;
    *code = 7;
    *code0 = 0x45;
    *code1 = 0x67;
    *code2 = 0x89;
    *code3 = 0x01;
    return 1;
}

int Feed(int n) {
    return FakeLibrary::Get().Call("Feed", std::to_string(n));
}
int KKMPrintStr(char* text) {
    return FakeLibrary::Get().Call("KKMPrintStr", test::Hex(text));
}
int Lock() {
    return FakeLibrary::Get().Call("Lock");
}
int UnLock() {
    return FakeLibrary::Get().Call("UnLock");
}
int ClearIndicator() {
    return FakeLibrary::Get().Call("ClearIndicator");
}
int CheckCancel() {
    return FakeLibrary::Get().Call("CheckCancel");
}

// No line, no register on it.
std::optional<kkm::RegisterLook> kkm::LookAtRegister(const Address& /*address*/) {
    auto& looks = FakeLibrary::Get().looks;
    if (looks.empty()) {
        return std::nullopt;
    }
    const auto look = looks.front();
    looks.erase(looks.begin());
    return look;
}
kkm::RegisterDump kkm::DumpRegister(const Address& address, int last_product,
                                    Streams& /*streams*/) {
    FakeLibrary::Get().Call("DumpRegister", address.Text() + ", " + std::to_string(last_product));
    return FakeLibrary::Get().dump;
}
std::vector<kkm::Finding> kkm::ExamineRegister(const std::string& device) {
    FakeLibrary::Get().Call("ExamineRegister", device);
    return {{Grade::good, "answer", "a register answers", ""}};
}
