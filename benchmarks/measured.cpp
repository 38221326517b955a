#include "measured.h"

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace bench {

namespace {

double Read(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

}  // namespace

double NowUs() {
    return Read(CLOCK_MONOTONIC);
}

double ProcessorUs() {
    return Read(CLOCK_PROCESS_CPUTIME_ID);
}

long PageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

double Samples::Percentile(double percent) const {
    if (values_.empty()) {
        return 0;
    }
    std::vector<double> sorted = values_;
    std::sort(sorted.begin(), sorted.end());
    const double rank = std::ceil(percent / 100 * static_cast<double>(sorted.size()));
    return sorted[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

void Runs::Print(const char* prefix) const {
    std::printf(" %sp50=%.3f %sp99=%.3f %smax=%.3f %scpu=%.4f %sfaults=%.2f", prefix,
                wall_.Percentile(50) / 1e3, prefix, wall_.Percentile(99) / 1e3, prefix,
                wall_.Max() / 1e3, prefix, processor_us_ / count_ / 1e3, prefix,
                static_cast<double>(faults_) / count_);
}

}  // namespace bench
