// The journal of a till: a SQLite database of checks and of the attempts to print them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "companion/check.h"
#include "companion/deadline.h"
#include "companion/decision.h"
#include "companion/register_session.h"

struct sqlite3;

namespace kkmcheck {

// One attempt to print a check, as its row tells it.
struct Attempt {
    std::int64_t id = 0;
    std::string key;
    int number = 0;  // of its key, from 1
    std::string device;
    Stage stage = Stage::intended;
    Outcome outcome = Outcome::unknown;
    Reason reason = Reason::none;
    int firmware = 0;
    std::optional<Mark> before;
    std::optional<Counters> after;
    std::optional<int> driver_result;
    int driver_error = 0;
    int first_record = -1;
    std::string records_compared;
    // UTC, "2026-11-21T07:30:00.123Z"; empty while it has not come to that
    std::string intended_at;
    std::string sending_at;
    std::string returned_at;
    std::string decided_at;
    std::int64_t total_kopecks = 0;
    int lines = 0;
    // In no row: how many of how many records a worker that goes on has read; 0 of 0: it does not.
    int tape_read = 0;
    int tape_to_read = 0;
};

class Journal {
  public:
    enum class Opening { create, existing, read_only };

    // Every member throws JournalFailure.
    // While another program has it, each waits until `until`, without one for 10 s.
    Journal(const std::string& path, Opening opening, std::optional<Deadline> until = {});
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    void WaitUntil(const Deadline& deadline) { until_ = deadline; }

    std::optional<Check> FindCheck(const std::string& key);
    // The last one of the key.
    std::optional<Attempt> FindAttempt(const std::string& key);
    std::optional<Attempt> FindAttempt(std::int64_t id);
    // In the order in which they were begun.
    std::vector<Attempt> Attempts();
    std::vector<Attempt> Undecided();

    // The intention to print. The check is kept with the first attempt of its key. Gives the
    // attempt's number in the journal.
    std::int64_t Begin(const std::string& key, const Check& check, const std::string& device);
    // These throw as well when the attempt is not at the stage before.
    void Counted(std::int64_t attempt, const Mark& mark, int firmware);
    void Sending(std::int64_t attempt, const Mark& mark);
    void Returned(std::int64_t attempt, int result, int error);
    // An unknown outcome may be decided anew, any other stands.
    void Decided(std::int64_t attempt, const Evidence& evidence, const Verdict& verdict,
                 int driver_error);

    // How far this connection follows a commit to the disk, in SQLite's numbers: 0 OFF to 3 EXTRA.
    int Synchronous();

    // What is known of an attempt so far.
    Evidence EvidenceOf(const Attempt& attempt, const Check& check);

  private:
    static int OnBusy(void* journal, int waits);
    void Prepare(Opening opening);
    std::int64_t Figure(const std::string& question);
    void Run(const std::string& sql);
    void Insert(const std::string& key, const Check& check);
    std::vector<Attempt> Select(const std::string& behind, const std::string* key);
    std::vector<Claim> ClaimsBehind(const Attempt& attempt);
    // Of the next attempt, on the same tape; nothing when the register had another one by then.
    std::optional<Mark> MarkBehind(const Attempt& attempt);

    sqlite3* database_ = nullptr;
    std::optional<Deadline> until_;
};

// The log of one attempt in a journal.
class JournalLog final : public AttemptLog {
  public:
    JournalLog(Journal& journal, std::int64_t attempt) : journal_(journal), attempt_(attempt) {}
    void Counted(const Mark& mark, int firmware) override {
        journal_.Counted(attempt_, mark, firmware);
    }
    void Sending(const Mark& mark) override { journal_.Sending(attempt_, mark); }
    void Returned(int result, int error) override { journal_.Returned(attempt_, result, error); }

  private:
    Journal& journal_;
    std::int64_t attempt_;
};

}  // namespace kkmcheck
