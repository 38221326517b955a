#include "companion/till.h"

#include <filesystem>
#include <unordered_map>
#include <utility>

#include "companion/file_identity.h"

namespace kkmcheck {
namespace {

// For calls without a deadline of their own.
constexpr int kPatienceMs = 500;

Attempt StillWorking(Attempt attempt) {
    attempt.reason = Reason::still_working;
    return attempt;
}

// A journal whose lock is there was there, too. A new one in its place would forget every key.
const std::string& NotLost(const std::string& journal) {
    std::error_code none;
    const auto size = std::filesystem::file_size(journal, none);
    if ((none || size == 0) && IdentityOf(LockPath(journal))) {
        throw JournalFailure(
            "the journal " + journal + " is gone, but " + LockPath(journal) +
            " is there: restore the journal, or remove the lock file to begin anew");
    }
    return journal;
}

// Undecided, and nobody works on it.
Attempt Unread(Attempt attempt) {
    if (attempt.outcome == Outcome::unknown && attempt.reason == Reason::none) {
        attempt.reason = Reason::register_unread;
    }
    return attempt;
}

}  // namespace

Till::Till(const std::string& journal, std::string device)
    : device_(std::move(device)),
      journal_(NotLost(journal), Journal::Opening::create, Deadline(kPatienceMs)) {
    // One name for journal, lock and worker, whatever links lead there and wherever the host goes.
    path_ = std::filesystem::canonical(journal);
}

void Till::RequireDevice() const {
    if (device_.empty()) {
        throw Refusal(Refusal::Why::argument, "the journal was opened without a device");
    }
}

Attempt Till::Find(const std::string& key) {
    auto attempt = journal_.FindAttempt(key);
    if (!attempt) {
        throw Refusal(Refusal::Why::no_key, "no check has the key " + key);
    }
    return *attempt;
}

Attempt Till::Row(std::int64_t id) {
    auto attempt = journal_.FindAttempt(id);
    if (!attempt) {
        throw JournalFailure("the journal: the attempt is gone");
    }
    return *attempt;
}

Attempt Till::Print(const std::string& key, const Check& check, bool again,
                    const Deadline& deadline) {
    RequireDevice();
    Examine(check);
    journal_.WaitUntil(deadline);
    const auto known = [&] {
        const auto kept = journal_.FindCheck(key);
        if (kept && !(*kept == check)) {
            throw Refusal(Refusal::Why::other_content,
                          "the key " + key + " belongs to a check with another content");
        }
        auto attempt = journal_.FindAttempt(key);
        const bool to_print = !attempt || (again && attempt->outcome == Outcome::not_printed);
        return std::make_pair(to_print, std::move(attempt));
    };
    if (const auto [to_print, attempt] = known();
        !to_print && attempt->outcome != Outcome::unknown) {
        return *attempt;
    }
    TillLock lock(path_);
    if (!lock.Take(deadline)) {
        if (const auto attempt = known().second) {
            return StillWorking(*attempt);
        }
        throw Refusal(Refusal::Why::busy, "another process works with the register");
    }
    // Whoever had the lock may have had the same key.
    const auto [to_print, attempt] = known();
    if (!to_print) {
        return attempt->outcome == Outcome::unknown ? Settle(*attempt, lock, deadline) : *attempt;
    }
    const std::int64_t id = journal_.Begin(key, check, device_);
    return Work(Row(id), true, lock, deadline);
}

Attempt Till::Resolve(const std::string& key, const Deadline& deadline) {
    RequireDevice();
    journal_.WaitUntil(deadline);
    if (Attempt attempt = Find(key); attempt.outcome != Outcome::unknown) {
        return attempt;
    }
    TillLock lock(path_);
    if (!lock.Take(deadline)) {
        return StillWorking(Find(key));
    }
    Attempt attempt = Find(key);
    return attempt.outcome == Outcome::unknown ? Settle(attempt, lock, deadline) : attempt;
}

// With the lock taken no worker has the attempt any more.
Attempt Till::Settle(const Attempt& attempt, const TillLock& lock, const Deadline& deadline) {
    Attempt settled = WithoutRegister(attempt);
    return settled.outcome == Outcome::unknown ? Work(attempt, false, lock, deadline) : settled;
}

// What broke off before anything was sent needs no register to be told.
Attempt Till::WithoutRegister(const Attempt& attempt) {
    const auto check = journal_.FindCheck(attempt.key);
    const Evidence evidence = journal_.EvidenceOf(attempt, check.value_or(Check{}));
    const Verdict verdict = Decide(evidence);
    if (verdict.outcome == Outcome::unknown) {
        return attempt;
    }
    journal_.Decided(attempt.id, evidence, verdict, attempt.driver_error);
    return Row(attempt.id);
}

Attempt Till::Work(const Attempt& attempt, bool prints, const TillLock& lock,
                   const Deadline& deadline) {
    WorkerResult result;
    try {
        result =
            RunWorker({prints, path_, device_, attempt.id, lock.descriptor()}, deadline, on_step_);
    } catch (const std::runtime_error& error) {
        WithoutRegister(attempt);
        throw Refusal(Refusal::Why::worker, error.what());
    }
    return Answer(attempt, result);
}

// The worker may have sent lines, so a journal that fails here must not be told as a call that
// printed nothing: only a row that was read back proves that.
Attempt Till::Answer(const Attempt& begun, const WorkerResult& result) {
    std::optional<Attempt> row;
    try {
        row = journal_.FindAttempt(begun.id);
    } catch (const JournalFailure&) {
        row.reset();
    }
    Attempt now = row.value_or(begun);
    if (result.end == WorkerResult::End::working) {
        if (result.step.kind == WorkerStep::reading) {
            now.tape_read = result.step.done;
            now.tape_to_read = result.step.all;
        }
        return StillWorking(now);
    }
    const WorkerReport& report = result.report;
    if (result.end == WorkerResult::End::reported && report.verdict.outcome != Outcome::unknown) {
        if (now.outcome == Outcome::unknown) {
            // Decided, but the journal did not take it: it will be found out anew when it is asked
            // for.
            now.outcome = report.verdict.outcome;
            now.reason = report.verdict.reason;
            now.first_record = report.verdict.first_record;
            now.driver_error = report.driver_error;
        }
        return now;
    }
    if (row && now.stage < Stage::sending && !report.journal_failure.empty()) {
        throw JournalFailure(report.journal_failure);
    }
    if (row && now.outcome == Outcome::unknown) {
        try {
            now = WithoutRegister(now);
        } catch (const JournalFailure&) {
            now = *row;
        }
    }
    return Unread(now);
}

Attempt Till::Recorded(const std::string& key) {
    journal_.WaitUntil(Deadline(kPatienceMs));
    Attempt attempt = Find(key);
    if (attempt.outcome != Outcome::unknown) {
        return attempt;
    }
    TillLock lock(path_);
    if (!lock.Take(Deadline(0))) {
        return StillWorking(attempt);
    }
    // Whoever had the lock may have decided it.
    attempt = Find(key);
    return attempt.outcome == Outcome::unknown ? Unread(WithoutRegister(attempt)) : attempt;
}

Attempt Till::SetByHand(const std::string& key, Outcome outcome) {
    journal_.WaitUntil(Deadline(kPatienceMs));
    TillLock lock(path_);
    if (!lock.Take(Deadline(0))) {
        throw Refusal(Refusal::Why::busy, "another process works with the register");
    }
    Attempt attempt = Find(key);
    if (attempt.outcome != Outcome::unknown) {
        return attempt;
    }
    const auto check = journal_.FindCheck(key);
    const Verdict verdict{
        outcome, outcome == Outcome::printed ? Reason::seen_on_paper : Reason::not_on_paper};
    journal_.Decided(attempt.id, journal_.EvidenceOf(attempt, check.value_or(Check{})), verdict,
                     attempt.driver_error);
    return Row(attempt.id);
}

std::vector<Attempt> Till::All() {
    journal_.WaitUntil(Deadline(kPatienceMs));
    std::vector<Attempt> last;
    std::unordered_map<std::string, std::size_t> places;
    for (Attempt& attempt : journal_.Attempts()) {
        const auto [place, is_new] = places.emplace(attempt.key, last.size());
        if (is_new) {
            last.push_back(std::move(attempt));
        } else {
            last[place->second] = std::move(attempt);
        }
    }
    return last;
}

std::vector<std::string> Till::UndecidedKeys() {
    journal_.WaitUntil(Deadline(kPatienceMs));
    std::vector<std::string> keys;
    for (const Attempt& attempt : journal_.Undecided()) {
        keys.push_back(attempt.key);
    }
    return keys;
}

}  // namespace kkmcheck
