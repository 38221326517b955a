#include "simulation/line_faults.h"

#include <numeric>

#include "simulation/random.h"

namespace simulation {
namespace {

constexpr std::size_t kLengthAt = 1;
constexpr std::size_t kNumberAt = 2;
constexpr std::size_t kCodeAt = 3;
constexpr std::size_t kShortestFrame = 5;

// Codes that the driver waits for somewhere, and some that it does not know.
constexpr unsigned char kCodes[] = {0xA0, 0xA1, 0xA2, 0xA3, 0xA7, 0xC0, 0xC1, 0xC4, 0xC5, 0xC6,
                                    0xC8, 0xCA, 0xCB, 0xCE, 0x90, 0x91, 0xB4, 0xB5, 0xE4, 0xE8,
                                    0x84, 0x8A, 0x83, 0xA9, 0xAF, 0xB7, 0x97, 0xB8, 0x00, 0xFF};

void MendSum(FrameOnLine& frame) {
    frame.back() =
        static_cast<unsigned char>(std::accumulate(frame.begin() + kNumberAt, frame.end() - 1, 0U));
}

// A place between the network number and the checksum, the payload if there is one.
std::size_t InnerPlace(const FrameOnLine& frame, std::uint32_t number) {
    const std::size_t payload = frame.size() - kShortestFrame;
    return payload == 0 ? kCodeAt : kCodeAt + 1 + number % payload;
}

void AddNoise(const Fault& fault, FrameOnLine& frame) {
    Random noise(fault.b);
    FrameOnLine bytes(1 + fault.a % 6);
    for (unsigned char& byte : bytes) {
        byte = noise.Chance(300) ? 0 : noise.Byte();
    }
    frame.insert(frame.begin(), bytes.begin(), bytes.end());
}

void Double(const Fault& fault, FrameOnLine& frame) {
    const auto at = frame.begin() + static_cast<std::ptrdiff_t>(fault.a % frame.size());
    frame.insert(at, *at);
}

void Change(const Fault& fault, std::size_t at, FrameOnLine& frame) {
    frame[at] = static_cast<unsigned char>(frame[at] ^ (1 + fault.b % 255));
}

}  // namespace

void SpoilRequest(const Fault& fault, FrameOnLine& frame) {
    if (frame.size() < kShortestFrame) {
        return;
    }
    switch (fault.kind) {
        case FaultKind::request_lost:
            frame.clear();
            break;
        case FaultKind::request_cut:
            frame.resize(fault.a % frame.size());
            break;
        case FaultKind::request_byte_changed:
            Change(fault, fault.a % frame.size(), frame);
            break;
        case FaultKind::request_byte_doubled:
            Double(fault, frame);
            break;
        case FaultKind::request_noise:
            AddNoise(fault, frame);
            break;
        case FaultKind::request_altered:
            Change(fault, InnerPlace(frame, fault.a), frame);
            MendSum(frame);
            break;
        default:
            break;
    }
}

void SpoilAnswer(const Fault& fault, FrameOnLine& frame) {
    if (frame.size() < kShortestFrame) {
        return;
    }
    switch (fault.kind) {
        case FaultKind::answer_lost:
            frame.clear();
            break;
        case FaultKind::answer_cut:
            frame.resize(fault.a % frame.size());
            break;
        case FaultKind::answer_byte_changed:
            Change(fault, fault.a % frame.size(), frame);
            break;
        case FaultKind::answer_byte_doubled:
            Double(fault, frame);
            break;
        case FaultKind::answer_noise:
            AddNoise(fault, frame);
            break;
        case FaultKind::answer_wrong_start:
            frame[0] = static_cast<unsigned char>(1 + fault.a % 255);
            break;
        case FaultKind::answer_wrong_length:
            frame[kLengthAt] = static_cast<unsigned char>(fault.a);
            break;
        case FaultKind::answer_wrong_sum:
            Change(fault, frame.size() - 1, frame);
            break;
        case FaultKind::answer_altered:
            Change(fault, InnerPlace(frame, fault.a), frame);
            MendSum(frame);
            break;
        case FaultKind::answer_wrong_code:
            frame[kCodeAt] = fault.b % 2 == 0 ? kCodes[fault.a % sizeof kCodes]
                                              : static_cast<unsigned char>(fault.a);
            MendSum(frame);
            break;
        case FaultKind::answer_other_number:
            frame[kNumberAt] = static_cast<unsigned char>(frame[kNumberAt] + 1 + fault.a % 255);
            MendSum(frame);
            break;
        default:
            break;
    }
}

}  // namespace simulation
