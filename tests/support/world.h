// The operating system as the unit tests play it.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "support/system.h"

namespace test {

using Bytes = std::vector<unsigned char>;

// What stands behind a device path. Results below 0 are negated error numbers.
class Device {
  public:
    virtual ~Device() = default;
    virtual void Opened() {}
    virtual void Closed() {}
    virtual void LineSet(const termios& /*line*/) {}
    virtual long Write(const unsigned char* bytes, std::size_t count, Micros now) = 0;
    // When the next byte (or the end of the file, or an error) can be read; nothing means never.
    virtual std::optional<Micros> NextInput(Micros now) = 0;
    virtual long Read(unsigned char* to, Micros now) = 0;
    virtual void Flush(Micros now) = 0;
};

// An interruption (or failure) of a coming poll or usleep.
struct Interruption {
    Micros after_us;
    int error;
};

struct TraceEntry {
    std::string file;
    std::string text;
};

struct ErrorDetail {
    int code;
    std::string text;
};

class World : public System {
  public:
    static World& Get();

    // A new world: clock at 1000 s, no devices, nothing recorded.
    void Reset();
    // The device is not owned and must outlive its use.
    void Attach(const std::string& path, Device* device) { devices_[path] = device; }

    Micros Now() const { return now_; }
    void Advance(Micros us) { now_ += us; }

    // The next poll or usleep ends early after so many milliseconds with the error (EINTR).
    void InterruptPoll(unsigned after_ms, int error);
    void InterruptSleep(unsigned after_ms, int error);

    // Everything the driver did, one line a call: "open PATH FLAGS", "close", "sleep MS", "flush",
    // "write HEX", "wait MS", "read HEX", "fcntl CMD ARG", "getattr", "setattr", and failures
    // with " = error" behind them.
    const std::vector<std::string>& Log() const { return log_; }
    // The requests alone, each as command and payload in hex: "36 00".
    std::vector<std::string> Requests() const;
    // The requests and every wait that is not one of the two 10 ms pauses of an exchange:
    // {"7F", "sleep 50", "29 20"}. What a test noted stands between them: "note TEXT".
    std::vector<std::string> Steps() const;
    // An event of the test's own in the log.
    void Note(const std::string& text) { Record("note " + text); }
    void ClearLog() { log_.clear(); }
    // Off: nothing is recorded, neither calls nor traces nor details, for runs that count speed.
    void SetLogging(bool on) { logging_ = on; }

    // What was traced; nothing is written to disk unless asked for.
    const std::vector<TraceEntry>& Traces() const { return traces_; }
    // All that went to one file.
    std::string Traced(const std::string& file = "VeskTarvoM5.log") const;
    void ClearTraces() { traces_.clear(); }
    void WriteTracesToDisk(bool on) { traces_to_disk_ = on; }
    // Called with every text that is traced. What it throws, the tracing step throws.
    std::function<void(const std::string& text)> on_trace;

    // The details that protocol errors were raised with, in order. The driver drops them.
    const std::vector<ErrorDetail>& Details() const { return details_; }

    // Line attributes as last set by the driver, and what it finds when it reads them.
    termios line{};
    bool getattr_fails = false;
    bool setattr_fails = false;
    std::time_t wall_clock = 0;  // what time() answers

    std::function<void()> on_sleep;  // called when a pause begins

    // --- for the replaced calls
    bool Owns(int fd) const override { return fd >= kFirstFd && files_.count(fd) != 0; }
    bool OwnsPath(const char* path) const override;
    int Open(const char* path, int flags) override;
    int Close(int fd) override;
    long Read(int fd, void* to, std::size_t count) override;
    long Write(int fd, const void* from, std::size_t count) override;
    int Poll(int fd, short events, int timeout_ms, short* revents) override;
    int Fcntl(int fd, int command, long argument) override;
    int GetAttributes(int fd, termios* to) override;
    int SetAttributes(int fd, int action, const termios* from) override;
    int Flush(int fd, int queue) override;
    int Usleep(unsigned us) override;
    Micros LookAtClock() override { return ++now_; }
    std::time_t WallClock() override { return wall_clock; }
    bool Trace(const std::string& file, const std::string& text) override;
    void Detail(int code, const std::string& text) override;

  private:
    static constexpr int kFirstFd = 1 << 20;  // never a real descriptor

    void Record(const std::string& event);
    std::optional<Interruption> TakeInterruption(std::deque<Interruption>& queue, Micros wait);

    Micros now_ = 0;
    std::map<std::string, Device*> devices_;
    std::map<int, Device*> files_;
    int next_fd_ = kFirstFd;
    std::deque<Interruption> poll_interruptions_;
    std::deque<Interruption> sleep_interruptions_;
    bool logging_ = true;
    std::vector<std::string> log_;
    std::vector<TraceEntry> traces_;
    std::vector<ErrorDetail> details_;
    bool traces_to_disk_ = false;
};

// "00 03 A0"
std::string Hex(const Bytes& bytes);
Bytes FromHex(const std::string& text);

}  // namespace test
