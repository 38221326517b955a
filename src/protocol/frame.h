// The frame around every request and answer:
//   0x00 | length | network number | command | payload ... | checksum
// length counts the bytes that follow it; the checksum is the 8-bit sum from the network number to
// the end of the payload. Nothing is escaped, there is no end marker.
#pragma once

#include <initializer_list>

#include "protocol/commands.h"
#include "support/payload.h"

// The answer of the register.
struct packet {
    kkm_command cmd;
    Bytes data;  // payload without frame bytes
};

namespace frame {

constexpr unsigned kMaxLength = 200;        // the register never sends more
constexpr unsigned kMinLength = 1 + 1 + 1;  // network number, command, checksum
constexpr unsigned kHeadSize = 2;           // start, length

// Code and detail of a fault; detail is null when there is none.
struct Fault {
    int code;
    const char* detail;
};

// A payload of `size` zero bytes with room for the frame around it, so that framing moves nothing
// to other memory.
Bytes NewPayload(std::size_t size);
Bytes NewPayload(std::initializer_list<unsigned char> bytes);
Bytes NewWordPayload(std::uint16_t word);  // high byte first

unsigned char Sum(const unsigned char* bytes, int count);

// Turns a payload into a whole frame. sum_length_mask cuts the length that the checksum covers.
void Build(kkm_command command, unsigned char net_num, Bytes& data, unsigned sum_length_mask);

// Judges the two bytes before the body.
Fault CheckHead(unsigned char start, unsigned char length);

// Judges the `length` bytes of a body: network number, command, payload, checksum. net_num 0
// accepts every register.
Fault CheckBody(const unsigned char* body, unsigned length, unsigned char net_num);

}  // namespace frame
