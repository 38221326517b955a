#include "kkm/check_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace kkm {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What is wrong with a check; "" when nothing is.
std::string Fault(const std::string& json) {
    try {
        ParseCheck(json);
    } catch (const CheckFileError& e) {
        return e.what();
    }
    return "";
}

std::string WithLine(const std::string& fields) {
    return R"({"lines": [{"name": "a", "price": 1}, {)" + fields + "}]}";
}

std::string WithField(const std::string& field) {
    return R"({"lines": [{"name": "a", "price": 1}], )" + field + "}";
}

TEST(CheckFile, ShortestCheckHasTheDefaults) {
    const CheckFile check = ParseCheck(R"({"lines": [{"name": "Хлеб", "price": 25.5}]})");
    ASSERT_EQ(check.lines.size(), 1U);
    EXPECT_EQ(check.lines[0].name, "Хлеб");
    EXPECT_EQ(check.lines[0].price, 25.5);
    EXPECT_EQ(check.lines[0].quantity, 1.0);
    EXPECT_EQ(check.lines[0].section, 1);
    EXPECT_EQ(check.mode, CheckMode::sale);
    EXPECT_EQ(check.discount, 0);
    EXPECT_FALSE(check.cash.has_value());
}

TEST(CheckFile, EveryFieldIsRead) {
    const CheckFile check = ParseCheck(R"({
        "mode": "return", "discount": -5, "cash": 500.25,
        "lines": [ {"name": "a", "price": 1, "quantity": 0.345, "section": 15},
                   {"name": "b", "price": 2} ] })");
    EXPECT_EQ(check.mode, CheckMode::refund);
    EXPECT_EQ(check.discount, -5);
    EXPECT_EQ(check.cash, 500.25);
    ASSERT_EQ(check.lines.size(), 2U);
    EXPECT_EQ(check.lines[0].quantity, 0.345);
    EXPECT_EQ(check.lines[0].section, 15);
    EXPECT_EQ(check.lines[1].name, "b");
}

TEST(CheckFile, ModesAreThree) {
    EXPECT_EQ(ParseCheck(WithField(R"("mode": "sale")")).mode, CheckMode::sale);
    EXPECT_EQ(ParseCheck(WithField(R"("mode": "credit")")).mode, CheckMode::credit);
    EXPECT_EQ(Fault(WithField(R"("mode": "refund")")),
              R"(mode: must be "sale", "return" or "credit", not "refund")");
    EXPECT_EQ(Fault(WithField(R"("mode": 1)")),
              R"(mode: must be "sale", "return" or "credit", not 1)");
}

TEST(CheckFile, SyntaxErrorIsNamedByItsPlace) {
    EXPECT_EQ(Fault("{\n  \"lines\": [\n    { \"name\": }\n] }"),
              "file line 3, column 15: syntax error while parsing value - unexpected '}'; "
              "expected '[', '{', or a literal");
    EXPECT_THAT(Fault(""), StartsWith("file line 1, column 1: "));
    EXPECT_THAT(Fault("x"), StartsWith("file line 1, column 1: "));
}

TEST(CheckFile, BytesThatAreNoUtf8AreRefused) {
    EXPECT_THAT(Fault("{\"lines\": [{\"name\": \"\xFF\", \"price\": 1}]}"),
                HasSubstr("ill-formed UTF-8"));
}

TEST(CheckFile, NumberThatNoDoubleHoldsIsRefused) {
    EXPECT_EQ(Fault(WithLine(R"("name": "a", "price": 1e999)")), "number overflow parsing '1e999'");
}

TEST(CheckFile, FieldGivenTwiceIsRefused) {
    EXPECT_EQ(Fault(WithLine(R"("name": "a", "price": 1, "price": 2)")),
              "\"price\" is given twice");
}

TEST(CheckFile, SameFieldInTwoLinesIsNotGivenTwice) {
    EXPECT_EQ(Fault(WithLine(R"("name": "a", "price": 1)")), "");
}

TEST(CheckFile, RootHasToBeAnObject) {
    EXPECT_EQ(Fault("[1]"), "must be an object {...}, not array");
    EXPECT_EQ(Fault("5"), "must be an object {...}, not number");
}

TEST(CheckFile, LinesAreAListOfAtLeastOne) {
    EXPECT_EQ(Fault("{}"), "lines: is missing");
    EXPECT_EQ(Fault(R"({"lines": []})"), "lines: must be a list [...] of at least one line");
    EXPECT_EQ(Fault(R"({"lines": {}})"), "lines: must be a list [...] of at least one line");
    EXPECT_EQ(Fault(R"({"lines": [5]})"), "sale line 1: must be an object {...}, not number");
}

