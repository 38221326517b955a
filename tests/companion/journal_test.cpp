#include "companion/journal.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "support/temp_directory.h"

using namespace kkmcheck;

namespace {

class JournalTest : public testing::Test {
  protected:
    std::string Path() const { return folder_.Path("till.journal"); }
    Journal Open() { return Journal(Path(), Journal::Opening::create); }

    static Check Bread() {
        Check check;
        check.lines.push_back({"\x95\xab\xa5\xa1", 25.5, 2, 1});
        check.lines.push_back({"Tea", 60, 0.345, 2});
        check.discount = -5;
        check.cash = 500;
        return check;
    }

    // The first column of the first row, as text.
    std::string Ask(const std::string& sql) const {
        sqlite3* database = nullptr;
        std::string answer;
        sqlite3_open(Path().c_str(), &database);
        const auto take = [](void* to, int, char** values, char**) {
            *static_cast<std::string*>(to) = values[0] != nullptr ? values[0] : "null";
            return 1;
        };
        sqlite3_exec(database, sql.c_str(), take, &answer, nullptr);
        sqlite3_close(database);
        return answer;
    }

    test::TempDirectory folder_;
};

constexpr Counters kBefore{12345, 4, 17, 40};

}  // namespace

TEST_F(JournalTest, KeepsTheCheckToTheLastByte) {
    { Open().Begin("K", Bread(), "/dev/ttyS0"); }
    EXPECT_EQ(Open().FindCheck("K"), Bread());
    EXPECT_EQ(Open().FindCheck("L"), std::nullopt);
}

TEST_F(JournalTest, NamesAreReadableWithTheUsualTools) {
    Open().Begin("K", Bread(), "/dev/ttyS0");
    EXPECT_EQ(Ask("SELECT name FROM lines WHERE number = 1"), "Хлеб");
    EXPECT_EQ(Ask("SELECT total_kopecks FROM checks"), "6812");
}

TEST_F(JournalTest, AnAttemptGoesThroughItsStages) {
    Journal journal = Open();
    const auto id = journal.Begin("K", Bread(), "/dev/ttyS0");
    EXPECT_EQ(journal.FindAttempt("K")->stage, Stage::intended);
    EXPECT_FALSE(journal.FindAttempt("K")->before);
    journal.Counted(id, {kBefore, "last"}, 303);
    EXPECT_EQ(journal.FindAttempt("K")->stage, Stage::counted);
    journal.Sending(id, {{12345, 4, 18, 42}, "later"});
    journal.Returned(id, 0, 32);
    Evidence evidence = journal.EvidenceOf(*journal.FindAttempt("K"), Bread());
    EXPECT_EQ(evidence.stage, Stage::returned);
    EXPECT_EQ(evidence.before->counters, (Counters{12345, 4, 18, 42}));
    EXPECT_EQ(evidence.before->last_record, "later");
    EXPECT_EQ(journal.FindAttempt("K")->firmware, 303);
    EXPECT_EQ(evidence.driver_result, 0);
    EXPECT_EQ(evidence.expected.size(), 2U);
    evidence.after = Counters{12345, 4, 19, 44};
    evidence.records.resize(2);
    journal.Decided(id, evidence, {Outcome::printed, Reason::on_tape, 42}, 32);
    const Attempt attempt = *journal.FindAttempt("K");
    EXPECT_EQ(attempt.outcome, Outcome::printed);
    EXPECT_EQ(attempt.reason, Reason::on_tape);
    EXPECT_EQ(attempt.first_record, 42);
    EXPECT_EQ(attempt.after, evidence.after);
    EXPECT_EQ(attempt.driver_error, 32);
    EXPECT_EQ(attempt.total_kopecks, 6812);
    EXPECT_EQ(attempt.decided_at.size(), 24U);
    EXPECT_EQ(attempt.records_compared,
              "kind 0, payment 0, 0.00, quantity 0.000, article 0 00000000\n"
              "kind 0, payment 0, 0.00, quantity 0.000, article 0 00000000");
}

