#include "protocol/status_info.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <utility>

#include "support/world.h"

namespace test {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

std::string Number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.16g", value);
    return text;
}

// Every field, in the order of the record.
Fields FieldsOf(const status_info& status) {
    return {{"command", Hex({static_cast<unsigned char>(status.command)})},
            {"number", std::to_string(status.number)},
            {"section", std::to_string(status.section)},
            {"position", std::to_string(status.position)},
            {"department", std::to_string(status.department)},
            {"code", std::to_string(status.code)},
            {"saleNumber", std::to_string(status.saleNumber)},
            {"weighted", std::to_string(status.weighted)},
            {"quantity", Number(status.quantity)},
            {"marked", std::to_string(status.marked)},
            {"text", status.text},
            {"text2", status.text2},
            {"name", status.name},
            {"price", std::to_string(status.price)},
            {"sum", std::to_string(status.sum)},
            {"reply", std::to_string(status.reply)},
            {"attr", std::to_string(status.attr)},
            {"percent", std::to_string(status.percent)},
            {"kind", std::to_string(status.kind)},
            {"amount", std::to_string(status.amount)},
            {"discountPercent", std::to_string(status.discountPercent)},
            {"discountSum", std::to_string(status.discountSum)},
            {"text4", status.text4},
            {"data", Hex(status.data)}};
}

// A record that holds something in every field.
status_info Filled(bool flag, std::uint8_t n) {
    status_info status;
    status.command = kkm_reset;
    status.number = n;
    status.section = n;
    status.position = n;
    status.department = n;
    status.code = n;
    status.saleNumber = n;
    status.weighted = flag;
    status.quantity = n;
    status.marked = flag;
    status.text = std::string(3, flag ? 'x' : 'y');
    status.text2 = status.text;
    status.name = status.text;
    status.price = n;
    status.sum = n;
    status.reply = n;
    status.attr = n;
    status.percent = n;
    status.kind = n;
    status.amount = n;
    status.discountPercent = static_cast<std::int8_t>(n);
    status.discountSum = n;
    status.text4 = status.text;
    status.data = {n};
    return status;
}

// The fields that an answer sets, with their values. Two records that differ in every field take
// the answer: what is the same afterwards has been set, anything else must be as it was.
std::string Decoded(int code, const Bytes& payload) {
    const packet answer{static_cast<kkm_command>(code), payload};
    const status_info records[] = {Filled(false, 100), Filled(true, 101)};
    Fields before[2];
    Fields after[2];
    for (int i = 0; i < 2; ++i) {
        status_info status = records[i];
        before[i] = FieldsOf(status);
        DecodeStatus(answer, status);
        after[i] = FieldsOf(status);
    }
    std::string set;
    for (std::size_t i = 0; i < after[0].size(); ++i) {
        const auto& [name, value] = after[0][i];
        if (after[0][i] == after[1][i]) {
            set += (set.empty() ? "" : " ") + name + "=" + value;
        } else if (after[0][i] != before[0][i] || after[1][i] != before[1][i]) {
            set += " " + name + " depends on what it held";
        }
    }
    return set;
}

struct Case {
    int code;
    const char* payload;
    const char* fields;
};

void ExpectAll(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        EXPECT_EQ(Decoded(c.code, FromHex(c.payload)), c.fields) << c.payload;
    }
}

TEST(StatusInfo, NewRecordIsInNoStateAndEmpty) {
    status_info status;
    EXPECT_EQ(status.command, 0xA0);
    EXPECT_EQ(status.number, 0);
    EXPECT_EQ(status.section, 0);
    EXPECT_EQ(status.position, 0);
    EXPECT_EQ(status.department, 0);
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(status.saleNumber, 0);
    EXPECT_FALSE(status.weighted);
    EXPECT_EQ(status.quantity, 0.0);
    EXPECT_FALSE(status.marked);
    EXPECT_EQ(status.text + status.text2 + status.name + status.text4, "");
    EXPECT_EQ(status.price, 0U);
    EXPECT_EQ(status.reply, 0);
    EXPECT_EQ(status.attr, 0);
    EXPECT_EQ(status.percent, 0);
    EXPECT_TRUE(status.data.empty());
}

