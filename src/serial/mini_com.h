// The serial port.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "serial/mini_com_error.h"

struct _DCB;
struct _COMSTAT;

// Time limits in milliseconds.
struct _COMMTIMEOUTS {
    std::uint32_t ReadIntervalTimeout;         // longest wait for each byte
    std::uint32_t ReadTotalTimeoutMultiplier;  // per requested byte, for the first byte
    std::uint32_t ReadTotalTimeoutConstant;
    std::uint32_t WriteTotalTimeoutMultiplier;  // the write limits are stored and never consulted
    std::uint32_t WriteTotalTimeoutConstant;
};

// One serial device. Every failure is an EMiniCom and leaves the port as it was. Used by one
// thread. Speed and line discipline are set on the same descriptor by CTarvo::InitCom.
class CMiniCom {
  public:
    CMiniCom() { initClass(); }
    ~CMiniCom();
    CMiniCom(const CMiniCom&) = delete;
    CMiniCom& operator=(const CMiniCom&) = delete;

    void initClass();

    // Opens /dev/ttyS followed by port - 1, for reading and writing, without waiting for a carrier.
    // Throws errCreateFile with the path; the port stays closed then.
    void Open(unsigned char port);
    // The same for a device of any other name.
    void OpenDevice(const std::string& path);
    bool IsOpen() const { return handle_ != -1; }
    void Close();
    // Descriptor of the open device, -1 when closed.
    int handle() const { return handle_; }

    void SetCommTimeouts(const _COMMTIMEOUTS* timeouts) { timeouts_ = *timeouts; }
    void GetCommTimeouts(_COMMTIMEOUTS* timeouts) const { *timeouts = timeouts_; }

    // Discards unread input and unsent output whatever the flags. Throws errCreateFile when closed.
    void purgeComm(unsigned flags);

    // Waits up to ms milliseconds for input, signals notwithstanding. Positive: input or a hang-up
    // waits; 0: time is up; negative: error.
    int waitComEvent(unsigned ms);

    // One write of n bytes. Throws errCreateFile when closed, errWriteFile unless all n went out.
    void Write(const void* buf, unsigned n);

    // Reads exactly n bytes, one system call each. Blocks up to (multiplier * n + constant) for the
    // first byte and ReadIntervalTimeout for each byte. Bytes read before a failure stay in buf.
    // With n = 0 it only waits for input. Throws errCreateFile when closed; errReadFile on a
    // time-out, at the end of the file and on a read error.
    void Read(void* buf, unsigned n);
    std::vector<unsigned char> Read(unsigned n);

    // Never succeeds: speed is set by CTarvo::InitCom. Throws errCreateFile when closed, else
    // errUnknown.
    void setSpeed(int baud);

    // The rest of the interface that the port once had; these do nothing here.
    void setCommState(_DCB* state);
    void EscapeCommFunction(unsigned function);
    void ClearCommError(unsigned short* errors, _COMSTAT* state);
    void traceMsg(const std::string& text);

    // Mirrors the protocol object's trace settings; the port writes no trace of its own.
    void setTrace(bool on, const std::string& fileName);
    bool trace() const { return trace_; }
    const std::string& logFileName() const { return log_file_name_; }

  private:
    std::int32_t handle_;
    std::uint8_t port_;
    bool trace_;
    _COMMTIMEOUTS timeouts_{};
    std::string log_file_name_;
    std::uint32_t spare_;
};
