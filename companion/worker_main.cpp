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

// A check whose lines are being sent is finished, or so long waited for, behind the deadline.
constexpr unsigned kGraceS = 180;
// What is left of it when the driver is back is for finding out.
constexpr int kLookMs = 5000;
constexpr unsigned kGoodByeS = 10;
constexpr int kMarginMs = 100;

constexpr int kTimeIsUp = 3;
constexpr int kAbandoned = 4;

volatile sig_atomic_t sending = 0;

void OnAlarm(int) {
    if (sending == 0) {
        _exit(kTimeIsUp);
    }
    // Once more, and for good.
    sending = 0;
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

void Report(const WorkerReport& report) {
    const std::string text = ReportText(report);
    // Nobody may be there to read it any more.
    if (write(STDOUT_FILENO, text.data(), text.size()) > 0) {
        close(STDOUT_FILENO);
    }
}

// A record that nobody would find again, or a lock that locks nobody out: nothing may be sent then.
class GuardedLog final : public AttemptLog {
  public:
    GuardedLog(AttemptLog& log, std::string journal)
        : log_(log), journal_(std::move(journal)), opened_(IdentityOf(journal_)) {}
    void Counted(const Mark& mark, int firmware) override { log_.Counted(mark, firmware); }
    void Sending(const Mark& mark) override {
        if (IdentityOf(journal_) != opened_) {
            throw JournalFailure("the journal was removed or replaced");
        }
        if (IdentityOf(LockPath(journal_)) != IdentityOf(kLockDescriptor)) {
            throw JournalFailure("the lock file was removed or replaced");
        }
        log_.Sending(mark);
    }
    void Returned(int result, int error) override { log_.Returned(result, error); }

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

void Work(const Task& task) {
    const Deadline deadline(std::max(task.time_ms - kMarginMs, 1));
    Journal journal(task.journal, Journal::Opening::existing);
    const auto attempt = journal.FindAttempt(task.attempt);
    const auto check = attempt ? journal.FindCheck(attempt->key) : std::nullopt;
    if (!check) {
        throw JournalFailure("the journal: the attempt is gone");
    }
    Evidence evidence = journal.EvidenceOf(*attempt, *check);
    std::optional<Deadline> for_looking;
    Conditions conditions;
    conditions.time_is_left = [&] {
        if (evidence.stage == Stage::returned && task.prints) {
            if (!for_looking) {
                for_looking.emplace(std::max(deadline.Left(), kLookMs));
            }
            return for_looking->Left() > 0;
        }
        return deadline.Left() > 0;
    };
    conditions.sending_begins = [] { sending = 1; };
    conditions.abandon = [] { _exit(kAbandoned); };
    RegisterSession session(task.device, conditions);
    JournalLog rows(journal, attempt->id);
    GuardedLog log(rows, task.journal);
    WorkerReport report;
    report.verdict = task.prints ? session.Print(*check, evidence, log) : session.Resolve(evidence);
    report.driver_error = session.driver_error();
    report.journal_failure = session.journal_failure();
    try {
        journal.Decided(attempt->id, evidence, report.verdict, report.driver_error);
    } catch (const JournalFailure& failure) {
        report.journal_failure = failure.what();
    }
    Report(report);
    sending = 0;
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
        Report(report);
    }
    return 0;
}

}  // namespace
}  // namespace kkmcheck

int main(int argc, char** argv) {
    if (argc != 6) {
        return 2;
    }
    const int status =
        kkmcheck::WorkThrough({std::string(argv[1]) == "print", argv[2], argv[3],
                               std::strtoll(argv[4], nullptr, 10), std::atoi(argv[5])});
    // The driver's own farewell at its unloading is not wanted: a check may be open.
    _exit(status);
}