TEST(StatusInfo, StateWithoutDataChangesOnlyTheState) {
    const std::set<int> with_data = {0xA1, 0xA2, 0xA3, 0xA7, 0xC1, 0xC4, 0xC5, 0xC6,
                                     0xC8, 0xC9, 0xCA, 0xCB, 0xCC, 0xCD, 0xE8};
    const Bytes payload(40, 7);
    for (int code = 0; code <= 0xFF; ++code) {
        if (with_data.count(code) == 0) {
            const std::string state = Hex({static_cast<unsigned char>(code)});
            EXPECT_EQ(Decoded(code, payload), "command=" + state);
        }
    }
}

TEST(StatusInfo, EnteredGoodsCode) {
    ExpectAll({
        {0xA1, "01 02 03 00 04 05 00",
         "command=A1 department=3 code=258 weighted=0 quantity=1029 marked=0 kind=0"},
        {0xA1, "FF FE 0F 01 05 DC 01",
         "command=A1 department=15 code=65534 weighted=1 quantity=1.500000071246177 marked=1 "
         "kind=1"},
        {0xA1, "01 02 03 80 00 01 80",
         "command=A1 department=3 code=258 weighted=1 quantity=0.001000000047497451 marked=1 "
         "kind=1"},
    });
}

TEST(StatusInfo, NoEnteredQuantityIsOnePieceEvenOfWeighedGoods) {
    ExpectAll({
        {0xA1, "01 02 03 00 00 00 00",
         "command=A1 department=3 code=258 weighted=0 quantity=1 marked=0 kind=0"},
        {0xA1, "01 02 03 01 00 00 01",
         "command=A1 department=3 code=258 weighted=0 quantity=1 marked=1 kind=1"},
        {0xA3, "03 01 00 00 00 00",
         "command=A3 department=3 weighted=0 quantity=1 marked=0 text= kind=0"},
    });
}

TEST(StatusInfo, EnteredBarcode) {
    ExpectAll({
        {0xA3, "01 00 03 04 00 05 34 36 30 37 31 39",
         "command=A3 department=1 weighted=0 quantity=772 marked=0 text=46071 kind=0"},
        {0xA3, "0F 02 05 DC 03 01 41",
         "command=A3 department=15 weighted=1 quantity=1.500000071246177 marked=1 text=A kind=1"},
    });
}

TEST(StatusInfo, BarcodeEndsWhereTheAnswerEnds) {
    ExpectAll({{0xA3, "01 00 00 02 00 FF 34 36",
                "command=A3 department=1 weighted=0 quantity=2 marked=0 text=46 kind=0"}});
}

TEST(StatusInfo, AddedSaleLine) {
    ExpectAll({
        {0xA2, "01 02 03 04 05 06 07 00 09 0A 00 0C 0D 00 0F 10 11 41 42",
         "command=A2 number=258 position=773 department=6 code=2314 saleNumber=6 weighted=0 "
         "quantity=3085 marked=0 text=AB price=987153 sum=3045367005 attr=7 percent=0 kind=0"},
        {0xA2, "00 01 00 00 00 01 00 0A 00 01 01 05 DC 01 0F 42 40 43",
         "command=A2 number=1 position=1 department=1 code=1 saleNumber=1 weighted=1 "
         "quantity=1.500000071246177 marked=1 text=C price=1000000 sum=1650000 attr=0 percent=10 "
         "kind=1"},
    });
}

TEST(StatusInfo, PositionAndSaleNumberOfAnAddedLineWrap) {
    ExpectAll({{0xA2, "00 00 FF FF FF",
                "command=A2 number=0 position=0 department=0 code=0 saleNumber=0 weighted=0 "
                "quantity=0 marked=0 text= price=0 sum=0 attr=0 percent=0 kind=0"}});
}

