// Holds what the driver told its host against the register's truth.
#pragma once

#include <optional>
#include <string>

#include "simulation/host.h"
#include "simulation/register_side.h"
#include "simulation/required_driver.h"
#include "simulation/verdict.h"

namespace simulation {

// What happened to the exchanges of a call, in one look.
struct Disturbances {
    bool any = false;  // a fault touched one, or the register did not answer
    bool misread = false;
    bool any_forged = false;
    std::array<bool, 256> forged{};  // by command

    bool Forged(std::uint8_t command) const { return forged[command]; }
};

// A call that is over.
struct CallFacts {
    const Call* call = nullptr;
    std::uint32_t number = 0;  // in the run, from 1
    Answered answered;
    Outcome required;
    std::size_t first_event = 0;
    std::uint32_t first_exchange = 0;
    bool ended_by_host = false;
    bool plug_pulled = false;
    std::uint16_t tape_number_before = 0;
    std::uint16_t tape_before = 0;  // records
    std::size_t paper_before = 0;
};

class Checker {
  public:
    Checker(const Journal& journal, const RegisterSide& side, const RequiredDriver& required,
            Figures& figures)
        : journal_(journal), side_(side), required_(required), figures_(figures) {}

    // Nothing, or what was promised and did not hold.
    std::optional<std::string> Check(const CallFacts& facts);

  private:
    std::optional<std::string> CheckAnswer(const CallFacts& facts) const;
    std::optional<std::string> CheckPrint(const CallFacts& facts);
    std::optional<std::string> CheckOutside(const CallFacts& facts);
    std::optional<std::string> CheckCleanUp(const CallFacts& facts);
    std::optional<std::string> CheckUndisturbed(const CallFacts& facts, Verdict verdict) const;
    std::optional<Verdict> Judge(const CallFacts& facts, std::string& why) const;
    Disturbances Look(std::uint32_t first_exchange) const;
    // Why the printed check is not the one that the host gave; empty when it is.
    std::string Differs(std::size_t printed, std::optional<Verdict>& window,
                        const Disturbances& disturbances) const;
    bool CountersGotThrough(std::uint32_t behind_exchange) const;

    const Journal& journal_;
    const RegisterSide& side_;
    const RequiredDriver& required_;
    Figures& figures_;
};

}  // namespace simulation
