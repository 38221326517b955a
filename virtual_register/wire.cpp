#include "wire.h"

#include <poll.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

namespace virtual_register {
namespace {

constexpr std::int64_t kFrameSilenceUs = 100000;  // a frame with such a gap is no frame
constexpr int kBitsPerByte = 10;

std::int64_t byte_us(int baud, bool pace) {
    return pace ? std::int64_t{1000000} * kBitsPerByte / baud : 0;
}

}  // namespace

Wire::Wire(int baud, bool pace)
    : begin_(std::chrono::steady_clock::now()),
      baud_(baud),
      incoming_(byte_us(baud, pace)),
      outgoing_(byte_us(baud, pace)) {}

std::int64_t Wire::now_us() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                 begin_)
        .count();
}

bool Wire::wait(std::optional<std::int64_t> until_us, bool input_too,
                std::vector<std::string>& news) {
    constexpr std::int64_t kLongestUs = 60000000;
    const std::int64_t left =
        std::clamp<std::int64_t>(until_us.value_or(0) - now_us(), 0, kLongestUs);
    const timespec limit{static_cast<time_t>(left / 1000000),
                         static_cast<long>(left % 1000000 * 1000)};
    pollfd waited[2] = {{line_.descriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    // Signals come through only here, or one that came just before would wait for the next byte.
    sigset_t none;
    sigemptyset(&none);
    const int count = ::ppoll(waited, input_too ? 2 : 1, until_us ? &limit : nullptr, &none);
    if (count > 0 && waited[0].revents != 0) {
        take_input(news);
    }
    return count > 0 && input_too && waited[1].revents != 0;
}

void Wire::take_input(std::vector<std::string>& news) {
    const std::vector<std::uint8_t> bytes = line_.receive();
    if (host_was_present_ != line_.host_present()) {
        host_was_present_ = line_.host_present();
        noise_told_ = false;
        news.emplace_back(host_was_present_ ? "the host is there" : "the host closed the tty");
    }
    if (bytes.empty()) {
        if (line_.host_present()) {
            // The tty cannot be had back just now; asking again at once would only burn time.
            const timespec pause{0, 100000000};
            ::nanosleep(&pause, nullptr);
        }
        return;
    }
    if (line_.host_speed() != baud_) {
        if (!noise_told_) {
            news.push_back("noise: the host's speed is not " + std::to_string(baud_));
            noise_told_ = true;
        }
        return;
    }
    noise_told_ = false;
    for (std::uint8_t byte : bytes) {
        incoming_.send(byte, now_us());
    }
}

std::optional<Request> Wire::next_request() {
    for (;;) {
        if (auto request = parser_.next()) {
            return request;
        }
        const auto byte = incoming_.arrived(now_us());
        if (!byte) {
            return std::nullopt;
        }
        const std::int64_t now = now_us();
        if (now - last_arrival_us_ > kFrameSilenceUs) {
            parser_.line_was_silent();
        }
        last_arrival_us_ = now;
        parser_.add(*byte);
    }
}

void Wire::send(const FrameBytes& bytes, std::int64_t at_us) {
    for (std::uint8_t byte : bytes) {
        outgoing_.send(byte, at_us);
    }
}

void Wire::flush() {
    std::vector<std::uint8_t> bytes;
    while (const auto byte = outgoing_.arrived(now_us())) {
        bytes.push_back(*byte);
    }
    if (!bytes.empty()) {
        line_.send(bytes);
    }
}

std::optional<std::int64_t> Wire::next_us() const {
    return sooner(incoming_.next_us(), outgoing_.next_us());
}

std::optional<std::int64_t> sooner(std::optional<std::int64_t> one,
                                   std::optional<std::int64_t> other) {
    if (!one || !other) {
        return one ? one : other;
    }
    return std::min(*one, *other);
}

}  // namespace virtual_register
