// What happened in a run, in order: every call that the driver made of the operating system, every
// act of the host and of the cashier, every fault.
#pragma once

#include <cstdint>
#include <vector>

#include "support/system.h"

namespace simulation {

using test::Micros;

enum class EventKind : std::uint8_t {
    // The driver's calls. `argument` and `result` are those of the call, errno is negated.
    open_port,  // result: 0 or -errno
    close_port,
    set_flags,  // argument: the flags
    get_line,
    set_line,   // argument: the control flags
    flush,      // argument: the queue
    sleep,      // argument: microseconds
    poll,       // argument: milliseconds
    read_byte,  // result: the byte, or -errno; kEndOfFile
    write,      // bytes: what was written; result: how many went out, or -errno

    // What the others did. Everything from here on is no business of the driver's.
    call,        // argument: number of the host's call
    result,      // result: success flag; argument: last error
    terminate,   // the host ended the execution loop
    unplug,      // the cable was pulled to end a loop that has no bound
    fault,       // argument: a FaultKind
    act,         // argument: a FaultKind; result: 1 when the register let it happen
    misread,     // the register took a request that was not written; bytes: command, payload
    registered,  // argument: number of the check, counted from 1 in the run
    failure,     // the driver began to clean up behind a failed check
};

constexpr std::int32_t kEndOfFile = -1000;

constexpr bool IsDriversOwn(EventKind kind) {
    return kind < EventKind::call;
}

struct Event {
    Micros at;  // when the call was over
    std::int32_t argument;
    std::int32_t result;
    std::uint32_t bytes_at;
    std::uint16_t bytes_count;
    EventKind kind;
};

// One request of the driver and what became of it. The register's side of the truth.
struct ExchangeFacts {
    std::uint32_t answer_at = 0;     // the register's frame in the journal's bytes
    std::uint16_t answer_count = 0;  // 0: the register gave none
    std::uint8_t command = 0;
    bool taken = false;      // the register took the request as it was written
    bool misread = false;    // it took another one that the bytes on the line happened to make
    bool disturbed = false;  // a fault that can do harm touched it
    bool forged = false;     // the driver took a whole good frame that is no answer to this request
};

class Journal {
  public:
    void Clear() {
        events_.clear();
        bytes_.clear();
        exchanges_.clear();
    }
    // Gives the number of the event.
    std::size_t Add(EventKind kind, Micros at, std::int64_t argument = 0, std::int64_t result = 0,
                    const unsigned char* bytes = nullptr, std::size_t count = 0) {
        events_.push_back({at, static_cast<std::int32_t>(argument),
                           static_cast<std::int32_t>(result), Keep(bytes, count),
                           static_cast<std::uint16_t>(count), kind});
        return events_.size() - 1;
    }
    void SetResult(std::size_t event, long result) {
        events_[event].result = static_cast<std::int32_t>(result);
    }
    // Keeps bytes without an event; gives their place.
    std::uint32_t Keep(const unsigned char* bytes, std::size_t count) {
        const auto at = static_cast<std::uint32_t>(bytes_.size());
        bytes_.insert(bytes_.end(), bytes, bytes + count);
        return at;
    }

    const std::vector<Event>& events() const { return events_; }
    const unsigned char* bytes(std::uint32_t at) const { return bytes_.data() + at; }
    std::vector<ExchangeFacts>& exchanges() { return exchanges_; }
    const std::vector<ExchangeFacts>& exchanges() const { return exchanges_; }

  private:
    std::vector<Event> events_;
    std::vector<unsigned char> bytes_;
    std::vector<ExchangeFacts> exchanges_;
};

}  // namespace simulation
