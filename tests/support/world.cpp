#include "support/world.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace test {

World& World::Get() {
    static World world;
    return world;
}

void World::Reset() {
    *this = World();
    now_ = 1'000'000'000;
}

void World::InterruptPoll(unsigned after_ms, int error) {
    poll_interruptions_.push_back({Micros{after_ms} * 1000, error});
}

void World::InterruptSleep(unsigned after_ms, int error) {
    sleep_interruptions_.push_back({Micros{after_ms} * 1000, error});
}

void World::Record(const std::string& event) {
    if (logging_) {
        log_.push_back(event);
    }
}

std::vector<std::string> World::Requests() const {
    std::vector<std::string> requests;
    for (const std::string& event : log_) {
        if (event.rfind("write ", 0) == 0) {
            // "write 00 LL NN CC PP .. KS": the command and the payload are kept.
            const std::string frame = event.substr(6);
            requests.push_back(frame.size() >= 14 ? frame.substr(9, frame.size() - 12) : frame);
        }
    }
    return requests;
}

std::vector<std::string> World::Steps() const {
    std::vector<std::string> steps;
    for (std::size_t i = 0; i < log_.size(); ++i) {
        const std::string& event = log_[i];
        if (event.rfind("write ", 0) == 0) {
            steps.push_back(event.substr(15, event.size() - 18));
        } else if (event.rfind("note ", 0) == 0) {
            steps.push_back(event);
        } else if (event.rfind("sleep ", 0) == 0) {
            const std::string next = i + 1 < log_.size() ? log_[i + 1] : "";
            const bool pause =
                event == "sleep 10" && (next == "flush" || next.rfind("wait ", 0) == 0);
            if (!pause) {
                steps.push_back(event);
            }
        }
    }
    return steps;
}

std::string World::Traced(const std::string& file) const {
    std::string text;
    for (const TraceEntry& entry : traces_) {
        if (entry.file == file) {
            text += entry.text;
        }
    }
    return text;
}

int World::Open(const char* path, int flags) {
    char event[300] = "";
    if (logging_) {
        std::snprintf(event, sizeof event, "open %s 0x%x", path, static_cast<unsigned>(flags));
    }
    const auto device = devices_.find(path);
    if (device == devices_.end()) {
        Record(std::string(event) + " = error");
        errno = ENOENT;
        return -1;
    }
    Record(event);
    files_[next_fd_] = device->second;
    device->second->Opened();
    return next_fd_++;
}

int World::Close(int fd) {
    Record("close");
    files_.at(fd)->Closed();
    files_.erase(fd);
    return 0;
}

long World::Read(int fd, void* to, std::size_t count) {
    auto* const byte = static_cast<unsigned char*>(to);
    const long result = count == 1 ? files_.at(fd)->Read(byte, now_) : -EINVAL;
    if (result < 0) {
        Record("read = error");
        errno = static_cast<int>(-result);
        return -1;
    }
    if (logging_) {
        Record(result == 0 ? "read = end" : "read " + Hex({*byte}));
    }
    return result;
}

long World::Write(int fd, const void* from, std::size_t count) {
    const auto* const bytes = static_cast<const unsigned char*>(from);
    if (logging_) {
        Record("write " + Hex(Bytes(bytes, bytes + count)));
    }
    const long result = files_.at(fd)->Write(bytes, count, now_);
    if (result < 0) {
        errno = static_cast<int>(-result);
        return -1;
    }
    return result;
}

std::optional<Interruption> World::TakeInterruption(std::deque<Interruption>& queue, Micros wait) {
    if (queue.empty() || queue.front().after_us > wait) {
        return std::nullopt;
    }
    const Interruption taken = queue.front();
    queue.pop_front();
    now_ += taken.after_us;
    return taken;
}

int World::Poll(int fd, short events, int timeout_ms, short* revents) {
    if (logging_) {
        Record((events == POLLIN ? "wait " : "wait for no input ") + std::to_string(timeout_ms));
    }
    const std::optional<Micros> input = files_.at(fd)->NextInput(now_);
    const Micros limit =
        timeout_ms < 0 ? ~Micros{0} - now_ : static_cast<Micros>(timeout_ms) * 1000;
    const Micros wait = input ? (*input > now_ ? *input - now_ : 0) : ~Micros{0};
    if (const auto interruption = TakeInterruption(poll_interruptions_, std::min(wait, limit))) {
        errno = interruption->error;
        return -1;
    }
    now_ += std::min(wait, limit);
    if (wait > limit) {
        *revents = 0;
        return 0;
    }
    *revents = POLLIN;
    return 1;
}

int World::Fcntl(int /*fd*/, int command, long argument) {
    if (logging_) {
        Record("fcntl " + std::to_string(command) + " " + std::to_string(argument));
    }
    return 0;
}

int World::GetAttributes(int /*fd*/, termios* to) {
    if (getattr_fails) {
        Record("getattr = error");
        errno = ENOTTY;
        return -1;
    }
    Record("getattr");
    *to = line;
    return 0;
}

int World::SetAttributes(int fd, int action, const termios* from) {
    if (setattr_fails || action != TCSANOW) {
        Record("setattr = error");
        errno = EIO;
        return -1;
    }
    Record("setattr");
    line = *from;
    files_.at(fd)->LineSet(line);
    return 0;
}

int World::Flush(int fd, int queue) {
    Record(queue == TCIOFLUSH ? "flush" : "flush one queue");
    files_.at(fd)->Flush(now_);
    return 0;
}

