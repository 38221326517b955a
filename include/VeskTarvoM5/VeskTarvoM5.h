/// @file
/// Driver of a Tarvo M5 cash register: the interface for point-of-sale programs.
///
/// The library serves one register on one serial line. Call it from one thread at a time; every
/// function runs on the caller's thread and returns when its work is done.
///
/// **Results.** Unless its description says otherwise a function returns 1 on success and 0 on
/// failure, clears the last error when it starts, and leaves the reason of a failure for
/// GetErrorCode(). Output parameters are written on success only. A null pointer argument gives
/// ::echParam and changes nothing. No function lets an exception out, but cbSetCash().
///
/// **Money** is in currency units (12.5 is 12 units and 50 hundredths) and is kept in hundredths,
/// called kopecks here. **Quantities** are pieces, or kilograms of weighed goods.
///
/// **Time.** One exchange with the register takes at least 20 ms and at most 10 ms + 10 ms + 400 ms
/// to the first byte of the answer + 100 ms for each further byte; a silent register is given up
/// after 420 ms. "Exchanges" below are counted in these.
///
/// **Texts** go to the register in the host's own bytes; a register prints code page 866.
///
/// **C and other languages.** Every function but the support routines is exported twice: under its
/// C++ name and, for C and for foreign-function interfaces, under its plain name. The two are the
/// same but for cbSetCash(), which lets no exception out under its plain name.
#ifndef VESKTARVOM5_H
#define VESKTARVOM5_H

#ifdef __cplusplus
#include <string>
#include <vector>
#endif

#if defined(__GNUC__)
#define VESK_API __attribute__((visibility("default")))
#else
#define VESK_API
#endif

/// Codes of the last error.
enum ErrorVeskTarvo
#ifdef __cplusplus
    : int
#endif
{
    echOk = 0,            ///< no error
    echNoPort = 1,        ///< the serial port could not be opened
    echDevice = 2,        ///< the register did not answer, answered wrongly, or a step gave up
    echNoVersion = 3,     ///< the register reported no known firmware at either line speed
    echPaperAbsent = 5,   ///< the check was not printed: no paper; it is still open at the register
    echRegKass = 6,       ///< the register is in a state in which no check can be registered
    echKLRead = 10,       ///< the control-tape record could not be read
    echIndex = 11,        ///< no such line in the check buffer
    echParam = 12,        ///< an argument is out of its range, or a null pointer
    echPrice = 14,        ///< the price is zero, not a number or above the register's limit
    echQuantity = 15,     ///< the quantity is not a number or above the register's limit
    echSalesFull = 17,    ///< the check buffer holds as many lines as the register accepts
    echDiscount = 19,     ///< the discount is outside -99 to 99 per cent
    echNoCash = 20,       ///< the register refused the check type or the cash for want of money
    echPrintTest = 32,    ///< the check was not printed, for a reason other than absent paper
    echCancelCheck = 34,  ///< the cashier cancelled the check at the register
    echNotSupported = 71  ///< the register has no such operation
};

// ---------------------------------------------------------------------------------------------
// Variables

#ifdef __cplusplus
class TVesk;
/// The driver. Created when the library is loaded, destroyed when it is unloaded; opens nothing.
extern VESK_API TVesk kvesk;
#endif
/// Last error, an ::ErrorVeskTarvo value. Read it through GetErrorCode().
extern VESK_API int errVeskTarvo;
/// Reserved; the library never writes it.
extern VESK_API char strErrorMsg[256];
/// Texts of the protocol layer's codes: runs of blanks, by design.
extern VESK_API const char* const err_msg[8];
/// Number of entries in ::err_msg: 8.
extern VESK_API const int err_msg_count;

/// Set by the host: called with the code and a null text whenever an error other than 0 is set.
/// Exceptions that it throws are dropped. Null means no callback.
extern VESK_API void (*EventErrorProc)(int code, char* text);
/// Set by the host: called when the register has asked for the check and the printing starts.
extern VESK_API void (*EventQuery)(void);
/// Set by the host: called with 0 behind EventQuery and with 100 when the check has been closed.
extern VESK_API void (*EventCheckPrepare)(unsigned char step);
/// Accepted and never called.
extern VESK_API void (*EventCloseCheck)(void);
/// Storage for the host's module handle; the library never reads it.
extern VESK_API void* hInstance;
/// Storage for an identifier of the host's choice; the library never reads it.
extern VESK_API void* LibID;

// ---------------------------------------------------------------------------------------------
// Connection and errors

