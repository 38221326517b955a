#include "support/fault.h"
#include "support/fixtures.h"
#include "support/requests.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

constexpr auto kTapeFault = "2 CTarvo::readKLSale, pack.cmd!=kkm_klsaleread";
constexpr auto kEpromFault = "2 CTarvo::readEprom, pack.cmd!=read_eprom";

class RegistersTest : public TarvoTest {
  protected:
    RegistersTest() { kkm.setVersion(kkm_ver_303); }

    // A statistics answer with so many records on the tape.
    void TapeHolds(unsigned count) {
        line.Always(request::kStatistics,
                    Frame(0x8A, {9, 9, 9, 9, static_cast<unsigned char>(count >> 8U),
                                 static_cast<unsigned char>(count), 0, 0, 0, 0, 0}));
    }

    // A tape record as the register sends it.
    static Reply Record(std::uint16_t kopecks, unsigned char kind, unsigned char selector = 0) {
        Bytes record(31);
        record[4] = static_cast<unsigned char>(kopecks >> 8U);
        record[5] = static_cast<unsigned char>(kopecks);
        record[28] = kind;
        record[29] = selector;
        return Frame(0x8B, record);
    }

    static Reply NoRecord() { return Frame(0x8B, {0}); }
};

TEST_F(RegistersTest, AddressIsTwoBytesUpToFirmware399) {
    line.Always(request::kEprom, Frame(0x82, {1, 2, 3}));
    for (const int version : {0, 301, 302, 303, 310, 399}) {
        kkm.setVersion(static_cast<kkm_ver>(version));
        world.ClearLog();
        EXPECT_EQ(kkm.readEprom(0x12345678, 3).bytes(), (Bytes{1, 2, 3}));
        EXPECT_EQ(world.Steps(), (Strings{"02 56 78 03"}));
    }
}

TEST_F(RegistersTest, AddressIsThreeBytesBehindAZeroFromFirmware400) {
    line.Always(request::kEprom, Frame(0x82, {1}));
    for (const int version : {400, 401}) {
        kkm.setVersion(static_cast<kkm_ver>(version));
        world.ClearLog();
        EXPECT_EQ(kkm.readEprom(0x12345678, 255).AsByte(), 1);
        EXPECT_EQ(world.Steps(), (Strings{"02 00 34 56 78 FF"}));
    }
}

TEST_F(RegistersTest, MemoryOfAnyLengthIsReturned) {
    line.Answer(request::kEprom, Frame(0x82)).Answer(request::kEprom, Frame(0x82, Bytes(197, 7)));
    EXPECT_EQ(kkm.readEprom(0, 1).bytes(), Bytes{});
    EXPECT_EQ(kkm.readEprom(0, 1).bytes(), Bytes(197, 7));
}

TEST_F(RegistersTest, OtherAnswerToAMemoryReadIsCode2) {
    line.Answer(request::kEprom, Frame(0x81, {1})).Answer(request::kEprom, Frame(0x84, {1}));
    EXPECT_EQ(FaultOf([&] { kkm.readEprom(0, 1); }), kEpromFault);
    EXPECT_EQ(FaultOf([&] { kkm.readEprom(0, 1); }), kEpromFault);
    EXPECT_EQ(FaultOf([&] { kkm.readEprom(0, 1); }), kSilenceFault);
}

TEST_F(RegistersTest, StatisticsAreThreeWordsAndAnAmount) {
    line.Answer(request::kStatistics, Frame(0x8A, FromHex("01 02 03 04 05 06 FF 00 00 00 23")));
    TStatistics statistics;
    kkm.GetStatistics(statistics);
    EXPECT_EQ(world.Steps(), (Strings{"0A"}));
    EXPECT_EQ(statistics.number, 258);
    EXPECT_EQ(statistics.checks, 772);
    EXPECT_EQ(statistics.sales, 1286);
    EXPECT_EQ(statistics.amount, 0.35000000000000003);
}

