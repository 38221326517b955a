#pragma once

#include <cstdint>
#include <optional>

#include "bytes.h"

namespace virtual_register {

// A frame on the wire, in both directions: 0x00, the count of the bytes that follow, the network
// number, the command, the payload, and the sum of everything from the network number on.
constexpr std::size_t kFrameOverhead = 3;  // network number, command, checksum
constexpr std::size_t kLongestBody = 255;  // what the count byte can say
constexpr std::size_t kLongestRequest = kLongestBody - kFrameOverhead;
constexpr std::size_t kLongestAnswer = 197;  // hosts take no count above 200

using RequestPayload = Bytes<kLongestRequest>;
using AnswerPayload = Bytes<kLongestAnswer>;
using FrameBytes = Bytes<2 + kLongestBody>;

struct Request {
    std::uint8_t net_number = 0;  // 0 calls whatever register is on the line
    std::uint8_t command = 0;
    RequestPayload payload;
};

struct Answer {
    std::uint8_t code = 0;
    AnswerPayload payload;
};

// `net_number` is the answering register's own.
FrameBytes build_frame(const Answer& answer, std::uint8_t net_number);
// A request as its host sent it.
FrameBytes build_frame(const Request& request);

// Finds requests in what comes off the line. After garbage or a broken frame it looks for the next
// byte at which a whole good frame begins. Since nothing is escaped, garbage can look like the head
// of a long frame; only a silence of the line ends such a one.
class FrameParser {
  public:
    void add(std::uint8_t byte);
    // The next whole request, if there is one. To be called until it gives none.
    std::optional<Request> next();
    // The line has been silent: an unfinished frame will not be continued.
    void line_was_silent() { pending_.clear(); }

  private:
    FrameBytes pending_;
};

}  // namespace virtual_register
