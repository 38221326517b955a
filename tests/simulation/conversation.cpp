#include "simulation/conversation.h"

#include <fcntl.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>

namespace simulation {
namespace {

constexpr unsigned kPauseMs = 10;
constexpr unsigned kIntervalMs = 100;
constexpr unsigned kLongestBody = 200;
constexpr unsigned kShortestBody = 3;
// An interrupted wait of the port is continued by a clock of whole milliseconds, a pause by one of
// microseconds at which a look takes one.
constexpr Micros kPollSlackUs = 1'100;
constexpr Micros kSleepSlackUs = 20;

constexpr unsigned FirstByteMs(unsigned count) {
    return 100 * count + 200;
}

}  // namespace

void Conversation::Deviate(const std::string& text) const {
    throw Deviation(text + " (event " + std::to_string(next_) + ", exchange " +
                    std::to_string(exchange_) + ")");
}

void Conversation::SkipOthers() {
    const auto& events = journal_.events();
    while (next_ < events.size() && !IsDriversOwn(events[next_].kind)) {
        ended_by_host_ = ended_by_host_ || events[next_].kind == EventKind::terminate;
        in_failure_ = in_failure_ || events[next_].kind == EventKind::failure;
        ++next_;
    }
}

const Event& Conversation::Next(EventKind kind, const char* what) {
    SkipOthers();
    if (next_ == journal_.events().size()) {
        Deviate(std::string("the driver stopped where it must ") + what);
    }
    const Event& event = journal_.events()[next_];
    if (event.kind != kind) {
        Deviate(std::string("the driver must ") + what + ", it did call " +
                std::to_string(static_cast<int>(event.kind)) + " with " +
                std::to_string(event.argument));
    }
    ++next_;
    now_ = event.at;
    return event;
}

bool Conversation::EndedByHost() {
    SkipOthers();
    return ended_by_host_;
}

void Conversation::EndOfCall() {
    SkipOthers();
    if (next_ != journal_.events().size()) {
        Deviate("the driver goes on where it must stop, with call " +
                std::to_string(static_cast<int>(journal_.events()[next_].kind)));
    }
}

void Conversation::Open(const std::string& path, bool& worked) {
    const Event& event = Next(EventKind::open_port, "open the device");
    const auto* const name = reinterpret_cast<const char*>(journal_.bytes(event.bytes_at));
    if (std::string(name, event.bytes_count) != path) {
        Deviate("the driver must open " + path);
    }
    worked = event.result == 0;
}

void Conversation::Close() {
    Next(EventKind::close_port, "close the device");
}

void Conversation::SetLine(int baud) {
    const Event& flags = Next(EventKind::set_flags, "let reads block");
    if (flags.argument != F_SETFL || flags.result != 0) {
        Deviate("the driver must clear the status flags");
    }
    if (Next(EventKind::get_line, "read the line's attributes").result != 0) {
        throw Failed{Failing::protocol};
    }
    const Event& line = Next(EventKind::set_line, "set the line up");
    if (line.argument != (baud == 9600 ? 0x8BD : 0x18B1)) {
        Deviate("the driver must set " + std::to_string(baud) + " baud, 8N1");
    }
    if (line.result != 0) {
        throw Failed{Failing::protocol};
    }
    for (int i = 0; i < 2; ++i) {
        if (Next(EventKind::flush, "flush the line").argument != TCIOFLUSH) {
            Deviate("the driver must flush both queues");
        }
    }
}

// A wait is continued after each signal, for what is left of it.
void Conversation::Sleep(unsigned ms) {
    if (ms == 0) {
        return;
    }
    const Micros end = now_ + Micros{ms} * 1000;
    Micros left = Micros{ms} * 1000;
    for (Micros slack = 0;; slack = kSleepSlackUs) {
        const Event& event = Next(EventKind::sleep, "pause");
        const auto asked = static_cast<std::uint32_t>(event.argument);
        if (asked + slack < left || asked > left + slack) {
            Deviate("the driver must pause " + std::to_string(left) + " us, it asked for " +
                    std::to_string(asked) + " us");
        }
        left = end > now_ ? end - now_ : 0;
        if (event.result == 0) {
            return;
        }
        SkipOthers();
        const bool goes_on =
            next_ < journal_.events().size() && journal_.events()[next_].kind == EventKind::sleep &&
            journal_.events()[next_].argument <= static_cast<std::int32_t>(2 * kSleepSlackUs);
        if (left <= kSleepSlackUs && !goes_on) {
            return;
        }
    }
}

bool Conversation::Wait(unsigned ms) {
    const Micros end = now_ + Micros{ms} * 1000;
    Micros left = Micros{ms} * 1000;
    for (Micros slack = 0;; slack = kPollSlackUs) {
        const Event& event = Next(EventKind::poll, "wait for input");
        const Micros asked = static_cast<Micros>(event.argument) * 1000;
        if (asked + slack < left || asked > left + slack) {
            Deviate("the driver must wait " + std::to_string(ms) + " ms (" + std::to_string(left) +
                    " us), it waited " + std::to_string(asked) + " us");
        }
        left = end > now_ ? end - now_ : 0;
        if (event.result >= 0) {
            return event.result > 0;
        }
        if (event.result != -EINTR) {
            throw Failed{Failing::other};
        }
    }
}

void Conversation::Send(std::uint8_t command, const Payload& payload) {
    Sleep(kPauseMs);
    if (!port_open_) {
        throw Failed{Failing::other};
    }
    if (Next(EventKind::flush, "drop what is on the line").argument != TCIOFLUSH) {
        Deviate("the driver must flush both queues");
    }
    const Event& event = Next(EventKind::write, "write a request");
    unsigned sum = unsigned{number_} + command;
    Payload frame{0, static_cast<unsigned char>(payload.size() + kShortestBody), number_, command};
    for (const unsigned char byte : payload) {
        frame.push_back(byte);
        sum += byte;
    }
    frame.push_back(static_cast<unsigned char>(sum));
    const unsigned char* const written = journal_.bytes(event.bytes_at);
    if (!std::equal(frame.begin(), frame.end(), written, written + event.bytes_count)) {
        Deviate("the driver must send another request than it did");
    }
    ++exchange_;
    if (event.result != static_cast<long>(frame.size())) {
        throw Failed{Failing::other};
    }
}

void Conversation::ReadBytes(unsigned char* to, unsigned count) {
    if (!Wait(FirstByteMs(count))) {
        throw Failed{Failing::other};
    }
    for (unsigned i = 0; i < count; ++i) {
        if (!Wait(kIntervalMs)) {
            throw Failed{Failing::other};
        }
        const Event& event = Next(EventKind::read_byte, "read a byte");
        if (event.result < 0) {
            throw Failed{Failing::other};
        }
        to[i] = static_cast<unsigned char>(event.result);
    }
}

Reply Conversation::Receive() {
    Sleep(kPauseMs);
    ReadBytes(frame_, 2);
    const unsigned body = frame_[1];
    if (frame_[0] != 0 || body > kLongestBody || body < kShortestBody) {
        throw Failed{Failing::protocol};
    }
    longest_body_ = std::max(longest_body_, body);
    ReadBytes(frame_ + 2, body);
    unsigned sum = 0;
    for (unsigned i = 0; i + 1 < body; ++i) {
        sum += frame_[2 + i];
    }
    if ((sum & 0xFFU) != frame_[1 + body] || (number_ != 0 && frame_[2] != number_)) {
        throw Failed{Failing::protocol};
    }
    ExchangeFacts& facts = journal_.exchanges()[exchange_ - 1];
    const unsigned char* const answer = journal_.bytes(facts.answer_at);
    facts.forged = !std::equal(frame_, frame_ + 2 + body, answer, answer + facts.answer_count);
    Reply reply;
    reply.code = frame_[3];
    reply.data = frame_ + 4;
    reply.size = body - kShortestBody;
    return reply;
}

Reply Conversation::Exchange(std::uint8_t command, const Payload& payload, unsigned pause_ms) {
    Send(command, payload);
    if (pause_ms != 0) {
        Sleep(pause_ms);
    }
    return Receive();
}

bool Conversation::TimeIsUp(Micros since, unsigned ms, std::uint8_t next_command) {
    const Micros passed = now_ - since;
    const Micros limit = Micros{ms} * 1000;
    if (passed + kPollSlackUs < limit || passed > limit + kPollSlackUs) {
        return passed > limit;
    }
    const auto& events = journal_.events();
    std::size_t i = next_;
    while (i < events.size() && events[i].kind != EventKind::write) {
        ++i;
    }
    return i == events.size() || journal_.bytes(events[i].bytes_at)[3] != next_command;
}

void Conversation::Failure() {
    SkipOthers();
    if (!in_failure_) {
        Deviate("the driver must clean up behind a failed check");
    }
    in_failure_ = false;
}

}  // namespace simulation
