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
/// **Time.** One exchange with the register takes at least 20 ms: two pauses of 10 ms. The answer
/// must begin within 400 ms and may not pause for more than 100 ms, but for 200 ms + 100 ms for
/// each byte to come behind its second byte. A silent register is given up after 420 ms.
/// "Exchanges" below are counted in these.
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

/// Codes of the last error. KKMErrorAdvice() says for each what happened and what to do.
enum ErrorVeskTarvo
#ifdef __cplusplus
    : int
#endif
{
    echOk = 0,            ///< no error
    echNoPort = 1,        ///< the serial port could not be opened
    echDevice = 2,        ///< the register did not answer, answered wrongly, or a step gave up;
                          ///< after PrintCheck() the check may be on the paper
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
    echPrintTest = 32,    ///< the counters do not show the check; it may be on the paper
    echCancelCheck = 34,  ///< the cashier cancelled the check at the register
    echNotSupported = 71  ///< the register has no such operation
};

/// @name Variables
/// @{

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

/// @}
/// @name Connection
/// @{

/// Connects to the register on a serial port of the machine. Opens /dev/ttyS + (port - 1), looks
/// for the register at 9600 and then at 57600 baud, asks for its firmware version and switches its
/// host-wait parameter on. An open connection is closed first. ::echNoPort when the device cannot
/// be opened, ::echNoVersion when the firmware is unknown at 57600 baud, ::echDevice when nobody
/// answers there.
/// @param port 1 for /dev/ttyS0; the low 8 bits count
/// @par Time
/// 3 exchanges; 0.9 s on a silent line.
/// @see ConnectKKMDevice() DisconnectKKM() GetKKMVers()
VESK_API int ConnectKKM(int port);
/// Connects to the register on a device of any name. A USB adapter, /dev/serial/by-id/..., a
/// virtual register; in everything else as ConnectKKM(). A null or empty name is ::echParam, a
/// device that cannot be opened ::echNoPort, unknown firmware at 57600 baud ::echNoVersion, no
/// answer there ::echDevice.
/// @param device path of the device
/// @par Time
/// 3 exchanges; 0.9 s on a silent line.
/// @code{.c}
/// if (!ConnectKKMDevice("/dev/ttyUSB0")) {
///     printf("%s\n", KKMErrorAdvice(GetErrorCode()));
/// }
/// @endcode
/// @see ConnectKKM() DisconnectKKM() KKMErrorAdvice()
VESK_API int ConnectKKMDevice(char* device);
/// Disconnects from the register. Brings it back to its neutral state, switches the host-wait
/// parameter off again and closes the port. The last error is 0 afterwards whatever happened;
/// EventErrorProc may be called. When the line is dead the port stays open until the next
/// ConnectKKM().
/// @par Time
/// Blocks until the register is neutral or does not answer: 0.9 s on a silent line, no limit while
/// a register answers and stays busy.
/// @see ConnectKKM()
VESK_API void DisconnectKKM(void);

/// @}
/// @name Errors
/// These functions leave the last error alone.
/// @{

/// Tells why the last call failed. Reading does not clear it; the next call does.
/// @return the last error, an ::ErrorVeskTarvo value
/// @see KKMErrorName() KKMErrorAdvice()
VESK_API int GetErrorCode(void);
/// Has no text for the last error. KKMErrorName() and KKMErrorAdvice() have one for every code.
/// @return always null
/// @see GetErrorCode() KKMErrorAdvice()
VESK_API char* GetErrorMsg(void);
/// Names an error code.
/// @param code a code of ::ErrorVeskTarvo
/// @return its name, "echNoPort" for 1; "unknown" for a number that is no code. Never null
/// @see GetErrorCode() KKMErrorAdvice()
VESK_API const char* KKMErrorName(int code);
/// Says what happened and what to do about it.
/// @param code a code of ::ErrorVeskTarvo
/// @return a sentence or two in English, for every code. Never null
/// @code{.c}
/// printf("error %d, %s: %s\n", GetErrorCode(), KKMErrorName(GetErrorCode()),
///        KKMErrorAdvice(GetErrorCode()));
/// @endcode
/// @see GetErrorCode() KKMErrorName()
VESK_API const char* KKMErrorAdvice(int code);

/// @}
/// @name Check buffer
/// The check buffer is in the driver. Of its functions only cbSetCash() and cbClearTitle() touch
/// the register: they ask for the firmware version when it is not known yet.
/// @{