std::uint32_t SumOfAddedLine(const char* quantity, const char* price, const char* percent) {
    const std::string payload =
        std::string("00 00 00 00 00 00 00 ") + percent + " 00 00 " + quantity + " 00 " + price;
    status_info status;
    DecodeStatus({ks_saleadd, FromHex(payload)}, status);
    return status.sum;
}

TEST(StatusInfo, PercentOfTheLineSumIsRoundedHalfUp) {
    EXPECT_EQ(SumOfAddedLine("00 00 01", "00 00 05", "0A"), 6U);    // 5 + 0.50
    EXPECT_EQ(SumOfAddedLine("00 00 01", "00 00 07", "07"), 7U);    // 7 + 0.49
    EXPECT_EQ(SumOfAddedLine("00 00 02", "00 00 64", "FF"), 710U);  // 200 + 510
}

TEST(StatusInfo, LineSumIsRoundedBeforeThePercent) {
    // 0.5 kg at 1 kopeck is 1 kopeck; 50 percent of it are another one.
    EXPECT_EQ(SumOfAddedLine("01 01 F4", "00 00 01", "00"), 1U);
    EXPECT_EQ(SumOfAddedLine("01 01 F4", "00 00 01", "32"), 2U);
    EXPECT_EQ(SumOfAddedLine("01 01 F3", "00 00 01", "32"), 0U);
}

TEST(StatusInfo, KeepsTheSinglePrecisionFactorInTheLineSum) {
    EXPECT_EQ(SumOfAddedLine("01 FF FF", "FF FF FF", "00"), 1099494837U);
}

TEST(StatusInfo, KeepsLineSumsInThirtyTwoBits) {
    // 16777215 * 65535 keeps its low 32 bits; the difference to them counts as a fraction.
    EXPECT_EQ(SumOfAddedLine("00 FF FF", "FF FF FF", "00"), 4278124546U);
    // 3355443000 * 50 wraps to 268425456 before the factor 0.01.
    EXPECT_EQ(SumOfAddedLine("00 00 C8", "FF FF FF", "32"), 3358127255U);
}

TEST(StatusInfo, DeletedSaleLineHasItsNumberAsSentAndNoSum) {
    ExpectAll({
        {0xC4, "01 02 03 04 05 06 07 08 09 0A 00 0C 0D 00 0F 10 11 41 42",
         "command=C4 number=258 position=773 department=6 code=2314 saleNumber=5 weighted=0 "
         "quantity=3085 marked=0 text=AB price=987153 attr=7 percent=8 kind=0"},
        {0xC4, "01 02 FF FF 05 06 07 08 09 0A 05 05 DC 02 0F 10 11",
         "command=C4 number=258 position=0 department=6 code=2314 saleNumber=5 weighted=1 "
         "quantity=1.500000071246177 marked=1 text= price=987153 attr=7 percent=8 kind=1"},
        // No quantity stays none, and weighed goods stay weighed.
        {0xC4, "01 02 03 04 05 06 07 08 09 0A 01 00 00 00 0F 10 11",
         "command=C4 number=258 position=773 department=6 code=2314 saleNumber=5 weighted=1 "
         "quantity=0 marked=0 text= price=987153 attr=7 percent=8 kind=0"},
    });
}

TEST(StatusInfo, RefusedSaleLine) {
    ExpectAll({{0xA7, "01 02 03 04 05 06", "command=A7 number=258 position=772 saleNumber=5"},
               {0xA7, "FF FF FF FF FF", "command=A7 number=65535 position=65535 saleNumber=255"}});
}

TEST(StatusInfo, AnswersToSaleAndCashCarryAReply) {
    ExpectAll({{0xC1, "07 01", "command=C1 reply=7"}, {0xE8, "FF", "command=E8 reply=255"}});
}

TEST(StatusInfo, ClearedCheckBuffer) {
    ExpectAll({{0xC5, "01 02 03 04 05 00 07",
                "command=C5 number=258 position=773 quantity=5 marked=0 kind=0"},
               {0xC5, "01 02 FF FF FF 06",
                "command=C5 number=258 position=0 quantity=255 marked=1 kind=1"}});
}