TEST_F(RegistersTest, GreatestStatistics) {
    line.Answer(request::kStatistics, Frame(0x8A, Bytes(11, 0xFF)));
    TStatistics statistics;
    kkm.GetStatistics(statistics);
    EXPECT_EQ(statistics.number, 65535);
    EXPECT_EQ(statistics.checks, 65535);
    EXPECT_EQ(statistics.sales, 65535);
    EXPECT_EQ(statistics.amount, 42949672.95);
}

TEST_F(RegistersTest, StatisticsOfAnotherLengthAreCode2) {
    TStatistics statistics;
    statistics.sales = 77;
    for (const std::size_t length : {0U, 1U, 10U, 12U, 197U}) {
        line.Answer(request::kStatistics, Frame(0x8A, Bytes(length, 1)));
        EXPECT_EQ(FaultOf([&] { kkm.GetStatistics(statistics); }),
                  "2 CTarvo::getStatistics(count != 11)");
    }
    EXPECT_EQ(FaultOf([&] { kkm.GetStatistics(statistics); }), kSilenceFault);
    EXPECT_EQ(statistics.sales, 77);
}

TEST_F(RegistersTest, KeepsStatisticsUnderAnyAnswerCode) {
    for (const unsigned char code : Bytes{0x8A, 0x0A, 0xC0, 0x00}) {
        line.Answer(request::kStatistics, Frame(code, FromHex("00 00 00 00 00 07 00 00 00 00 00")));
        TStatistics statistics;
        kkm.GetStatistics(statistics);
        EXPECT_EQ(statistics.sales, 7);
    }
}

TEST_F(RegistersTest, TapeRecordIsOneExchange) {
    line.Answer(request::kReadTape, Record(35, 2, 3));
    KLSale record;
    EXPECT_TRUE(kkm.readKLSale(0x0102, record));
    EXPECT_EQ(world.Steps(), (Strings{"12 01 02"}));
    EXPECT_EQ(record.sum, 0.35000000000000003);
    EXPECT_EQ(record.kind, 2U);
    EXPECT_EQ(record.selector, 3U);
}

TEST_F(RegistersTest, AnswerOfOneByteIsNoRecordAndLeavesIt) {
    line.Answer(request::kReadTape, Frame(0x8B, {5}));
    KLSale record;
    record.sum = 7;
    record.number = 7;
    EXPECT_FALSE(kkm.readKLSale(0xFFFF, record));
    EXPECT_EQ(world.Steps(), (Strings{"12 FF FF"}));
    EXPECT_EQ(record.sum, 7.0);
    EXPECT_EQ(record.number, 7);
}

TEST_F(RegistersTest, AnswerOfAnyOtherLengthIsARecord) {
    for (const std::size_t length : {0U, 2U, 30U, 31U, 40U}) {
        line.Answer(request::kReadTape, Frame(0x8B, Bytes(length)));
        KLSale record;
        EXPECT_TRUE(kkm.readKLSale(0, record));
        EXPECT_EQ(record.quantity, 1.0);
    }
}

TEST_F(RegistersTest, OtherAnswerToATapeReadIsCode2) {
    KLSale record;
    line.Answer(request::kReadTape, Frame(0x92, {5})).Answer(request::kReadTape, Frame(0x8A, {5}));
    EXPECT_EQ(FaultOf([&] { kkm.readKLSale(0, record); }), kTapeFault);
    EXPECT_EQ(FaultOf([&] { kkm.readKLSale(0, record); }), kTapeFault);
    EXPECT_EQ(FaultOf([&] { kkm.readKLSale(0, record); }), kSilenceFault);
}

class TryReadTapeTest : public RegistersTest {
  protected:
    // What the read gives: "true", "false" or the fault.
    std::string Read() {
        std::string result;
        const std::string fault =
            FaultOf([&] { result = kkm.TryReadKLSale(0x0304, record) ? "true" : "false"; });
        return fault.empty() ? result : fault;
    }

    KLSale record;
};

