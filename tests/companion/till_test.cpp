#include "companion/till.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "support/temp_directory.h"

using namespace kkmcheck;

namespace {

// The worker is a script of the test's own; nothing is connected to anything.
class TillTest : public testing::Test {
  protected:
    TillTest() {
        setenv("KKMCHECK_WORKER", folder_.Path("worker").c_str(), 1);
        bread_.lines.push_back({"Bread", 25.5, 2, 1});
    }
    ~TillTest() override { unsetenv("KKMCHECK_WORKER"); }

    void WorkerDoes(const std::string& script) const {
        // Like the real one it leaves the process that was started.
        std::ofstream(folder_.Path("worker"))
            << "#!/bin/sh\n[ -n \"$apart\" ] || { apart=1 \"$0\" \"$@\" & exit; }\n"
            << script << '\n';
        chmod(folder_.Path("worker").c_str(), 0700);
    }
    Till Open() const { return Till(folder_.Path("till.journal"), "/dev/ttyS0"); }
    // As a worker that got so far would have left it.
    void Reached(const std::string& key, Stage stage) const {
        Journal journal(folder_.Path("till.journal"), Journal::Opening::existing);
        const auto id = journal.FindAttempt(key)->id;
        journal.Counted(id, {{12345, 4, 17, 40}, ""}, 303);
        if (stage >= Stage::sending) {
            journal.Sending(id, {{12345, 4, 17, 40}, ""});
        }
    }

    test::TempDirectory folder_;
    Check bread_;
};

constexpr int kAmpleMs = 20000;

Refusal::Why WhyOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Refusal& refusal) {
        return refusal.why();
    }
    ADD_FAILURE() << "it was not refused";
    return Refusal::Why::argument;
}

}  // namespace

TEST_F(TillTest, AWorkerThatCannotBeStartedPrintsNothing) {
    Till till = Open();
    EXPECT_EQ(WhyOf([&] { till.Print("K", bread_, false, Deadline(kAmpleMs)); }),
              Refusal::Why::worker);
    EXPECT_EQ(till.Recorded("K").outcome, Outcome::not_printed);
    EXPECT_EQ(till.Recorded("K").reason, Reason::nothing_sent);
}

TEST_F(TillTest, AWorkerThatDiesBeforeItSendsPrintsNothing) {
    WorkerDoes("kill -9 $$");
    const Attempt attempt = Open().Print("K", bread_, false, Deadline(kAmpleMs));
    EXPECT_EQ(attempt.outcome, Outcome::not_printed);
    EXPECT_EQ(attempt.reason, Reason::nothing_sent);
    EXPECT_EQ(attempt.stage, Stage::intended);
}

TEST_F(TillTest, WhatIsDecidedIsToldWithoutTheLock) {
    WorkerDoes("exit 0");
    Till till = Open();
    till.Print("K", bread_, false, Deadline(kAmpleMs));
    // No lock can be had where a folder has its name.
    ASSERT_EQ(std::remove("till.journal.lock"), 0);
    ASSERT_EQ(mkdir("till.journal.lock", 0700), 0);
    EXPECT_EQ(till.Recorded("K").reason, Reason::nothing_sent);
}

TEST_F(TillTest, AKeyThatWasUsedPrintsNothingMore) {
    WorkerDoes("echo once >>started");
    Till till = Open();
    till.Print("K", bread_, false, Deadline(kAmpleMs));
    till.Print("K", bread_, false, Deadline(kAmpleMs));
    EXPECT_EQ(folder_.Content("started"), "once\n");
    const Attempt again = till.Print("K", bread_, true, Deadline(kAmpleMs));
    EXPECT_EQ(folder_.Content("started"), "once\nonce\n");
    EXPECT_EQ(again.number, 2);
}

TEST_F(TillTest, AnotherContentUnderAUsedKeyIsRefused) {
    WorkerDoes("exit 0");
    Till till = Open();
    till.Print("K", bread_, false, Deadline(kAmpleMs));
    bread_.lines[0].price = 26;
    EXPECT_EQ(WhyOf([&] { till.Print("K", bread_, true, Deadline(kAmpleMs)); }),
              Refusal::Why::other_content);
}

TEST_F(TillTest, BehindTheDeadlineTheHostLearnsThatItIsUnknown) {
    WorkerDoes("echo $4 >attempt; sleep 20 & echo $! >pid; wait");
    Till till = Open();
    const Attempt attempt = till.Print("K", bread_, false, Deadline(300));
    EXPECT_EQ(attempt.outcome, Outcome::unknown);
    EXPECT_EQ(attempt.reason, Reason::still_working);
    // The worker lives on and keeps the till.
    EXPECT_EQ(till.Resolve("K", Deadline(50)).reason, Reason::still_working);
    EXPECT_EQ(till.Recorded("K").reason, Reason::still_working);
    EXPECT_EQ(WhyOf([&] { till.Print("L", bread_, false, Deadline(50)); }), Refusal::Why::busy);
    EXPECT_EQ(WhyOf([&] { till.Recorded("L"); }), Refusal::Why::no_key);
    EXPECT_EQ(WhyOf([&] { till.SetByHand("K", Outcome::printed); }), Refusal::Why::busy);
    EXPECT_EQ(std::system("kill $(cat pid)"), 0);
    EXPECT_EQ(till.Resolve("K", Deadline(kAmpleMs)).reason, Reason::nothing_sent);
}