/// Opens /dev/ttyS + (port - 1), looks for the register at 9600 and then at 57600 baud, asks for
/// its firmware version and switches its host-wait parameter on. An open connection is closed
/// first.
/// @param port 1 for /dev/ttyS0; the low 8 bits count
/// @return 1, or 0 with ::echNoPort when the device cannot be opened, ::echNoVersion when the
///   firmware is unknown, ::echDevice when nobody answers
/// Blocks up to 1.3 s on a silent line.
VESK_API int ConnectKKM(int port);
/// As ConnectKKM(), for a device of any name: a USB adapter, /dev/serial/by-id/..., a virtual
/// register. A null or empty name is ::echParam.
VESK_API int ConnectKKMDevice(char* device);
/// Brings the register back to its neutral state, switches the host-wait parameter off again and
/// closes the port. The last error is 0 afterwards whatever happened; EventErrorProc may be called.
/// Blocks until the register is neutral or does not answer (then 420 ms).
VESK_API void DisconnectKKM(void);
/// Last error, an ::ErrorVeskTarvo value; not cleared by reading.
VESK_API int GetErrorCode(void);
/// Always null: the library keeps no texts for its codes.
VESK_API char* GetErrorMsg(void);
/// Name of a code of ::ErrorVeskTarvo, "echNoPort" for 1; "unknown" for a number that is no code.
/// Never null. Leaves the last error alone.
VESK_API const char* KKMErrorName(int code);
/// A sentence or two on what happened and what to do about it, in English, for every code. Never
/// null. Leaves the last error alone.
VESK_API const char* KKMErrorAdvice(int code);

// ---------------------------------------------------------------------------------------------
// Check buffer. Nothing here touches the register but cbSetCash() and cbClearTitle(), which ask for
// the firmware version when it is not known yet.

/// Appends a line. The tests are made in this order:
/// @param name goods name, copied as it stands; the register keeps up to 72 characters
/// @param price currency units for one unit, rounded half up to kopecks: 0.01 to 99999.99
///   (9999.99 on firmware 300), else ::echPrice
/// @param quantity pieces up to 65535; a quantity with a fraction up to 65; else ::echQuantity
/// @param section 1 to 15, else ::echParam
/// ::echSalesFull when the buffer is full: 19 lines on firmware 302 and below and while the
/// firmware is unknown; tested before everything else. Later firmware has no limit here.
VESK_API int cbAddSale(char* name, double price, double quantity, int section);
/// Removes line `index`, counted from 1. ::echIndex when there is no such line.
VESK_API int cbDeleteSale(int index);
/// Reads line `index`, counted from 1. ::echIndex when there is no such line.
/// @param name points to the host's buffer, into which the name is copied with its terminator
/// @param price currency units
/// @param quantity as stored, in single precision
VESK_API int cbGetSale(int index, char** name, double* price, double* quantity, int* section);
/// Number of lines. Leaves the last error alone.
VESK_API int cbGetSalesCount(void);
/// Empties the buffer: lines, mode, discount and cash.
VESK_API void cbClearSales(void);
/// Total in currency units, discount included. Leaves the last error alone.
VESK_API double cbGetSum(void);
/// Sets the cash tendered, in currency units, rounded half up to kopecks; 0 on firmware 300.
/// Always returns 1 and leaves the last error alone. Asks the register for its firmware when it is
/// not known yet, and is the one function that lets an exception out when that fails. Under its
/// plain name it clears the last error, lets nothing out and returns 0 with ::echDevice.
VESK_API int cbSetCash(double sum);
/// Always 0.0: the cash set is for the register only. Leaves the last error alone.
VESK_API double cbGetCash(void);
/// Nonzero makes the check a return; 0 changes nothing (cbClearSales() clears the mode).
VESK_API void cbSetReturnMode(int on);
/// 1 when the check is a return. Leaves the last error alone.
VESK_API int cbGetReturnMode(void);
/// Nonzero makes the check a credit; 0 changes nothing. A check is a return or a credit, not both.
VESK_API void cbSetCreditMode(int on);
/// 1 when the check is a credit. Leaves the last error alone.
VESK_API int cbGetCreditMode(void);
/// Sets the discount (negative) or surcharge (positive) in per cent, -99 to 99. Any other value
/// sets it to 0 and gives ::echDiscount.
VESK_API int cbSetDiscountValue(int value);
/// Discount in per cent. Leaves the last error alone.
VESK_API int cbGetDiscountValue(void);
/// Above 0: the buffer is emptied after a printed check (the default); else it is kept.
VESK_API void cbSetClearBufMode(int mode);
/// 1 when the buffer is emptied after a printed check.
VESK_API int cbGetClearBufMode(void);
/// Asks for the firmware when it is not known yet; changes nothing on the register.
VESK_API int cbClearTitle(void);
/// Always 0 with ::echNotSupported.
VESK_API int cbClearBottom(void);

// ---------------------------------------------------------------------------------------------
// Printing a check

