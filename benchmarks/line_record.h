// What the driver exchanged with the register, recorded on the way of this program's POSIX calls to
// the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

class LineRecord {
  public:
    // Recording begins anew.
    void Begin() { exchanges_.clear(); }
    // "20:5:12,0A:5:16": each request by its command, its bytes and those of its answer.
    std::string Text() const;

    // Makes every pause of the driver longer, as a driver that waits too long would.
    void PlantDelay(unsigned us) { planted_us_ = us; }

    // --- for the replaced calls
    unsigned PlantedUs() const { return planted_us_; }
    void Wrote(const unsigned char* frame, std::size_t count);
    void ReadByte();

  private:
    struct Exchange {
        unsigned command;
        std::size_t request;
        std::size_t answer;
    };
    std::vector<Exchange> exchanges_;
    unsigned planted_us_ = 0;
};

LineRecord& Line();

}  // namespace bench
