#include "companion/decision.h"

#include <gtest/gtest.h>

using namespace kkmcheck;

namespace {

TapeRecord Sent(std::int64_t sum, std::int64_t quantity = 1000) {
    TapeRecord record;
    record.sum_kopecks = sum;
    record.quantity_thousandths = quantity;
    record.code = 1;
    record.digits[0] = 0x45;
    record.digits[1] = 0x67;
    record.digits[2] = 0x89;
    record.digits[3] = 0x01;
    return record;
}

TapeRecord Typed(std::int64_t sum) {
    TapeRecord record;
    record.sum_kopecks = sum;
    record.quantity_thousandths = 1000;
    record.code = 77;
    return record;
}

// A check of two lines, 10.00 and 20.00, whose lines were being sent when the host died. Register
// 12345 stood at check 17 and record 40 of tape 4.
Evidence Died() {
    Evidence evidence;
    evidence.stage = Stage::sending;
    evidence.expected = {{1000, 1000, 0}, {2000, 1000, 0}};
    evidence.before = Mark{{12345, 4, 17, 40}, "last"};
    evidence.after = Counters{12345, 4, 17, 40};
    evidence.last_record_now = "last";
    evidence.nothing_open = true;
    return evidence;
}

// The same after so many checks with these records.
Evidence Then(int checks, std::vector<TapeRecord> records) {
    Evidence evidence = Died();
    evidence.after->checks += checks;
    evidence.after->records += static_cast<int>(records.size());
    evidence.records = std::move(records);
    return evidence;
}

Reason ReasonOf(const Evidence& evidence) {
    return Decide(evidence).reason;
}

}  // namespace

TEST(Decision, NothingSentIsNotPrintedWhateverTheRegisterSays) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.stage = Stage::intended;
    EXPECT_EQ(ReasonOf(evidence), Reason::nothing_sent);
    EXPECT_EQ(Decide(evidence).outcome, Outcome::not_printed);
    evidence.stage = Stage::counted;
    EXPECT_EQ(ReasonOf(evidence), Reason::nothing_sent);
}

TEST(Decision, UnmovedCountersAndNothingOpenIsNotPrinted) {
    EXPECT_EQ(ReasonOf(Died()), Reason::counters_unmoved);
    EXPECT_EQ(Decide(Died()).outcome, Outcome::not_printed);
}

TEST(Decision, UnmovedCountersProveNothingWhileACheckMayBeOpen) {
    Evidence evidence = Died();
    evidence.nothing_open = false;
    EXPECT_EQ(ReasonOf(evidence), Reason::check_may_be_open);
    EXPECT_EQ(Decide(evidence).outcome, Outcome::unknown);
}

TEST(Decision, TheChecksOwnRecordsArePrinted) {
    const Verdict verdict = Decide(Then(1, {Sent(1000), Sent(2000)}));
    EXPECT_EQ(verdict.outcome, Outcome::printed);
    EXPECT_EQ(verdict.reason, Reason::on_tape);
    EXPECT_EQ(verdict.first_record, 40);
}

TEST(Decision, PrintedNeedsNoClearedRegister) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.nothing_open = false;
    EXPECT_EQ(Decide(evidence).outcome, Outcome::printed);
}

TEST(Decision, AnUnreadRegisterIsUnknown) {
    Evidence evidence = Died();
    evidence.after.reset();
    EXPECT_EQ(ReasonOf(evidence), Reason::register_unread);
}

TEST(Decision, AnotherRegisterIsUnknown) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.after->serial = 12346;
    EXPECT_EQ(ReasonOf(evidence), Reason::other_register);
}

TEST(Decision, AClosedTapeIsUnknown) {
    Evidence evidence = Died();
    evidence.after = Counters{12345, 5, 0, 0};
    EXPECT_EQ(ReasonOf(evidence), Reason::tape_closed);
}

TEST(Decision, LowerCountersAreAnOlderMemory) {
    for (const Counters after : {Counters{12345, 4, 16, 40}, Counters{12345, 4, 17, 39},
                                 Counters{12345, 3, 90, 90}, Counters{12345, 4, 16, 50}}) {
        Evidence evidence = Died();
        evidence.after = after;
        EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
    }
}

TEST(Decision, CountersThatTheDriverSawMoveDoNotStandStill) {
    Evidence evidence = Died();
    evidence.stage = Stage::returned;
    evidence.driver_result = 1;
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
    evidence.driver_result = 0;
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_unmoved);
}

TEST(Decision, AnotherLastRecordIsAnotherMemory) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.last_record_now = "other";
    EXPECT_EQ(ReasonOf(evidence), Reason::other_memory);
    evidence.last_record_now.clear();
    EXPECT_EQ(ReasonOf(evidence), Reason::tape_unread);
}

TEST(Decision, CountersThatNoChecksMakeAreAtOdds) {
    EXPECT_EQ(ReasonOf(Then(0, {Sent(1000)})), Reason::counters_at_odds);
    EXPECT_EQ(ReasonOf(Then(2, {Sent(1000)})), Reason::counters_at_odds);
    // Three checks, one of them this one: one record for two checks.
    EXPECT_EQ(ReasonOf(Then(3, {Sent(1000), Sent(2000), Typed(5)})), Reason::counters_at_odds);
}