TEST_F(TryReadTapeTest, TwentiethAttemptStillCounts) {
    for (const int attempt : {1, 2, 19, 20}) {
        line.Answers(request::kReadTape, attempt - 1, Frame(0x92))
            .Answer(request::kReadTape, Record(100, 0));
        world.ClearLog();
        record = KLSale();
        EXPECT_EQ(Read(), "true");
        EXPECT_EQ(record.sum, 1.0);
        EXPECT_EQ(world.Steps(), Strings(static_cast<std::size_t>(attempt), "12 03 04"));
    }
}

TEST_F(TryReadTapeTest, MissingRecordIsAResultAndNotRepeated) {
    line.Answer(request::kReadTape, NoRecord());
    EXPECT_EQ(Read(), "false");
    EXPECT_EQ(world.Steps(), (Strings{"12 03 04"}));
    line.Answers(request::kReadTape, 19, Frame(0x92)).Answer(request::kReadTape, NoRecord());
    EXPECT_EQ(Read(), "false");
}

TEST_F(TryReadTapeTest, TwentyFailuresAreCode2) {
    line.Always(request::kReadTape, Frame(0x92));
    EXPECT_EQ(Read(), "2 TryReadKLSale");
    EXPECT_EQ(world.Steps(), Strings(20, "12 03 04"));
    line.Always(request::kReadTape, Silence());
    EXPECT_EQ(Read(), "2 TryReadKLSale");
}

TEST_F(RegistersTest, GrandTotalAddsSalesOfKinds0And2) {
    line.Answer(request::kEprom, Frame(0x82, FromHex("00 00 00 00 00 01 E2 40")));
    TapeHolds(6);
    for (unsigned char kind = 0; kind < 6; ++kind) {
        line.Answer(request::kReadTape, Record(static_cast<std::uint16_t>(100 << kind), kind));
    }
    EXPECT_EQ(kkm.getNICurrent(), 1234.56 + 1.0 + 4.0);
    EXPECT_EQ(world.Steps(), (Strings{"02 04 F7 08", "0A", "12 00 00", "12 00 01", "12 00 02",
                                      "12 00 03", "12 00 04", "12 00 05"}));
}

TEST_F(RegistersTest, GrandTotalOfClosedShiftsIsSigned64Bit) {
    const std::pair<const char*, double> cases[] = {
        {"00 00 00 00 00 00 00 23", 0.35000000000000003},
        {"00 00 00 01 00 00 00 00", 42949672.96},
        {"FF FF FF FF FF FF FF DD", -0.35000000000000003},
        {"7F FF FF FF FF FF FF FF", 9.223372036854776e+16},
        {"80 00 00 00 00 00 00 00", -9.223372036854776e+16},
    };
    TapeHolds(0);
    for (const auto& [bytes, total] : cases) {
        line.Answer(request::kEprom, Frame(0x82, FromHex(bytes)));
        EXPECT_EQ(kkm.getNICurrent(), total) << bytes;
    }
}

TEST_F(RegistersTest, GrandTotalOfAnotherLengthIsAFault) {
    for (const std::size_t length : {0U, 1U, 4U, 7U, 9U}) {
        world.ClearLog();
        line.Answer(request::kEprom, Frame(0x82, Bytes(length)));
        EXPECT_EQ(FaultOf([&] { kkm.getNICurrent(); }), "other") << length;
        EXPECT_EQ(world.Steps(), (Strings{"02 04 F7 08"}));
    }
}

TEST_F(RegistersTest, GrandTotalCountsARecordOnlyWhenItWasRead) {
    line.Always(request::kEprom, Frame(0x82, Bytes(8)));
    TapeHolds(3);
    line.Answer(request::kReadTape, Record(100, 0)).Answer(request::kReadTape, NoRecord());
    line.Answer(request::kReadTape, Record(300, 2));
    EXPECT_EQ(kkm.getNICurrent(), 4.0);
}

