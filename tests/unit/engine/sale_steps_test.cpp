#include <stdexcept>

#include "unit/engine/engine_test.h"

namespace test {
namespace {

sale Bread() {
    sale line;
    line.title = "Bread";
    line.section = 3;
    line.code = 1;
    line.barcode = "1234567890123";
    line.price = 1999;
    line.count = 2;
    return line;
}

const std::string kBreadBlock =
    "21 42 72 65 61 64 20 20 20 20 20 20 20 20 20 20 31 32 33 34 35 36 37 38 39 30 31 32 33 00 00 "
    "00 01 09 09 09 03 00 00 01 00 02";
const std::string kBreadTitle = "27 04 00 42 72 65 61 64 20 20 20 20 20 20 20 20 20 20 20 20 20";

class SaleStepsTest : public EngineTest {
  protected:
    explicit SaleStepsTest(kkm_ver version = kkm_ver_303) : EngineTest(version) {
        line.Always(request::kStatus, answer::SaleAdd());
    }

    // What the reads of the sale number find, one after another.
    void SaleNumbers(const std::vector<int>& numbers) {
        for (const int number : numbers) {
            line.Answer(request::kRam, answer::Ram(static_cast<unsigned char>(number)));
        }
    }

    int CodeOfSale() {
        return VeskCodeOf([&] { driver.TrySendSale(Bread()); });
    }
};

class SaleStepsAt301Test : public SaleStepsTest {
  protected:
    SaleStepsAt301Test() : SaleStepsTest(kkm_ver_301) {}
};

TEST_F(SaleStepsTest, LineIsSentConfirmedAndNamed) {
    TellStory();
    SaleNumbers({4, 5});
    driver.TrySendSale(Bread());
    EXPECT_EQ(Story(),
              "| Info: TrySendSale ;title = Bread ;barcode = 1234567890123; code = 1; count = 2; "
              "price = 1999; section = 3\\n\n"
              "| Info: TryReadSaleNumber\\n\n"
              "> 04 15 95 01\n"
              "| Info: resulr TryReadSaleNumber = 4\\n\n"
              "| Info: TrySendSale SaleNumberBefore = 4\\n\n"
              "| Info: TrySendSale send 1\\n\n"
              "> " +
                  kBreadBlock +
                  "\n"
                  "| Info: sendSaleInfo -  ok\\n\n"
                  "> 20\n"
                  "| Info: GetStatusInfo -  ok\\n\n"
                  "> 7F\n"
                  "| Info: resetStatus -  ok\\n\n"
                  "  100 ms\n"
                  "| Info: TryReadSaleNumber\\n\n"
                  "> 04 15 95 01\n"
                  "| Info: resulr TryReadSaleNumber = 5\\n\n"
                  "| Info: TrySendSale SaleNumberAfter = 5\\n\n"
                  "| Info: TrySendSaleTitle Breadnumber sale 5\\n\n"
                  "| Info: line number   0 'Bread'\\n\n"
                  "> " +
                  kBreadTitle +
                  "\n"
                  "| Info: TrySendSaleTitle-ok\\n\n"
                  "| Info:TrySendSale-ok\\n\n");
}

TEST_F(SaleStepsTest, TraceShowsTheFieldsAsNumbers) {
    SaleNumbers({0, 1});
    sale line_item;
    line_item.title = "T";
    line_item.barcode = "B";
    line_item.code = 65535;
    line_item.count = 1.234F;
    line_item.price = 4294967295U;
    line_item.section = 65;  // as a character it would be A
    driver.TrySendSale(line_item);
    EXPECT_EQ(world.Traces()[0].text,
              "Info: TrySendSale ;title = T ;barcode = B; code = 65535; count = 1.234; "
              "price = 4294967295; section = 65\n");
}

TEST_F(SaleStepsTest, AnswerC3IsAsGoodAsC1) {
    line.Answer(request::kSale, Frame(0xC3, {0}));
    SaleNumbers({4, 5});
    EXPECT_EQ(CodeOfSale(), 0);
    EXPECT_EQ(Count("21"), 1);
}

TEST_F(SaleStepsAt301Test, NoTitleIsSentAndTheTraceSaysOkAllTheSame) {
    SaleNumbers({4, 5});
    driver.TrySendSale(Bread());
    EXPECT_EQ(Steps(), (Lines{"04 15 94 01", kBreadBlock, "20", "7F", "sleep 100", "04 15 94 01"}));
    EXPECT_EQ(TracedFrom("Info: TrySendSaleTitle"),
              "Info: TrySendSaleTitle Breadnumber sale 5\n"
              "Info: TrySendSaleTitle-ok\n"
              "Info:TrySendSale-ok\n");
}

class SaleLimitTest : public SaleStepsTest, public testing::WithParamInterface<RetryCase> {};

// The command is answered well and the counter does not move.
TEST_P(SaleLimitTest, IsKept) {
    SaleNumbers({4});
    SaleNumbers(std::vector<int>(static_cast<std::size_t>(GetParam().failures), 4));
    SaleNumbers({5});
    EXPECT_EQ(CodeOfSale(), GetParam().succeeds ? 0 : 2);
    const std::string sent = "Info: TrySendSale send ";
    std::string expected;
    for (std::size_t attempt = 1; attempt <= GetParam().Attempts(); ++attempt) {
        const std::string number =
            attempt <= static_cast<std::size_t>(GetParam().failures) ? "4\n" : "5\n";
        expected += sent + std::to_string(attempt) +
                    "\nInfo: sendSaleInfo -  ok\nInfo: GetStatusInfo -  ok\n"
                    "Info: resetStatus -  ok\nInfo: TryReadSaleNumber\n"
                    "Info: resulr TryReadSaleNumber = " +
                    number + "Info: TrySendSale SaleNumberAfter = " + number;
    }
    EXPECT_EQ(TracedFrom(sent), expected + GetParam().behind);
    EXPECT_EQ(Count("21"), static_cast<long>(GetParam().Attempts()));
    EXPECT_EQ(Count("27"), GetParam().succeeds ? 1 : 0);
}

const std::string kNamed =
    "Info: TrySendSaleTitle Breadnumber sale 5\nInfo: line number   0 'Bread'\n"
    "Info: TrySendSaleTitle-ok\nInfo:TrySendSale-ok\n";
const std::string kSaleGivenUp = "Error: TrySendSale in  send 5\n";

INSTANTIATE_TEST_SUITE_P(
    KeepsTwentiethSuccessAsFailure, SaleLimitTest,
    testing::Values(RetryCase{0, true, kNamed},
                    RetryCase{1, true, "Warning: 2try send for sale 5\n" + kNamed},
                    RetryCase{18, true, "Warning: 19try send for sale 5\n" + kNamed},
                    RetryCase{19, false, kSaleGivenUp}, RetryCase{20, false, kSaleGivenUp}),
    RetryCase::Name);

TEST_F(SaleStepsTest, AttemptsFollowWithoutAPause) {
    SaleNumbers({4, 4, 5});
    driver.TrySendSale(Bread());
    EXPECT_EQ(Steps(), (Lines{"04 15 95 01", kBreadBlock, "20", "7F", "sleep 100", "04 15 95 01",
                              kBreadBlock, "20", "7F", "sleep 100", "04 15 95 01", kBreadTitle}));
}

// How an attempt fails, what that traces, and how far the attempt comes.
struct BrokenAttempt {
    std::string name;
    unsigned char command;
    Bytes reply;
    std::string traced;
    Lines steps;
};

class BrokenAttemptTest : public SaleStepsTest,
                          public testing::WithParamInterface<BrokenAttempt> {};

TEST_P(BrokenAttemptTest, IsFollowedByTheNext) {
    line.Answer(GetParam().command, GetParam().reply);
    SaleNumbers({4, 4, 5});
    EXPECT_EQ(CodeOfSale(), 0);
    Lines steps{"04 15 95 01"};
    steps.insert(steps.end(), GetParam().steps.begin(), GetParam().steps.end());
    const Lines rest{"04 15 95 01", kBreadBlock,   "20",       "7F",
                     "sleep 100",   "04 15 95 01", kBreadTitle};
    steps.insert(steps.end(), rest.begin(), rest.end());
    EXPECT_EQ(Steps(), steps);
    const std::string first = "Info: TrySendSale send 1\n";
    const std::string from_first = TracedFrom(first);
    EXPECT_EQ(from_first.substr(0, from_first.find("Info: TryReadSaleNumber")),
              first + GetParam().traced);
}

// The register took the line, whatever became of the answer.
TEST_P(BrokenAttemptTest, IsEnoughWhenTheCounterMoved) {
    line.Answer(GetParam().command, GetParam().reply);
    SaleNumbers({4, 5});
    EXPECT_EQ(CodeOfSale(), 0);
    EXPECT_EQ(Count("21"), 1);
    EXPECT_EQ(Count("27"), 1);
    EXPECT_EQ(Traced().find("Warning"), std::string::npos);
}

const std::string kSent = "Info: sendSaleInfo -  ok\n";
const std::string kStatusRead = "Info: GetStatusInfo -  ok\n";
const std::string kUnknownError = "Error: ???\n";

INSTANTIATE_TEST_SUITE_P(
    SaleStep, BrokenAttemptTest,
    testing::Values(
        BrokenAttempt{"WrongSaleAnswer", 0x21, Frame(0xC2), "", {kBreadBlock}},
        BrokenAttempt{"SilentSale", 0x21, {}, kUnknownError, {kBreadBlock}},
        BrokenAttempt{"SilentStatus", 0x20, {}, kSent + kUnknownError, {kBreadBlock, "20"}},
        BrokenAttempt{"WrongState",
                      0x20,
                      Frame(0xA7),
                      kSent + kStatusRead + "Error: ks_saleadd != status.command\n" + kUnknownError,
                      {kBreadBlock, "20"}},
        BrokenAttempt{
            "WrongReset", 0x7F, Frame(0x91), kSent + kStatusRead, {kBreadBlock, "20", "7F"}},
        BrokenAttempt{"SilentReset",
                      0x7F,
                      {},
                      kSent + kStatusRead + kUnknownError,
                      {kBreadBlock, "20", "7F"}}),
    [](const auto& info) { return info.param.name; });

TEST_F(SaleStepsTest, CounterThatMovedByTwoIsNoSuccess) {
    SaleNumbers({4});
    line.Always(request::kRam, answer::Ram(6));
    EXPECT_EQ(CodeOfSale(), 2);
    EXPECT_EQ(Count("21"), 20);
    EXPECT_EQ(TracedFrom("Error: TrySendSale"), "Error: TrySendSale in  send 5\n");
}

TEST_F(SaleStepsTest, KeepsCounterWithoutWrap) {
    SaleNumbers({255});
    line.Always(request::kRam, answer::Ram(0));
    EXPECT_EQ(CodeOfSale(), 2);
    EXPECT_EQ(Count("21"), 20);
    EXPECT_EQ(TracedFrom("Error: TrySendSale"), "Error: TrySendSale in  send 256\n");
}

TEST_F(SaleStepsTest, LastCounterIs255) {
    SaleNumbers({254, 255});
    EXPECT_EQ(CodeOfSale(), 0);
}

TEST_F(SaleStepsTest, RefusedMoneyIsAPriceErrorAtOnce) {
    line.Answer(request::kSale, Frame(0xC1, {1}));
    SaleNumbers({4, 5});
    EXPECT_EQ(CodeOfSale(), 14);
    EXPECT_EQ(Steps(), (Lines{"04 15 95 01", kBreadBlock}));
    EXPECT_EQ(TracedFrom("Info: TrySendSale send"),
              "Info: TrySendSale send 1\nError: e.m_code == errMoney\n");
}

TEST_F(SaleStepsTest, RefusedMoneyAtTheStatusReadIsAPriceErrorToo) {
    line.Answer(request::kStatus, Throwing(ETarvo(&driver, 6, "")));
    SaleNumbers({4, 5});
    EXPECT_EQ(CodeOfSale(), 14);
    EXPECT_EQ(Steps(), (Lines{"04 15 95 01", kBreadBlock, "20"}));
}

TEST_F(SaleStepsTest, RefusedMoneyAtALaterAttemptEndsTheStep) {
    line.Answer(request::kSale, Frame(0xC1, {0})).Answer(request::kSale, Frame(0xC1, {1}));
    SaleNumbers({4, 4});
    EXPECT_EQ(CodeOfSale(), 14);
    EXPECT_EQ(Count("21"), 2);
}

TEST_F(SaleStepsTest, UnreadableNumberBeforeSendsNothing) {
    EXPECT_EQ(CodeOfSale(), 2);
    EXPECT_EQ(Count("04"), 20);
    EXPECT_EQ(Count("21"), 0);
    EXPECT_EQ(TracedFrom("Error:"), "Error: TryReadSaleNumber (count)");
}

TEST_F(SaleStepsTest, UnreadableNumberAfterLeavesTheStep) {
    SaleNumbers({4});
    EXPECT_EQ(CodeOfSale(), 2);
    EXPECT_EQ(Count("21"), 1);
    EXPECT_EQ(TracedFrom("Error:"), "Error: TryReadSaleNumber (count)");
}

TEST_F(SaleStepsTest, RefusedTitleFailsTheSale) {
    line.Always(request::kTitle, Frame(0x98));
    SaleNumbers({4, 5});
    EXPECT_EQ(CodeOfSale(), 2);
    EXPECT_EQ(Traced().find("Info:TrySendSale-ok"), std::string::npos);
}

// --- titles

// Letters from a on, so that every character of a piece shows where it comes from.
std::string Letters(std::size_t from, std::size_t to) {
    std::string text;
    for (std::size_t i = from; i < to; ++i) {
        text += static_cast<char>('0' + i);
    }
    return text;
}

std::string PieceRequest(const std::string& head, const std::string& piece) {
    std::string padded = piece;
    padded.resize(18, ' ');
    return head + " " + Hex(Bytes(padded.begin(), padded.end()));
}

struct Pieces {
    std::size_t length;
    std::vector<std::size_t> sizes;
};

class TitlePiecesTest : public SaleStepsTest, public testing::WithParamInterface<Pieces> {};

TEST_P(TitlePiecesTest, AreEighteenCharactersEach) {
    const std::string title = Letters(0, GetParam().length);
    driver.TrySendSaleTitle(1, title);
    Lines requests;
    std::string traced = "Info: TrySendSaleTitle " + title + "number sale 1\n";
    for (std::size_t i = 0; i < GetParam().sizes.size(); ++i) {
        const std::string piece = Letters(18 * i, 18 * i + GetParam().sizes[i]);
        requests.push_back(PieceRequest("27 00 0" + std::to_string(i), piece));
        traced += "Info: line number   " + std::to_string(i) + " '" + piece + "'\n";
    }
    EXPECT_EQ(Steps(), requests);
    EXPECT_EQ(Traced(), traced + "Info: TrySendSaleTitle-ok\n");
}

INSTANTIATE_TEST_SUITE_P(ByLength, TitlePiecesTest,
                         testing::Values(Pieces{0, {}}, Pieces{1, {1}}, Pieces{18, {18}},
                                         Pieces{19, {18, 1}}, Pieces{36, {18, 18}},
                                         Pieces{54, {18, 18, 18}}, Pieces{55, {18, 18, 18, 1}},
                                         Pieces{72, {18, 18, 18, 18}}, Pieces{73, {18, 18, 18, 18}},
                                         Pieces{80, {18, 18, 18, 18}}),
                         [](const auto& info) { return "Of" + std::to_string(info.param.length); });

TEST_F(SaleStepsTest, TitleIsCountedAndCutInBytes) {
    const std::string title = "\xD0\xA5\xD0\xBB\xD0\xB5\xD0\xB1\x8F";
    driver.TrySendSaleTitle(1, title);
    EXPECT_EQ(Steps(), (Lines{"27 00 00 D0 A5 D0 BB D0 B5 D0 B1 8F 20 20 20 20 20 20 20 20 20"}));
}

TEST_F(SaleStepsTest, TitleGoesToTheSaleIndexBelowTheNumber) {
    for (const auto& [number, head] : std::vector<std::pair<int, std::string>>{
             {1, "27 00 00"}, {0, "27 FF 00"}, {255, "27 FE 00"}, {256, "27 FF 00"}}) {
        world.ClearLog();
        driver.TrySendSaleTitle(number, "x");
        EXPECT_EQ(Steps(), (Lines{PieceRequest(head, "x")})) << number;
    }
}

TEST_F(SaleStepsTest, KeepsTitlesForFirmwareAbove301) {
    for (const auto& [version, count] : std::vector<std::pair<int, long>>{
             {0, 0}, {300, 0}, {301, 0}, {302, 1}, {303, 1}, {310, 1}, {400, 1}}) {
        driver.setVersion(static_cast<kkm_ver>(version));
        world.ClearLog();
        world.ClearTraces();
        driver.TrySendSaleTitle(1, "x");
        EXPECT_EQ(Count("27"), count) << version;
        EXPECT_EQ(TracedFrom("Info: TrySendSaleTitle-ok"), "Info: TrySendSaleTitle-ok\n");
    }
}

TEST_F(SaleStepsTest, TitleStartsAgainWithItsFirstPiece) {
    line.Answer(request::kTitle, Frame(0x97)).Answer(request::kTitle, Silence());
    driver.TrySendSaleTitle(5, Letters(0, 20));
    const std::string first = PieceRequest("27 04 00", Letters(0, 18));
    const std::string second = PieceRequest("27 04 01", Letters(18, 20));
    EXPECT_EQ(Steps(), (Lines{first, second, first, second}));
    const std::string pieces = "Info: line number   0 '" + Letters(0, 18) +
                               "'\nInfo: line number   1 '" + Letters(18, 20) + "'\n";
    EXPECT_EQ(TracedFrom("Info: line"), pieces + "Error: ???\n" + pieces +
                                            "Warning: 2 lcount 2 sale number 5\n"
                                            "Info: TrySendSaleTitle-ok\n");
}

TEST_F(SaleStepsTest, GivenUpTitleTellsThePieceReached) {
    for (int attempt = 0; attempt < 20; ++attempt) {
        line.Answer(request::kTitle, Frame(0x97))
            .Answer(request::kTitle, Frame(0x97))
            .Answer(request::kTitle, Frame(0x98));
    }
    EXPECT_EQ(VeskCodeOf([&] { driver.TrySendSaleTitle(5, Letters(0, 80)); }), 2);
    EXPECT_EQ(TracedFrom("Error: TrySend"), "Error: TrySendSaleTitle  try  2 sale number 5\n");
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

class TitleLimitTest : public SaleStepsTest, public testing::WithParamInterface<RetryCase> {};

TEST_P(TitleLimitTest, IsKept) {
    // Whatever is thrown counts, the engine's own errors and money included.
    const Reply bad[] = {Frame(0x98), Silence(), Throwing(ETarvo(&driver, 6, "")),
                         Throwing(ETarvoVesk(echNoCash)), Throwing(std::runtime_error(""))};
    for (int i = 0; i < GetParam().failures; ++i) {
        line.Answer(request::kTitle, bad[i % 5]);
    }
    EXPECT_EQ(VeskCodeOf([&] { driver.TrySendSaleTitle(5, "x"); }), GetParam().succeeds ? 0 : 2);
    const std::string piece = "Info: line number   0 'x'\n";
    const int failures = std::min(GetParam().failures, 20);
    EXPECT_EQ(Traced(), "Info: TrySendSaleTitle xnumber sale 5\n" +
                            Repeat(failures, piece + "Error: ???\n") +
                            (failures < 20 ? piece : "") + GetParam().behind);
    EXPECT_EQ(Steps(), Lines(GetParam().Attempts(), PieceRequest("27 04 00", "x")));
}

const std::string kTitleOk = "Info: TrySendSaleTitle-ok\n";

INSTANTIATE_TEST_SUITE_P(
    KeepsTwentiethSuccessAsFailure, TitleLimitTest,
    testing::Values(RetryCase{0, true, kTitleOk},
                    RetryCase{1, true, "Warning: 2 lcount 1 sale number 5\n" + kTitleOk},
                    RetryCase{18, true, "Warning: 19 lcount 1 sale number 5\n" + kTitleOk},
                    RetryCase{19, false, "Error: TrySendSaleTitle  try  1 sale number 5\n"},
                    RetryCase{20, false, "Error: TrySendSaleTitle  try  0 sale number 5\n"}),
    RetryCase::Name);

}  // namespace
}  // namespace test
