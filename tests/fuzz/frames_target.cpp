// Frames: what the driver builds it must accept, and it accepts nothing else.
#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "protocol/frame.h"

namespace fuzz {
namespace {

unsigned SumOf(const Bytes& bytes, std::size_t from, std::size_t to) {
    unsigned sum = 0;
    for (std::size_t i = from; i < to; ++i) {
        sum += bytes[i];
    }
    return sum & 0xFFU;
}

// From memory of exactly the body's size, so that reading past it is seen.
frame::Fault Judge(const Bytes& body, unsigned char net_num) {
    const Bytes exact(body.begin(), body.end());
    return frame::CheckBody(exact.data(), static_cast<unsigned>(exact.size()), net_num);
}

void BuildOne(kkm_command command, unsigned char net_num, const Bytes& payload) {
    Bytes frame = payload;
    frame::Build(command, net_num, frame, 0xFF);
    Bytes uncut = payload;
    frame::Build(command, net_num, uncut, ~0U);
    Require(frame.size() == payload.size() + 5, "a frame adds five bytes");
    if (payload.size() > 250) {
        return;  // no frame of a legal length
    }
    Require(frame == uncut, "both forms build the same frame");
    Require(frame[1] == frame.size() - 2, "the length counts what follows");
    Require(frame.back() == SumOf(frame, 2, frame.size() - 1), "the sum covers number to payload");
    const Bytes body(frame.begin() + 2, frame.end());
    const bool head_is_good = frame::CheckHead(frame[0], frame[1]).detail == nullptr;
    Require(head_is_good == (body.size() <= 200), "heads of up to 200 bytes are good");
    Require(Judge(body, net_num).detail == nullptr, "an own frame is good");
    Require(Judge(body, 0).detail == nullptr, "number 0 takes every register");
}

void JudgeOne(const Bytes& body, unsigned char net_num) {
    const frame::Fault fault = Judge(body, net_num);
    const bool sum_is_right = SumOf(body, 0, body.size() - 1) == body.back();
    const bool number_is_right = net_num == 0 || body.front() == net_num;
    const int expected = !sum_is_right ? 2 : !number_is_right ? 4 : 0;
    Require(fault.code == expected, "a body is judged by its sum, then by its number");
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const auto command = static_cast<kkm_command>(input.Byte());
    const std::uint8_t net_num = input.Byte();
    const std::uint8_t start = input.Byte();
    const std::uint8_t length = input.Byte();
    const bool good = frame::CheckHead(start, length).detail == nullptr;
    fuzz::Require(good == (start == 0 && length >= 3 && length <= 200), "a head is judged");
    const Bytes rest = input.Rest();
    fuzz::BuildOne(command, net_num, rest);
    if (rest.size() >= 3) {
        fuzz::JudgeOne(rest, net_num);
    }
    return 0;
}
