// Holds what the driver told its host against the register's truth.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "simulation/host.h"
#include "simulation/register_side.h"
#include "simulation/required_driver.h"
#include "simulation/verdict.h"

namespace simulation {

// What happened to some exchanges, in one look.
struct Disturbances {
    bool any = false;  // a fault touched one, or the register did not answer
    bool misread = false;
    std::array<bool, 256> forged{};  // by command

    bool Forged(std::uint8_t command) const { return forged[command]; }
};

// The register's counters at the beginning of a call.
struct CountersBefore {
    std::uint16_t tape_number = 0;
    std::uint16_t records = 0;
    std::size_t paper_lines = 0;
};

// A call that is over.
struct CallFacts {
    const Call* call = nullptr;
    std::uint32_t number = 0;  // in the run, from 1
    CountersBefore before;
    Answered answered;
    Outcome required;
    std::size_t first_event = 0;
    std::uint32_t first_exchange = 0;
    bool ended_by_host = false;
    bool plug_pulled = false;
};

// Nothing when everything held, else what did not.
using Wrong = std::optional<std::string>;

class Checker {
  public:
    Checker(const Journal& journal, const RegisterSide& side, const RequiredDriver& required,
            Figures& figures)
        : journal_(journal), side_(side), required_(required), figures_(figures) {}

    Wrong Check(const CallFacts& facts);
    // Of the PrintChecks so far.
    const std::vector<Verdict>& verdicts() const { return verdicts_; }

  private:
    // checker.cpp
    Disturbances Look(std::uint32_t first_exchange) const;
    static Wrong CheckAnswer(const CallFacts& facts);
    Wrong CheckBound(const CallFacts& facts) const;
    Wrong CheckQuery(const CallFacts& facts) const;
    Wrong CheckOutside(const CallFacts& facts);
    void Note(Remark remark) { ++figures_.remarks[static_cast<std::size_t>(remark)]; }

    // print_checker.cpp
    Wrong CheckPrint(const CallFacts& facts);
    std::optional<Verdict> Judge(const CallFacts& facts, std::string& why) const;
    std::optional<Verdict> JudgeNothingRegistered(const CallFacts& facts, std::string& why) const;
    std::optional<Verdict> JudgeSuccess(const Disturbances& seen, std::string& why) const;
    std::optional<Verdict> JudgeFailure(const CallFacts& facts, std::uint32_t registered_at) const;
    bool CountersGotThrough(std::uint32_t behind_exchange) const;
    Wrong CheckPaper(const CallFacts& facts);
    Wrong CheckCause(const CallFacts& facts) const;
    Wrong CheckCleanUp(const CallFacts& facts);

    const Journal& journal_;
    const RegisterSide& side_;
    const RequiredDriver& required_;
    Figures& figures_;
    std::vector<Verdict> verdicts_;
};

}  // namespace simulation
