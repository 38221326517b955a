// What a benchmark reports: one line of "name=value" for each measurement.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace bench {

// Monotonic, in microseconds.
double NowUs();
// Processor time of this process, in microseconds.
double ProcessorUs();
long PageFaults();

// Samples of one figure.
class Samples {
  public:
    void Add(double value) { values_.push_back(value); }
    double Percentile(double percent) const;
    double Max() const { return Percentile(100); }
    double Last() const { return values_.back(); }

  private:
    std::vector<double> values_;
};

// Time, processor time and page faults of a repeated action.
class Runs {
  public:
    template <typename Action>
    void Time(Action action) {
        const double processor = ProcessorUs();
        const long faults = PageFaults();
        const double begin = NowUs();
        action();
        wall_.Add(NowUs() - begin);
        processor_us_ += ProcessorUs() - processor;
        faults_ += PageFaults() - faults;
        ++count_;
    }
    const Samples& Wall() const { return wall_; }
    // " PREFIXp50=.. PREFIXp99=.. PREFIXmax=.. PREFIXcpu=.. PREFIXfaults=..", times in ms.
    void Print(const char* prefix) const;

  private:
    Samples wall_;
    double processor_us_ = 0;
    long faults_ = 0;
    int count_ = 0;
};

}  // namespace bench