/// Appends a line to the check. ::echSalesFull when the buffer is full: 19 lines on firmware 302
/// and below and while the firmware is unknown; tested before everything else but a null name.
/// Later firmware has no limit here. The other tests follow in the order section, price, quantity.
/// Zero and negative quantities are taken.
/// @param name goods name, copied as it stands; the register keeps up to 72 characters
/// @param price currency units for one unit, rounded half up to kopecks: 0.01 to 99999.99
///   (9999.99 on firmware 300), else ::echPrice
/// @param quantity pieces up to 65535; a quantity with a fraction up to 65; else ::echQuantity
/// @param section 1 to 15, else ::echParam
/// @code{.c}
/// if (!cbAddSale("Cheese", 680.00, 0.345, 2)) {
///     printf("%s\n", KKMErrorAdvice(GetErrorCode()));
/// }
/// printf("to pay: %.2f\n", cbGetSum());
/// @endcode
/// @see cbGetSale() cbDeleteSale() cbGetSum() CheckClose()
VESK_API int cbAddSale(char* name, double price, double quantity, int section);
/// Removes a line of the check. ::echIndex when there is no such line.
/// @param index counted from 1
/// @see cbAddSale() cbGetSalesCount() cbClearSales()
VESK_API int cbDeleteSale(int index);
/// Reads a line of the check. ::echIndex when there is no such line, ::echParam for a null pointer.
/// @param index counted from 1
/// @param name points to the host's buffer, into which the name is copied with its terminator
/// @param price currency units
/// @param quantity as stored, in single precision
/// @param section 1 to 15
/// @code{.c}
/// char name[256];
/// char* to = name;
/// double price = 0;
/// double quantity = 0;
/// int section = 0;
/// for (int i = 1; i <= cbGetSalesCount(); ++i) {
///     if (cbGetSale(i, &to, &price, &quantity, &section)) {
///         printf("%s %.3f x %.2f\n", name, quantity, price);
///     }
/// }
/// @endcode
/// @see cbAddSale() cbGetSalesCount()
VESK_API int cbGetSale(int index, char** name, double* price, double* quantity, int* section);
/// Counts the lines of the check. Leaves the last error alone.
/// @return number of lines
/// @see cbGetSale()
VESK_API int cbGetSalesCount(void);
/// Empties the check buffer. Lines, mode, discount and cash.
/// @see cbDeleteSale() cbSetClearBufMode()
VESK_API void cbClearSales(void);
/// Works out the total of the check. In single precision: the register's own total, which is
/// printed, can differ by a kopeck for each line of weighed goods. Leaves the last error alone.
/// @return currency units, discount included
/// @see cbAddSale() cbSetDiscountValue()
VESK_API double cbGetSum(void);
/// Sets the cash tendered. Currency units, rounded half up to kopecks; 0 on firmware 300. Registers
/// of firmware 310 and 400 do not take it. Asks the register for its firmware when it is not known
/// yet, and is the one function that lets an exception out when that fails; under this name for C++
/// it leaves the last error alone. Under its plain name it clears the last error, lets nothing out
/// and returns 0 with ::echDevice.
/// @param sum currency units
/// @return 1; under its plain name 0 when the firmware had to be asked for and nobody answered
/// @see cbGetCash() PrintCheck()
VESK_API int cbSetCash(double sum);
/// Does not tell the cash tendered. It is for the register only. Leaves the last error alone.
/// @return always 0.0
/// @see cbSetCash()
VESK_API double cbGetCash(void);
/// Makes the check a return. Takes a credit back: a check is a return or a credit, not both.
/// @param on nonzero for a return; 0 changes nothing (cbClearSales() clears the mode)
/// @see cbGetReturnMode() cbSetCreditMode()
VESK_API void cbSetReturnMode(int on);
/// Tells whether the check is a return. Leaves the last error alone.
/// @return 1 when it is, else 0
/// @see cbSetReturnMode()
VESK_API int cbGetReturnMode(void);
/// Makes the check a credit. Takes a return back: a check is a return or a credit, not both.
/// @param on nonzero for a credit; 0 changes nothing (cbClearSales() clears the mode)
/// @see cbGetCreditMode() cbSetReturnMode()
VESK_API void cbSetCreditMode(int on);
/// Tells whether the check is a credit. Leaves the last error alone.
/// @return 1 when it is, else 0
/// @see cbSetCreditMode()
VESK_API int cbGetCreditMode(void);
/// Sets the discount or surcharge of the check. A value out of range sets it to 0 and gives
/// ::echDiscount.
/// @param value per cent, -99 to 99: negative is a discount, positive a surcharge
/// @see cbGetDiscountValue() cbGetSum()
VESK_API int cbSetDiscountValue(int value);
/// Tells the discount or surcharge of the check. Leaves the last error alone.
/// @return per cent
/// @see cbSetDiscountValue()
VESK_API int cbGetDiscountValue(void);
/// Chooses whether a printed check empties the buffer.
/// @param mode above 0: it does (the default); else the buffer is kept
/// @see cbGetClearBufMode() cbClearSales()
VESK_API void cbSetClearBufMode(int mode);
/// Tells whether a printed check empties the buffer.
/// @return 1 when it does, else 0
/// @see cbSetClearBufMode()
VESK_API int cbGetClearBufMode(void);
/// Changes nothing on the register. Asks for the firmware when it is not known yet; ::echDevice
/// when nobody answers.
/// @see cbClearBottom()
VESK_API int cbClearTitle(void);
/// Is not supported by the register. Fails with ::echNotSupported.
/// @return always 0
/// @see cbClearTitle()
VESK_API int cbClearBottom(void);