TEST(Decision, AHalfReadTapeIsUnknown) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.records.pop_back();
    EXPECT_EQ(ReasonOf(evidence), Reason::tape_unread);
}

TEST(Decision, OtherSumsQuantitiesOrKindsAreNotThisCheck) {
    EXPECT_EQ(ReasonOf(Then(1, {Sent(1000), Sent(2001)})), Reason::other_lines_on_tape);
    EXPECT_EQ(ReasonOf(Then(1, {Sent(1000, 2000), Sent(2000)})), Reason::other_lines_on_tape);
    EXPECT_EQ(ReasonOf(Then(1, {Sent(2000), Sent(1000)})), Reason::other_lines_on_tape);
    EXPECT_EQ(ReasonOf(Then(1, {Sent(1000)})), Reason::other_lines_on_tape);
    TapeRecord refund = Sent(2000);
    refund.kind = 1;
    EXPECT_EQ(ReasonOf(Then(1, {Sent(1000), refund})), Reason::other_lines_on_tape);
}

TEST(Decision, TheSameCheckTwiceIsUnknown) {
    EXPECT_EQ(ReasonOf(Then(2, {Sent(1000), Sent(2000), Sent(1000), Sent(2000)})),
              Reason::other_lines_on_tape);
}

TEST(Decision, CashiersChecksAloneAreNotThisCheck) {
    EXPECT_EQ(ReasonOf(Then(2, {Typed(1000), Typed(2000), Typed(5)})), Reason::not_on_tape);
    EXPECT_EQ(Decide(Then(1, {Typed(1000), Typed(2000)})).outcome, Outcome::not_printed);
}

TEST(Decision, CashiersChecksProveNothingWhileACheckMayBeOpen) {
    Evidence evidence = Then(1, {Typed(1000)});
    evidence.nothing_open = false;
    EXPECT_EQ(ReasonOf(evidence), Reason::check_may_be_open);
}

TEST(Decision, AChecksOfOneLineEachBehindItDoNotMatter) {
    const Verdict verdict = Decide(Then(3, {Typed(7), Sent(1000), Sent(2000), Typed(5)}));
    EXPECT_EQ(verdict.outcome, Outcome::printed);
    EXPECT_EQ(verdict.first_record, 41);
}

TEST(Decision, LinesTypedIntoTheCheckAreUnknown) {
    EXPECT_EQ(ReasonOf(Then(1, {Sent(1000), Sent(2000), Typed(5)})), Reason::lines_added_by_hand);
    EXPECT_EQ(ReasonOf(Then(1, {Sent(1000), Typed(5), Sent(2000)})), Reason::other_lines_on_tape);
}

TEST(Decision, LongerChecksBehindItMatterUnlessTheDriverHadCounted) {
    Evidence evidence = Then(2, {Sent(1000), Sent(2000), Typed(5), Typed(6)});
    EXPECT_EQ(ReasonOf(evidence), Reason::lines_added_by_hand);
    evidence.stage = Stage::returned;
    evidence.driver_result = 0;
    EXPECT_EQ(ReasonOf(evidence), Reason::lines_added_by_hand);
    evidence.driver_result = 1;
    EXPECT_EQ(ReasonOf(evidence), Reason::on_tape);
}

TEST(Decision, ALineTypedBeforeTheKeyboardWasLockedMayBeInTheCheck) {
    EXPECT_EQ(ReasonOf(Then(2, {Typed(4), Sent(1000), Sent(2000), Typed(5)})),
              Reason::lines_added_by_hand);
}

TEST(Decision, RecordsBetweenSentAndTypedAreDoubtful) {
    TapeRecord record = Sent(1000);
    record.digits[1] = 0x00;
    EXPECT_EQ(ReasonOf(Then(1, {record, Sent(2000)})), Reason::doubtful_records);
    record.digits[2] = 0x00;
    EXPECT_EQ(ReasonOf(Then(1, {record})), Reason::doubtful_records);
    record.digits[3] = 0x00;
    EXPECT_EQ(ReasonOf(Then(1, {record})), Reason::doubtful_records) << "the code is the driver's";
    record.code = 2;
    EXPECT_EQ(ReasonOf(Then(1, {record})), Reason::not_on_tape);
    TapeRecord other_code = Sent(1000);
    other_code.code = 2;
    EXPECT_EQ(ReasonOf(Then(1, {other_code, Sent(2000)})), Reason::doubtful_records);
    TapeRecord taken_back = Sent(1000);
    taken_back.marked = true;
    EXPECT_EQ(ReasonOf(Then(1, {taken_back, Sent(2000)})), Reason::doubtful_records);
}

