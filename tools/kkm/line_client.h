// A frame client of the tool's own, for what the driver's functions do not give: the register's
// state and the times of its answers. It never runs beside an open connection of the driver.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace kkm {

using Bytes = std::vector<std::uint8_t>;

// The device cannot be used: errno in words.
class LineFailure : public std::runtime_error {
  public:
    LineFailure(const std::string& what, int error) : std::runtime_error(what), error_(error) {}
    int error() const { return error_; }

  private:
    int error_;
};

// What became of an exchange.
enum class AnswerKind {
    whole,      // a good frame
    none,       // no byte came
    cut_short,  // a frame that ended early
    broken      // bytes that make no good frame
};

struct LineAnswer {
    AnswerKind kind = AnswerKind::none;
    std::uint8_t network = 0;  // number of the register that answered
    std::uint8_t code = 0;
    Bytes data;
    double first_ms = 0;  // from the end of the request to the first byte
    double gap_ms = 0;    // the longest pause between two bytes
};

class LineClient {
  public:
    // Opens the device with 8 data bits, no parity, one stop bit. Baud is 9600 or 57600. Throws
    // LineFailure.
    LineClient(const std::string& device, int baud);
    ~LineClient();
    LineClient(const LineClient&) = delete;
    LineClient& operator=(const LineClient&) = delete;

    // Sends a request to whatever register is there and reads its answer. Blocks up to `wait` for
    // the first byte and as long again for each further one. Throws LineFailure when the device
    // fails.
    LineAnswer Exchange(std::uint8_t command, const Bytes& payload = {},
                        std::chrono::milliseconds wait = std::chrono::milliseconds(1000));

  private:
    bool ReadByte(std::chrono::milliseconds wait, std::uint8_t& byte) const;

    int file_;
};

}  // namespace kkm