/// @}
/// @name Printing a check
/// @{

/// Tells whether there is no error. Does nothing else, and leaves the last error alone.
/// @return 1 when the last error is 0, else 0
/// @see CheckClose() PrintCheck()
VESK_API int CheckPrintPrepare(void);
/// Prepares the register for the check in the buffer. A check left open at the register is
/// cancelled.
/// ::echRegKass when the register cannot take one, ::echDevice when it does not answer.
/// @par Time
/// 2 exchanges when nothing is left over, else 8 to 21 and up to 0.2 s; up to 3 more while the
/// register waits for a sale; 8.4 s when the line dies in the middle. Firmware 301 clears a check
/// by keys, without limit.
/// @see PrintCheck() CheckCancel()
VESK_API int CheckClose(void);
/// Prints the check in the buffer when the register asks for it. Waits until the cashier asks for
/// the check at the register, sends it and proves from the register's own counters that it was
/// printed. On failure: with ::echPaperAbsent the check stays open at the register; with
/// ::echNoCash,
/// ::echPrice, ::echRegKass and ::echCancelCheck it was cancelled there; with ::echDevice and
/// ::echPrintTest it was cancelled there if the line lived, and **may be on the paper**: compare
/// the counters with those read before.
/// @return 1 when the counters prove that the check was printed, once; else 0
/// @par Time
/// Blocks without bound while the register does not ask or does not answer. A check of n lines
/// takes 3 s + n * 0.5 s of printing time besides its exchanges; up to 39 s + n * 0.5 s when the
/// line dies. Firmware 301 clears a failed check by keys, without limit.
/// @code{.c}
/// if (cbAddSale("Bread", 42.50, 2, 1) && CheckClose() && PrintCheck()) {
///     printf("printed\n");
/// } else {
///     printf("%s\n", KKMErrorAdvice(GetErrorCode()));
/// }
/// @endcode
/// @see cbAddSale() CheckClose() GetCheckCount() GetSaleNum()
VESK_API int PrintCheck(void);
/// Resets the state of the register. ::echDevice when it does not answer. A check that was left in
/// its closing can come out by this.
/// @par Time
/// 2 exchanges, up to 3 more while the register waits for a sale.
/// @see CheckClose()
VESK_API int CheckCancel(void);
/// Only clears the last error.
/// @return always 1
/// @see cbGetDiscountValue()
VESK_API int GetDiscountMode(void);

/// @}
/// @name Counters and settings of the register
/// All of these ask for the firmware first when it is not known yet, but GetCashSum() and
/// ReadSaleFromKL(). ::echDevice when the register does not answer, ::echParam for a null pointer.
/// They take one exchange where nothing else is said, and 0.42 s on a silent line.
/// @{

