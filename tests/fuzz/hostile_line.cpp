#include "fuzz/hostile_line.h"

#include <array>
#include <cerrno>

#include "fuzz/oracle.h"

namespace fuzz {
namespace {

constexpr test::Micros kHangUpUs = 300'000;
// Far above what any operation may send to a line that has hung up: the longest is the print test,
// which reads for 30 s.
constexpr unsigned kMostAfterDeath = 2000;
constexpr std::size_t kLongestPayload = 197;

constexpr std::array<std::uint8_t, 18> kStates{0xA0, 0xA1, 0xA2, 0xA3, 0xA7, 0xC0,
                                               0xC1, 0xC4, 0xC5, 0xC6, 0xC8, 0xC9,
                                               0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xE8};

// Waits around the limits of 100 and 400 ms.
constexpr std::array<unsigned, 8> kDelaysMs{1, 99, 100, 101, 399, 400, 401, 30000};

std::uint8_t Sum(const unsigned char* bytes, std::size_t count) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += bytes[i];
    }
    return static_cast<std::uint8_t>(sum);
}

}  // namespace

void HostileLine::JudgeRequest(const unsigned char* bytes, std::size_t count) const {
    Require(flushed_, "the line is flushed before every request");
    Require(count >= 5 && count <= 257, "a request is a whole frame");
    Require(bytes[0] == 0, "a request starts with 0");
    Require(bytes[1] == count - 2, "a request tells its length");
    Require(bytes[2] == net_num_, "a request bears the network number");
    Require(bytes[count - 1] == Sum(bytes + 2, count - 3), "a request's checksum is right");
}

long HostileLine::Write(const unsigned char* bytes, std::size_t count, test::Micros now) {
    JudgeRequest(bytes, count);
    NoteBytes(bytes, count);
    Note(static_cast<double>(now));
    flushed_ = false;
    delivered_ = 0;
    last_at_ = now;
    const auto written = static_cast<long>(count);
    if (input_.Exhausted()) {
        Require(++after_death_ < kMostAfterDeath, "every loop ends on a dead line");
        on_dead_();
        last_at_ += kHangUpUs;
        End(0);
        return written;
    }
    const unsigned kind = input_.Choice(kinds);
    return Respond(kind, bytes[3], Bytes(bytes + 4, bytes + count - 1), written);
}

long HostileLine::Respond(unsigned kind, std::uint8_t command, const Bytes& payload, long written) {
    switch (kind) {
        case short_write:
            return input_.Byte() % written;
        case write_error:
            return -EIO;
        case silence:
            return written;
        case end_of_file:
            End(0);
            return written;
        case read_error:
            End(-EIO);
            return written;
        case late: {
            const Bytes answer = Obliging(command, payload);
            const std::size_t place = input_.Byte() % answer.size();
            Send(Bytes(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(place)));
            last_at_ += test::Micros{kDelaysMs[input_.Choice(kDelaysMs.size())]} * 1000;
            Send(Bytes(answer.begin() + static_cast<std::ptrdiff_t>(place), answer.end()));
            return written;
        }
        default:
            Send(Faulty(kind, command, payload));
            return written;
    }
}

Bytes HostileLine::Faulty(unsigned kind, std::uint8_t command, const Bytes& payload) {
    switch (kind) {
        case other_body:
            return Frame(ObligingRegister::GoodCode(command), input_.Block(48));
        case state: {
            const std::uint8_t code = kStates[input_.Choice(kStates.size())];
            return Frame(code, input_.Block(24));
        }
        case any_frame: {
            const std::uint8_t code = input_.Byte();
            return Frame(code, input_.Block(48));
        }
        case raw:
            return input_.Block(48);
        case long_state: {
            const std::uint8_t code = kStates[input_.Choice(kStates.size())];
            return Frame(code, Bytes(kLongestPayload - input_.Choice(2), input_.Byte()));
        }
        default:
            break;
    }
    Bytes answer = Obliging(command, payload);
    if (kind == wrong_sum) {
        answer[input_.Byte() % answer.size()] ^= static_cast<unsigned char>(input_.Byte() | 1U);
    } else if (kind == cut) {
        answer.resize(input_.Byte() % answer.size());
    } else if (kind == other_number) {
        const std::uint8_t other = input_.Byte();
        answer.back() = static_cast<unsigned char>(answer.back() + other - answer[2]);
        answer[2] = other;
    } else if (kind == doubled) {
        const Bytes once = answer;
        answer.insert(answer.end(), once.begin(), once.end());
    }
    return answer;
}

Bytes HostileLine::Frame(std::uint8_t code, const Bytes& payload) const {
    Bytes frame{0, static_cast<unsigned char>(payload.size() + 3), net_num_, code};
    frame.insert(frame.end(), payload.begin(), payload.end());
    frame.push_back(Sum(frame.data() + 2, frame.size() - 2));
    return frame;
}

Bytes HostileLine::Obliging(std::uint8_t command, const Bytes& payload) {
    const ObligingRegister::Answer answer = register_.Take(command, payload);
    return Frame(answer.code, answer.payload);
}

void HostileLine::Send(const Bytes& bytes) {
    for (const unsigned char byte : bytes) {
        events_.push_back({last_at_, byte, true});
    }
}

std::optional<test::Micros> HostileLine::NextInput(test::Micros /*now*/) {
    if (events_.empty()) {
        return std::nullopt;
    }
    return events_.front().at;
}

// How many bytes of the answer the driver may take, as far as it can know.
std::size_t HostileLine::Allowed() const {
    const bool head_is_good = head_[0] == 0 && head_[1] >= 3 && head_[1] <= 200;
    return delivered_ < 2 ? 2 : head_is_good ? 2U + head_[1] : 2U;
}

long HostileLine::Read(unsigned char* to, test::Micros now) {
    Require(delivered_ < Allowed(), "nothing is read behind the answer");
    if (events_.empty() || events_.front().at > now) {
        return -EAGAIN;
    }
    const Event event = events_.front();
    if (!event.is_byte) {
        return event.value;  // an ending stays
    }
    events_.pop_front();
    *to = static_cast<unsigned char>(event.value);
    if (delivered_ < 2) {
        head_[delivered_] = *to;
    }
    ++delivered_;
    return 1;
}

void HostileLine::Flush(test::Micros now) {
    // Only what has arrived can be dropped.
    while (!events_.empty() && events_.front().at <= now) {
        events_.pop_front();
    }
    flushed_ = true;
}

}  // namespace fuzz
