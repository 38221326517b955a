#include <climits>
#include <functional>

#include "support/interface_fixture.h"

namespace test {
namespace {

// number 258, checks 772, sales 2
const Bytes kStatistics = Frame(0x8A, {1, 2, 3, 4, 0, 2, 0, 0, 0, 0, 0});

// A record of the control tape with the given sum (kopecks, below 65536), kind and selector.
Bytes TapeRecord(unsigned sum, unsigned char kind, unsigned char selector) {
    Bytes data(31);
    data[4] = static_cast<unsigned char>(sum >> 8U);
    data[5] = static_cast<unsigned char>(sum);
    data[28] = kind;
    data[29] = selector;
    return Frame(0x8B, data);
}

class DeviceQueriesTest : public InterfaceTest {
  protected:
    int number = -1;
    double real = -1.0;
};

TEST_F(DeviceQueriesTest, KeepsShiftNumberEqualToTapeNumber) {
    Connect();
    line.Always(0x0A, kStatistics);
    EXPECT_EQ(GetSmenaNum(&number), 1);
    EXPECT_EQ(number, 258);
    number = -1;
    EXPECT_EQ(GetKLNum(&number), 1);
    EXPECT_EQ(number, 258);
    EXPECT_EQ(world.Requests(), (Texts{"0A", "0A"}));
}

TEST_F(DeviceQueriesTest, SaleNumberIsTheNextOne) {
    Connect();
    line.Answer(0x0A, kStatistics);
    EXPECT_EQ(GetSaleNum(&number), 1);
    EXPECT_EQ(number, 3);
    line.Answer(0x0A, Frame(0x8A, Bytes(11)));
    EXPECT_EQ(GetSaleNum(&number), 1);
    EXPECT_EQ(number, 1);
    line.Answer(0x0A, Frame(0x8A, {0, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0, 0, 0}));
    EXPECT_EQ(GetSaleNum(&number), 1);
    EXPECT_EQ(number, 65536);
}

TEST_F(DeviceQueriesTest, CountersAreUnsigned) {
    Connect();
    line.Always(0x0A, Frame(0x8A, {0xFF, 0xFE, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(GetKLNum(&number), 1);
    EXPECT_EQ(number, 65534);
    EXPECT_EQ(GetCheckCount(&number), 1);
    EXPECT_EQ(number, 65535);
}

TEST_F(DeviceQueriesTest, CheckCountIsTheSecondCounter) {
    Connect();
    line.Answer(0x0A, kStatistics);
    EXPECT_EQ(GetCheckCount(&number), 1);
    EXPECT_EQ(number, 772);
    EXPECT_EQ(world.Requests(), Texts{"0A"});
}

TEST_F(DeviceQueriesTest, GrandTotalAddsTheTapeToTheMemory) {
    Connect();
    line.Answer(0x02, Frame(0x82, {0, 0, 0, 0, 0, 1, 0xE2, 0x40}));  // 123456 kopecks
    line.Answer(0x0A, kStatistics);
    line.Answer(0x12, TapeRecord(250, 0, 0)).Answer(0x12, TapeRecord(100, 1, 0));
    EXPECT_EQ(GetNI(&real), 1);
    EXPECT_DOUBLE_EQ(real, 1237.06);
    EXPECT_EQ(world.Requests(), (Texts{"02 04 F7 08", "0A", "12 00 00", "12 00 01"}));
}

TEST_F(DeviceQueriesTest, SerialNumberIsReadFromMemoryOrByCommand) {
    Connect(kkm_ver_301);
    line.Answer(0x04, Frame(0x84, {'0', '0', '0', '4', '2', '7', '1', '5'}));
    EXPECT_EQ(GetKKMNum(&number), 1);
    EXPECT_EQ(number, 42715);
    EXPECT_EQ(world.Requests(), Texts{"04 1A 5C 08"});
    kvesk.setVersion(kkm_ver_400);
    line.Answer(0x15, Frame(0x95, {'7', '7', ' ', 'A'}));
    world.ClearLog();
    EXPECT_EQ(GetKKMNum(&number), 1);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(world.Requests(), Texts{"15"});
}

TEST_F(DeviceQueriesTest, CashSumIsThatOfTheSelector) {
    Connect();
    line.Answer(0x0A, kStatistics);
    line.Answer(0x12, TapeRecord(1050, 0, 2)).Answer(0x12, TapeRecord(250, 0, 1));
    EXPECT_EQ(GetCashSum(3, &real), 1);
    EXPECT_EQ(real, 10.5);
    EXPECT_EQ(world.Requests(), (Texts{"0A", "12 00 00", "12 00 01"}));
}

TEST_F(DeviceQueriesTest, CashSumDoesNotIdentify) {
    ConnectTooEarly();
    line.Answer(0x0A, Frame(0x8A, Bytes(11)));
    EXPECT_EQ(GetCashSum(1, &real), 1);
    EXPECT_EQ(real, 0.0);
    EXPECT_EQ(world.Requests(), Texts{"0A"});
}

// --- GetTax

TEST_F(DeviceQueriesTest, TaxSettingsLie36BytesApart) {
    // 674, 710, 746 ... 1250
    const std::vector<std::string> addresses{"02 A2", "02 C6", "02 EA", "03 0E", "03 32", "03 56",
                                             "03 7A", "03 9E", "03 C2", "03 E6", "04 0A", "04 2E",
                                             "04 52", "04 76", "04 9A", "04 BE", "04 E2"};
    Connect();
    for (unsigned char tax = 0; tax <= 16; ++tax) {
        line.Answer(0x02, Frame(0x82, {static_cast<unsigned char>(200 + tax)}));
        world.ClearLog();
        EXPECT_EQ(GetTax(tax, &real), 1);
        EXPECT_EQ(real, 200.0 + tax);
        EXPECT_EQ(world.Requests(), Texts{"02 " + addresses[tax] + " 01"});
    }
}

TEST_F(DeviceQueriesTest, TaxSettingOfFirmware400HasALongAddress) {
    Connect(kkm_ver_400);
    line.Answer(0x02, Frame(0x82, {18}));
    EXPECT_EQ(GetTax(16, &real), 1);
    EXPECT_EQ(real, 18.0);
    EXPECT_EQ(world.Requests(), Texts{"02 00 00 04 E2 01"});
}

TEST_F(DeviceQueriesTest, TaxNumberAbove16IsCode12BeforeAnyTraffic) {
    ConnectTooEarly();
    for (const int tax : {17, 255}) {
        EXPECT_EQ(GetTax(static_cast<unsigned char>(tax), &real), 0);
        EXPECT_EQ(GetErrorCode(), 12);
    }
    EXPECT_EQ(real, -1.0);
    EXPECT_EQ(world.Log(), Texts{});
}

// --- GetSmenaStatus, GetKKMVers

TEST_F(DeviceQueriesTest, ShiftIsOpenWhenItsByteIsAA) {
    Connect();
    line.Answer(0x02, Frame(0x82, {0xAA}));
    EXPECT_EQ(GetSmenaStatus(&number), 1);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(world.Requests(), Texts{"02 05 29 01"});
    for (const int byte : {0x00, 0x01, 0xA9, 0xAB, 0xFF}) {
        number = -1;
        line.Answer(0x02, Frame(0x82, {static_cast<unsigned char>(byte)}));
        EXPECT_EQ(GetSmenaStatus(&number), 1);
        EXPECT_EQ(number, 0) << byte;
    }
}

TEST_F(DeviceQueriesTest, EmptyMemoryAnswerIsAFailureNotAClosedShift) {
    Connect();
    line.Answer(0x02, Frame(0x82));
    EXPECT_EQ(GetSmenaStatus(&number), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(number, -1);
}

TEST_F(DeviceQueriesTest, VersionIsTheDetectedNumber) {
    for (const kkm_ver version :
         {kkm_ver_301, kkm_ver_302, kkm_ver_303, kkm_ver_310, kkm_ver_400}) {
        Connect(version);
        EXPECT_EQ(GetKKMVers(&number), 1);
        EXPECT_EQ(number, static_cast<int>(version));
        EXPECT_EQ(world.Requests(), Texts{});
    }
}

TEST_F(DeviceQueriesTest, VersionIsZeroWhenItCannotBeRead) {
    ConnectInVain();
    EXPECT_EQ(GetKKMVers(&number), 0);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(world.Requests(), Texts{"34"});
}

// --- ReadSaleFromKL

class TapeTest : public DeviceQueriesTest {
  protected:
    struct Record {
        unsigned char bytes[7] = {201, 202, 203, 204, 205, 206, 207};
        double reals[6] = {-1.0, -2.0, -3.0, -4.0, -5.0, -6.0};
        unsigned short word = 60000;
    };

    // `missing` is the position of the parameter that is null, from 1; 0 for none.
    int Read(int record_number, int missing = 0) {
        const auto byte = [&](int i, int position) {
            return position == missing ? nullptr : &record.bytes[i];
        };
        const auto real_at = [&](int i) { return i + 3 == missing ? nullptr : &record.reals[i]; };
        return ReadSaleFromKL(record_number, byte(0, 1), byte(1, 2), real_at(0), real_at(1),
                              real_at(2), real_at(3), real_at(4), real_at(5), byte(2, 9),
                              missing == 10 ? nullptr : &record.word, byte(3, 11), byte(4, 12),
                              byte(5, 13), byte(6, 14));
    }

    void ExpectUntouched() const {
        EXPECT_EQ(std::vector<int>(record.bytes, record.bytes + 7),
                  (std::vector<int>{201, 202, 203, 204, 205, 206, 207}));
        EXPECT_EQ(std::vector<double>(record.reals, record.reals + 6),
                  (std::vector<double>{-1.0, -2.0, -3.0, -4.0, -5.0, -6.0}));
        EXPECT_EQ(record.word, 60000);
    }

    Record record;
};

TEST_F(TapeTest, FieldsArePairedByTypeInSequence) {
    Connect();
    line.Answer(0x12, Frame(0x8B, {0,    0,                       // not used
                                   0x01, 0x02, 0x03, 0x04,        // sum 16909060
                                   0x00, 0x03, 0xE8,              // second amount 1000
                                   0x00, 0x07, 0xD0,              // third 2000
                                   0x00, 0x0B, 0xB8,              // fourth 3000
                                   0xFE,                          // signed value -2
                                   0x30,                          // number
                                   0x11, 0x12, 0x13, 0x14, 0x15,  // code bytes
                                   0x21, 0x22,                    // code 8482
                                   0,    0,                       // not used
                                   0x05, 0xDC,                    // 1500 thousandths
                                   0x03, 0x04, 0x01}));           // kind, selector, marked
    EXPECT_EQ(Read(1), 1);
    EXPECT_EQ(world.Requests(), Texts{"12 00 00"});
    EXPECT_EQ(std::vector<int>(record.bytes, record.bytes + 7),
              (std::vector<int>{3, 4, 1, 0x11, 0x12, 0x13, 0x14}));
    EXPECT_EQ(std::vector<double>(record.reals, record.reals + 6),
              (std::vector<double>{169090.6, 10.0, 20.0, 30.0, -2.0, 1.5}));
    EXPECT_EQ(record.word, 0x2122);
    EXPECT_EQ(GetErrorCode(), 0);
}

TEST_F(TapeTest, UnmarkedRecordGivesZero) {
    Connect();
    line.Answer(0x12, TapeRecord(100, 0, 0));
    EXPECT_EQ(Read(1), 1);
    EXPECT_EQ(record.bytes[2], 0);
    EXPECT_EQ(record.reals[5], 1.0) << "no quantity is one piece";
}

TEST_F(TapeTest, RecordsCountFromOne) {
    Connect();
    line.Always(0x12, TapeRecord(100, 0, 0));
    for (const int wanted : {2, 257, 65536, 0, INT_MIN, INT_MAX}) {
        EXPECT_EQ(Read(wanted), 1);
    }
    EXPECT_EQ(world.Requests(),
              (Texts{"12 00 01", "12 01 00", "12 FF FF", "12 FF FF", "12 FF FF", "12 FF FE"}));
}

TEST_F(TapeTest, AbsentRecordIsCode10) {
    Connect();
    ListenToErrors();
    line.Answer(0x12, Frame(0x8B, {0}));
    EXPECT_EQ(Read(5), 0);
    EXPECT_EQ(GetErrorCode(), 10);
    EXPECT_EQ(Events(), Texts{"error 10"});
    ExpectUntouched();
}

TEST_F(TapeTest, UnreadableRecordIsCode2) {
    Connect();
    line.Answer(0x12, Frame(0x8C, Bytes(31)));
    EXPECT_EQ(Read(1), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    ExpectUntouched();
}

TEST_F(TapeTest, ReadingDoesNotIdentify) {
    ConnectTooEarly();
    line.Answer(0x12, TapeRecord(100, 0, 0));
    EXPECT_EQ(Read(1), 1);
    EXPECT_EQ(world.Requests(), Texts{"12 00 00"});
}

TEST_F(TapeTest, AnyMissingPointerIsCode12) {
    Connect();
    line.Always(0x12, TapeRecord(100, 0, 0));
    for (int position = 1; position <= 14; ++position) {
        errVeskTarvo = 0;
        EXPECT_EQ(Read(1, position), 0) << position;
        EXPECT_EQ(GetErrorCode(), 12) << position;
    }
    EXPECT_EQ(world.Log(), Texts{});
    ExpectUntouched();
}

// --- what all queries share

struct Query {
    const char* name;
    std::function<int()> call;
    const char* first_request;  // when the firmware is known
};

class AnyQueryTest : public DeviceQueriesTest {
  protected:
    std::vector<Query> Queries() {
        return {{"GetSmenaNum", [&] { return GetSmenaNum(&number); }, "0A"},
                {"GetKLNum", [&] { return GetKLNum(&number); }, "0A"},
                {"GetSaleNum", [&] { return GetSaleNum(&number); }, "0A"},
                {"GetCheckCount", [&] { return GetCheckCount(&number); }, "0A"},
                {"GetNI", [&] { return GetNI(&real); }, "02 04 F7 08"},
                {"GetKKMNum", [&] { return GetKKMNum(&number); }, "04 1A 5D 08"},
                {"GetTax", [&] { return GetTax(0, &real); }, "02 02 A2 01"},
                {"GetSmenaStatus", [&] { return GetSmenaStatus(&number); }, "02 05 29 01"}};
    }
};

TEST_F(AnyQueryTest, UnknownFirmwareIsAskedForFirst) {
    for (const Query& query : Queries()) {
        DisconnectKKM();
        ConnectTooEarly();
        EXPECT_EQ(query.call(), 0) << query.name;
        EXPECT_EQ(world.Requests(), (Texts{"34", query.first_request})) << query.name;
        line.Always(0x34, Silence());
    }
}

TEST_F(AnyQueryTest, FirmwareThatNobodyKnowsIsCode2AndEndsTheQuery) {
    ConnectTooEarly(kkm_ver_unknown);
    ListenToErrors();
    for (const Query& query : Queries()) {
        world.ClearLog();
        HostEvents::All().clear();
        EXPECT_EQ(query.call(), 0) << query.name;
        EXPECT_EQ(GetErrorCode(), 2) << query.name;
        EXPECT_EQ(Events(), Texts{"error 2"}) << query.name;
        EXPECT_EQ(world.Requests(), Texts{"34"}) << query.name;
    }
    EXPECT_EQ(number, -1);
    EXPECT_EQ(real, -1.0);
}

TEST_F(AnyQueryTest, SilenceIsCode2AndLeavesTheOutputAlone) {
    Connect();
    std::vector<Query> queries = Queries();
    queries.push_back({"GetCashSum", [&] { return GetCashSum(1, &real); }, "0A"});
    for (const Query& query : queries) {
        world.ClearLog();
        EXPECT_EQ(query.call(), 0) << query.name;
        EXPECT_EQ(GetErrorCode(), 2) << query.name;
        EXPECT_EQ(world.Requests(), Texts{query.first_request}) << query.name;
    }
    EXPECT_EQ(number, -1);
    EXPECT_EQ(real, -1.0);
}

TEST_F(AnyQueryTest, MissingPointerIsCode12BeforeAnyTraffic) {
    ConnectTooEarly();
    const std::vector<Query> queries{{"GetSmenaNum", [] { return GetSmenaNum(nullptr); }, ""},
                                     {"GetKLNum", [] { return GetKLNum(nullptr); }, ""},
                                     {"GetSaleNum", [] { return GetSaleNum(nullptr); }, ""},
                                     {"GetCheckCount", [] { return GetCheckCount(nullptr); }, ""},
                                     {"GetNI", [] { return GetNI(nullptr); }, ""},
                                     {"GetKKMNum", [] { return GetKKMNum(nullptr); }, ""},
                                     {"GetCashSum", [] { return GetCashSum(1, nullptr); }, ""},
                                     {"GetTax", [] { return GetTax(0, nullptr); }, ""},
                                     {"GetSmenaStatus", [] { return GetSmenaStatus(nullptr); }, ""},
                                     {"GetKKMVers", [] { return GetKKMVers(nullptr); }, ""}};
    for (const Query& query : queries) {
        errVeskTarvo = 14;
        EXPECT_EQ(query.call(), 0) << query.name;
        EXPECT_EQ(GetErrorCode(), 12) << query.name;
    }
    EXPECT_EQ(world.Log(), Texts{});
}

}  // namespace
}  // namespace test
