// The process that drives the register, as the host's process sees it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "companion/deadline.h"
#include "companion/decision.h"

namespace kkmcheck {

// Where a worker finds the lock that it holds.
constexpr int kLockDescriptor = 3;

// What a worker says when it has decided.
struct WorkerReport {
    Verdict verdict;
    int driver_error = 0;
    std::string journal_failure;  // the decision is not in the journal
};

// What passes between the two, in a line of text.
std::string ReportText(const WorkerReport& report);
std::optional<WorkerReport> ParseReport(const std::string& text);

struct WorkerTask {
    bool prints = false;  // else it resolves
    std::string journal;
    std::string device;
    std::int64_t attempt = 0;
    int lock = -1;
};

// A worker may outlive the call that started it. Those that ended are collected here, so that no
// dead processes pile up in the host.
class Workers {
  public:
    Workers() = default;
    ~Workers() { Collect(); }
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    enum class End { reported, died, working };
    struct Result {
        End end = End::working;
        WorkerReport report;
    };
    // Starts one and waits for its report until the deadline. Throws std::runtime_error when it
    // cannot be started.
    Result Run(const WorkerTask& task, const Deadline& deadline);

  private:
    void Collect();

    std::vector<pid_t> started_;
};

}  // namespace kkmcheck
