// Many runs, on all cores, with the same result whatever their number.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "simulation/run.h"

namespace simulation {

struct Violation {
    std::string replay;  // the arguments that replay it with its exchange log
    std::string text;
};

// Gathers what the runs of one chunk gave.
class Collector {
  public:
    // The run's result stays valid until the next run.
    const RunResult& Run(const Scenario& scenario, const std::string& replay);

    Figures figures;
    std::vector<Violation> violations;
    // Told before each run, so that a run that crashes the process can be named.
    std::function<void(const std::string& replay)> before_run;

  private:
    Runner runner_;
    RunResult result_;
};

class Campaign {
  public:
    virtual ~Campaign() = default;
    virtual std::size_t Chunks() const = 0;
    virtual void RunChunk(std::size_t chunk, Collector& to) const = 0;
};

// Seeds one after another.
class RandomCampaign : public Campaign {
  public:
    // At least so many checks; a run makes one or more.
    RandomCampaign(std::uint64_t first_seed, std::uint64_t checks)
        : first_seed_(first_seed), checks_(checks) {}
    std::size_t Chunks() const override;
    void RunChunk(std::size_t chunk, Collector& to) const override;

  private:
    std::uint64_t first_seed_;
    std::uint64_t checks_;
};

struct Report {
    Figures figures;
    std::vector<Violation> violations;
};

// What has been done so far; false ends the campaign.
using Progress = std::function<bool(std::size_t chunk, const Report& of_chunk)>;

// Runs the chunks in `jobs` processes and hands their reports out in their order.
void RunCampaign(const Campaign& campaign, unsigned jobs, const Progress& progress);

}  // namespace simulation
