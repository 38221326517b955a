// A working directory in which the driver's trace file cannot be written.
#pragma once

#include <string>

#include "simulation/fault_plan.h"

namespace simulation {

// Makes what the faults need, for this process and for those that it forks from now on.
void PrepareTraceFiles();

// While it lives, the working directory is one in which "VeskTarvoM5.log" cannot be opened for
// writing (trace_unwritable) or takes no byte (trace_disk_full). Without such a fault in the plan
// it does nothing.
class TraceFiles {
  public:
    explicit TraceFiles(const FaultPlan& plan);
    ~TraceFiles();
    TraceFiles(const TraceFiles&) = delete;
    TraceFiles& operator=(const TraceFiles&) = delete;

  private:
    std::string before_;  // empty: nothing was changed
};

}  // namespace simulation
