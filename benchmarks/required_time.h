// What the driver must wait for, counted while it runs: its own pauses, the line, vain waits for
// bytes that do not come. The program's POSIX calls are counted on their way to the system.
#pragma once

#include <array>
#include <cstdint>

namespace bench {

class RequiredTime {
  public:
    // Counting begins anew; bytes on the line take their time at this speed.
    void Begin(int baud);
    // Ends the count. Microseconds.
    std::int64_t End();

    // Requests by their command since Begin.
    const std::array<unsigned, 256>& Requests() const { return requests_; }
    unsigned Exchanges() const;

    // --- for the replaced calls
    void Slept(std::int64_t us);
    void Wrote(const unsigned char* frame, std::size_t count);
    void ReadByte() { ++received_; }
    void WaitedInVain(std::int64_t us) { total_us_ += us; }

  private:
    void EndExchange();

    std::int64_t byte_us_ = 0;
    std::int64_t total_us_ = 0;
    bool under_way_ = false;  // an exchange, from its request to the next thing after its answer
    std::int64_t slept_us_ = 0;
    std::int64_t sent_ = 0;
    std::int64_t received_ = 0;
    std::array<unsigned, 256> requests_{};
};

RequiredTime& Required();

}  // namespace bench
