// A line on which a script answers.
#pragma once

#include <deque>
#include <functional>
#include <map>

#include "support/world.h"

namespace test {

// An answer frame: 00, length, network number, code, payload, checksum.
Bytes Frame(unsigned char code, const Bytes& payload = {}, unsigned char net_num = 0);

// What follows a request on the line.
struct Reply {
    Bytes bytes;
    unsigned first_ms = 0;                    // before the first byte
    std::map<std::size_t, unsigned> gaps_ms;  // before the byte of that index
    long ending = -11;                        // read behind the last byte: 0 end of file, -EIO ...
    std::function<void()> at_request;         // runs when the request is written, and may throw

    Reply() = default;
    Reply(Bytes all) : bytes(std::move(all)) {}  // NOLINT: a frame is a reply

    Reply& After(unsigned ms) {
        first_ms = ms;
        return *this;
    }
    Reply& Gap(std::size_t before_byte, unsigned ms) {
        gaps_ms[before_byte] = ms;
        return *this;
    }
    // After the bytes a read answers with this result at once: 0 or a negated error number.
    Reply& EndWith(long result) {
        ending = result;
        return *this;
    }
};

inline Reply Silence() {
    return {};
}

// The write of the request throws, as a host's own write() may.
template <typename Exception>
Reply Throwing(const Exception& exception) {
    Reply reply;
    reply.at_request = [exception] { throw exception; };
    return reply;
}

// Answers by command code: what was queued for the code first, then its standing answer, then
// silence. Requests are taken in whole frames, as the driver writes them.
class ScriptedLine : public Device {
  public:
    // One answer to the next request of the code that has none yet.
    ScriptedLine& Answer(unsigned char command, Reply reply);
    // `count` times the same.
    ScriptedLine& Answers(unsigned char command, int count, const Reply& reply);
    // The answer whenever none is queued.
    ScriptedLine& Always(unsigned char command, Reply reply);
    // Bytes on the line that nobody asked for.
    void Inject(const Reply& reply, Micros now);
    // The next write gives this result.
    void FailWrite(long result) { write_results_.push_back(result); }
    // From now on nothing answers.
    void Cut() { cut_ = true; }
    void Heal() { cut_ = false; }
    std::size_t QueuedAnswers() const;
    // Forgets the queued answers; the standing ones stay.
    void Drop() { queued_.clear(); }

    long Write(const unsigned char* bytes, std::size_t count, Micros now) override;
    std::optional<Micros> NextInput(Micros now) override;
    long Read(unsigned char* to, Micros now) override;
    void Flush(Micros now) override;

  private:
    struct Event {
        Micros at;
        long value;  // a byte, or below 256 an ending
        bool is_byte;
    };

    std::map<unsigned char, std::deque<Reply>> queued_;
    std::map<unsigned char, Reply> standing_;
    std::deque<long> write_results_;
    std::deque<Event> input_;
    bool cut_ = false;
};

}  // namespace test
