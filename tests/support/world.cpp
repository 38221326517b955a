#include "support/world.h"

#include <algorithm>
#include <cerrno>
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

bool World::OwnsPath(const char* path) const {
    const std::string name = path;
    return name.rfind("/dev/tty", 0) == 0 || devices_.count(name) != 0;
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

bool World::Trace(const std::string& file, const std::string& text) {
    if (logging_) {
        traces_.push_back({file, text});
    }
    if (on_trace) {
        on_trace(text);
    }
    return traces_to_disk_;
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
