// A queue of timed bytes that keeps its memory.
#pragma once

#include <vector>

#include "support/system.h"

namespace simulation {

struct TimedByte {
    test::Micros at;
    int value;               // a byte, kEndOfFile or a negated error number
    std::uint32_t exchange;  // to which it belongs
};

class ByteQueue {
  public:
    bool empty() const { return head_ == all_.size(); }
    const TimedByte& front() const { return all_[head_]; }
    void push(const TimedByte& byte) { all_.push_back(byte); }
    void pop() {
        if (++head_ == all_.size()) {
            clear();
        }
    }
    void clear() {
        all_.clear();
        head_ = 0;
    }

  private:
    std::vector<TimedByte> all_;
    std::size_t head_ = 0;
};

}  // namespace simulation