TEST_F(TillTest, StepsAreToldAndHowFarATapeIsRead) {
    WorkerDoes(
        "echo step 1 0 0; echo step 4 32 100; echo step 4 64 100; sleep 20 & echo $! >pid; wait");
    Till till = Open();
    std::string told;
    till.OnStep([&](const WorkerStep& step) { told += StepText(step); });
    const Attempt attempt = till.Print("K", bread_, false, Deadline(600));
    EXPECT_EQ(told, "step 1 0 0\nstep 4 32 100\nstep 4 64 100\n");
    EXPECT_EQ(attempt.reason, Reason::still_working);
    EXPECT_EQ(attempt.tape_read, 64);
    EXPECT_EQ(attempt.tape_to_read, 100);
    EXPECT_EQ(std::system("kill $(cat pid)"), 0);
}

TEST_F(TillTest, AReportIsNotLostInAGoodByeWithoutEnd) {
    WorkerDoes("echo '1 1 40 0 '; sleep 20 & echo $! >pid; wait");
    const Attempt attempt = Open().Print("K", bread_, false, Deadline(600));
    EXPECT_EQ(attempt.outcome, Outcome::printed);
    EXPECT_EQ(attempt.first_record, 40);
    EXPECT_EQ(std::system("kill $(cat pid)"), 0);
}

TEST_F(TillTest, WhatBrokeOffBeforeItsFirstLineNeedsNoRegister) {
    WorkerDoes("exit 0");
    Till till = Open();
    {
        Journal journal(folder_.Path("till.journal"), Journal::Opening::existing);
        journal.Begin("K", bread_, "/dev/ttyS0");
    }
    Reached("K", Stage::counted);
    WorkerDoes("echo started >started");
    EXPECT_EQ(till.Print("K", bread_, false, Deadline(kAmpleMs)).reason, Reason::nothing_sent);
    EXPECT_FALSE(folder_.Has("started"));
}

TEST_F(TillTest, WhatBrokeOffBehindItIsResolvedAndNotPrintedAnew) {
    Till till = Open();
    {
        Journal journal(folder_.Path("till.journal"), Journal::Opening::existing);
        journal.Begin("K", bread_, "/dev/ttyS0");
    }
    Reached("K", Stage::sending);
    EXPECT_EQ(till.Recorded("K").outcome, Outcome::unknown);
    EXPECT_EQ(till.Recorded("K").reason, Reason::register_unread);
    WorkerDoes("echo $1 >>started; echo '1 1 40 0 the disk is full'");
    const Attempt attempt = till.Print("K", bread_, true, Deadline(kAmpleMs));
    EXPECT_EQ(folder_.Content("started"), "resolve\n");
    EXPECT_EQ(attempt.outcome, Outcome::printed);
    EXPECT_EQ(attempt.first_record, 40);
    EXPECT_EQ(till.Recorded("K").outcome, Outcome::unknown) << "the journal did not take it";
}

TEST_F(TillTest, LinksLeadToOneLock) {
    Open();
    ASSERT_EQ(symlink(folder_.Path("till.journal").c_str(), folder_.Path("link").c_str()), 0);
    TillLock held(folder_.Path("till.journal"));
    ASSERT_TRUE(held.Take(Deadline(0)));
    Till through_link(folder_.Path("link"), "/dev/ttyS0");
    EXPECT_EQ(WhyOf([&] { through_link.Print("K", bread_, false, Deadline(1)); }),
              Refusal::Why::busy);
}

TEST_F(TillTest, LockFileThatWasRemovedIsMadeAnew) {
    TillLock first(folder_.Path("till.journal"));
    TillLock second(folder_.Path("till.journal"));
    ASSERT_EQ(unlink(folder_.Path("till.journal.lock").c_str()), 0);
    EXPECT_TRUE(second.Take(Deadline(0)));
    EXPECT_FALSE(first.Take(Deadline(1)));
}

TEST_F(TillTest, JournalThatIsGoneIsNotBegunAnewWhileItsLockIsThere) {
    WorkerDoes("exit 0");
    Open().Print("K", bread_, false, Deadline(kAmpleMs));
    ASSERT_EQ(unlink(folder_.Path("till.journal").c_str()), 0);
    EXPECT_THROW(Open(), JournalFailure);
    ASSERT_EQ(unlink(folder_.Path("till.journal.lock").c_str()), 0);
    EXPECT_NO_THROW(Open());
}

