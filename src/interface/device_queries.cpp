#include "interface/last_error.h"
#include "interface/vesk.h"

namespace {

constexpr unsigned char kHighestTax = 16;
constexpr std::uint32_t kTaxAddress = 674;
constexpr std::uint32_t kTaxSize = 36;
constexpr std::uint32_t kShiftAddress = 1321;
constexpr unsigned char kShiftOpen = 0xAA;

// The frame of a query: the pointer is tested, then the register is identified, then asked.
template <typename Value, typename Query>
int Queried(Value* to, Query query) {
    return Guarded([&] {
        RequireArguments(to);
        kvesk.Identify();
        *to = query();
    });
}

}  // namespace

int GetSmenaNum(int* number) {
    return GetKLNum(number);
}

int GetKLNum(int* number) {
    return Queried(number, [] { return kvesk.klnum(); });
}

int GetSaleNum(int* number) {
    return Queried(number, [] {
        TStatistics statistics;
        kvesk.GetStatistics(statistics);
        return statistics.sales + 1;
    });
}

int GetCheckCount(int* count) {
    return Queried(count, [] { return kvesk.checkscount(); });
}

int GetNI(double* total) {
    return Queried(total, [] { return kvesk.getNICurrent(); });
}

int GetKKMNum(int* number) {
    return Queried(number, [] { return kvesk.kkmnum(); });
}

int GetCashSum(int which, double* sum) {
    return Guarded([&] {
        RequireArguments(sum);
        *sum = kvesk.getCashSum(which);
    });
}

int GetTax(unsigned char number, double* tax) {
    return Guarded([&] {
        if (number > kHighestTax) {
            throw ETarvoVesk(echParam);
        }
        RequireArguments(tax);
        kvesk.Identify();
        *tax = kvesk.readEprom(kTaxAddress + kTaxSize * number, 1).AsByte();
    });
}

int GetSmenaStatus(int* status) {
    return Queried(status,
                   [] { return kvesk.readEprom(kShiftAddress, 1).AsByte() == kShiftOpen ? 1 : 0; });
}

int GetKKMVers(int* version) {
    return Guarded([&] {
        RequireArguments(version);
        *version = 0;
        kvesk.Identify();
        *version = kvesk.version();
    });
}

int ReadSaleFromKL(int number, unsigned char* kind, unsigned char* selector, double* sum,
                   double* amount2, double* amount3, double* amount4, double* signed_value,
                   double* quantity, unsigned char* marked, unsigned short* code,
                   unsigned char* code0, unsigned char* code1, unsigned char* code2,
                   unsigned char* code3) {
    return Guarded([&] {
        RequireArguments(kind, selector, sum, amount2, amount3, amount4, signed_value, quantity,
                         marked, code, code0, code1, code2, code3);
        KLSale record;
        const unsigned index = static_cast<unsigned>(number) - 1;  // defined for every number
        if (!kvesk.readKLSale(static_cast<std::uint16_t>(index), record)) {
            throw ETarvoVesk(echKLRead);
        }
        *kind = static_cast<unsigned char>(record.kind);
        *selector = static_cast<unsigned char>(record.selector);
        *sum = record.sum;
        *amount2 = record.amount2;
        *amount3 = record.amount3;
        *amount4 = record.amount4;
        *signed_value = record.signed_value;
        *quantity = record.quantity;
        *marked = record.marked ? 1 : 0;
        *code = record.code;
        *code0 = record.code_bytes[0];
        *code1 = record.code_bytes[1];
        *code2 = record.code_bytes[2];
        *code3 = record.code_bytes[3];
        SetErrorCode(echOk);
    });
}
