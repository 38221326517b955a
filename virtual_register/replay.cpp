#include "replay.h"

#include "codes.h"
#include "exchange_log.h"

namespace virtual_register {
namespace {

bool only_reads(const Request& request) {
    switch (static_cast<Command>(request.command)) {
        case Command::status:
        case Command::version:
        case Command::read_eeprom:
        case Command::read_ram:
        case Command::read_time:
        case Command::read_product:
        case Command::read_tape:
        case Command::statistics:
        case Command::serial_number:
        case Command::sale_number:
        case Command::last_error:
            return true;
        default:
            return false;
    }
}

bool same(const Request& one, const Request& other) {
    return one.net_number == other.net_number && one.command == other.command &&
           one.payload == other.payload;
}

}  // namespace

Replay::Outcome Replay::next(const Request& request) {
    const auto& exchanges = recording_.exchanges;
    Outcome outcome;
    std::size_t at = done_;
    while (at < exchanges.size() && !same(exchanges[at].request, request) && may_be_left_out(at)) {
        ++at;
    }
    if (at < exchanges.size() && same(exchanges[at].request, request)) {
        outcome.passed_over = at - done_;
        outcome.exchange = &exchanges[at];
        done_ = at + 1;
    } else if (only_reads(request)) {
        outcome.exchange = earlier(done_, request);
    }
    if (outcome.exchange == nullptr) {
        outcome.mismatch = mismatch(request);
    }
    return outcome;
}

const RecordedExchange* Replay::earlier(std::size_t at, const Request& request) const {
    for (; at > 0 && only_reads(recording_.exchanges[at - 1].request); --at) {
        if (same(recording_.exchanges[at - 1].request, request)) {
            return &recording_.exchanges[at - 1];
        }
    }
    return nullptr;
}

bool Replay::may_be_left_out(std::size_t at) const {
    const Request& request = recording_.exchanges[at].request;
    return only_reads(request) && earlier(at, request) != nullptr;
}

bool Replay::finished() const {
    for (std::size_t at = done_; at < recording_.exchanges.size(); ++at) {
        if (!may_be_left_out(at)) {
            return false;
        }
    }
    return true;
}

std::string Replay::mismatch(const Request& request) const {
    const std::string came = "came \"" + describe(request) + '"';
    if (done_ >= recording_.exchanges.size()) {
        return came + " behind the end of the recording";
    }
    const RecordedExchange& expected = recording_.exchanges[done_];
    return came + " where line " + std::to_string(expected.line) + " of the recording has \"" +
           describe(expected.request) + '"';
}

}  // namespace virtual_register