TEST(StatusInfo, FreePriceLine) {
    ExpectAll({
        {0xC6, "01 02 03 04 05 00 07 08 09 00 0B 0C 0D 0E 0F 10 11 12 13",
         "command=C6 number=258 position=772 department=7 saleNumber=5 weighted=0 quantity=2828 "
         "marked=0 price=855567 sum=1052946 attr=8 percent=9 kind=0"},
        {0xC6, "FF FF FF FF FF 06 07 08 09 0A 05 DC 0D 0E 0F 10 11 12",
         "command=C6 number=65535 position=65535 department=7 saleNumber=255 weighted=1 "
         "quantity=1.500000071246177 marked=1 price=855567 sum=1052946 attr=8 percent=9 kind=1"},
    });
}

TEST(StatusInfo, ClosingCheck) {
    ExpectAll({
        {0xC8, "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14",
         "command=C8 number=258 section=8 position=773 quantity=5 kind=6 amount=151653132 "
         "discountPercent=14 discountSum=269554195"},
        {0xC8, "00 01 FF FF 05 06 FF 08 FF FF FF FF 01 F6 0F FF FF FF F6",
         "command=C8 number=1 section=0 position=0 quantity=5 kind=6 amount=4294967295 "
         "discountPercent=-10 discountSum=-10"},
    });
}

TEST(StatusInfo, SignByteZeroNegatesTheDiscountOfAClosingCheck) {
    ExpectAll({
        {0xC8, "01 02 03 04 05 06 07 08 09 0A 0B 0C 00 0E 0F 10 11 12 13",
         "command=C8 number=258 section=8 position=773 quantity=5 kind=6 amount=151653132 "
         "discountPercent=-14 discountSum=-269554195"},
        {0xC8, "01 02 03 04 05 06 07 08 09 0A 0B 0C 00 F6 0F FF FF FF F6",
         "command=C8 number=258 section=8 position=773 quantity=5 kind=6 amount=151653132 "
         "discountPercent=10 discountSum=10"},
        // The smallest numbers have no counterpart and stay.
        {0xC8, "01 02 03 04 05 06 07 08 09 0A 0B 0C 00 80 0F 80 00 00 00",
         "command=C8 number=258 section=8 position=773 quantity=5 kind=6 amount=151653132 "
         "discountPercent=-128 discountSum=-2147483648"},
    });
}

TEST(StatusInfo, Discount) {
    ExpectAll({
        {0xC9, "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E",
         "command=C9 number=258 position=772 quantity=5 kind=6 amount=134810123 "
         "discountPercent=13"},
        {0xC9, "FF FF FF FF 05 06 07 08 09 0A 0B 00 0D 0E",
         "command=C9 number=65535 position=65535 quantity=5 kind=6 amount=134810123 "
         "discountPercent=-13"},
    });
}

TEST(StatusInfo, KeepsTheOddWeightsOfTheCardAmount) {
    // Five bytes: the first two are lost, the third lands at 2^24, the fourth at 2^8.
    ExpectAll({
        {0xCA, "01 02 03 04 05 06 07 08 09 0A 0B 03 31 32 33 34",
         "command=CA number=258 position=772 quantity=5 text=123 kind=6 amount=150997515"},
        {0xCA, "FF FF FF FF 05 06 FF FF 00 00 01 00 31",
         "command=CA number=65535 position=65535 quantity=5 text= kind=6 amount=1"},
    });
}

TEST(StatusInfo, CardNumberEndsWhereTheAnswerEnds) {
    ExpectAll({{0xCA, "00 00 00 00 00 00 00 00 00 00 00 FF 31 32",
                "command=CA number=0 position=0 quantity=0 text=12 kind=0 amount=0"}});
}

TEST(StatusInfo, SwitchedOn) {
    ExpectAll({{0xCB, "01 02 03 04 05 06", "command=CB number=258 section=6 position=772"},
               {0xCB, "01 02 FF FF FF", "command=CB number=258 section=0 position=65535"}});
}

