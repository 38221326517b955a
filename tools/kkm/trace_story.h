// VeskTarvoM5.log retold: what was sold, which steps were repeated, where and why a check failed.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kkm {

struct StoryLine {
    std::string name;  // UTF-8
    double price = 0;
    std::string quantity;
    int section = 0;
    bool taken = false;  // the register showed it
};

enum class StoryOutcome { printed, failed, unknown, unfinished };

struct StoryCheck {
    std::vector<StoryLine> lines;
    std::optional<int> discount;
    std::string type;  // "sale", "return", "credit", or empty
    std::optional<double> cash;
    std::vector<std::string> repeated;  // steps that took more than one attempt
    std::vector<std::string> troubles;  // what went wrong, in order
    StoryOutcome outcome = StoryOutcome::unfinished;
    std::string reason;  // why it failed; empty when it is printed
    int error = 0;       // the code that the host got, as far as the trace tells
};

struct StoryEvent {
    enum class Kind { connected, not_connected, disconnected, check } kind;
    std::string text;  // what there is to say of a connection
    StoryCheck check;
};

// The events of a trace in order. Text that is none of the driver's is passed over; a trace may
// begin and end anywhere.
std::vector<StoryEvent> TellTrace(const std::string& trace);

}  // namespace kkm