TEST_F(RegistersTest, GrandTotalSurvivesNineteenFailuresOfEachRecord) {
    line.Always(request::kEprom, Frame(0x82, Bytes(8)));
    TapeHolds(2);
    for (int i = 0; i < 2; ++i) {
        line.Answers(request::kReadTape, 19, Silence()).Answer(request::kReadTape, Record(100, 0));
    }
    EXPECT_EQ(kkm.getNICurrent(), 2.0);
    line.Answer(request::kReadTape, Record(100, 0));
    EXPECT_EQ(FaultOf([&] { kkm.getNICurrent(); }), "2 TryReadKLSale");
}

TEST_F(RegistersTest, GrandTotalFaultsOfMemoryAndStatisticsPassThrough) {
    line.Answer(request::kEprom, Frame(0x83));
    EXPECT_EQ(FaultOf([&] { kkm.getNICurrent(); }), kEpromFault);
    line.Answer(request::kEprom, Frame(0x82, Bytes(8)))
        .Answer(request::kStatistics, Frame(0x8A, Bytes(12)));
    EXPECT_EQ(FaultOf([&] { kkm.getNICurrent(); }), "2 CTarvo::getStatistics(count != 11)");
}

TEST_F(RegistersTest, LongTapeIsReadToItsEnd) {
    line.Always(request::kEprom, Frame(0x82, Bytes(8)))
        .Always(request::kReadTape, Record(100, 0, 4));
    TapeHolds(259);
    EXPECT_EQ(kkm.getNICurrent(), 259.0);
    EXPECT_EQ(world.Steps().size(), 2U + 259U);
    EXPECT_EQ(world.Steps().back(), "12 01 02");
    world.ClearLog();
    EXPECT_EQ(kkm.getCashSum(5), 259.0);
    EXPECT_EQ(world.Steps().size(), 1U + 259U);
    EXPECT_EQ(world.Steps().back(), "12 01 02");
}

TEST_F(RegistersTest, LongestTapeIsReadToItsEnd) {
    world.SetLogging(false);
    line.Always(request::kReadTape, NoRecord());
    TapeHolds(65535);
    EXPECT_EQ(kkm.getCashSum(1), 0.0);
}

TEST_F(RegistersTest, PaymentSumAddsKinds0And3AndSubtracts1And4) {
    TapeHolds(6);
    for (unsigned char kind = 0; kind < 6; ++kind) {
        line.Answer(request::kReadTape, Record(static_cast<std::uint16_t>(100 << kind), kind, 1));
    }
    EXPECT_EQ(kkm.getCashSum(2), 1.0 - 2.0 + 8.0 - 16.0);
    EXPECT_EQ(world.Steps(), (Strings{"0A", "12 00 00", "12 00 01", "12 00 02", "12 00 03",
                                      "12 00 04", "12 00 05"}));
}

TEST_F(RegistersTest, PaymentSumCountsOneSelector) {
    TapeHolds(4);
    const std::pair<int, double> cases[] = {{0, 0.0}, {1, 1.0},   {2, 2.0},  {3, 4.0},
                                            {4, 0.0}, {256, 8.0}, {-1, 0.0}, {255, 0.0}};
    for (const auto& [selector, sum] : cases) {
        line.Answer(request::kReadTape, Record(100, 0, 0))
            .Answer(request::kReadTape, Record(200, 0, 1));
        line.Answer(request::kReadTape, Record(400, 0, 2))
            .Answer(request::kReadTape, Record(800, 0, 255));
        EXPECT_EQ(kkm.getCashSum(selector), sum) << selector;
    }
}

TEST_F(RegistersTest, PaymentSumCountsARecordOnlyWhenItWasRead) {
    TapeHolds(3);
    line.Answer(request::kReadTape, Record(100, 0)).Answer(request::kReadTape, NoRecord());
    line.Answer(request::kReadTape, Record(300, 3));
    EXPECT_EQ(kkm.getCashSum(1), 4.0);
}

