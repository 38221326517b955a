// Every single fault, and every pair of faults, at every exchange of a reference check.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulation/campaign.h"
#include "simulation/scenario.h"

namespace simulation {

// A reference check with some faults. Its host connects, fills, prepares, prints, after a failure
// does all that once more, and disconnects.
struct Case {
    int firmware = 303;
    bool one_line = false;  // one plain line; else three lines, a discount and cash
    std::vector<Fault> faults;
};

// "303 one_line answer_lost@12:0:0 restart@14:1:2", to be read again.
std::string Tell(const Case& one);
std::optional<Case> ReadCase(const std::string& text);

Scenario MakeScenario(const Case& one);

// Every kind at every exchange on every firmware, with every place that a kind can hit.
class SingleSweep : public Campaign {
  public:
    SingleSweep();
    std::size_t Chunks() const override;
    void RunChunk(std::size_t chunk, Collector& to) const override;
    // A row of figures for each chunk: its firmware and its kind.
    static int FirmwareOf(std::size_t chunk);
    static FaultKind KindOf(std::size_t chunk);

  private:
    std::vector<std::uint32_t> exchanges_;  // of the faultless check, by firmware
};

// Every pair at every pair of exchanges of the one-line check.
class PairSweep : public Campaign {
  public:
    // The kinds that differ in what they do to the conversation; or all of them. Each pair on one
    // firmware, in turn; or on every one.
    PairSweep(bool all_kinds, bool every_firmware);
    std::size_t Chunks() const override;
    void RunChunk(std::size_t chunk, Collector& to) const override;

  private:
    std::vector<FaultKind> kinds_;
    bool every_firmware_;
    std::vector<std::uint32_t> exchanges_;
};

}  // namespace simulation