int World::Usleep(unsigned us) {
    if (logging_) {
        Record(us % 1000 == 0 ? "sleep " + std::to_string(us / 1000)
                              : "sleep " + std::to_string(us) + " us");
    }
    if (on_sleep) {
        on_sleep();
    }
    if (const auto interruption = TakeInterruption(sleep_interruptions_, us)) {
        errno = interruption->error;
        return -1;
    }
    now_ += us;
    return 0;
}

void World::Trace(const std::string& file, const std::string& text) {
    if (logging_) {
        traces_.push_back({file, text});
    }
    if (on_trace) {
        on_trace(text);
    }
}

void World::Detail(int code, const std::string& text) {
    if (logging_) {
        details_.push_back({code, text});
    }
}

std::string Hex(const Bytes& bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char byte : bytes) {
        if (!text.empty()) {
            text += ' ';
        }
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

Bytes FromHex(const std::string& text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
        bytes.push_back(static_cast<unsigned char>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

}  // namespace test

// ---------------------------------------------------------------------------------------------
// The replaced calls. Descriptors that are not the world's go to the real system.

using test::World;
class CTarvo;
class ETarvo;

extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_close(int fd);
ssize_t __real_read(int fd, void* to, size_t count);
ssize_t __real_write(int fd, const void* from, size_t count);
int __real_poll(pollfd* fds, nfds_t count, int timeout);
int __real_fcntl(int fd, int command, ...);
int __real_tcgetattr(int fd, termios* to);
int __real_tcsetattr(int fd, int action, const termios* from);
int __real_tcflush(int fd, int queue);
int __real_clock_gettime(clockid_t clock, timespec* to);

int __wrap_open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const int mode = va_arg(rest, int);
    va_end(rest);
    const bool device = std::string(path).rfind("/dev/tty", 0) == 0 || World::Get().HasPath(path);
    return device ? World::Get().Open(path, flags) : __real_open(path, flags, mode);
}

int __wrap_close(int fd) {
    return World::Get().Owns(fd) ? World::Get().Close(fd) : __real_close(fd);
}

ssize_t __wrap_read(int fd, void* to, size_t count) {
    return World::Get().Owns(fd) ? World::Get().Read(fd, to, count) : __real_read(fd, to, count);
}

ssize_t __wrap_write(int fd, const void* from, size_t count) {
    return World::Get().Owns(fd) ? World::Get().Write(fd, from, count)
                                 : __real_write(fd, from, count);
}

int __wrap_poll(pollfd* fds, nfds_t count, int timeout) {
    if (count == 1 && World::Get().Owns(fds->fd)) {
        return World::Get().Poll(fds->fd, fds->events, timeout, &fds->revents);
    }
    return __real_poll(fds, count, timeout);
}

int __wrap_fcntl(int fd, int command, ...) {
    std::va_list rest;
    va_start(rest, command);
    const long argument = va_arg(rest, long);
    va_end(rest);
    return World::Get().Owns(fd) ? World::Get().Fcntl(fd, command, argument)
                                 : __real_fcntl(fd, command, argument);
}

int __wrap_tcgetattr(int fd, termios* to) {
    return World::Get().Owns(fd) ? World::Get().GetAttributes(fd, to) : __real_tcgetattr(fd, to);
}

int __wrap_tcsetattr(int fd, int action, const termios* from) {
    return World::Get().Owns(fd) ? World::Get().SetAttributes(fd, action, from)
                                 : __real_tcsetattr(fd, action, from);
}

int __wrap_tcflush(int fd, int queue) {
    return World::Get().Owns(fd) ? World::Get().Flush(fd, queue) : __real_tcflush(fd, queue);
}

int __wrap_usleep(useconds_t us) {
    return World::Get().Usleep(us);
}

int __wrap_clock_gettime(clockid_t clock, timespec* to) {
    if (clock != CLOCK_MONOTONIC) {
        return __real_clock_gettime(clock, to);
    }
    // A look at the clock takes time, or a loop without pauses would never reach its limit.
    World::Get().Advance(1);
    const test::Micros now = World::Get().Now();
    to->tv_sec = static_cast<std::time_t>(now / 1'000'000);
    to->tv_nsec = static_cast<long>(now % 1'000'000 * 1000);
    return 0;
}

std::time_t __wrap_time(std::time_t* to) {
    if (to != nullptr) {
        *to = World::Get().wall_clock;
    }
    return World::Get().wall_clock;
}

}  // extern "C"

#define STRING_ARGUMENT "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

void RealTrace(const std::string& file,
               const std::string& text) __asm__("__real__Z12TraceLogFileRK" STRING_ARGUMENT "S6_");
void WrapTrace(const std::string& file,
               const std::string& text) __asm__("__wrap__Z12TraceLogFileRK" STRING_ARGUMENT "S6_");
void RealError(ETarvo* error, CTarvo* source, int code, const std::string& detail) __asm__(
    "__real__ZN6ETarvoC1EP6CTarvoiRK" STRING_ARGUMENT);
void WrapError(ETarvo* error, CTarvo* source, int code, const std::string& detail) __asm__(
    "__wrap__ZN6ETarvoC1EP6CTarvoiRK" STRING_ARGUMENT);

void WrapTrace(const std::string& file, const std::string& text) {
    World::Get().Trace(file, text);
    if (World::Get().TracesToDisk()) {
        RealTrace(file, text);
    }
}

void WrapError(ETarvo* error, CTarvo* source, int code, const std::string& detail) {
    World::Get().Detail(code, detail);
    RealError(error, source, code, detail);
}
