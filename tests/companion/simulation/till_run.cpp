#include "companion/simulation/till_run.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "companion/register_session.h"
#include "companion/simulation/register_of_story.h"
#include "simulation/host.h"
#include "simulation/simulated_system.h"

namespace outcome_simulation {

using kkmcheck::Evidence;
using kkmcheck::Mark;
using kkmcheck::Outcome;
using kkmcheck::Reason;
using kkmcheck::Stage;
using kkmcheck::Verdict;
using simulation::Micros;

namespace {

constexpr Micros kStart = 1'000'000'000;
// Pauses of the driver that the deadline grants a register that does not ask.
constexpr std::uint32_t kPatience = 1'500;
constexpr Micros kFindingOutUs = 20'000'000;
constexpr int kLaterCalls = 3;
constexpr Micros kLaterUs = 3'600'000'000;

// The journal of one attempt: what is on the disk stays, what a dead process writes is not written.
class DiskLog final : public kkmcheck::AttemptLog {
  public:
    DiskLog(Evidence& disk, std::uint32_t full_at) : disk_(disk), full_at_(full_at) {}

    std::function<bool()> process_is_dead;
    std::function<void(Stage)> reached;

    void Counted(const Mark& mark, int /*firmware*/) override {
        if (Writes()) {
            disk_.stage = Stage::counted;
            disk_.before = mark;
        }
        reached(Stage::counted);
    }
    void Sending(const Mark& mark) override {
        if (Writes()) {
            disk_.stage = Stage::sending;
            disk_.before = mark;
        }
    }
    void Returned(int result, int /*error*/) override {
        if (Writes()) {
            disk_.stage = Stage::returned;
            disk_.driver_result = result;
        }
        reached(Stage::returned);
    }

  private:
    bool Writes() {
        if (process_is_dead()) {
            return false;
        }
        if (full_at_ != 0 && ++writings_ >= full_at_) {
            throw kkmcheck::JournalFailure("disk full");
        }
        return true;
    }

    Evidence& disk_;
    std::uint32_t full_at_;
    std::uint32_t writings_ = 0;
};

class TillRun {
  public:
    TillRun(const Story& story, bool tell)
        : story_(story),
          tell_(tell),
          register_(story),
          side_(register_.model(), journal_, story.scenario.cashier, kStart),
          line_(side_, journal_, story.scenario.line, story.scenario.faults),
          system_(line_, journal_, story.scenario.faults) {
        disks_[0].expected = kkmcheck::ExpectedRecords(story.check);
        disks_[1].expected = disks_[0].expected;
    }

    Answer Run() {
        Answer answer;
        answer.first = Print(story_.check);
        Tell("print", answer.first);
        system_.Advance(kLaterUs);
        register_.Happens(story_.between, side_, system_.Now() - kStart);
        answer.last = answer.first;
        for (int i = 0; i < kLaterCalls && answer.last.outcome == Outcome::unknown; ++i) {
            system_.Advance(kLaterUs);
            answer.last = FindOut();
            Tell("resolve", answer.last);
        }
        const Truth truth = register_.Look();
        answer.printed = truth.receipts > 0;
        answer.wrong = Compare(truth, answer.first);
        if (answer.wrong.empty()) {
            answer.wrong = Compare(truth, answer.last);
        }
        if (answer.wrong.empty() && answer.first.outcome == Outcome::unknown &&
            answer.last.outcome != Outcome::unknown && register_.WasExchanged()) {
            answer.wrong = "another register's word, or an older memory's, was believed";
        }
        answer.exchanges = static_cast<std::uint32_t>(journal_.exchanges().size());
        return answer;
    }

    // Two keys, and the outcomes of both asked for later.
    Answer RunAlike() {
        Verdict verdicts[2];
        Answer answer;
        answer.first = verdicts[0] = Print(story_.check);
        Tell("print", answer.first);
        system_.Advance(kLaterUs);
        register_.Happens(story_.between, side_, system_.Now() - kStart);
        key_ = 1;
        verdicts[1] = Print(story_.alike);
        Tell("print other", verdicts[1]);
        for (int i = 0; i < 2 * kLaterCalls; ++i) {
            key_ = (i + (story_.alike_is_asked_first ? 1 : 0)) % 2;
            if (verdicts[key_].outcome == Outcome::unknown) {
                system_.Advance(kLaterUs);
                other_ = verdicts[1];
                verdicts[key_] = FindOut();
                Tell(key_ == 0 ? "resolve" : "resolve other", verdicts[key_]);
            }
        }
        answer.last = verdicts[0];
        const Truth truth = register_.Look(kOurNames);
        answer.printed = truth.receipts > 0;
        answer.wrong = Compare(truth, answer.last);
        if (answer.wrong.empty()) {
            answer.wrong = Compare(register_.Look(kAlikeNames), verdicts[1]);
        }
        answer.exchanges = static_cast<std::uint32_t>(journal_.exchanges().size());
        return answer;
    }