TEST(CheckFile, UnknownFieldsAreNotPassedOver) {
    EXPECT_EQ(Fault(WithField(R"("discont": 5)")),
              "discont: no such field (there are: lines, mode, discount, cash)");
    EXPECT_EQ(Fault(WithLine(R"("name": "a", "price": 1, "count": 2)")),
              "sale line 2, count: no such field (there are: name, price, quantity, section)");
}

TEST(CheckFile, FaultyFieldIsNamedByLineAndName) {
    const std::pair<const char*, const char*> faults[] = {
        {R"("price": 1)", "sale line 2, name: is missing"},
        {R"("name": "a")", "sale line 2, price: is missing"},
        {R"("name": 5, "price": 1)", "sale line 2, name: must be a text, not number"},
        {R"("name": "", "price": 1)", "sale line 2, name: must not be empty"},
        {R"("name": "a\u0000b", "price": 1)",
         "sale line 2, name: must not hold control characters"},
        {R"("name": "a\u001fb", "price": 1)",
         "sale line 2, name: must not hold control characters"},
        {R"("name": "a\u007fb", "price": 1)",
         "sale line 2, name: must not hold control characters"},
        {R"("name": "a b", "price": 1)", ""},
        {R"("name": "a", "price": "1")", "sale line 2, price: must be a number, not string"},
        {R"("name": "a", "price": null)", "sale line 2, price: must be a number, not null"},
        {R"("name": "a", "price": 1, "quantity": true)",
         "sale line 2, quantity: must be a number, not boolean"},
        {R"("name": "a", "price": 1, "quantity": 0)", "sale line 2, quantity: must be above 0"},
        {R"("name": "a", "price": 1, "quantity": -1)", "sale line 2, quantity: must be above 0"},
        {R"("name": "a", "price": 1, "section": 1.5)",
         "sale line 2, section: must be a whole number, not 1.5"},
        {R"("name": "a", "price": 1, "section": 99999999999)",
         "sale line 2, section: must be a whole number, not 99999999999"},
        {R"("name": "a", "price": 1, "section": -99999999999)",
         "sale line 2, section: must be a whole number, not -99999999999"},
    };
    for (const auto& [fields, fault] : faults) {
        EXPECT_EQ(Fault(WithLine(fields)), fault);
    }
}

TEST(CheckFile, RegistersOwnLimitsAreLeftToTheLibrary) {
    EXPECT_EQ(Fault(WithLine(R"("name": "a", "price": 0, "quantity": 70000, "section": 16)")), "");
    EXPECT_EQ(Fault(WithField(R"("discount": 100)")), "");
}

TEST(CheckFile, CashIsHeldToWhatTheRegisterCanBeTold) {
    EXPECT_EQ(Fault(WithField(R"("cash": 42949672.95)")), "");
    EXPECT_EQ(Fault(WithField(R"("cash": 0)")), "");
    EXPECT_EQ(Fault(WithField(R"("cash": 42949672.96)")), "cash: must be from 0 to 42949672.95");
    EXPECT_EQ(Fault(WithField(R"("cash": -0.01)")), "cash: must be from 0 to 42949672.95");
    EXPECT_EQ(Fault(WithField(R"("cash": "5")")), "cash: must be a number, not string");
}

TEST(CheckFile, DashIsStandardInput) {
    std::istringstream input(R"({"lines": [{"name": "a", "price": 1}]})");
    EXPECT_EQ(ReadCheck("-", input).lines.size(), 1U);
    std::istringstream broken("{}");
    try {
        ReadCheck("-", broken);
        FAIL();
    } catch (const CheckFileError& e) {
        EXPECT_STREQ(e.what(), "standard input: lines: is missing");
    }
}

TEST(CheckFile, FileThatCannotBeReadIsNamedWithTheReason) {
    std::istringstream unused;
    const std::pair<const char*, const char*> files[] = {
        {"/nowhere/check.json", "/nowhere/check.json: No such file or directory"},
        {"/", "/: is empty or cannot be read"},
        {"/dev/null", "/dev/null: is empty or cannot be read"},
    };
    for (const auto& [path, fault] : files) {
        try {
            ReadCheck(path, unused);
            FAIL() << path;
        } catch (const CheckFileError& e) {
            EXPECT_STREQ(e.what(), fault);
        }
    }
}

TEST(CheckFile, ExampleIsACheck) {
    std::istringstream unused;
    EXPECT_EQ(ReadCheck(PROJECT_FOLDER "/examples/check.json", unused).lines.size(), 3U);
}

}  // namespace
}  // namespace kkm
