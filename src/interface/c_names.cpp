// The plain names of the host functions, for C and for every language with a foreign-function
// interface. They stand beside the C++ names and only pass the call on.
#include "interface/last_error.h"
#include "interface/vesk.h"

#define PLAIN_NAME(result, name, parameters, arguments)                  \
    VESK_API result plain_##name parameters __asm__(#name); /* NOLINT */ \
    result plain_##name parameters {                                     \
        return name arguments;                                           \
    }

PLAIN_NAME(int, ConnectKKM, (int port), (port))
PLAIN_NAME(int, ConnectKKMDevice, (char* device), (device))
PLAIN_NAME(void, DisconnectKKM, (), ())
PLAIN_NAME(int, GetErrorCode, (), ())
PLAIN_NAME(char*, GetErrorMsg, (), ())
PLAIN_NAME(const char*, KKMErrorName, (int code), (code))
PLAIN_NAME(const char*, KKMErrorAdvice, (int code), (code))

PLAIN_NAME(int, cbAddSale, (char* name, double price, double quantity, int section),
           (name, price, quantity, section))
PLAIN_NAME(int, cbDeleteSale, (int index), (index))
PLAIN_NAME(int, cbGetSale, (int index, char** name, double* price, double* quantity, int* section),
           (index, name, price, quantity, section))
PLAIN_NAME(int, cbGetSalesCount, (), ())
PLAIN_NAME(void, cbClearSales, (), ())
PLAIN_NAME(double, cbGetSum, (), ())
PLAIN_NAME(double, cbGetCash, (), ())
PLAIN_NAME(void, cbSetReturnMode, (int on), (on))
PLAIN_NAME(int, cbGetReturnMode, (), ())
PLAIN_NAME(void, cbSetCreditMode, (int on), (on))
PLAIN_NAME(int, cbGetCreditMode, (), ())
PLAIN_NAME(int, cbSetDiscountValue, (int value), (value))
PLAIN_NAME(int, cbGetDiscountValue, (), ())
PLAIN_NAME(void, cbSetClearBufMode, (int mode), (mode))
PLAIN_NAME(int, cbGetClearBufMode, (), ())
PLAIN_NAME(int, cbClearTitle, (), ())
PLAIN_NAME(int, cbClearBottom, (), ())

PLAIN_NAME(int, CheckPrintPrepare, (), ())
PLAIN_NAME(int, CheckClose, (), ())
PLAIN_NAME(int, PrintCheck, (), ())
PLAIN_NAME(int, CheckCancel, (), ())
PLAIN_NAME(int, GetDiscountMode, (), ())

PLAIN_NAME(int, GetSmenaNum, (int* number), (number))
PLAIN_NAME(int, GetKLNum, (int* number), (number))
PLAIN_NAME(int, GetSaleNum, (int* number), (number))
PLAIN_NAME(int, GetCheckCount, (int* count), (count))
PLAIN_NAME(int, GetNI, (double* total), (total))
PLAIN_NAME(int, GetKKMNum, (int* number), (number))
PLAIN_NAME(int, GetCashSum, (int which, double* sum), (which, sum))
PLAIN_NAME(int, GetTax, (unsigned char number, double* tax), (number, tax))
PLAIN_NAME(int, GetSmenaStatus, (int* status), (status))
PLAIN_NAME(int, GetKKMVers, (int* version), (version))
PLAIN_NAME(int, ReadSaleFromKL,
           (int number, unsigned char* kind, unsigned char* selector, double* sum, double* amount2,
            double* amount3, double* amount4, double* signed_value, double* quantity,
            unsigned char* marked, unsigned short* code, unsigned char* code0, unsigned char* code1,
            unsigned char* code2, unsigned char* code3),
           (number, kind, selector, sum, amount2, amount3, amount4, signed_value, quantity, marked,
            code, code0, code1, code2, code3))

PLAIN_NAME(int, Feed, (int n), (n))
PLAIN_NAME(int, KKMPrintStr, (char* text), (text))
PLAIN_NAME(int, Lock, (), ())
PLAIN_NAME(int, UnLock, (), ())
PLAIN_NAME(int, ClearIndicator, (), ())
PLAIN_NAME(void, SetSupplierCode, (char* code), (code))

// A program in C could not catch what cbSetCash lets out.
VESK_API int plain_cbSetCash(double sum) __asm__("cbSetCash");
int plain_cbSetCash(double sum) {
    return Guarded([&] { cbSetCash(sum); });
}