  private:
    // What the journal says of the key in question, as its evidence.
    Evidence Recorded() const {
        Evidence evidence = disks_[key_];
        const Evidence& next = disks_[1];
        if (key_ == 0 && next.stage >= Stage::sending) {
            const Mark& mark = *next.before;
            if (mark.counters.tape == evidence.before->counters.tape) {
                evidence.until = mark;
            }
            const int lines = static_cast<int>(next.expected.size());
            if (other_.outcome == Outcome::printed) {
                evidence.claims = {{other_.first_record, other_.first_record + lines}};
            } else if (other_.outcome == Outcome::unknown) {
                evidence.claims = {{mark.counters.records, std::numeric_limits<int>::max()}};
            }
        }
        return evidence;
    }

    // A new process: the driver is loaded anew, and a kill strikes it if its time comes now.
    void BeginProcess(bool prints) {
        simulation::Reload(0, simulation::Callbacks::none);
        began_at_ = journal_.exchanges().size();
        abandoned_ = false;
        finding_out_until_ = system_.Now() + kFindingOutUs;
        side_.BeginCall(++calls_, prints);
        system_.BeginCall(0);
    }
    bool IsDead() const {
        const auto killed = [this](Kill kill, std::uint32_t at) {
            return kill != Kill::none && at >= began_at_ && journal_.exchanges().size() > at;
        };
        return abandoned_ || killed(story_.kill, story_.kill_at) ||
               killed(story_.alike_kill, story_.alike_kill_at);
    }

    kkmcheck::Conditions MakeConditions() {
        kkmcheck::Conditions conditions;
        conditions.time_is_left = [this] {
            return !IsDead() && system_.Now() < finding_out_until_;
        };
        conditions.tape_goes_on = [this](int /*read*/, int /*all*/) { return !IsDead(); };
        conditions.found_so_far = [](const Verdict& /*verdict*/, int /*error*/) {};
        conditions.sending_begins = [] {};
        conditions.abandon = [this] {
            abandoned_ = true;
            line_.PullPlug();
        };
        return conditions;
    }

    Verdict Print(const kkmcheck::Check& check) {
        BeginProcess(true);
        DiskLog log(disks_[key_], story_.disk_full);
        log.process_is_dead = [this] { return IsDead(); };
        log.reached = [this](Stage stage) {
            system_.BeginCall(stage == Stage::counted ? kPatience : 0);
            finding_out_until_ = system_.Now() + kFindingOutUs;
        };
        kkmcheck::RegisterSession session(simulation::kDevice, MakeConditions());
        Evidence evidence = disks_[key_];
        Verdict verdict;
        try {
            verdict = session.Print(check, evidence, log);
        } catch (const kkmcheck::JournalFailure&) {
            abandoned_ = true;
        }
        return EndProcess(session, verdict);
    }

    Verdict FindOut() {
        BeginProcess(false);
        Evidence evidence = Recorded();
        kkmcheck::RegisterSession session(simulation::kDevice, MakeConditions());
        const Verdict verdict = session.Resolve(evidence);
        return EndProcess(session, verdict);
    }

    Verdict EndProcess(kkmcheck::RegisterSession& session, Verdict verdict) {
        if (IsDead()) {
            // The host finds the process ended, and the journal where it was left.
            verdict = Decide(Recorded());
        } else {
            system_.BeginCall(0);
            session.Leave();
        }
        return verdict;
    }

    std::string Compare(const Truth& truth, const Verdict& verdict) const {
        const std::string said =
            std::string(Name(verdict.outcome)) + " (" + std::string(Name(verdict.reason)) + ")";
        if (truth.receipts > 1) {
            return "it is on the paper twice";
        }
        if (verdict.outcome == Outcome::printed && truth.whole != 1) {
            return said + ", and no such check is on the paper";
        }
        if (verdict.outcome == Outcome::not_printed && truth.receipts != 0) {
            return said + ", and it is on the paper";
        }
        if (verdict.outcome == Outcome::not_printed && truth.open) {
            return said + ", and it is open at the register";
        }
        return {};
    }

    void Tell(const char* what, const Verdict& verdict) {
        if (tell_) {
            const Truth truth = register_.Look();
            std::printf(
                "%13s: %s (%s) behind exchange %zu; stage %d; receipts %d, whole %d, open %d\n",
                what, std::string(Name(verdict.outcome)).c_str(),
                std::string(Name(verdict.reason)).c_str(), journal_.exchanges().size(),
                static_cast<int>(disks_[key_].stage), truth.receipts, truth.whole, truth.open);
        }
    }

    const Story& story_;
    bool tell_;
    simulation::Journal journal_;
    RegisterOfStory register_;
    simulation::RegisterSide side_;
    simulation::SimulatedLine line_;
    simulation::SimulatedSystem system_;
    Evidence disks_[2];  // of the two keys
    int key_ = 0;        // the one in question
    Verdict other_;      // on the other key, as the journal has it
    std::size_t began_at_ = 0;
    bool abandoned_ = false;
    Micros finding_out_until_ = 0;
    std::uint32_t calls_ = 0;
};

}  // namespace

Answer Run(const Story& story, bool tell) {
    TillRun run(story, tell);
    return story.alike.lines.empty() ? run.Run() : run.RunAlike();
}

}  // namespace outcome_simulation
