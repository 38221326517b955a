// A campaign in several processes: the driver is one object in a process, so threads would not do.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "simulation/campaign.h"
#include "simulation/trace_files.h"

namespace simulation {
namespace {

static_assert(std::is_trivially_copyable_v<Figures>, "goes through a pipe as it is");

constexpr std::size_t kReplayRoom = 1024;

// What a worker is doing, for the one who finds it dead.
using Doing = std::array<char, kReplayRoom>;

void Put(int pipe, const void* from, std::size_t count) {
    const char* at = static_cast<const char*>(from);
    while (count > 0) {
        const ssize_t written = write(pipe, at, count);
        if (written <= 0) {
            std::exit(1);  // nobody listens any more
        }
        at += written;
        count -= static_cast<std::size_t>(written);
    }
}

void Put(int pipe, const std::string& text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    Put(pipe, &size, sizeof size);
    Put(pipe, text.data(), size);
}

bool Take(int pipe, void* to, std::size_t count) {
    char* at = static_cast<char*>(to);
    while (count > 0) {
        const ssize_t got = read(pipe, at, count);
        if (got <= 0) {
            return false;
        }
        at += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

bool Take(int pipe, std::string& text) {
    std::uint32_t size = 0;
    if (!Take(pipe, &size, sizeof size)) {
        return false;
    }
    text.resize(size);
    return Take(pipe, text.data(), size);
}

bool Take(int pipe, Report& report) {
    std::uint32_t violations = 0;
    if (!Take(pipe, &report.figures, sizeof report.figures) ||
        !Take(pipe, &violations, sizeof violations)) {
        return false;
    }
    report.violations.resize(violations);
    for (Violation& one : report.violations) {
        if (!Take(pipe, one.replay) || !Take(pipe, one.text)) {
            return false;
        }
    }
    return true;
}

class Worker {
  public:
    Worker(const Campaign& campaign, const Runner& runner, std::size_t first, std::size_t step)
        : doing_(static_cast<Doing*>(mmap(nullptr, sizeof(Doing), PROT_READ | PROT_WRITE,
                                          MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        int ends[2];
        if (doing_ == MAP_FAILED || pipe(ends) != 0) {
            throw std::runtime_error("no room for another process");
        }
        pid_ = fork();
        if (pid_ < 0) {
            throw std::runtime_error("no room for another process");
        }
        if (pid_ == 0) {
            close(ends[0]);
            Work(campaign, runner, first, step, ends[1]);
        }
        close(ends[1]);
        pipe_ = ends[0];
    }
    ~Worker() {
        close(pipe_);
        if (!reaped_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        munmap(doing_, sizeof(Doing));
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // The next report; a worker that died is a violation of what it did last.
    Report Next() {
        Report report;
        if (!Take(pipe_, report)) {
            int status = 0;
            waitpid(pid_, &status, 0);
            reaped_ = true;
            report = Report();
            report.figures.violations = 1;
            report.violations.push_back({doing_->data(), WIFSIGNALED(status)
                                                             ? "the process ended by signal " +
                                                                   std::to_string(WTERMSIG(status))
                                                             : std::string("the process ended")});
        }
        return report;
    }
    bool died() const { return reaped_; }

  private:
    [[noreturn]] void Work(const Campaign& campaign, const Runner& runner, std::size_t first,
                           std::size_t step, int pipe) const {
        Collector collector;
        collector.runner = runner;
        collector.before_run = [this](const std::string& replay) {
            std::strncpy(doing_->data(), replay.c_str(), kReplayRoom - 1);
        };
        for (std::size_t chunk = first; chunk < campaign.Chunks(); chunk += step) {
            collector.figures = Figures();
            collector.violations.clear();
            campaign.RunChunk(chunk, collector);
            Put(pipe, &collector.figures, sizeof collector.figures);
            const auto violations = static_cast<std::uint32_t>(collector.violations.size());
            Put(pipe, &violations, sizeof violations);
            for (const Violation& one : collector.violations) {
                Put(pipe, one.replay);
                Put(pipe, one.text);
            }
        }
        std::exit(0);
    }

    Doing* doing_;
    pid_t pid_ = 0;
    int pipe_ = -1;
    bool reaped_ = false;
};

}  // namespace

void RunCampaign(const Campaign& campaign, const Runner& runner, unsigned jobs,
                 const Progress& progress) {
    signal(SIGPIPE, SIG_IGN);
    PrepareTraceFiles();
    std::vector<std::unique_ptr<Worker>> workers;
    for (unsigned i = 0; i < jobs; ++i) {
        workers.push_back(std::make_unique<Worker>(campaign, runner, i, jobs));
    }
    for (std::size_t chunk = 0; chunk < campaign.Chunks(); ++chunk) {
        Worker& worker = *workers[chunk % jobs];
        const Report report = worker.Next();
        if (!progress(chunk, report) || worker.died()) {
            return;
        }
    }
}

}  // namespace simulation
