// The driver object: the connection to the register and the printing of a check.
#pragma once

#include <cstdint>
#include <string>

#include "engine/check.h"
#include "engine/tarvo_vesk_error.h"
#include "protocol/tarvo.h"
#include "serial/mini_com.h"
#include "support/timer_thread.h"

// Failures are ETarvoVesk with the code named at each step; EMiniCom and ETarvo pass through where
// nothing is said. Everything runs on the caller's thread and blocks it. Each step writes its story
// to VeskTarvoM5.log in the working directory.
class TTarvoVesk : public TTimerThread, public CTarvo, private CMiniCom {
  public:
    TTarvoVesk() { setCom(this); }

    // One pass of the execution loop: reads the register's state once and acts on it; in a
    // sale-query state it prints the whole check. Always returns 0: the loop ends by terminate().
    // Nothing escapes it; a failure is reported through event_checkprepare.
    int execute() override;
    // The check has reached a step (0 started, 100 closed), or failed with an error.
    virtual void event_checkprepare(unsigned char step, const ETarvoVesk* error);

    // --- connection (connection.cpp)

    // Closes the port, opens it again and identifies the register at 9600 or 57600 baud. Throws
    // echNoPort, echNoVersion or echDevice and leaves the port as the steps left it.
    void Connect(unsigned char port);
    void ConnectDevice(const std::string& device);
    // Returns the register to ks_none, as long as it answers, and closes the port.
    void Disconnect();

    // --- execution loop (waiting.cpp)

    // Cancels what is open at the register and arms the loop. Throws echRegKass, echDevice.
    void StartWait(bool wait);
    void StopWait();
    // Runs execute() until the loop is ended.
    void PrintCheck();
    bool iswait() const { return !terminated(); }
    static bool GetEnabledFreeSale() { return false; }
    // Cancels a check left open at the register and queries for a sale again.
    void DoCheckOut();
    // Sale number of the register, 0 to 255. Throws echDevice after 20 attempts.
    int TryReadSaleNumber();

    // --- services (services.cpp)

    void keylock();
    void keyunlock();
    void feed(unsigned char lines);
    void indicator_clear();
    int kkmnum();
    int klnum();
    int checkscount();
    void printDoubleCheck();
    static void Trace(const std::string& msg);
    static void Trace(const char* msg);

    // --- steps of a check

    // sale_steps.cpp. Throw echDevice; TrySendSale echPrice when the register refuses the money.
    void TrySendSale(const sale& line);
    void TrySendSaleTitle(int saleNumber, const std::string& title);

    // closing_steps.cpp. Throw echDevice, echNoCash.
    void TrySendCheckType(kkm_check type);
    void TryEnableCheckOut();  // never fails, TestCheckPrint finds out
    int TryReadError();
    // Proves the print by the counters. Throws echPaperAbsent, echPrintTest, echDevice.
    void TestCheckPrint(int checksBefore, int salesBefore, int lines);

    // money_steps.cpp. Throw echDevice, echNoCash.
    void TrySendDiscount(int percent);
    void TrySendCheckCash(unsigned long checkCash);
    bool TryPrintDoubleCheck();  // never throws

    // --- the host's settings

    TCheck& check() { return check_; }
    const TCheck& check() const { return check_; }
    void setCloseAfterCheck(bool on) { close_after_check_ = on; }
    void setClearBuffer(bool on) { clear_buffer_ = on; }
    bool clearBuffer() const { return clear_buffer_; }
    void setSupplierCode(const std::string& code) { supplier_code_ = code; }
    void setCopyCount(int count) { copy_count_ = count; }

  private:
    // connection.cpp
    template <typename OpenPort>
    void ConnectThrough(OpenPort open_port);
    bool FindAtFirstSpeed();
    bool FindAtSecondSpeed();
    void SwitchHostWaitOn();

    // execute.cpp
    void Dispatch(const status_info& status);
    void PrintQueriedCheck(const status_info& status);
    void SendCheck();
    void CloseCheck(const TStatistics& before);
    void PrintCopies();
    void FailCheck(const ETarvoVesk& error);
    void FailCheckUnknown();
    void DoCheckPrepare(unsigned char step, const ETarvoVesk* error, const std::string& text);
    void DoCloseCheck() {}
    bool KeyLockApplies() const;

    void DropPendingSale(status_info& status);
    void SendSaleOnce(const sale& line);
    // Cancels the open check with a pause after each step but the last.
    void CancelOpenCheck(unsigned pause_ms);
    void SendTitlePieces(int saleNumber, const std::string& title, unsigned& piece);
    bool ProbeStatistics();

    TCheck check_;
    bool close_after_check_ = true;
    bool clear_buffer_ = true;
    bool wait_mode_ = false;
    std::string supplier_code_;
    int copy_count_ = 0;
    bool free_sale_set_ = false;
};
