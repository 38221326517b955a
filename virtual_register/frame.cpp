#include "frame.h"

#include <numeric>

namespace virtual_register {
namespace {

std::uint8_t checksum(const std::uint8_t* begin, const std::uint8_t* end) {
    return static_cast<std::uint8_t>(std::accumulate(begin, end, 0U));
}

template <typename Payload>
FrameBytes frame_of(std::uint8_t net_number, std::uint8_t code, const Payload& payload) {
    FrameBytes frame;
    frame.add(0);
    frame.add(static_cast<std::uint8_t>(payload.size() + kFrameOverhead));
    frame.add(net_number);
    frame.add(code);
    frame.add(payload.data(), payload.size());
    frame.add(checksum(frame.begin() + 2, frame.end()));
    return frame;
}

}  // namespace

FrameBytes build_frame(const Answer& answer, std::uint8_t net_number) {
    return frame_of(net_number, answer.code, answer.payload);
}

FrameBytes build_frame(const Request& request) {
    return frame_of(request.net_number, request.command, request.payload);
}

void FrameParser::add(std::uint8_t byte) {
    // A full buffer cannot hold a good frame, or next() would have taken it: the oldest byte is
    // noise.
    if (pending_.size() == 2 + kLongestBody) {
        pending_.drop_front(1);
    }
    pending_.add(byte);
}

std::optional<Request> FrameParser::next() {
    while (!pending_.empty()) {
        if (pending_[0] != 0) {
            pending_.drop_front(1);
            continue;
        }
        if (pending_.size() < 2) {
            return std::nullopt;
        }
        const std::size_t body = pending_[1];
        if (body < kFrameOverhead) {
            pending_.drop_front(1);
            continue;
        }
        if (pending_.size() < 2 + body) {
            return std::nullopt;
        }
        const std::uint8_t* last = pending_.begin() + 1 + body;
        if (checksum(pending_.begin() + 2, last) != *last) {
            pending_.drop_front(1);
            continue;
        }
        Request request;
        request.net_number = pending_[2];
        request.command = pending_[3];
        request.payload.add(pending_.begin() + 4, body - kFrameOverhead);
        pending_.drop_front(2 + body);
        return request;
    }
    return std::nullopt;
}

}  // namespace virtual_register
