// A register without a mind of its own: it says what the driver hopes to hear.
#pragma once

#include <cstdint>

#include "support/payload.h"

namespace fuzz {

// Random answers die at the first exchange. Against this background a single hostile answer can
// fall anywhere in a whole check. It knows counters and states only, no rules.
class ObligingRegister {
  public:
    // How the register names its firmware: two or three bytes.
    void SetVersionAnswer(const Bytes& bytes) { version_answer_ = bytes; }
    void SetErrorNumber(std::uint8_t number) { error_number_ = number; }

    struct Answer {
        std::uint8_t code;
        Bytes payload;
    };

    // Takes the request's command and payload, changes its counters, and answers.
    Answer Take(std::uint8_t command, const Bytes& payload);
    // The code that a good answer to the command bears; 0xA0 for an unknown one.
    static std::uint8_t GoodCode(std::uint8_t command);

  private:
    Answer Status();
    void Reset();

    Bytes version_answer_{3, 10};
    std::uint8_t error_number_ = 16;
    std::uint8_t state_ = 0xA1;
    std::uint8_t after_reset_ = 0xA0;
    std::uint8_t lines_ = 0;
    std::uint16_t checks_ = 7;
    std::uint16_t sales_ = 3;
};

}  // namespace fuzz
