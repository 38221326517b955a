#include "simulation/simulated_system.h"

#include <algorithm>
#include <cerrno>
#include <limits>

#include "interface/vesk.h"

namespace simulation {
namespace {

// More than a call can need that has a bound, short of several faults that take turns.
constexpr std::uint32_t kPausesBeforePlug = 12'000;
constexpr unsigned kInterruptionsInARow = 3;

}  // namespace

SimulatedSystem::SimulatedSystem(SimulatedLine& line, Journal& journal, const FaultPlan& plan)
    : line_(line),
      journal_(journal),
      random_(plan.seed + 1),
      writes_traces_(plan.Has(FaultKind::trace_unwritable) ||
                     plan.Has(FaultKind::trace_disk_full)) {
    test::System::Use(this);
}

void SimulatedSystem::BeginCall(std::uint32_t patience) {
    patience_ = patience;
    pauses_ = 0;
    ended_by_host_ = false;
    plug_pulled_ = false;
}

bool SimulatedSystem::OwnsPath(const char* path) const {
    return std::string_view(path).substr(0, 5) == "/dev/";
}

int SimulatedSystem::Open(const char* path, int /*flags*/) {
    const std::string_view name = path;
    const int error = name == kDevice || name == kDeviceLink ? line_.Open(now_) : ENOENT;
    journal_.Add(EventKind::open_port, now_, 0, -error,
                 reinterpret_cast<const unsigned char*>(path), name.size());
    if (error != 0) {
        errno = error;
        return -1;
    }
    return kFd;
}

int SimulatedSystem::Close(int /*fd*/) {
    line_.Close();
    journal_.Add(EventKind::close_port, now_);
    return 0;
}

long SimulatedSystem::Read(int /*fd*/, void* to, std::size_t count) {
    const int value = count == 1 ? line_.Read(now_) : -EINVAL;
    journal_.Add(EventKind::read_byte, now_, 0, value);
    if (value >= 0) {
        *static_cast<unsigned char*>(to) = static_cast<unsigned char>(value);
        return 1;
    }
    if (value == kEndOfFile) {
        return 0;
    }
    errno = -value;
    return -1;
}

long SimulatedSystem::Write(int /*fd*/, const void* from, std::size_t count) {
    const auto* const bytes = static_cast<const unsigned char*>(from);
    const std::size_t event = journal_.Add(EventKind::write, now_, 0, 0, bytes, count);
    const long result = line_.Write(bytes, count, now_);
    journal_.SetResult(event, result);
    if (result < 0) {
        errno = static_cast<int>(-result);
        return -1;
    }
    return result;
}

bool SimulatedSystem::Interrupted(Micros wait_us) {
    if (wait_us < 2 || !line_.InterruptsWaits() || interruptions_ == kInterruptionsInARow) {
        interruptions_ = 0;
        return false;
    }
    ++interruptions_;
    const auto most = static_cast<std::uint32_t>(
        std::min<Micros>(wait_us, std::numeric_limits<std::uint32_t>::max()));
    now_ += 1 + random_.Below(most - 1);
    errno = EINTR;
    return true;
}

int SimulatedSystem::Poll(int /*fd*/, short events, int timeout_ms, short* revents) {
    if (events != POLLIN || timeout_ms < 0 || line_.TakePollError()) {
        journal_.Add(EventKind::poll, now_, timeout_ms, -ENOMEM);
        errno = ENOMEM;
        return -1;
    }
    const auto limit = static_cast<Micros>(timeout_ms) * 1000;
    const std::optional<Micros> input = line_.NextInput(now_);
    const Micros wait = !input ? limit : *input > now_ ? *input - now_ : 0;
    if (Interrupted(std::min(wait, limit))) {
        journal_.Add(EventKind::poll, now_, timeout_ms, -EINTR);
        return -1;
    }
    const bool ready = input && wait <= limit;
    now_ += std::min(wait, limit);
    *revents = ready ? POLLIN : 0;
    journal_.Add(EventKind::poll, now_, timeout_ms, ready ? 1 : 0);
    return ready ? 1 : 0;
}

int SimulatedSystem::Fcntl(int /*fd*/, int command, long argument) {
    journal_.Add(EventKind::set_flags, now_, command, argument);
    return 0;
}

int SimulatedSystem::GetAttributes(int /*fd*/, termios* to) {
    const int error = line_.Settings(now_);
    journal_.Add(EventKind::get_line, now_, 0, -error);
    if (error != 0) {
        errno = error;
        return -1;
    }
    *to = attributes_;
    return 0;
}

int SimulatedSystem::SetAttributes(int /*fd*/, int action, const termios* from) {
    const int error = action == TCSANOW ? line_.Settings(now_) : EINVAL;
    journal_.Add(EventKind::set_line, now_, static_cast<int>(from->c_cflag), -error);
    if (error != 0) {
        errno = error;
        return -1;
    }
    attributes_ = *from;
    const speed_t speed = attributes_.c_cflag & CBAUD;
    line_.SetSpeed(speed == B9600 ? 9600 : speed == B57600 ? 57600 : 0);
    return 0;
}

int SimulatedSystem::Flush(int /*fd*/, int queue) {
    line_.Flush(now_);
    journal_.Add(EventKind::flush, now_, queue);
    return 0;
}

int SimulatedSystem::Usleep(unsigned us) {
    if (us == 0) {
        return 0;  // nobody can tell whether it was called
    }
    const bool interrupted = Interrupted(us);
    if (!interrupted) {
        now_ += us;
    }
    journal_.Add(EventKind::sleep, now_, us, interrupted ? -EINTR : 0);
    ++pauses_;
    LookAfterEndlessLoops();
    return interrupted ? -1 : 0;
}

void SimulatedSystem::LookAfterEndlessLoops() {
    if (pauses_ == patience_) {
        ended_by_host_ = true;
        kvesk.terminate();
        journal_.Add(EventKind::terminate, now_);
    }
    if (pauses_ == kPausesBeforePlug) {
        plug_pulled_ = true;
        line_.PullPlug();
        journal_.Add(EventKind::unplug, now_);
    }
}

bool SimulatedSystem::Trace(const std::string& /*file*/, const std::string& text) {
    // The clean-up of a failed check has no other sign than these lines.
    if (text == "Error Interface\n" || text == "Error: unknown error in print check\n") {
        journal_.Add(EventKind::failure, now_);
    }
    return writes_traces_;
}

}  // namespace simulation