TEST_F(RegistersTest, PaymentSumIsNotRetried) {
    TapeHolds(3);
    line.Answer(request::kReadTape, Record(100, 0)).Answer(request::kReadTape, Frame(0x92, {1}));
    EXPECT_EQ(FaultOf([&] { kkm.getCashSum(1); }), kTapeFault);
    EXPECT_EQ(world.Steps(), (Strings{"0A", "12 00 00", "12 00 01"}));
    EXPECT_EQ(FaultOf([&] { kkm.getCashSum(1); }), kSilenceFault);
    line.Always(request::kStatistics, Frame(0x8A, Bytes(10)));
    EXPECT_EQ(FaultOf([&] { kkm.getCashSum(1); }), "2 CTarvo::getStatistics(count != 11)");
}

struct BeginCase {
    const char* date;
    const char* hour;
    int day, month, year, hours, minutes;
};

TEST_F(RegistersTest, KeepsTheTapeStartAsItHasAlwaysBeenDecoded) {
    const BeginCase cases[] = {
        {"15 03 08", "00", 5, 2, 108, 0, 0},      {"15 12 08", "2A", 5, 161, 108, 21, 1},
        {"31 10 23", "FF", 1, 159, 423, 31, 7},   {"0F 0F 0F", "01", 15, 14, 115, 0, 0},
        {"F0 F0 F0", "3F", 0, 2399, 2500, 31, 1}, {"00 00 00", "C0", 0, -1, 100, 0, 6},
    };
    for (const BeginCase& c : cases) {
        line.Answer(request::kEprom, Frame(0x82, FromHex(c.date)));
        line.Answer(request::kEprom, Frame(0x82, FromHex(c.hour)));
        line.Answer(request::kEprom, Frame(0x82, {0xFF, 0xFF}));
        const std::tm begin = kkm.readKLbegin();
        EXPECT_EQ(begin.tm_mday, c.day) << c.date;
        EXPECT_EQ(begin.tm_mon, c.month) << c.date;
        EXPECT_EQ(begin.tm_year, c.year) << c.date;
        EXPECT_EQ(begin.tm_hour, c.hours) << c.hour;
        EXPECT_EQ(begin.tm_min, c.minutes) << c.hour;
        EXPECT_EQ(begin.tm_sec, 0);
        EXPECT_EQ(begin.tm_wday, 0);
        EXPECT_EQ(begin.tm_yday, 0);
        EXPECT_EQ(begin.tm_isdst, 0);
    }
}

TEST_F(RegistersTest, TapeStartIsThreeMemoryReads) {
    line.Always(request::kEprom, Frame(0x82, {1, 2}));
    kkm.readKLbegin();
    EXPECT_EQ(world.Steps(), (Strings{"02 05 15 03", "02 37 00 01", "02 37 01 02"}));
    kkm.setVersion(kkm_ver_400);
    world.ClearLog();
    kkm.readKLbegin();
    EXPECT_EQ(world.Steps(),
              (Strings{"02 00 00 05 15 03", "02 00 00 37 00 01", "02 00 00 37 01 02"}));
}

TEST_F(RegistersTest, TapeStartRefusesFieldsOfAWrongLength) {
    const auto begin = [&] { kkm.readKLbegin(); };
    line.Answer(request::kEprom, Frame(0x82, Bytes(5)));
    EXPECT_EQ(FaultOf(begin), "other");
    line.Answer(request::kEprom, Frame(0x82, Bytes(3))).Answer(request::kEprom, Frame(0x82));
    EXPECT_EQ(FaultOf(begin), "other");
    for (const std::size_t length : {0U, 1U, 3U}) {
        line.Answer(request::kEprom, Frame(0x82, Bytes(3)))
            .Answer(request::kEprom, Frame(0x82, {1}));
        line.Answer(request::kEprom, Frame(0x82, Bytes(length)));
        EXPECT_EQ(FaultOf(begin), "other") << length;
    }
    line.Answer(request::kEprom, Frame(0x83, Bytes(3)));
    EXPECT_EQ(FaultOf(begin), kEpromFault);
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

}  // namespace
}  // namespace test
