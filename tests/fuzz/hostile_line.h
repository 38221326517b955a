// A line on which the input decides what the register answers.
//
// Each request takes one byte of the input that chooses how it is answered (see Kind) and what that
// kind needs. When the input is used up the line hangs up for good: every read meets the end of the
// file 300 ms after the request. This ends the loops that are required to poll without bound as
// long as somebody answers: the clearing of a check by keys up to firmware 301, and Disconnect.
// PrintCheck polls on even then, as it must; its loop is ended as a host would end it, by the stop
// flag, which on_dead is to set. It is called for each request on the dead line.
//
// The line is also the judge of what the driver does on it: every write must be one well-formed
// frame behind a flush, and nothing may be read that does not belong to the answer.
#pragma once

#include <deque>
#include <functional>

#include "fuzz/input.h"
#include "fuzz/obliging_register.h"
#include "support/world.h"

namespace fuzz {

class HostileLine : public test::Device {
  public:
    explicit HostileLine(Input& input) : input_(input) {}

    ObligingRegister& Register() { return register_; }
    void OnDead(std::function<void()> action) { on_dead_ = std::move(action); }
    // The network number that requests must bear.
    void ExpectNetNum(unsigned char number) { net_num_ = number; }

    bool IsOpen() const { return open_; }

    void Opened() override { open_ = true; }
    void Closed() override { open_ = false; }
    long Write(const unsigned char* bytes, std::size_t count, test::Micros now) override;
    std::optional<test::Micros> NextInput(test::Micros now) override;
    long Read(unsigned char* to, test::Micros now) override;
    void Flush(test::Micros now) override;

  private:
    enum Kind : unsigned {
        obliging,      // what the driver hopes for
        other_body,    // the good answer code with bytes of the input
        state,         // one of the states, with bytes of the input
        any_frame,     // any code, any body, a right checksum
        wrong_sum,     // as obliging, with one byte changed
        cut,           // as obliging, with the rest missing
        raw,           // bytes of the input
        silence,       // nothing
        end_of_file,   // the end of the file at once
        read_error,    // a fault of the device
        late,          // as obliging, with a wait before one of its bytes
        other_number,  // as obliging, from another network number
        short_write,   // the request does not go out whole
        write_error,
        long_state,  // a state with as many bytes as a frame holds
        doubled,     // the answer twice
        kinds
    };
    struct Event {
        test::Micros at;
        long value;  // a byte, or an ending
        bool is_byte;
    };

    void JudgeRequest(const unsigned char* bytes, std::size_t count) const;
    long Respond(unsigned kind, std::uint8_t command, const Bytes& payload, long written);
    Bytes Faulty(unsigned kind, std::uint8_t command, const Bytes& payload);
    Bytes Frame(std::uint8_t code, const Bytes& payload) const;
    Bytes Obliging(std::uint8_t command, const Bytes& payload);
    void Send(const Bytes& bytes);
    void End(long value) { events_.push_back({last_at_, value, false}); }
    std::size_t Allowed() const;

    Input& input_;
    ObligingRegister register_;
    std::function<void()> on_dead_ = [] {};
    unsigned char net_num_ = 0;
    std::deque<Event> events_;
    test::Micros last_at_ = 0;
    bool open_ = false;
    bool flushed_ = false;
    unsigned after_death_ = 0;
    std::size_t delivered_ = 0;
    unsigned char head_[2] = {0, 0};
};

}  // namespace fuzz
