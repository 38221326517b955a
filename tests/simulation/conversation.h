// Reads a journal as the driver must have written it: every call that the driver made of the
// operating system has to be the one that was required, with the required bytes and waits.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "simulation/journal.h"

namespace simulation {

// The driver did something else than required.
class Deviation : public std::runtime_error {
  public:
    explicit Deviation(const std::string& text) : std::runtime_error(text) {}
};

// How an operation of the protocol or a step of a check failed, as far as it matters to others.
enum class Failing : std::uint8_t {
    money,     // the register refused for want of money
    protocol,  // any other fault that the protocol layer finds
    other,     // the port, or a value that could not be decoded
    engine,    // a step of the check gave up; the code says why
};

struct Failed {
    Failing how;
    int code = 0;
};

using Payload = std::vector<unsigned char>;

struct Reply {
    std::uint8_t code = 0;
    const unsigned char* data = nullptr;
    std::size_t size = 0;

    unsigned At(std::size_t i) const {
        return i < size ? data[i] : 0;
    }  // a missing byte reads as 0
    unsigned Word(std::size_t i) const { return At(i) << 8U | At(i + 1); }
};

class Conversation {
  public:
    Conversation(Journal& journal, std::size_t first_event, std::uint32_t first_exchange)
        : journal_(journal),
          next_(first_event),
          exchange_(first_exchange),
          now_(journal.events()[first_event - 1].at) {}

    // All of these throw Deviation when the driver did otherwise.
    void Open(const std::string& path, bool& worked);
    void Close();
    void SetLine(int baud);  // throws Failed when the system refused
    void Sleep(unsigned ms);
    Reply Exchange(std::uint8_t command, const Payload& payload, unsigned pause_ms = 0);
    // An exchange in two halves; the second may be left out.
    void Request(std::uint8_t command, const Payload& payload) { Send(command, payload); }
    Reply Answer() { return Receive(); }
    void EndOfCall();

    void SetPortOpen(bool open) { port_open_ = open; }
    void SetNumber(std::uint8_t number) { number_ = number; }
    // True once the host has ended the loop.
    bool EndedByHost();
    // The driver reached the clean-up of a failed check.
    void Failure();
    Micros Now() const { return now_; }
    std::uint32_t Exchanges() const { return exchange_; }
    // The longest body that the head of an answer announced.
    unsigned LongestBody() const { return longest_body_; }
    // True when so many milliseconds have passed since then. The driver counts whole milliseconds
    // of its clock, so within one of them both is right, and what it did next decides.
    bool TimeIsUp(Micros since, unsigned ms, std::uint8_t next_command);

  private:
    const Event& Next(EventKind kind, const char* what);
    void SkipOthers();
    // 1 when input came, 0 when it did not; throws Failed when the wait failed.
    bool Wait(unsigned ms);
    void ReadBytes(unsigned char* to, unsigned count);
    void Send(std::uint8_t command, const Payload& payload);
    Reply Receive();
    [[noreturn]] void Deviate(const std::string& text) const;

    Journal& journal_;
    std::size_t next_;
    std::uint32_t exchange_;  // of the next request
    Micros now_;
    bool port_open_ = false;
    std::uint8_t number_ = 0;
    bool ended_by_host_ = false;
    bool in_failure_ = false;
    unsigned longest_body_ = 0;
    unsigned char frame_[2 + 255];
};

}  // namespace simulation
