#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "act.h"
#include "codes.h"
#include "frame.h"
#include "model.h"

namespace virtual_register {

// A scenario: what goes wrong with a register and its line, and when. One line each; what stands
// behind # is a remark.
//
//   when COMMAND [WHICH] EFFECT   the host sends COMMAND for the n-th time
//   at TIME ACT                   so long after the host's first request
//
// COMMAND is a name of the exchange log with "-" for each blank (sale, status, close-check,
// reset-status), its code (0x21), or "any" for whatever comes. WHICH counts from 1: 3, 2-5 or
// always; the first time unless given. TIME is 300ms or 2.5s. EFFECT is one of
//
//   lose request      the register does not hear it
//   lose answer       the register obeys, and its answer is lost
//   delay TIME        the answer comes so much later
//   cut N             only the first N bytes of the answer come
//   garble [N]        a byte of the answer, the last unless given, comes with its bits turned over
//   refuse REPLY      the register does nothing and answers with REPLY as the only payload byte
//   busy POLLS        from now on a new state shows after so many status answers of the old one
//   ACT               done before the register obeys
//   then ACT          done when it has obeyed; the answer still goes out
//
// and ACT is anything that the cashier's prompt can do, or quit. Effects of several lines on one
// exchange add up.
class ScenarioError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Scenario {
  public:
    // Nothing ever happens.
    Scenario() = default;
    // Throws ScenarioError with the number of the line.
    explicit Scenario(std::string_view text);

    // An exchange as it went.
    struct Exchange {
        std::optional<Answer> answer;     // the register's own, whatever the line made of it
        std::optional<FrameBytes> bytes;  // what the line carries back; nothing for silence
        std::int64_t delay_us = 0;
        std::vector<std::string> remarks;  // what the scenario did, with its lines
    };
    Exchange handle(Model& model, const Request& request, std::int64_t now_us);

    // Does what is due by its time and gives remarks about it.
    std::vector<std::string> act(Model& model, std::int64_t now_us);
    // When something is due by its time, as far as known.
    std::optional<std::int64_t> next_us() const;
    bool quits() const { return quits_; }
    // Lines that have not come about.
    std::vector<std::string> unmet() const;

    enum class Kind { lose_request, lose_answer, delay, cut, garble, refuse, busy, before, after };

  private:
    struct Rule {
        std::size_t line = 0;
        std::string text;
        bool met = false;
        // Of a rule for exchanges; no command means any.
        std::optional<Command> command;
        std::uint64_t first = 1;
        std::uint64_t last = 1;
        std::uint64_t come = 0;
        // Of a rule for a time.
        std::optional<std::int64_t> at_us;

        Kind kind = Kind::before;
        std::int64_t value = 0;  // of delay, cut, garble (0: the last byte), refuse, busy
        std::optional<Act> act;
    };

    static Rule parse_rule(const Words& words);
    static Rule parse_when(const Words& words);
    static Rule parse_at(const Words& words);
    static void parse_effect(const Words& words, Rule& rule);
    static void parse_lose(const Words& words, Rule& rule);
    static void parse_act_of(const Words& words, Rule& rule);

    std::vector<Rule*> rules_for(std::uint8_t command);
    std::string carry_out(Rule& rule, Model& model);

    std::vector<Rule> rules_;
    std::optional<std::int64_t> begin_us_;  // of the first request
    bool quits_ = false;
};

}  // namespace virtual_register