// Whatever of its first descriptors the host has closed.
TEST_F(TillTest, WorkerHasTheLockAndItsOwnFilesOnly) {
    WorkerDoes("readlink /proc/$$/fd/3 >lock");
    Till till = Open();
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    till.Print("K", bread_, false, Deadline(kAmpleMs));
    dup2(input, STDIN_FILENO);
    close(input);
    EXPECT_EQ(folder_.Content("lock"), folder_.Path("till.journal.lock") + "\n");
}

TEST_F(TillTest, ABusyJournalKeepsNoCallBeyondItsDeadline) {
    Till till = Open();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open("till.journal", &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    const Deadline ample(8000);
    EXPECT_THROW(till.Print("K", bread_, false, Deadline(20)), JournalFailure);
    EXPECT_THROW(till.Resolve("K", Deadline(20)), JournalFailure);
    EXPECT_THROW(Open(), JournalFailure);
    EXPECT_GT(ample.Left(), 0);
    sqlite3_close(other);
    EXPECT_EQ(WhyOf([&] { till.Resolve("K", Deadline(20)); }), Refusal::Why::no_key);
}

// Whatever becomes of the journal's file while the worker prints.
TEST_F(TillTest, AJournalLostBehindTheWorkerIsNotToldAsNothingPrinted) {
    for (const std::string loss : {"cat before >$2", ": >$2", "echo No journal at all >$2"}) {
        std::remove("till.journal");
        std::remove("till.journal.lock");
        Till till = Open();
        ASSERT_EQ(std::system("cp till.journal before"), 0);
        WorkerDoes(loss + "; echo '1 1 40 32 the journal: the attempt is gone'");
        const Attempt printed = till.Print("K", bread_, false, Deadline(kAmpleMs));
        EXPECT_EQ(printed.outcome, Outcome::printed) << loss;
        EXPECT_EQ(printed.first_record, 40) << loss;
        EXPECT_EQ(printed.driver_error, 32) << loss;
    }
}

TEST_F(TillTest, WithoutAJournalAndAReportTheHostLearnsThatItIsUnknown) {
    for (const std::string end : {"kill -9 $$", "echo '0 0 -1 0 the journal: disk I/O error'"}) {
        std::remove("till.journal");
        std::remove("till.journal.lock");
        Till till = Open();
        WorkerDoes(": >$2; " + end);
        const Attempt attempt = till.Print("K", bread_, false, Deadline(kAmpleMs));
        EXPECT_EQ(attempt.key, "K") << end;
        EXPECT_EQ(attempt.outcome, Outcome::unknown) << end;
        EXPECT_EQ(attempt.reason, Reason::register_unread) << end;
    }
}

TEST_F(TillTest, TheListHasTheLastAttemptOfEachKeyInTheOrderOfTheFirst) {
    WorkerDoes("exit 0");
    Till till = Open();
    till.Print("L", bread_, false, Deadline(kAmpleMs));
    till.Print("K", bread_, false, Deadline(kAmpleMs));
    till.Print("L", bread_, true, Deadline(kAmpleMs));
    const auto all = till.All();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].key, "L");
    EXPECT_EQ(all[0].number, 2);
    EXPECT_EQ(all[1].key, "K");
}

TEST_F(TillTest, APersonMayDecideWhatIsUnknown) {
    Till till = Open();
    {
        Journal journal(folder_.Path("till.journal"), Journal::Opening::existing);
        journal.Begin("K", bread_, "/dev/ttyS0");
    }
    Reached("K", Stage::sending);
    EXPECT_EQ(till.SetByHand("K", Outcome::printed).reason, Reason::seen_on_paper);
    EXPECT_EQ(till.SetByHand("K", Outcome::not_printed).outcome, Outcome::printed);
}

TEST_F(TillTest, ReportsPassWhole) {
    WorkerReport report;
    report.verdict = {Outcome::printed, Reason::on_tape, 40};
    report.driver_error = 32;
    report.journal_failure = "the journal: disk is full";
    const auto read = ParseReport(ReportText(report));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->verdict.outcome, Outcome::printed);
    EXPECT_EQ(read->verdict.first_record, 40);
    EXPECT_EQ(read->driver_error, 32);
    EXPECT_EQ(read->journal_failure, "the journal: disk is full");
    EXPECT_FALSE(ParseReport("1 1 40"));
    EXPECT_FALSE(ParseReport("x\n"));
    EXPECT_FALSE(ParseReport(StepText({WorkerStep::reading, 1, 2})));
    EXPECT_FALSE(ParseStep(ReportText(report)));
    EXPECT_FALSE(ParseStep("step 5 0 0\n"));
}
