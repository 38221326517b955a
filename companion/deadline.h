// A moment by which something must be done.
#pragma once

#include <algorithm>
#include <chrono>

namespace kkmcheck {

class Deadline {
  public:
    explicit Deadline(int ms) : at_(Clock::now() + std::chrono::milliseconds(ms)) {}

    // Milliseconds that are left, 0 behind it.
    int Left() const {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(at_ - Clock::now()).count();
        return static_cast<int>(std::max<decltype(left)>(left, 0));
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point at_;
};

}  // namespace kkmcheck
