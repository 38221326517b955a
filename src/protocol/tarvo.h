// The register's protocol.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include "protocol/commands.h"
#include "protocol/frame.h"
#include "protocol/kl_sale.h"
#include "protocol/sale.h"
#include "protocol/sale_block.h"
#include "protocol/status_info.h"
#include "protocol/tarvo_error.h"
#include "serial/mini_com.h"
#include "support/row_data.h"

// One register on one serial port. Every operation is one or more exchanges: a request, then its
// answer, with no retry unless the operation's name says Try.
//
// An exchange pauses 10 ms, drops what is left on the line, writes the request, pauses 10 ms and
// reads the answer: its first byte within 400 ms, each later byte within 100 ms of the one before;
// but behind the length it waits 200 ms + 100 ms for each byte to come.
//
// Failures: EMiniCom from the port (time-out, write fault, closed) passes through; ETarvo carries a
// TarvoErr code: errProtocol for a broken frame or the wrong answer, errNetNum for another
// register, errMoney and errProduct for a refusal, errVersion for firmware without the operation. A
// value that is decoded by CRowData throws a plain std::exception when its length is wrong.
//
// Used by one thread.
class CTarvo {
  public:
    CTarvo() { initClass(); }
    explicit CTarvo(CMiniCom* port);
    CTarvo(const CTarvo&) = delete;
    CTarvo& operator=(const CTarvo&) = delete;

    void initClass();
    void setCom(CMiniCom* port) { port_ = port; }  // not owned

    kkm_ver version() const { return m_ver; }
    void setVersion(kkm_ver version) { m_ver = version; }
    unsigned char netNum() const { return m_NetNum; }
    void setNetNum(unsigned char number) { m_NetNum = number; }  // 0 means any register
    // Offline, requests are built but not sent and answers are not read.
    void setOffline(bool offline) { offline_ = offline; }

    // --- tracing (tarvo.cpp)

    // Sets the switch and the trace file of this object, and of the port when one is attached.
    void setTrace(bool on, const std::string& fileName);
    bool getTrace() const { return trace_; }
    // Appends the message behind a stamp of the local time, when tracing is on and a file is named.
    // Never fails.
    void traceMsg(const std::string& msg);
    static std::string TraceArrayByte(const unsigned char* buf, unsigned char n);
    static std::string TraceVector(const Bytes& bytes);

    // --- packets (packets.cpp)

    static unsigned char calcKS(const unsigned char* buf, int n);
    static unsigned char calcKSNoSuppleer(const unsigned char* buf, int n);
    void MakePacket(kkm_command cmd, Bytes& data) const;
    void MakePacketNoSuppleer(kkm_command cmd, Bytes& data) const;
    void SendData(const Bytes& frame);
    // data is left holding the frame.
    void sendPacket(kkm_command cmd, Bytes& data);
    void sendPacket(kkm_command cmd);
    void sendPacketNoSuppleer(kkm_command cmd, Bytes& data);
    void sendPacketNoSuppleer(kkm_command cmd);
    void GetPacket(packet& pac);
    void GetPacketNoSuppleer(packet& pac);
    void COMMClearError();

    // --- line, version, memory by name (identification.cpp)

    // Raw mode at 9600 or 57600 baud with the time limits of an exchange.
    void InitCom(kkm_BaundRate speed);
    int getVersion();  // raw number, 0 when unrecognised
    kkm_ver getKKMVersion(bool mustKnow);
    bool CheckVersion(bool mustKnow);  // sends nothing
    std::uint16_t getRamAddr(TRamAddr location);
    std::uint16_t getRamAddr(kkm_ver version, TRamAddr location);
    CRowData readRam(TRamAddr location, unsigned char count);
    std::string _ReadKKMNum();
    std::string ReadKKMNum();  // serial number
    void GenericScan();

    // The same sequence as a line scanner uses it: no extra pause, an unreachable register is an
    // unknown version.
    int getVersionNoSuppleer();
    kkm_ver getKKMVersionNoSuppleer(bool mustKnow);
    CRowData readRamNoSuppleer(TRamAddr location, unsigned char count);
    std::string _ReadKKMNumNoSuppleer();
    std::string ReadKKMNumNoSuppler();  // finds out and stores the version first

