#include "companion/statement.h"

#include "companion/register_session.h"

namespace kkmcheck {

void FailJournal(sqlite3* database) {
    throw JournalFailure(std::string("the journal: ") +
                         (database != nullptr ? sqlite3_errmsg(database) : "out of memory"));
}

Statement::Statement(sqlite3* database, const std::string& sql) : database_(database) {
    Require(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement_, nullptr));
}

Statement::~Statement() {
    sqlite3_finalize(statement_);
}

void Statement::Require(int result) {
    if (result != SQLITE_OK) {
        FailJournal(database_);
    }
}

Statement& Statement::Put(std::int64_t value) {
    Require(sqlite3_bind_int64(statement_, ++place_, value));
    return *this;
}

Statement& Statement::Put(double value) {
    Require(sqlite3_bind_double(statement_, ++place_, value));
    return *this;
}

Statement& Statement::Put(const std::string& text) {
    Require(sqlite3_bind_text(statement_, ++place_, text.data(), static_cast<int>(text.size()),
                              SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::PutBytes(const std::string& bytes) {
    Require(sqlite3_bind_blob(statement_, ++place_, bytes.data(), static_cast<int>(bytes.size()),
                              SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::PutNull() {
    Require(sqlite3_bind_null(statement_, ++place_));
    return *this;
}

bool Statement::Step() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        FailJournal(database_);
    }
    column_ = 0;
    return result == SQLITE_ROW;
}

int Statement::Run() {
    Step();
    return sqlite3_changes(database_);
}

std::int64_t Statement::Number() {
    return sqlite3_column_int64(statement_, column_++);
}

double Statement::Real() {
    return sqlite3_column_double(statement_, column_++);
}

std::optional<std::int64_t> Statement::NumberIfAny() {
    if (sqlite3_column_type(statement_, column_) == SQLITE_NULL) {
        ++column_;
        return std::nullopt;
    }
    return Number();
}

std::string Statement::Text() {
    const void* const bytes = sqlite3_column_blob(statement_, column_);
    const int size = sqlite3_column_bytes(statement_, column_);
    ++column_;
    return bytes == nullptr
               ? std::string()
               : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

}  // namespace kkmcheck
