#include "kkm/line_client.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <numeric>
#include <system_error>

namespace kkm {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint8_t kStart = 0x00;
constexpr std::uint8_t kAnyRegister = 0x00;
constexpr std::size_t kShortestBody = 3;  // network number, code, checksum
constexpr std::size_t kLongestBody = 200;

[[noreturn]] void Fail(const std::string& what) {
    const int error = errno;
    throw LineFailure(what + ": " + std::generic_category().message(error), error);
}

std::uint8_t Sum(Bytes::const_iterator from, Bytes::const_iterator to) {
    return std::accumulate(from, to, std::uint8_t{0}, [](std::uint8_t sum, std::uint8_t byte) {
        return static_cast<std::uint8_t>(sum + byte);
    });
}

Bytes Frame(std::uint8_t command, const Bytes& payload) {
    Bytes body = {kAnyRegister, command};
    body.insert(body.end(), payload.begin(), payload.end());
    body.push_back(Sum(body.begin(), body.end()));
    Bytes frame = {kStart, static_cast<std::uint8_t>(body.size())};
    frame.insert(frame.end(), body.begin(), body.end());
    return frame;
}

void SetLine(int file, int baud) {
    termios line{};
    if (tcgetattr(file, &line) != 0) {
        Fail("no serial line");
    }
    cfmakeraw(&line);
    line.c_cflag = CS8 | CREAD | CLOCAL;
    cfsetspeed(&line, baud == 9600 ? B9600 : B57600);
    if (tcsetattr(file, TCSANOW, &line) != 0) {
        Fail("the line cannot be set");
    }
    tcflush(file, TCIOFLUSH);
}

double Ms(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

}  // namespace

LineClient::LineClient(const std::string& device, int baud)
    : file_(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (file_ < 0) {
        Fail(device);
    }
    try {
        SetLine(file_, baud);
    } catch (...) {
        close(file_);
        throw;
    }
}

LineClient::~LineClient() {
    close(file_);
}

bool LineClient::ReadByte(std::chrono::milliseconds wait, std::uint8_t& byte) const {
    const auto end = Clock::now() + wait;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waiting{file_, POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<long long>(left, 0)));
        if (ready < 0 && errno != EINTR) {
            Fail("waiting for the register");
        }
        if (ready == 0) {
            return false;
        }
        if (ready > 0) {
            const ssize_t count = read(file_, &byte, 1);
            if (count == 1) {
                return true;
            }
            if (count == 0) {
                errno = EIO;  // the other end is gone
            }
            if (errno != EINTR && errno != EAGAIN) {
                Fail("reading");
            }
        }
    }
}

LineAnswer LineClient::Exchange(std::uint8_t command, const Bytes& payload,
                                std::chrono::milliseconds wait) {
    const Bytes frame = Frame(command, payload);
    tcflush(file_, TCIOFLUSH);
    if (write(file_, frame.data(), frame.size()) != static_cast<ssize_t>(frame.size())) {
        Fail("writing");
    }
    tcdrain(file_);

    LineAnswer answer;
    auto before = Clock::now();
    std::uint8_t byte = 0;
    Bytes received;
    std::size_t length = 2;  // until the second byte tells
    while (received.size() < length) {
        if (!ReadByte(wait, byte)) {
            answer.kind = received.empty() ? AnswerKind::none : AnswerKind::cut_short;
            return answer;
        }
        const auto now = Clock::now();
        double& time = received.empty() ? answer.first_ms : answer.gap_ms;
        time = std::max(time, Ms(now - before));
        before = now;
        received.push_back(byte);
        if (received.size() == 2) {
            length += byte;
            if (received[0] != kStart || byte < kShortestBody || byte > kLongestBody) {
                answer.kind = AnswerKind::broken;
                return answer;
            }
        }
    }
    answer.network = received[2];
    answer.code = received[3];
    answer.data.assign(received.begin() + 4, received.end() - 1);
    answer.kind = Sum(received.begin() + 2, received.end() - 1) == received.back()
                      ? AnswerKind::whole
                      : AnswerKind::broken;
    return answer;
}

}  // namespace kkm
