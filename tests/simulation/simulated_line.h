// The line between the driver and the register, with its timing and its faults.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "simulation/byte_queue.h"
#include "simulation/fault_plan.h"
#include "simulation/journal.h"
#include "simulation/register_side.h"
#include "virtual_register/frame.h"

namespace simulation {

struct LineSettings {
    int baud = 9600;              // the register's; at another one both sides hear nothing
    std::uint8_t net_number = 1;  // the register's
    Micros latency_us = 2000;     // from the last byte of a request to the first of its answer
};

class SimulatedLine {
  public:
    SimulatedLine(RegisterSide& side, Journal& journal, const LineSettings& settings,
                  const FaultPlan& plan);

    // 0, or the error number with which opening fails.
    int Open(Micros now);
    void Close();
    // 0, or the error number with which the line's settings are refused.
    int Settings(Micros now);
    void SetSpeed(int baud) { driver_baud_ = baud; }
    // How many bytes went out, or a negated error number.
    long Write(const unsigned char* bytes, std::size_t count, Micros now);
    // When the driver can read the next byte, the end of the file or an error; nothing: never.
    std::optional<Micros> NextInput(Micros now);
    // The byte, kEndOfFile or a negated error number.
    int Read(Micros now);
    void Flush(Micros now);
    // From now on nothing comes and nothing goes until the device is opened again.
    void PullPlug() { hung_up_ = true; }

    bool InterruptsWaits() const { return interrupts_waits_; }
    // True for the wait that fails.
    bool TakePollError() { return polls_to_error_ >= 0 && polls_to_error_-- == 0; }

    // How often each kind was injected, whatever came of it.
    const std::array<std::uint32_t, kFaultKinds>& injected() const { return injected_; }

  private:
    // An answer on its way.
    struct Transmission {
        std::vector<unsigned char> bytes;
        std::vector<Micros> gaps;  // before each byte
        Micros start = 0;
        std::uint32_t exchange = 0;
        int broken_at = -1;  // reading this byte gives `ending` instead
        int ending = 0;
        bool held = false;
        bool ends_there = false;  // nothing comes behind the ending
    };

    // line_faults.cpp
    void ChooseFaults(std::uint8_t command, Micros now);
    void Begin(const Fault& fault, std::uint8_t command, Micros now);
    void BeginHostFault(const Fault& fault, Micros now);
    void RepeatPreviousAnswer(Micros now);
    void DelayAnswer(const Fault& fault, Transmission& answer) const;

    long WriteThrough(std::size_t count, Micros now);
    void Deliver(Micros until);
    void Take(const virtual_register::Request& request, Micros now);
    void Answer(const virtual_register::Answer& answer, Micros now);
    void Transmit(const Transmission& transmission);
    // The exchange in progress.
    std::uint32_t Present() const {
        return static_cast<std::uint32_t>(journal_.exchanges().size()) - 1;
    }
    bool IsDead(Micros now) const { return now < dead_until_; }

    RegisterSide& side_;
    Journal& journal_;
    const LineSettings& settings_;
    const FaultPlan& plan_;
    Random random_;
    Micros byte_us_;

    int driver_baud_ = 0;
    bool hung_up_ = false;
    Micros gone_until_ = 0;
    Micros dead_until_ = 0;
    bool open_fails_ = false;
    bool settings_fail_ = false;

    ByteQueue input_;
    Micros sending_until_ = 0;
    ByteQueue outgoing_;
    Micros last_arrival_ = 0;
    virtual_register::FrameParser parser_;
    std::vector<Transmission> held_;
    std::vector<unsigned char> previous_answer_;  // of the exchange before this one
    std::vector<unsigned char> last_answer_;

    std::vector<Fault> faults_;  // of the exchange in progress
    std::vector<unsigned char> written_;
    std::vector<unsigned char> spoiled_;
    Transmission answer_;
    Micros written_at_ = 0;
    bool interrupts_waits_ = false;
    int polls_to_error_ = -1;
    std::array<std::uint32_t, 256> seen_{};  // requests by command
    std::array<std::uint32_t, kFaultKinds> injected_{};
};

}  // namespace simulation
