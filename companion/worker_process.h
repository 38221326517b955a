// The process that drives the register, as the host's process sees it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

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

// What it says on the way.
struct WorkerStep {
    enum Kind { none = 0, waiting = 1, sending = 2, comparing = 3, reading = 4 };
    Kind kind = none;
    int done = 0;  // records of the tape
    int all = 0;
};

// What passes between the two, in lines of text.
std::string ReportText(const WorkerReport& report);
std::optional<WorkerReport> ParseReport(const std::string& line);
std::string StepText(const WorkerStep& step);
std::optional<WorkerStep> ParseStep(const std::string& line);

struct WorkerTask {
    bool prints = false;  // else it resolves
    std::string journal;
    std::string device;
    std::int64_t attempt = 0;
    int lock = -1;
};

struct WorkerResult {
    enum class End { reported, died, working };
    End end = End::working;
    WorkerReport report;
    WorkerStep step;  // the last one
};

// Starts a worker and waits until the deadline for its report, and for its leave of the register
// behind it: a good-bye that comes later would take what the cashier has entered for the next
// check. It may outlive the call, but is no child of the host's then. Throws std::runtime_error
// when it cannot be started.
WorkerResult RunWorker(const WorkerTask& task, const Deadline& deadline,
                       const std::function<void(const WorkerStep&)>& on_step);

}  // namespace kkmcheck
