// The POSIX calls of the driver as this program defines them: counted, and answered by a register
// in this process, or passed on to the system.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cost {

enum Call {
    call_open,
    call_close,
    call_read,
    call_write,
    call_poll,
    call_tcflush,
    call_usleep,
    call_clock,
    call_count
};
extern const char* const kCallNames[call_count];

// How often each was called on the line (the clock and the pauses: by anybody).
extern unsigned long calls[call_count];

// What answers on the line in this process.
class Answerer {
  public:
    virtual ~Answerer() = default;
    virtual void Take(const unsigned char* bytes, std::size_t count, std::int64_t now_us) = 0;
    virtual bool HasByte() = 0;
    virtual unsigned char NextByte() = 0;
    virtual void Forget() = 0;  // what was sent and not yet read
};

// A device path that exists only here.
constexpr auto kPath = "/dev/cost";

// The answerer is not owned. Null: there is no such device, and every call goes to the system, but
// pauses take no time.
void Use(Answerer* answerer);

// Of the clock that only pauses and vain waits move.
std::int64_t NowUs();

}  // namespace cost