TEST(Decision, RecordsThatAnotherCheckOfTheJournalMayHaveLeftAreNotToldApart) {
    for (const Claim claim : {Claim{40, 42}, Claim{41, 90}, Claim{30, 41}}) {
        Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
        evidence.claims = {claim};
        EXPECT_EQ(ReasonOf(evidence), Reason::not_told_apart);
        EXPECT_EQ(Decide(evidence).outcome, Outcome::unknown);
    }
}

TEST(Decision, ClaimsElsewhereDoNotCount) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.claims = {{38, 40}, {42, 44}};
    EXPECT_EQ(Decide(evidence).outcome, Outcome::printed);
    Evidence unmoved = Died();
    unmoved.claims = {{38, 90}};
    EXPECT_EQ(ReasonOf(unmoved), Reason::counters_unmoved);
}

// The next attempt found the counters where this one had, and left records like this one's.
TEST(Decision, CountersUnmovedUntilTheNextAttemptProveThatNothingWasPrinted) {
    Evidence evidence = Then(1, {Sent(1000), Sent(2000)});
    evidence.until = evidence.before;
    evidence.claims = {{40, 2'000'000'000}};
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_unmoved);
    EXPECT_EQ(Decide(evidence).outcome, Outcome::not_printed);
    evidence.nothing_open = false;
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_unmoved) << "the next attempt found none open";
    evidence.after.reset();
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_unmoved) << "the register is not needed";
}

TEST(Decision, TheNextAttemptsMarkMustFitThisOnes) {
    Evidence evidence = Died();
    evidence.until = Mark{{12345, 4, 17, 40}, "other"};
    EXPECT_EQ(ReasonOf(evidence), Reason::other_memory);
    evidence.until = Mark{{12345, 4, 17, 39}, "last"};
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
    evidence.until = Mark{{12345, 4, 16, 40}, "last"};
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
    evidence.until = evidence.before;
    evidence.driver_result = 1;
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
}

TEST(Decision, RecordsBehindTheNextAttemptsMarkAreNotThisChecks) {
    Evidence evidence = Then(2, {Typed(5), Sent(1000), Sent(2000)});
    evidence.until = Mark{{12345, 4, 18, 41}, Text(Typed(5))};
    evidence.nothing_open = false;
    EXPECT_EQ(ReasonOf(evidence), Reason::not_on_tape);
    EXPECT_EQ(Decide(evidence).outcome, Outcome::not_printed);
    evidence = Then(2, {Sent(1000), Sent(2000), Sent(1000), Sent(2000)});
    evidence.until = Mark{{12345, 4, 18, 42}, Text(Sent(2000))};
    evidence.claims = {{42, 44}};
    EXPECT_EQ(Decide(evidence).outcome, Outcome::printed);
    EXPECT_EQ(Decide(evidence).first_record, 40);
}

TEST(Decision, ATapeThatIsNotTheNextAttemptsTellsNothing) {
    Evidence evidence = Then(2, {Sent(1000), Sent(2000), Typed(5)});
    evidence.until = Mark{{12345, 4, 18, 42}, Text(Sent(2001))};
    EXPECT_EQ(ReasonOf(evidence), Reason::other_memory);
    evidence.until = Mark{{12345, 4, 18, 44}, Text(Sent(2000))};
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
    evidence.until = Mark{{12345, 4, 20, 42}, Text(Sent(2000))};
    EXPECT_EQ(ReasonOf(evidence), Reason::counters_went_back);
    evidence.until = Mark{{12345, 4, 18, 42}, Text(Sent(2000))};
    evidence.after.reset();
    EXPECT_EQ(ReasonOf(evidence), Reason::register_unread);
}

TEST(Decision, TheTapeIsNeededAsFarAsTheNextAttemptsMark) {
    Evidence evidence = Then(2, {Sent(1000), Sent(2000), Typed(5)});
    evidence.until = Mark{{12345, 4, 18, 42}, Text(Sent(2000))};
    evidence.records.pop_back();
    EXPECT_EQ(ReasonOf(evidence), Reason::on_tape);
    evidence.records.pop_back();
    EXPECT_EQ(ReasonOf(evidence), Reason::tape_unread);
}

TEST(Decision, QuantitiesAboveWhatARecordHoldsAreKeptAsTheLargest) {
    Evidence evidence = Then(1, {Sent(7000, 65535)});
    evidence.expected = {{7000, 70000, 0}};
    EXPECT_EQ(ReasonOf(evidence), Reason::on_tape);
}

TEST(Decision, EveryReasonHasANameAndAdvice) {
    for (int number = 0; number < 33; ++number) {
        const auto reason = static_cast<Reason>(number);
        if (Name(reason) != "none") {
            EXPECT_GT(Advice(reason).size(), 20U) << number;
        }
    }
    EXPECT_EQ(Name(Reason::lines_added_by_hand), "lines_added_by_hand");
    EXPECT_EQ(Name(Reason::not_told_apart), "not_told_apart");
    EXPECT_EQ(Name(static_cast<Reason>(99)), "none");
}

TEST(Decision, RecordsReadAsText) {
    EXPECT_EQ(Text(Sent(258011, 345)),
              "kind 0, payment 0, 2580.11, quantity 0.345, article 1 45678901");
}