/// Reads the control-tape number. By design the same counter as GetKLNum().
/// @param number 0 to 65535
/// @see GetKLNum()
VESK_API int GetSmenaNum(int* number);
/// Reads the control-tape number.
/// @param number 0 to 65535
/// @see GetCheckCount() GetSaleNum() ReadSaleFromKL()
VESK_API int GetKLNum(int* number);
/// Reads the number of the next sale. The sale counter plus 1.
/// @param number 1 to 65536
/// @see GetCheckCount() ReadSaleFromKL()
VESK_API int GetSaleNum(int* number);
/// Reads the check counter.
/// @param count 0 to 65535
/// @code{.c}
/// int before = 0;
/// int after = 0;
/// if (GetCheckCount(&before) && CheckClose() && !PrintCheck() && GetCheckCount(&after)) {
///     printf(after == before ? "not printed\n" : "look at the paper\n");
/// }
/// @endcode
/// @see GetSaleNum() PrintCheck()
VESK_API int GetCheckCount(int* count);
/// Reads the grand total. That of the closed shifts, and the sales and credits on the control tape;
/// returns are not taken off.
/// @param total currency units
/// @par Time
/// 2 exchanges and one for each record of the control tape, each tried up to 20 times.
/// @see GetCashSum()
VESK_API int GetNI(double* total);
/// Reads the serial number of the register. The digits at its start count.
/// @param number the number, 0 when it does not begin with a digit
/// @see GetKKMVers()
VESK_API int GetKKMNum(int* number);
/// Adds up a kind of payment over the control tape. Returns are taken off.
/// @param which counted from 1, which is cash
/// @param sum currency units
/// @par Time
/// 1 exchange and one for each record of the control tape.
/// @see GetNI() ReadSaleFromKL()
VESK_API int GetCashSum(int which, double* sum);
/// Reads the setting of a tax. ::echParam for a number above 16, before anything else.
/// @param number 0 to 16
/// @param tax 0 to 255
/// @see GetKKMVers()
VESK_API int GetTax(unsigned char number, double* tax);
/// Tells whether the shift is open.
/// @param status 1 when it is, else 0
/// @see GetSmenaNum()
VESK_API int GetSmenaStatus(int* status);
/// Tells the firmware of the register. Writes 0 before it asks.
/// @param version 301, 302, 303, 310 or 400
/// @par Time
/// No exchange when the firmware is known, as it is after ConnectKKM().
/// @see ConnectKKM() GetKKMNum()
VESK_API int GetKKMVers(int* version);
/// Reads a record of the control tape. ::echKLRead when there is none.
/// @param number counted from 1; the last is GetSaleNum() - 1
/// @param kind 0 sale, 1 return, 2 credit
/// @param selector kind of payment, counted from 0, which is cash
/// @param sum currency units
/// @param amount2 currency units: the price
/// @param amount3 currency units: the discount
/// @param amount4 currency units
/// @param signed_value discount in per cent
/// @param quantity pieces or kilograms
/// @param marked 1 when the record is marked
/// @param code goods code
/// @param code0 first of the bytes of the barcode
/// @param code1 second
/// @param code2 third
/// @param code3 fourth
/// @code{.c}
/// unsigned char kind, selector, marked, code0, code1, code2, code3;
/// unsigned short code;
/// double sum, price, discount, amount4, percent, quantity;
/// int next = 1;
/// GetSaleNum(&next);
/// for (int i = 1; i < next; ++i) {
///     if (ReadSaleFromKL(i, &kind, &selector, &sum, &price, &discount, &amount4, &percent,
///                        &quantity, &marked, &code, &code0, &code1, &code2, &code3)) {
///         printf("%d: %.3f x %.2f = %.2f\n", i, quantity, price, sum);
///     }
/// }
/// @endcode
/// @see GetSaleNum() GetCashSum()
VESK_API int ReadSaleFromKL(int number, unsigned char* kind, unsigned char* selector, double* sum,
                            double* amount2, double* amount3, double* amount4, double* signed_value,
                            double* quantity, unsigned char* marked, unsigned short* code,
                            unsigned char* code0, unsigned char* code1, unsigned char* code2,
                            unsigned char* code3);

/// @}
/// @name Services of the register
/// All of these but SetSupplierCode() ask for the firmware first when it is not known yet.
/// ::echDevice when the register does not answer.
/// @{

/// Feeds the paper. 40 lines, n times; the first failure stops.
/// @param n how often; 0 and below feed nothing
/// @par Time
/// n exchanges.
/// @see KKMPrintStr()
VESK_API int Feed(int n);
/// Prints a line of text. 16 characters; a longer text is cut. ::echParam for a null text.
/// @param text in the host's own bytes; the register prints code page 866
/// @par Time
/// One exchange and 100 ms.
/// @see Feed()
VESK_API int KKMPrintStr(char* text);
/// Locks the keyboard of the register. Shows an empty line on its customer display.
/// @par Time
/// 2 exchanges and 100 ms.
/// @see UnLock()
VESK_API int Lock(void);
/// Unlocks the keyboard of the register.
/// @par Time
/// 2 exchanges; 2 to 5 on firmware 302 and below.
/// @see Lock()
VESK_API int UnLock(void);
/// Clears the customer display.
/// @par Time
/// One exchange and 100 ms.
/// @see Lock()
VESK_API int ClearIndicator(void);
/// Stores a supplier code in the driver. Nothing is sent. ::echParam for a null text.
/// @param code any text
/// @see cbAddSale()
VESK_API void SetSupplierCode(char* code);

/// @}

#ifdef __cplusplus

/// @name Support routines
/// Under their C++ names only.
/// @{

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

/// @}

#endif  // __cplusplus

#endif
