// kkmcheck-worker: drives the register for libkkmcheck, in a process that may be ended at any
// moment. It is started by the library and of no use by hand.
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>

#include "companion/deadline.h"
#include "companion/file_identity.h"
#include "companion/journal.h"
#include "companion/register_session.h"
#include "companion/till_lock.h"
#include "companion/worker_process.h"

namespace kkmcheck {
namespace {

// A check whose lines are being sent is finished, or so long waited for, behind the deadline; so is
// a long tape that is being read.
constexpr unsigned kGraceS = 180;
// What is left of it when the driver is back is for finding out.
constexpr int kLookMs = 5000;
constexpr unsigned kGoodByeS = 10;
constexpr int kMarginMs = 100;
constexpr int kLongestMs = 2'000'000'000;

constexpr int kTimeIsUp = 3;
constexpr int kAbandoned = 4;
constexpr int kNoProcess = 5;

volatile sig_atomic_t goes_on = 0;

void OnAlarm(int) {
    if (goes_on == 0) {
        _exit(kTimeIsUp);
    }
    // Once more, and for good, unless something happens.
    goes_on = 0;
    alarm(kGraceS);
}

void LimitTime(int ms) {
    struct sigaction action {};
    action.sa_handler = OnAlarm;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t alarm_only;
    sigemptyset(&alarm_only);
    sigaddset(&alarm_only, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarm_only, nullptr);
    itimerval limit{};
    limit.it_value.tv_sec = ms / 1000;
    limit.it_value.tv_usec = suseconds_t{ms % 1000} * 1000;
    setitimer(ITIMER_REAL, &limit, nullptr);
}

void Say(const std::string& text) {
    // Nobody may be there to read it any more.
    if (write(STDOUT_FILENO, text.data(), text.size()) < 0) {
        close(STDOUT_FILENO);
    }
}

// A record that nobody would find again, or a lock that locks nobody out: nothing may be sent then.
class GuardedLog final : public AttemptLog {
  public:
    GuardedLog(AttemptLog& log, std::string journal)
        : log_(log), journal_(std::move(journal)), opened_(IdentityOf(journal_)) {}
    void Counted(const Mark& mark, int firmware) override {
        log_.Counted(mark, firmware);
        Say(StepText({WorkerStep::waiting}));
    }
    void Sending(const Mark& mark) override {
        if (IdentityOf(journal_) != opened_) {
            throw JournalFailure("the journal was removed or replaced");
        }
        if (IdentityOf(LockPath(journal_)) != IdentityOf(kLockDescriptor)) {
            throw JournalFailure("the lock file was removed or replaced");
        }
        log_.Sending(mark);
        Say(StepText({WorkerStep::sending}));
    }
    void Returned(int result, int error) override {
        log_.Returned(result, error);
        Say(StepText({WorkerStep::comparing}));
    }

  private:
    AttemptLog& log_;
    std::string journal_;
    std::optional<FileIdentity> opened_;
};

struct Task {
    bool prints;
    const char* journal;
    const char* device;
    std::int64_t attempt;
    int time_ms;
};

// How long the register is looked at.
class Patience {
  public:
    Patience(const Task& task, const Evidence& evidence)
        : prints_(task.prints),
          evidence_(evidence),
          deadline_(std::max(task.time_ms - kMarginMs, 1)),
          grace_(std::min(task.time_ms, kLongestMs) + static_cast<int>(kGraceS) * 1000 -
                 kMarginMs) {}

    bool TimeIsLeft() {
        if (tape_is_long_) {
            return grace_.Left() > 0;
        }
        if (evidence_.stage == Stage::returned && prints_) {
            if (!for_looking_) {
                for_looking_.emplace(std::max(deadline_.Left(), kLookMs));
            }
            return for_looking_->Left() > 0;
        }
        return deadline_.Left() > 0;
    }
    bool TapeGoesOn(int read, int all) {
        tape_is_long_ = true;
        goes_on = 1;
        Say(StepText({WorkerStep::reading, read, all}));
        return grace_.Left() > 0;
    }

  private:
    bool prints_;
    const Evidence& evidence_;
    Deadline deadline_;
    Deadline grace_;
    std::optional<Deadline> for_looking_;
    bool tape_is_long_ = false;
};

void Work(const Task& task) {
    Journal journal(task.journal, Journal::Opening::existing);
    const auto attempt = journal.FindAttempt(task.attempt);
    const auto check = attempt ? journal.FindCheck(attempt->key) : std::nullopt;
    if (!check) {
        throw JournalFailure("the journal: the attempt is gone");
    }
    Evidence evidence = journal.EvidenceOf(*attempt, *check);
    Patience patience(task, evidence);
    Conditions conditions;
    conditions.time_is_left = [&] { return patience.TimeIsLeft(); };
    conditions.tape_goes_on = [&](int read, int all) { return patience.TapeGoesOn(read, all); };
    conditions.sending_begins = [] { goes_on = 1; };
    conditions.abandon = [] { _exit(kAbandoned); };
    const auto record = [&](const Verdict& verdict, int driver_error) -> std::string {
        try {
            journal.Decided(attempt->id, evidence, verdict, driver_error);
            return {};
        } catch (const JournalFailure& failure) {
            return failure.what();
        }
    };
    // The driver may be waited for in vain from here on, until the alarm. This is not the last
    // word, so it does not matter whether the journal takes it.
    conditions.found_so_far = record;
    RegisterSession session(task.device, conditions);
    JournalLog rows(journal, attempt->id);
    GuardedLog log(rows, task.journal);
    WorkerReport report;
    report.verdict = task.prints ? session.Print(*check, evidence, log) : session.Resolve(evidence);
    report.driver_error = session.driver_error();
    report.journal_failure = session.journal_failure();
    if (const std::string failure = record(report.verdict, report.driver_error); !failure.empty()) {
        report.journal_failure = failure;
    }
    Say(ReportText(report));
    goes_on = 0;
    alarm(kGoodByeS);
    session.Leave();
}

int WorkThrough(const Task& task) {
    signal(SIGPIPE, SIG_IGN);
    LimitTime(task.time_ms);
    try {
        Work(task);
    } catch (const std::exception& error) {
        WorkerReport report;
        report.journal_failure = error.what();
        Say(ReportText(report));
    }
    return 0;
}

}  // namespace
}  // namespace kkmcheck

int main(int argc, char** argv) {
    if (argc != 6) {
        return 2;
    }
    // The host's child ends at once, so that the host can take leave of it: whoever prints outlives
    // the call, and would stay behind in a host that is not asked again as a dead process.
    if (const pid_t worker = fork(); worker != 0) {
        _exit(worker < 0 ? kkmcheck::kNoProcess : 0);
    }
    const int status =
        kkmcheck::WorkThrough({std::string(argv[1]) == "print", argv[2], argv[3],
                               std::strtoll(argv[4], nullptr, 10), std::atoi(argv[5])});
    // The driver's own farewell at its unloading is not wanted: a check may be open.
    _exit(status);
}