TEST_F(JournalTest, NoStageIsLeftOutAndNoneIsDoneTwice) {
    Journal journal = Open();
    const auto id = journal.Begin("K", Bread(), "/dev/ttyS0");
    EXPECT_THROW(journal.Sending(id, {kBefore, ""}), JournalFailure);
    EXPECT_THROW(journal.Returned(id, 1, 0), JournalFailure);
    journal.Counted(id, {kBefore, ""}, 303);
    EXPECT_THROW(journal.Counted(id, {kBefore, ""}, 303), JournalFailure);
}

TEST_F(JournalTest, AnAttemptThatWasDecidedGoesNoFurther) {
    Journal journal = Open();
    const auto id = journal.Begin("K", Bread(), "/dev/ttyS0");
    journal.Decided(id, {}, {Outcome::not_printed, Reason::nothing_sent}, 0);
    EXPECT_THROW(journal.Counted(id, {kBefore, ""}, 303), JournalFailure);
    EXPECT_THROW(journal.Decided(id, {}, {Outcome::printed, Reason::on_tape}, 0), JournalFailure);
    EXPECT_EQ(journal.FindAttempt("K")->outcome, Outcome::not_printed);
}

TEST_F(JournalTest, AnUnknownOutcomeIsDecidedAnew) {
    Journal journal = Open();
    const auto id = journal.Begin("K", Bread(), "/dev/ttyS0");
    journal.Decided(id, {}, {Outcome::unknown, Reason::tape_unread}, 0);
    EXPECT_EQ(journal.Undecided().size(), 1U);
    journal.Decided(id, {}, {Outcome::printed, Reason::on_tape, 0}, 0);
    EXPECT_TRUE(journal.Undecided().empty());
}

TEST_F(JournalTest, AttemptsOfAKeyAreNumbered) {
    Journal journal = Open();
    journal.Begin("K", Bread(), "/dev/ttyS0");
    journal.Begin("L", Bread(), "/dev/ttyS0");
    journal.Begin("K", Bread(), "/dev/ttyS1");
    EXPECT_EQ(journal.FindAttempt("K")->number, 2);
    EXPECT_EQ(journal.FindAttempt("K")->device, "/dev/ttyS1");
    EXPECT_EQ(journal.Attempts().size(), 3U);
}

TEST_F(JournalTest, LaterPrintedChecksOfTheSameTapeAreClaimed) {
    Journal journal = Open();
    const auto print = [&](const char* key, const Counters& before, int first) {
        const auto id = journal.Begin(key, Bread(), "/dev/ttyS0");
        journal.Counted(id, {before, ""}, 303);
        journal.Sending(id, {before, ""});
        journal.Decided(id, {}, {Outcome::printed, Reason::on_tape, first}, 0);
        return id;
    };
    const auto id = print("K", kBefore, 40);
    print("A", {12345, 4, 18, 43}, 43);
    print("B", {12345, 5, 0, 0}, 0);
    print("C", {99999, 4, 18, 43}, 43);
    const auto claims = journal.EvidenceOf(*journal.FindAttempt(id), Bread()).claims;
    ASSERT_EQ(claims.size(), 1U);
    EXPECT_EQ(claims[0].first_record, 43);
    EXPECT_EQ(claims[0].end_record, 45);
    EXPECT_TRUE(journal.EvidenceOf(*journal.FindAttempt("A"), Bread()).claims.empty());
}

