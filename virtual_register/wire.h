#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame.h"
#include "paced_bytes.h"
#include "pty_line.h"

namespace virtual_register {

// The line with its speed and the clock of all that happens on it: whole requests come out, answers
// go in.
class Wire {
  public:
    // Throws std::system_error when the system gives no pseudo terminal.
    Wire(int baud, bool pace);

    const std::string& tty_name() const { return line_.tty_name(); }
    bool host_present() const { return line_.host_present(); }

    // Microseconds since the line was made.
    std::int64_t now_us() const;

    // Waits until the line has something, `until_us` is reached, a signal comes, or, if asked for,
    // the standard input has something; true for the latter. Takes in what the line has; what
    // there is to tell about it is added to `news`.
    bool wait(std::optional<std::int64_t> until_us, bool input_too, std::vector<std::string>& news);
    std::optional<Request> next_request();

    // Leaves at `at_us` at the earliest, behind everything that was sent before.
    void send(const FrameBytes& bytes, std::int64_t at_us);
    // Hands over what is due.
    void flush();
    // When something arrives or is to be handed over.
    std::optional<std::int64_t> next_us() const;

  private:
    void take_input(std::vector<std::string>& news);

    std::chrono::steady_clock::time_point begin_;
    int baud_;
    PtyLine line_;
    FrameParser parser_;
    PacedBytes incoming_;
    PacedBytes outgoing_;
    std::int64_t last_arrival_us_ = 0;
    bool noise_told_ = false;
    bool host_was_present_ = false;
};

// The sooner of two moments that may not come.
std::optional<std::int64_t> sooner(std::optional<std::int64_t> one,
                                   std::optional<std::int64_t> other);

}  // namespace virtual_register
