#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "frame.h"
#include "memory.h"

namespace virtual_register {

// A recorded conversation, one frame a line: its time in seconds from the start, -> for what the
// host sent or <- for what came back, and its bytes. What stands behind ; is a remark.
//
//   tarvo-register recording 1
//   ; firmware 303, serial 00012345
//   line baud 9600
//   0.250113 -> 0003003434  ; version
//   0.250113 <- 000601B4030200BA  ; version answered 3.2
//
// A request that no answer follows met silence. What comes back need not be a good frame: it is
// recorded as the host got it.
class RecordingError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct RecordedAnswer {
    std::int64_t delay_us = 0;  // behind its request
    FrameBytes bytes;
};

struct RecordedExchange {
    std::size_t line = 0;  // of the request in its file
    Request request;
    std::optional<RecordedAnswer> answer;
};

struct Recording {
    int baud = 9600;
    std::vector<RecordedExchange> exchanges;
};

// Throws RecordingError with the number of the line.
Recording read_recording(std::string_view text);

// Lines for writing one.
std::string recording_head(int baud, const Memory& memory);
std::string recorded_request(std::int64_t at_us, const Request& request);
std::string recorded_answer(std::int64_t at_us, const FrameBytes& bytes, const std::string& remark);

}  // namespace virtual_register