TEST_F(JournalTest, TheNextMarkOfTheSameTapeBoundsAnAttempt) {
    Journal journal = Open();
    const auto reach = [&](const char* key, const Counters& counters, Stage stage) {
        const auto id = journal.Begin(key, Bread(), "/dev/ttyS0");
        journal.Counted(id, {counters, "counted"}, 303);
        if (stage == Stage::sending) {
            journal.Sending(id, {counters, key});
        }
    };
    const auto of = [&](const char* key) {
        return journal.EvidenceOf(*journal.FindAttempt(key), Bread());
    };
    reach("A", kBefore, Stage::sending);
    EXPECT_FALSE(of("A").until);
    reach("counted only", {12345, 4, 17, 41}, Stage::counted);
    reach("other register", {99999, 4, 17, 41}, Stage::sending);
    EXPECT_FALSE(of("A").until);
    EXPECT_TRUE(of("A").claims.empty());
    reach("B", {12345, 4, 18, 42}, Stage::sending);
    ASSERT_TRUE(of("A").until);
    EXPECT_EQ(of("A").until->counters, (Counters{12345, 4, 18, 42}));
    EXPECT_EQ(of("A").until->last_record, "B");
    ASSERT_EQ(of("A").claims.size(), 1U);
    EXPECT_EQ(of("A").claims[0].first_record, 42);
    EXPECT_EQ(of("A").claims[0].end_record, 2147483647);
    EXPECT_TRUE(of("B").claims.empty());
    // What comes back to this tape behind another one's bounds nothing.
    reach("C", {12345, 5, 0, 0}, Stage::sending);
    reach("D", {12345, 4, 17, 40}, Stage::sending);
    EXPECT_FALSE(of("B").until);
    ASSERT_EQ(of("B").claims.size(), 1U);
    EXPECT_EQ(of("B").claims[0].first_record, 40);
}

TEST_F(JournalTest, TwoProgramsMayHaveItOpen) {
    Journal one = Open();
    Journal other = Open();
    one.Begin("K", Bread(), "/dev/ttyS0");
    other.Begin("L", Bread(), "/dev/ttyS0");
    EXPECT_EQ(one.Attempts().size(), 2U);
}

TEST_F(JournalTest, WritesThroughToTheDisk) {
    // The file's data and the folder's: a rollback journal that comes back undoes a commit.
    EXPECT_EQ(Open().Synchronous(), 3);
    EXPECT_EQ(Journal(Path(), Journal::Opening::existing).Synchronous(), 3);
    EXPECT_EQ(Ask("PRAGMA journal_mode"), "delete");
    EXPECT_EQ(Ask("PRAGMA user_version"), "1");
}

TEST_F(JournalTest, WhatIsNoJournalIsRefused) {
    FILE* const file = fopen(Path().c_str(), "w");
    fputs("Something else altogether, and long enough to be seen as what it is.\n", file);
    fclose(file);
    EXPECT_THROW(Open(), JournalFailure);
    EXPECT_THROW(Journal("/no/such/folder/journal", Journal::Opening::create), JournalFailure);
    EXPECT_THROW(Journal(folder_.Path("none"), Journal::Opening::existing), JournalFailure);
}

TEST_F(JournalTest, AnotherProgramsDatabaseIsRefusedAndLeftAsItWas) {
    Ask("PRAGMA journal_mode = WAL");
    Ask("CREATE TABLE customers (name TEXT)");
    EXPECT_THROW(Open(), JournalFailure);
    EXPECT_EQ(Ask("SELECT count(*) FROM sqlite_master"), "1");
    EXPECT_EQ(Ask("PRAGMA user_version"), "0");
    EXPECT_EQ(Ask("PRAGMA journal_mode"), "wal");
}

TEST_F(JournalTest, AnEmptyFileBecomesAJournalOnlyWhereOneIsMade) {
    fclose(fopen(Path().c_str(), "w"));
    EXPECT_THROW(Journal(Path(), Journal::Opening::existing), JournalFailure);
    EXPECT_EQ(Ask("SELECT count(*) FROM sqlite_master"), "0");
    EXPECT_TRUE(Open().Attempts().empty());
}

TEST_F(JournalTest, AFullDiskIsAFailureThatLeavesTheRestAsItWas) {
    Journal journal = Open();
    journal.Begin("K", Bread(), "/dev/ttyS0");
    const rlimit none{0, RLIM_INFINITY};
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_THROW(journal.Begin("L", Bread(), "/dev/ttyS0"), JournalFailure);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(journal.Attempts().size(), 1U);
    EXPECT_EQ(journal.FindCheck("L"), std::nullopt);
}
