#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "recording.h"

namespace virtual_register {

// A register that knows nothing but a recorded conversation, and answers a host that says the same
// once more.
//
// How often a host asks for the state depends on chance. A request that only reads may therefore
// come again, and is answered as last time, and a recorded one that only came again may be left
// out. All others must come as recorded, in their order.
class Replay {
  public:
    explicit Replay(Recording recording) : recording_(std::move(recording)) {}

    struct Outcome {
        const RecordedExchange* exchange = nullptr;  // what answers; null when nothing matches
        std::size_t passed_over = 0;
        std::string mismatch;  // for the user, when nothing matches
    };
    Outcome next(const Request& request);

    std::size_t all() const { return recording_.exchanges.size(); }
    // Exchanges that came or were passed over.
    std::size_t done() const { return done_; }
    // True when nothing is left that must come.
    bool finished() const;

  private:
    // The last time that it was recorded before `at`, with only reads since.
    const RecordedExchange* earlier(std::size_t at, const Request& request) const;
    bool may_be_left_out(std::size_t at) const;
    std::string mismatch(const Request& request) const;

    Recording recording_;
    std::size_t done_ = 0;
};

}  // namespace virtual_register
