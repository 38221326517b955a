// The register of a story: its past, what happens to it between two processes, and the truth.
#pragma once

#include "companion/simulation/story.h"
#include "simulation/register_side.h"
#include "virtual_register/model.h"

namespace outcome_simulation {

struct Truth {
    int receipts = 0;   // with any line of the host's check
    int whole = 0;      // with all of them and nothing else, in sums and quantities
    bool open = false;  // a line of it is in the register's open check
};

class RegisterOfStory {
  public:
    explicit RegisterOfStory(const Story& story);

    virtual_register::Model& model() { return model_; }
    void Happens(Between what, simulation::RegisterSide& side, simulation::Micros now_us);
    // Of the check whose names begin so; without names of whatever a program of ours sent.
    Truth Look(std::string_view names = {}) const;
    // It is not the register any more that was to print the check.
    bool WasExchanged() const { return exchanged_; }

  private:
    void Ask(std::uint8_t command, std::initializer_list<int> payload);
    void CloseByHand();
    bool IsWhole(const virtual_register::PrintedCheck& check) const;

    const Story& story_;
    std::vector<kkmcheck::ExpectedRecord> expected_;
    virtual_register::Model model_;
    virtual_register::Memory older_;
    std::int64_t now_us_ = 0;
    bool exchanged_ = false;
};

}  // namespace outcome_simulation
