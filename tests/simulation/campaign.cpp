#include "simulation/campaign.h"

namespace simulation {
namespace {

constexpr std::uint64_t kSeedsInChunk = 200;

}  // namespace

const RunResult& Collector::Run(const Scenario& scenario, const std::string& replay) {
    if (before_run) {
        before_run(replay);
    }
    result_ = runner_.Run(scenario);
    figures.Add(result_.figures);
    if (!result_.violation.empty()) {
        violations.push_back({replay, result_.call + ": " + result_.violation});
    }
    return result_;
}

std::size_t RandomCampaign::Chunks() const {
    return static_cast<std::size_t>((checks_ + kSeedsInChunk - 1) / kSeedsInChunk);
}

void RandomCampaign::RunChunk(std::size_t chunk, Collector& to) const {
    Scenario scenario;
    const std::uint64_t first = first_seed_ + chunk * kSeedsInChunk;
    for (std::uint64_t seed = first; seed < first + kSeedsInChunk; ++seed) {
        DrawScenario(seed, scenario);
        to.Run(scenario, "--seed " + std::to_string(seed));
    }
}

}  // namespace simulation