    // --- services (services.cpp)

    std::tm readTime();
    // Sends before it asks for the version: with an unknown one the answer stays on the line.
    void writeCfgParam(kkm_cfg parameter, unsigned char value);
    void feed(unsigned char lines);
    void writeCheckTitle(const std::string& text);
    void writeCheckBottom(const std::string& text);
    std::string readCheckTitle();
    std::string readCheckBottom();
    unsigned char ReadError();  // the register's last error, 16 = paper absent
    unsigned char ReadSaleNumberCmd();
    unsigned char ReadSaleNumber();  // lines of the open check, 0 when none is open
    void CancelCheckOut();

    // --- status (status.cpp)

    void GetStatus(packet& answer);
    // In ks_salecode and ks_salebarcode it makes two or three more exchanges.
    void GetStatusInfo(const packet& answer, status_info& status);
    void GetStatusInfo(status_info& status);
    // Reads the status up to `tries` times, at least once, without a pause.
    bool waitKKMStatus(kkm_command state, std::uint32_t tries);
    void resetStatus();
    void resetStatusInfo(const std::string& text, unsigned char value, kkm_indicator mode);

    // --- keys and lock (keys.cpp)

    void sendKey(kkm_keys key);
    void lockKey();
    void unlockKey();
    void _lockKeyReal(bool unlock);
    void _lockKey();
    void _unlockKey();
    void TryUnlockKey();

    // --- the open check (sales.cpp)

    void sendSaleInfo(const status_info& line);
    void sendSaleInfo(const sale& line);
    void sendSaleStr(unsigned char sale_index, unsigned char line_index, const std::string& text);
    void sendWeight(double weight);
    void sendDiscount(std::int8_t percent);
    void sendDiscountCard(unsigned char kind, const std::string& number);
    void sendCash(std::uint32_t amount);  // kopecks
    void outCheck(kkm_check type);
    void sendQuerySale();
    // Up to firmware 301 it presses keys until the register reaches the states, without a bound.
    void ClearCheck();

    // --- product records (products.cpp)

    void writeDBSale(const dbsale& product);
    dbsale readDbsale(std::uint16_t number);

    // --- counters and control tape (registers.cpp)

    CRowData readEprom(std::uint32_t address, unsigned char count);
    void GetStatistics(TStatistics& statistics);
    // False, and the record untouched, when the register has no such record.
    bool readKLSale(std::uint16_t index, KLSale& record);
    bool TryReadKLSale(std::uint16_t index, KLSale& record);
    double getNICurrent();            // grand total, currency units
    double getCashSum(int selector);  // currency units
    std::tm readKLbegin();

    // --- indicator and paper (indicator.cpp)

    void showInfo(const std::string& text, unsigned char value, kkm_indicator mode);
    void printStr(bool wide, unsigned char value, const std::string& text);

  private:
    // One exchange whose answer must bear the command's answer code. The pause lies between sending
    // and reading.
    packet Exchange(const Command& command, Bytes payload = {}, unsigned pause_ms = 0);
    packet ExchangeNoSuppleer(const Command& command, Bytes payload = {});
    packet SendAndGet(kkm_command request, Bytes payload);
    // One exchange whose answer is decoded as a status before anybody judges it.
    status_info ExchangeStatus(kkm_command request, Bytes payload = {});
    void Judge(const packet& answer, const Command& command);
    void Judge(const frame::Fault& fault);
    void ReadFrame(packet& pac);
    void ReadPort(unsigned char* to, unsigned count);
    // 16 characters, the value, the mode: what the indicator commands send.
    static Bytes IndicatorLine(const std::string& text, unsigned char value, kkm_indicator mode);
    void FillFromCounters(status_info& status);
    void SendSale(const SaleFields& line);
    void ClearCheckByKeys();
    Bytes RamRequest(TRamAddr location, unsigned char count);

    kkm_ver m_ver;
    bool trace_;
    std::string log_file_name_;
    unsigned char m_NetNum;
    CMiniCom* port_;
    bool offline_;
    std::int32_t spare_number_;
    std::string spare_text_;
    std::uint16_t spare_words_[2];
    unsigned char section_;  // section number as last read from the register, 0 when not read yet
};
