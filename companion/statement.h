// A prepared statement of SQLite.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kkmcheck {

// What the database says went wrong, in a sentence for the host.
[[noreturn]] void FailJournal(sqlite3* database);

// Places and columns are numbered from left to right as they are used, so that the order in the
// text is the order of the calls. Every member throws JournalFailure.
class Statement {
  public:
    Statement(sqlite3* database, const std::string& sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& Put(std::int64_t value);
    Statement& Put(double value);
    Statement& Put(const std::string& text);
    Statement& PutBytes(const std::string& bytes);
    Statement& PutNull();

    // True while there is a row.
    bool Step();
    // For statements without rows; gives how many were changed.
    int Run();

    std::int64_t Number();
    double Real();
    std::optional<std::int64_t> NumberIfAny();
    std::string Text();

  private:
    void Require(int result);

    sqlite3* database_;
    sqlite3_stmt* statement_ = nullptr;
    int place_ = 0;
    int column_ = 0;
};

}  // namespace kkmcheck