/// No action: 1 when the last error is 0, else 0. Leaves the last error alone.
VESK_API int CheckPrintPrepare(void);
/// Prepares the register for the check in the buffer. A check left open at the register is
/// cancelled. ::echRegKass when the register cannot take one, ::echDevice when it does not answer.
/// Blocks for about 10 exchanges; with a silent register up to 20 retries of 420 ms.
VESK_API int CheckClose(void);
/// Waits until the register asks for the check, then prints it. 1 when the register's own counters
/// prove that the check was printed; 0 with ::echPaperAbsent (the check stays open at the
/// register),
/// ::echNoCash, ::echPrice, ::echRegKass, ::echCancelCheck, ::echPrintTest or ::echDevice (the
/// check was cancelled at the register). Blocks without bound while the register does not ask or
/// does not answer. A check of n lines takes 3 s + n * 0.5 s of printing time besides its
/// exchanges.
VESK_API int PrintCheck(void);
/// Reads the register's state and resets it. 2 exchanges, up to 3 more while it waits for a sale.
VESK_API int CheckCancel(void);
/// Always 1.
VESK_API int GetDiscountMode(void);

// ---------------------------------------------------------------------------------------------
// Counters and settings of the register. Each asks for the firmware when it is not known yet; a
// failure of the register is ::echDevice. One exchange each, where nothing else is said.

/// Control-tape number: by design the same counter as GetKLNum().
VESK_API int GetSmenaNum(int* number);
/// Control-tape number, 0 to 65535.
VESK_API int GetKLNum(int* number);
/// Number of the next sale: the sale counter plus 1.
VESK_API int GetSaleNum(int* number);
/// Check counter, 0 to 65535.
VESK_API int GetCheckCount(int* count);
/// Grand total in currency units. 2 exchanges and one for each record of the control tape.
VESK_API int GetNI(double* total);
/// Serial number of the register; digits at its start count.
VESK_API int GetKKMNum(int* number);
/// Sum of a kind of payment over the control tape, in currency units. `which` counts from 1. Does
/// not ask for the firmware. 1 exchange and one for each record of the control tape.
VESK_API int GetCashSum(int which, double* sum);
/// Setting stored for a tax number, 0 to 255. Number 0 to 16, else ::echParam before anything else.
VESK_API int GetTax(unsigned char number, double* tax);
/// 1 when the shift is open, else 0.
VESK_API int GetSmenaStatus(int* status);
/// Firmware: 301, 302, 303, 310 or 400. Writes 0 before it asks.
VESK_API int GetKKMVers(int* version);
/// Record `number` of the control tape, counted from 1. ::echKLRead when there is none. Does not
/// ask for the firmware. Sums in currency units, the quantity in pieces or kilograms.
VESK_API int ReadSaleFromKL(int number, unsigned char* kind, unsigned char* selector, double* sum,
                            double* amount2, double* amount3, double* amount4, double* signed_value,
                            double* quantity, unsigned char* marked, unsigned short* code,
                            unsigned char* code0, unsigned char* code1, unsigned char* code2,
                            unsigned char* code3);

// ---------------------------------------------------------------------------------------------
// Services of the register

/// Feeds the paper by 40 lines, n times; the first failure stops.
VESK_API int Feed(int n);
/// Prints a line of 16 characters; a longer text is cut. One exchange and 100 ms.
VESK_API int KKMPrintStr(char* text);
/// Locks the register's keyboard and shows an empty line on its customer display.
VESK_API int Lock(void);
/// Unlocks the keyboard.
VESK_API int UnLock(void);
/// Clears the customer display. One exchange and 100 ms.
VESK_API int ClearIndicator(void);
/// Stores a supplier code in the driver; nothing is sent.
VESK_API void SetSupplierCode(char* code);

#ifdef __cplusplus

// ---------------------------------------------------------------------------------------------
// Support routines

/// No conversion and no copy: dst is left alone.
VESK_API void CharToOem(char* src, char* dst);
/// No conversion and no copy: dst is left alone.
VESK_API void OemToChar(char* src, char* dst);
/// Always 0 on this platform.
VESK_API unsigned long GetTickCount(void);
/// Suspends the calling thread for ms milliseconds.
VESK_API void Sleep(unsigned ms);
/// Always empty on this platform.
VESK_API std::string GetLastErrorMsg(void);
/// Decimal digits of n as byte values 0 to 9, most significant first; 0 has none.
VESK_API std::vector<unsigned char> ULtoHex(unsigned long n);
/// Exported as round(double), under another name here because of the C library's function. Half up
/// for positive numbers below 2^32, truncation for negative ones.
VESK_API int RoundHalfUp(double x) __asm__("_Z5roundd");
/// Does nothing on this platform.
VESK_API void DbgTrace(const char* format, ...);
/// Always an empty text.
VESK_API const char* zetdGetErrorMsg(int code);

#endif  // __cplusplus

#endif
