#include "VeskTarvoM5/VeskTarvoM5.h"

namespace {

struct ErrorText {
    int code;
    const char* name;
    const char* advice;
};

constexpr ErrorText kTexts[] = {
    {echOk, "echOk", "No error."},
    {echNoPort, "echNoPort",
     "The serial port could not be opened. Check the port number or device name, that the cable or "
     "adapter is plugged in, and that this user may open it (on Debian: member of the group "
     "dialout)."},
    {echDevice, "echDevice",
     "The register did not answer, or answered wrongly. Check its power and the cable and try "
     "again. After PrintCheck compare the check counter with the one before: if it has moved, the "
     "check is on the paper and must not be printed again."},
    {echNoVersion, "echNoVersion",
     "A register answers, but its firmware is not one that the driver knows (301, 302, 303, 310, "
     "400). Ask the service for a register or firmware that is supported."},
    {echPaperAbsent, "echPaperAbsent",
     "The check was not printed because the paper ran out. It is still open at the register: load "
     "paper and let the cashier finish or cancel it there before the next check."},
    {echRegKass, "echRegKass",
     "The register is in a state in which no check can be registered. Bring it to the mode for "
     "sales (or take back what is marked on it) and try again."},
    {echKLRead, "echKLRead",
     "There is no such record on the control tape. Ask for 1 up to the number of records."},
    {echIndex, "echIndex",
     "There is no such line in the check buffer. Lines count from 1 to cbGetSalesCount()."},
    {echParam, "echParam",
     "An argument is out of its range or a null pointer. Sections are 1 to 15, tax numbers 0 to "
     "16."},
    {echPrice, "echPrice",
     "The price is zero, not a number or above the register's limit. Prices are 0.01 to 99999.99 "
     "(9999.99 on firmware 300); the check was not printed."},
    {echQuantity, "echQuantity",
     "The quantity is not a number or too large. At most 65535 pieces, or 65 of goods with a "
     "fraction."},
    {echSalesFull, "echSalesFull",
     "The check is full: this firmware takes 19 lines. Print it and begin another."},
    {echDiscount, "echDiscount",
     "The discount is outside -99 to 99 per cent; it has been set to 0."},
    {echNoCash, "echNoCash",
     "The register refused the check for want of money: the cash is below the total, or the drawer "
     "holds too little for a return. The check was cancelled; correct the sum and print it again."},
    {echPrintTest, "echPrintTest",
     "The counters do not show this check as printed. It was cancelled at the register; look at "
     "the paper and at the register's display before you print it again."},
    {echCancelCheck, "echCancelCheck",
     "The cashier cancelled the check at the register. Nothing was printed; print it again when "
     "the cashier is ready."},
    {echNotSupported, "echNotSupported", "This register has no such operation."},
};

const ErrorText* Find(int code) {
    for (const ErrorText& text : kTexts) {
        if (text.code == code) {
            return &text;
        }
    }
    return nullptr;
}

}  // namespace

const char* KKMErrorName(int code) {
    const ErrorText* const text = Find(code);
    return text != nullptr ? text->name : "unknown";
}

const char* KKMErrorAdvice(int code) {
    const ErrorText* const text = Find(code);
    return text != nullptr ? text->advice : "This number is not an error code of the library.";
}
