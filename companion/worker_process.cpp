#include "companion/worker_process.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sstream>
#include <stdexcept>
#include <vector>

extern char** environ;

namespace kkmcheck {
namespace {

// A worker gives up a little before the host does, so that the host sees its end.
constexpr int kMarginMs = 150;
// So long a worker's good-bye to the register is waited for, once it has reported.
constexpr int kGoodByeMs = 3000;
// A child that ends at once takes no longer, but on a machine that stands still.
constexpr int kReapMs = 500;
constexpr long kReapPauseNs = 1'000'000;

std::string FolderOfLibrary() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ReportText), &info) == 0 || info.dli_fname == nullptr) {
        return ".";
    }
    const std::string path = info.dli_fname;
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string WorkerPath() {
    if (const char* const named = std::getenv("KKMCHECK_WORKER")) {
        return named;
    }
    const std::string folder = FolderOfLibrary();
    for (const char* const place : {"/kkmcheck-worker", "/kkmcheck/kkmcheck-worker"}) {
        std::string path = folder + place;
        if (::access(path.c_str(), X_OK) == 0) {
            return path;
        }
    }
    throw std::runtime_error("kkmcheck-worker is not beside the library in " + folder);
}

// A descriptor above those that the worker's own files take.
class HighDescriptor {
  public:
    explicit HighDescriptor(int descriptor)
        : descriptor_(::fcntl(descriptor, F_DUPFD_CLOEXEC, kLockDescriptor + 1)) {
        if (descriptor_ < 0) {
            throw std::runtime_error(std::string("no descriptor: ") + std::strerror(errno));
        }
    }
    ~HighDescriptor() { ::close(descriptor_); }
    HighDescriptor(const HighDescriptor&) = delete;
    HighDescriptor& operator=(const HighDescriptor&) = delete;
    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

struct Pipe {
    int ends[2] = {-1, -1};
    Pipe() {
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error(std::string("no pipe: ") + std::strerror(errno));
        }
    }
    ~Pipe() {
        ::close(ends[0]);
        CloseWriting();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    void CloseWriting() {
        if (ends[1] >= 0) {
            ::close(ends[1]);
            ends[1] = -1;
        }
    }
};

// The process that the worker comes from. It ends at once, and nobody else's children are waited
// for. A host that ignores its children's ends, or waits for all of them, has taken it already.
class Child {
  public:
    explicit Child(pid_t pid) : pid_(pid) {}
    ~Child() {
        const Deadline patience(kReapMs);
        while (::waitpid(pid_, nullptr, WNOHANG) == 0 && patience.Left() > 0) {
            const timespec pause{0, kReapPauseNs};
            ::nanosleep(&pause, nullptr);
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

  private:
    pid_t pid_;
};

// Whole lines of what comes in pieces.
class Lines {
  public:
    void Add(const char* bytes, std::size_t count) { text_.append(bytes, count); }
    std::optional<std::string> Next() {
        const std::size_t end = text_.find('\n');
        if (end == std::string::npos) {
            return std::nullopt;
        }
        std::string line = text_.substr(0, end + 1);
        text_.erase(0, end + 1);
        return line;
    }

  private:
    std::string text_;
};

pid_t Start(const WorkerTask& task, int output, int time_ms) {
    std::vector<std::string> words{
        WorkerPath(), task.prints ? "print" : "resolve", task.journal,
        task.device,  std::to_string(task.attempt),      std::to_string(time_ms)};
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const HighDescriptor high_output(output);
    const HighDescriptor high_lock(task.lock);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, high_output.get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, high_lock.get(), kLockDescriptor);
    // Nothing else of the host's: who reads a pipe of its would wait for the worker's end, too.
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, kLockDescriptor + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // Ctrl-C at the host's terminal must not end a check half-way.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t pid = -1;
    const int error =
        posix_spawn(&pid, arguments[0], &files, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::runtime_error(words[0] + ": " + std::strerror(error));
    }
    return pid;
}

}  // namespace

std::string ReportText(const WorkerReport& report) {
    std::ostringstream text;
    text << static_cast<int>(report.verdict.outcome) << ' '
         << static_cast<int>(report.verdict.reason) << ' ' << report.verdict.first_record << ' '
         << report.driver_error << ' ' << report.journal_failure << '\n';
    return text.str();
}

std::optional<WorkerReport> ParseReport(const std::string& line) {
    if (line.empty() || line.back() != '\n') {
        return std::nullopt;
    }
    std::istringstream stream(line);
    int outcome = 0;
    int reason = 0;
    WorkerReport report;
    if (!(stream >> outcome >> reason >> report.verdict.first_record >> report.driver_error)) {
        return std::nullopt;
    }
    report.verdict.outcome = static_cast<Outcome>(outcome);
    report.verdict.reason = static_cast<Reason>(reason);
    stream.get();
    std::getline(stream, report.journal_failure);
    return report;
}

std::string StepText(const WorkerStep& step) {
    std::ostringstream text;
    text << "step " << step.kind << ' ' << step.done << ' ' << step.all << '\n';
    return text.str();
}

std::optional<WorkerStep> ParseStep(const std::string& line) {
    std::istringstream stream(line);
    std::string word;
    int kind = 0;
    WorkerStep step;
    if (!(stream >> word >> kind >> step.done >> step.all) || word != "step" ||
        kind <= WorkerStep::none || kind > WorkerStep::reading) {
        return std::nullopt;
    }
    step.kind = static_cast<WorkerStep::Kind>(kind);
    return step;
}

WorkerResult RunWorker(const WorkerTask& task, const Deadline& deadline,
                       const std::function<void(const WorkerStep&)>& on_step) {
    Pipe pipe;
    const Child child(Start(task, pipe.ends[1], std::max(deadline.Left() - kMarginMs, 1)));
    pipe.CloseWriting();
    WorkerResult result;
    Deadline until = deadline;
    Lines lines;
    for (;;) {
        pollfd waited{pipe.ends[0], POLLIN, 0};
        const int ready = ::poll(&waited, 1, until.Left());
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return result;
        }
        char bytes[256];
        const ssize_t count = ::read(pipe.ends[0], bytes, sizeof bytes);
        if (count <= 0) {
            if (result.end == WorkerResult::End::working) {
                result.end = WorkerResult::End::died;
            }
            return result;
        }
        lines.Add(bytes, static_cast<std::size_t>(count));
        while (const auto line = lines.Next()) {
            if (const auto step = ParseStep(*line)) {
                result.step = *step;
                on_step(*step);
            } else if (const auto report = ParseReport(*line)) {
                result.end = WorkerResult::End::reported;
                result.report = *report;
                until = Deadline(std::min(deadline.Left(), kGoodByeMs));
            }
        }
    }
}

}  // namespace kkmcheck
