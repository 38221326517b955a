#include "companion/journal.h"

#include <limits>

#include "companion/readable_name.h"
#include "companion/statement.h"

namespace kkmcheck {
namespace {

constexpr int kVersion = 1;

// While another program has the journal.
constexpr int kPauseMs = 5;
constexpr int kPatienceMs = 10000;
// Even behind a deadline: another program's commit takes milliseconds.
constexpr int kLeastMs = 50;

// Every commit is on the disk before the register hears what follows it. A commit is the removal of
// the rollback journal: FULL would leave that to the folder's own time, and a power cut could bring
// the file back and undo the commit; EXTRA waits for the folder too. A check takes seconds; its
// five commits take milliseconds.
constexpr auto kSettings =
    "PRAGMA journal_mode = DELETE; PRAGMA synchronous = EXTRA; PRAGMA foreign_keys = ON;";

constexpr auto kTables = R"(
CREATE TABLE checks (
  key TEXT PRIMARY KEY NOT NULL,
  mode TEXT NOT NULL CHECK (mode IN ('sale', 'return', 'credit')),
  discount INTEGER NOT NULL,
  cash REAL NOT NULL,
  total_kopecks INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE lines (
  key TEXT NOT NULL REFERENCES checks,
  number INTEGER NOT NULL,
  name TEXT NOT NULL,
  price REAL NOT NULL,
  quantity REAL NOT NULL,
  section INTEGER NOT NULL,
  name_bytes BLOB NOT NULL,
  PRIMARY KEY (key, number)
) WITHOUT ROWID;
CREATE TABLE attempts (
  id INTEGER PRIMARY KEY,
  key TEXT NOT NULL REFERENCES checks,
  number INTEGER NOT NULL,
  device TEXT NOT NULL,
  stage TEXT NOT NULL CHECK (stage IN ('intended', 'counted', 'sending', 'returned')),
  outcome TEXT NOT NULL CHECK (outcome IN ('unknown', 'printed', 'not printed')),
  reason TEXT NOT NULL,
  reason_number INTEGER NOT NULL,
  firmware INTEGER,
  serial_number INTEGER,
  tape_before INTEGER, checks_before INTEGER, records_before INTEGER,
  last_record_before TEXT,
  driver_result INTEGER, driver_error INTEGER,
  serial_number_after INTEGER,
  tape_after INTEGER, checks_after INTEGER, records_after INTEGER,
  first_record INTEGER,
  records_compared TEXT,
  intended_at TEXT NOT NULL,
  sending_at TEXT,
  returned_at TEXT,
  decided_at TEXT,
  UNIQUE (key, number)
);
)";

constexpr auto kNow = "strftime('%Y-%m-%dT%H:%M:%fZ', 'now')";

constexpr const char* kStages[] = {"intended", "counted", "sending", "returned"};
constexpr const char* kModes[] = {"sale", "return", "credit"};

template <std::size_t kCount>
int Place(const char* const (&names)[kCount], const std::string& name) {
    for (std::size_t i = 0; i < kCount; ++i) {
        if (name == names[i]) {
            return static_cast<int>(i);
        }
    }
    throw JournalFailure("the journal: \"" + name + "\" is unknown to this version");
}

Outcome OutcomeNamed(const std::string& name) {
    for (const Outcome outcome : {Outcome::unknown, Outcome::printed, Outcome::not_printed}) {
        if (name == Name(outcome)) {
            return outcome;
        }
    }
    throw JournalFailure("the journal: \"" + name + "\" is no outcome");
}

std::optional<Counters> ReadCounters(Statement& row) {
    const auto serial = row.NumberIfAny();
    Counters counters;
    counters.serial = static_cast<int>(serial.value_or(0));
    counters.tape = static_cast<int>(row.Number());
    counters.checks = static_cast<int>(row.Number());
    counters.records = static_cast<int>(row.Number());
    return serial ? std::optional(counters) : std::nullopt;
}

Attempt ReadAttempt(Statement& row) {
    Attempt attempt;
    attempt.id = row.Number();
    attempt.key = row.Text();
    attempt.number = static_cast<int>(row.Number());
    attempt.device = row.Text();
    attempt.stage = static_cast<Stage>(Place(kStages, row.Text()));
    attempt.outcome = OutcomeNamed(row.Text());
    attempt.reason = static_cast<Reason>(row.Number());
    attempt.firmware = static_cast<int>(row.Number());
    const auto before = ReadCounters(row);
    const std::string last = row.Text();
    if (before) {
        attempt.before = Mark{*before, last};
    }
    if (const auto result = row.NumberIfAny()) {
        attempt.driver_result = static_cast<int>(*result);
    }
    attempt.driver_error = static_cast<int>(row.Number());
    attempt.after = ReadCounters(row);
    attempt.first_record = static_cast<int>(row.NumberIfAny().value_or(-1));
    attempt.records_compared = row.Text();
    attempt.intended_at = row.Text();
    attempt.sending_at = row.Text();
    attempt.returned_at = row.Text();
    attempt.decided_at = row.Text();
    attempt.total_kopecks = row.Number();
    attempt.lines = static_cast<int>(row.Number());
    return attempt;
}

// Undone unless it is committed.
class Transaction {
  public:
    explicit Transaction(sqlite3* database) : database_(database) {
        Statement(database, "BEGIN IMMEDIATE").Run();
    }
    ~Transaction() {
        if (database_ != nullptr) {
            sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit() {
        Statement(database_, "COMMIT").Run();
        database_ = nullptr;
    }

  private:
    sqlite3* database_;
};

void PutCounters(Statement& to, const std::optional<Counters>& counters) {
    if (!counters) {
        to.PutNull().PutNull().PutNull().PutNull();
        return;
    }
    for (const int value :
         {counters->serial, counters->tape, counters->checks, counters->records}) {
        to.Put(std::int64_t{value});
    }
}

void RequireOne(int changed) {
    if (changed != 1) {
        throw JournalFailure("the journal: the attempt is not where it was left");
    }
}

std::string RecordsText(const Evidence& evidence) {
    std::string text;
    for (const TapeRecord& record : evidence.records) {
        text += (text.empty() ? "" : "\n") + Text(record);
    }
    return text;
}

}  // namespace

Journal::Journal(const std::string& path, Opening opening, std::optional<Deadline> until)
    : until_(until) {
    const int flags = opening == Opening::create     ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE
                      : opening == Opening::existing ? SQLITE_OPEN_READWRITE
                                                     : SQLITE_OPEN_READONLY;
    try {
        if (sqlite3_open_v2(path.c_str(), &database_, flags, nullptr) != SQLITE_OK) {
            FailJournal(database_);
        }
        sqlite3_busy_handler(database_, &Journal::OnBusy, this);
        Prepare(opening);
    } catch (...) {
        sqlite3_close(database_);
        throw;
    }
}

Journal::~Journal() {
    sqlite3_close(database_);
}

int Journal::OnBusy(void* journal, int waits) {
    const auto& until = static_cast<Journal*>(journal)->until_;
    const int waited = waits * kPauseMs;
    if (waited >= (until ? kLeastMs : kPatienceMs) && (!until || until->Left() == 0)) {
        return 0;
    }
    sqlite3_sleep(kPauseMs);
    return 1;
}

void Journal::Run(const std::string& sql) {
    if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        FailJournal(database_);
    }
}

std::int64_t Journal::Figure(const std::string& question) {
    Statement statement(database_, question);
    statement.Step();
    return statement.Number();
}

void Journal::Prepare(Opening opening) {
    constexpr auto version = "PRAGMA user_version";
    // Another program's database is left as it is, its settings too.
    const bool is_new = opening == Opening::create && Figure(version) == 0 &&
                        Figure("SELECT count(*) FROM sqlite_master") == 0;
    if (!is_new && Figure(version) != kVersion) {
        throw JournalFailure("the journal: it is of another version, or no journal");
    }
    if (opening != Opening::read_only) {
        Run(kSettings);
    }
    if (is_new) {
        Transaction transaction(database_);
        // Two programs may have come to make it at once.
        if (Figure(version) == 0) {
            Run(kTables);
            Run("PRAGMA user_version = " + std::to_string(kVersion));
        }
        transaction.Commit();
    }
}

int Journal::Synchronous() {
    return static_cast<int>(Figure("PRAGMA synchronous"));
}

std::optional<Check> Journal::FindCheck(const std::string& key) {
    Statement head(database_, "SELECT mode, discount, cash FROM checks WHERE key = ?");
    if (!head.Put(key).Step()) {
        return std::nullopt;
    }
    Check check;
    check.mode = static_cast<Mode>(Place(kModes, head.Text()));
    check.discount = static_cast<int>(head.Number());
    check.cash = head.Real();
    Statement lines(database_,
                    "SELECT name_bytes, price, quantity, section FROM lines WHERE key = ? "
                    "ORDER BY number");
    lines.Put(key);
    while (lines.Step()) {
        Line line;
        line.name = lines.Text();
        line.price = lines.Real();
        line.quantity = lines.Real();
        line.section = static_cast<int>(lines.Number());
        check.lines.push_back(line);
    }
    return check;
}

std::vector<Attempt> Journal::Select(const std::string& behind, const std::string* key) {
    Statement rows(database_,
                   "SELECT id, a.key, number, device, stage, outcome, reason_number, firmware, "
                   "serial_number, tape_before, checks_before, records_before, last_record_before, "
                   "driver_result, driver_error, serial_number_after, tape_after, checks_after, "
                   "records_after, first_record, records_compared, intended_at, sending_at, "
                   "returned_at, decided_at, total_kopecks, "
                   "(SELECT count(*) FROM lines WHERE key = a.key) "
                   "FROM attempts a JOIN checks c ON c.key = a.key " +
                       behind);
    if (key != nullptr) {
        rows.Put(*key);
    }
    std::vector<Attempt> attempts;
    while (rows.Step()) {
        attempts.push_back(ReadAttempt(rows));
    }
    return attempts;
}

std::optional<Attempt> Journal::FindAttempt(const std::string& key) {
    const auto found = Select("WHERE a.key = ? ORDER BY number DESC LIMIT 1", &key);
    return found.empty() ? std::nullopt : std::optional(found[0]);
}

std::optional<Attempt> Journal::FindAttempt(std::int64_t id) {
    const auto found = Select("WHERE id = " + std::to_string(id), nullptr);
    return found.empty() ? std::nullopt : std::optional(found[0]);
}

std::vector<Attempt> Journal::Attempts() {
    return Select("ORDER BY id", nullptr);
}

std::vector<Attempt> Journal::Undecided() {
    return Select("WHERE outcome = 'unknown' ORDER BY id", nullptr);
}

void Journal::Insert(const std::string& key, const Check& check) {
    Statement(database_, "INSERT INTO checks VALUES (?, ?, ?, ?, ?)")
        .Put(key)
        .Put(std::string(kModes[static_cast<int>(check.mode)]))
        .Put(std::int64_t{check.discount})
        .Put(check.cash)
        .Put(TotalKopecks(check))
        .Run();
    std::int64_t number = 0;
    for (const Line& line : check.lines) {
        Statement(database_, "INSERT INTO lines VALUES (?, ?, ?, ?, ?, ?, ?)")
            .Put(key)
            .Put(++number)
            .Put(ReadableName(line.name))
            .Put(line.price)
            .Put(line.quantity)
            .Put(std::int64_t{line.section})
            .PutBytes(line.name)
            .Run();
    }
}

std::int64_t Journal::Begin(const std::string& key, const Check& check, const std::string& device) {
    Transaction transaction(database_);
    if (!FindCheck(key)) {
        Insert(key, check);
    }
    Statement(database_, std::string("INSERT INTO attempts (key, number, device, stage, outcome, "
                                     "reason, reason_number, intended_at) "
                                     "SELECT ?1, 1 + count(*), ?2, 'intended', 'unknown', 'none', "
                                     "0, ") +
                             kNow + " FROM attempts WHERE key = ?1")
        .Put(key)
        .Put(device)
        .Run();
    const std::int64_t id = sqlite3_last_insert_rowid(database_);
    transaction.Commit();
    return id;
}

void Journal::Counted(std::int64_t attempt, const Mark& mark, int firmware) {
    Statement row(database_,
                  "UPDATE attempts SET stage = 'counted', serial_number = ?, tape_before = ?, "
                  "checks_before = ?, records_before = ?, last_record_before = ?, firmware = ? "
                  "WHERE id = ? AND stage = 'intended' AND outcome = 'unknown'");
    PutCounters(row, mark.counters);
    RequireOne(row.Put(mark.last_record).Put(std::int64_t{firmware}).Put(attempt).Run());
}

void Journal::Sending(std::int64_t attempt, const Mark& mark) {
    Statement row(database_,
                  std::string("UPDATE attempts SET stage = 'sending', serial_number = ?, "
                              "tape_before = ?, checks_before = ?, records_before = ?, "
                              "last_record_before = ?, sending_at = ") +
                      kNow + " WHERE id = ? AND stage = 'counted' AND outcome = 'unknown'");
    PutCounters(row, mark.counters);
    RequireOne(row.Put(mark.last_record).Put(attempt).Run());
}

void Journal::Returned(std::int64_t attempt, int result, int error) {
    Statement row(database_, std::string("UPDATE attempts SET stage = 'returned', driver_result = "
                                         "?, driver_error = ?, returned_at = ") +
                                 kNow + " WHERE id = ? AND stage = 'sending'");
    RequireOne(row.Put(std::int64_t{result}).Put(std::int64_t{error}).Put(attempt).Run());
}

void Journal::Decided(std::int64_t attempt, const Evidence& evidence, const Verdict& verdict,
                      int driver_error) {
    Statement row(database_,
                  std::string("UPDATE attempts SET outcome = ?, reason = ?, reason_number = ?, "
                              "driver_error = ?, serial_number_after = ?, tape_after = ?, "
                              "checks_after = ?, records_after = ?, first_record = ?, "
                              "records_compared = ?, decided_at = ") +
                      kNow + " WHERE id = ? AND outcome = 'unknown'");
    row.Put(std::string(Name(verdict.outcome)))
        .Put(std::string(Name(verdict.reason)))
        .Put(static_cast<std::int64_t>(verdict.reason))
        .Put(std::int64_t{driver_error});
    PutCounters(row, evidence.after);
    if (verdict.first_record >= 0) {
        row.Put(std::int64_t{verdict.first_record});
    } else {
        row.PutNull();
    }
    RequireOne(row.Put(RecordsText(evidence)).Put(attempt).Run());
}

// An earlier attempt's lines are below this one's mark.
std::vector<Claim> Journal::ClaimsBehind(const Attempt& attempt) {
    std::vector<Claim> claims;
    if (!attempt.before) {
        return claims;
    }
    const auto others =
        Select("WHERE id > " + std::to_string(attempt.id) +
                   " AND serial_number = " + std::to_string(attempt.before->counters.serial) +
                   " AND tape_before = " + std::to_string(attempt.before->counters.tape) +
                   " AND outcome != 'not printed' AND stage IN ('sending', 'returned')",
               nullptr);
    for (const Attempt& other : others) {
        const bool known = other.first_record >= 0;
        claims.push_back(
            {known ? other.first_record : other.before->counters.records,
             known ? other.first_record + other.lines : std::numeric_limits<int>::max()});
    }
    return claims;
}

std::optional<Mark> Journal::MarkBehind(const Attempt& attempt) {
    if (!attempt.before) {
        return std::nullopt;
    }
    const auto next = Select("WHERE id > " + std::to_string(attempt.id) + " AND serial_number = " +
                                 std::to_string(attempt.before->counters.serial) +
                                 " AND stage IN ('sending', 'returned') ORDER BY id LIMIT 1",
                             nullptr);
    const bool same_tape =
        !next.empty() && next[0].before->counters.tape == attempt.before->counters.tape;
    return same_tape ? next[0].before : std::nullopt;
}

Evidence Journal::EvidenceOf(const Attempt& attempt, const Check& check) {
    Evidence evidence;
    evidence.stage = attempt.stage;
    evidence.expected = ExpectedRecords(check);
    evidence.before = attempt.before;
    evidence.driver_result = attempt.driver_result;
    evidence.until = MarkBehind(attempt);
    evidence.claims = ClaimsBehind(attempt);
    return evidence;
}

}  // namespace kkmcheck