TEST(StatusInfo, ShiftClosed) {
    ExpectAll({{0xCC, "01 02 03", "command=CC number=258"}});
}

TEST(StatusInfo, AnyByteOfAWeightStateIsAWeight) {
    ExpectAll({{0xCD, "", "command=CD weighted=0"},
               {0xCD, "00 00 00", "command=CD weighted=0"},
               {0xCD, "01 00 00", "command=CD weighted=1"},
               {0xCD, "00 00 80", "command=CD weighted=1"}});
}

TEST(StatusInfo, MissingBytesCountAsZero) {
    ExpectAll({
        {0xA1, "", "command=A1 department=0 code=0 weighted=0 quantity=1 marked=0 kind=0"},
        {0xA1, "01", "command=A1 department=0 code=256 weighted=0 quantity=1 marked=0 kind=0"},
        {0xA1, "01 02 03 00 04",
         "command=A1 department=3 code=258 weighted=0 quantity=1024 marked=0 kind=0"},
        {0xA2, "",
         "command=A2 number=0 position=1 department=0 code=0 saleNumber=1 weighted=0 quantity=0 "
         "marked=0 text= price=0 sum=0 attr=0 percent=0 kind=0"},
        {0xA3, "", "command=A3 department=0 weighted=0 quantity=1 marked=0 text= kind=0"},
        {0xA7, "", "command=A7 number=0 position=0 saleNumber=0"},
        {0xC1, "", "command=C1 reply=0"},
        {0xC4, "",
         "command=C4 number=0 position=1 department=0 code=0 saleNumber=0 weighted=0 quantity=0 "
         "marked=0 text= price=0 attr=0 percent=0 kind=0"},
        {0xC5, "", "command=C5 number=0 position=1 quantity=0 marked=0 kind=0"},
        {0xC6, "",
         "command=C6 number=0 position=0 department=0 saleNumber=0 weighted=0 quantity=0 marked=0 "
         "price=0 sum=0 attr=0 percent=0 kind=0"},
        {0xC6, "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01",
         "command=C6 number=0 position=0 department=0 saleNumber=0 weighted=0 quantity=0 marked=0 "
         "price=0 sum=65536 attr=0 percent=0 kind=0"},
        {0xC8, "",
         "command=C8 number=0 section=1 position=1 quantity=0 kind=0 amount=0 discountPercent=0 "
         "discountSum=0"},
        {0xC9, "", "command=C9 number=0 position=0 quantity=0 kind=0 amount=0 discountPercent=0"},
        {0xCA, "", "command=CA number=0 position=0 quantity=0 text= kind=0 amount=0"},
        {0xCA, "00 00 00 00 00 00 00 00 09",
         "command=CA number=0 position=0 quantity=0 text= kind=0 amount=150994944"},
        {0xCB, "", "command=CB number=0 section=1 position=0"},
        {0xCC, "", "command=CC number=0"},
        {0xCC, "01", "command=CC number=256"},
        {0xE8, "", "command=E8 reply=0"},
    });
}

// Cut at every length, an answer reads like one whose missing bytes came as 0.
TEST(StatusInfo, AnswerOfEveryLengthReadsLikeOneFilledWithZeros) {
    // The texts stand behind the fixed bytes and are left out: a zero would belong to them.
    const std::vector<std::pair<int, std::size_t>> states = {
        {0xA1, 7},  {0xA2, 17}, {0xA3, 5},  {0xA7, 5}, {0xC1, 1}, {0xC4, 17}, {0xC5, 6}, {0xC6, 18},
        {0xC8, 19}, {0xC9, 13}, {0xCA, 11}, {0xCB, 5}, {0xCC, 2}, {0xCD, 3},  {0xE8, 1}};
    for (const auto& [code, size] : states) {
        for (std::size_t length = 0; length < size; ++length) {
            Bytes cut(length, 0x91);
            cut.shrink_to_fit();
            Bytes filled = cut;
            filled.resize(size);
            EXPECT_EQ(Decoded(code, cut), Decoded(code, filled)) << code << " " << length;
        }
    }
}

}  // namespace
}  // namespace test
