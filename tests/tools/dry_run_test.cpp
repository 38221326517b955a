// A check before it is printed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/commands_fixture.h"

namespace kkm {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

using DryRunTest = CommandsTest;

TEST_F(DryRunTest, ShowsTheReceiptAndTouchesNoRegister) {
    const std::string name(40, 'x');
    const std::string check = R"({"lines": [{"name": "Сыр «А»", "price": 2, "quantity": 1.5},)"
                              R"( {"name": ")" +
                              name + R"(", "price": 1}], "discount": -10, "cash": 2})";
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"}, check), 7);
    EXPECT_EQ(out.str().substr(0, out.str().find("echOther")),
              "the check on firmware 303; nothing is sent\n"
              "   1  Сыр ?А?\n"
              "      1.500 x 2.00 = 3.00\n"
              "      printed as '?': « »\n"
              "   2  xxxxxxxxxxxxxxxxxx\n"
              "      + xxxxxxxxxxxxxxxxxx\n"
              "      + xxxx\n"
              "      short name: xxxxxxxxxxxxxxx\n"
              "      1 x 1.00 = 1.00\n"
              "discount 10 % = -0.40\n"
              "total 3.60\n"
              "cash 2.00\n"
              "refused: the cash is below the total: ");
    for (const std::string& call : library.calls) {
        EXPECT_EQ(call.rfind("cb", 0), 0U) << call;
    }
}

TEST_F(DryRunTest, CutsNamesAsTheFirmwareDoes) {
    const std::string name = std::string(15, 'a') + std::string(57, 'b') + "ccc";
    const std::string check = R"({"cash": 1, "lines": [{"name": ")" + name + R"(", "price": 1}]})";
    EXPECT_EQ(Kkm({"check", "--dry-run", "--firmware", "301", "-"}, check), 0);
    EXPECT_THAT(out.str(), HasSubstr("   1  aaaaaaaaaaaaaaa\n"));
    EXPECT_THAT(out.str(), HasSubstr("not printed: " + std::string(57, 'b') + "ccc\n"));
    EXPECT_THAT(out.str(), testing::Not(HasSubstr("short name")));
    EXPECT_EQ(Kkm({"check", "--dry-run", "--firmware", "400", "-"}, check), 0);
    EXPECT_THAT(out.str(), HasSubstr("   1  aaaaaaaaaaaaaaabbb\n      + bbbbbbbbbbbbbbbbbb\n"));
    EXPECT_THAT(out.str(), HasSubstr("bbb\n      short name: aaaaaaaaaaaaaaa\n"));
    EXPECT_THAT(out.str(), HasSubstr("not printed: ccc\n"));
    EXPECT_THAT(out.str(), HasSubstr("this firmware takes no cash from a program: paid exactly\n"));
}

TEST_F(DryRunTest, RefusesWhatWillBeRefused) {
    std::string lines = R"({"name": "a", "price": 1})";
    for (int i = 1; i < 20; ++i) {
        lines += R"(, {"name": "a", "price": 1})";
    }
    EXPECT_EQ(
        Kkm({"check", "--dry-run", "--firmware", "302", "-"}, R"({"lines": [)" + lines + "]}"), 7);
    EXPECT_THAT(out.str(), EndsWith("refused: this firmware takes 19 lines\n"));
    library.failing["cbAddSale"] = 14;
    EXPECT_EQ(
        Kkm({"check", "--dry-run", "--json", "-"}, R"({"lines": [{"name": "a", "price": 0}]})"), 7);
    EXPECT_THAT(out.str(), HasSubstr("\"error\": 14\n"));
    EXPECT_THAT(out.str(), HasSubstr("\"refused\": true,\n"));
}

TEST_F(DryRunTest, RefusesCashBelowTheTotalOfASaleOnly) {
    const std::string rest = R"(, "cash": 1, "lines": [{"name": "a", "price": 2}]})";
    const std::vector<const char*> dry_run = {"check", "--dry-run", "--json", "-"};
    EXPECT_EQ(Kkm(dry_run, R"({"mode": "sale")" + rest), 7);
    EXPECT_THAT(out.str(), HasSubstr("  \"total\": 2.0,\n  \"cash\": 1.0,\n  \"change\": null,\n"
                                     "  \"refused\": true,\n  \"why\": [\n"
                                     "    \"the cash is below the total: echOther (20)"));
    for (const char* mode : {"return", "credit"}) {
        EXPECT_EQ(Kkm(dry_run, R"({"mode": ")" + std::string(mode) + "\"" + rest), 0) << mode;
        EXPECT_THAT(out.str(), HasSubstr("\"mode\": \"" + std::string(mode) + "\""));
        EXPECT_THAT(out.str(), HasSubstr("\"refused\": false,\n  \"why\": []\n"));
    }
    EXPECT_EQ(Kkm({"check", "--dry-run", "--firmware", "310", "-"}, R"({"mode": "sale")" + rest),
              0);
    EXPECT_EQ(
        Kkm({"check", "--dry-run", "-"}, R"({"cash": 0, "lines": [{"name": "a", "price": 2}]})"),
        0);
}

TEST_F(DryRunTest, RefusesASumThatTheRegisterCannotHold) {
    const auto check = [](const char* quantity) {
        return R"({"lines": [{"name": "a", "price": 99999.99, "quantity": )" +
               std::string(quantity) + "}]}";
    };
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"}, check("65535")), 7);
    EXPECT_THAT(out.str(),
                HasSubstr("refused: line 1: the sum is above 42949672.95: echOther (14)\n"));
    EXPECT_THAT(out.str(), testing::Not(HasSubstr("total")));
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"}, check("429")), 0);
    EXPECT_THAT(out.str(), EndsWith("total 42899995.71\n"));
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"}, check("430")), 7);
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"},
                  R"({"lines": [{"name": "a", "price": 99999.99, "quantity": 429},
                                {"name": "b", "price": 99999.99}]})"),
              7);
    EXPECT_THAT(out.str(),
                HasSubstr("refused: line 2: the sum is above 42949672.95: echOther (14)\n"));
}

TEST_F(DryRunTest, JudgesTheDiscountOnce) {
    library.failing["cbSetDiscountValue"] = 19;
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"},
                  R"({"discount": 100, "lines": [{"name": "a", "price": 1}]})"),
              7);
    EXPECT_THAT(out.str(), HasSubstr("      1 x 1.00 = 1.00\nrefused: discount: echOther (19)"));
    EXPECT_THAT(out.str(), testing::Not(HasSubstr("surcharge")));
}

TEST_F(DryRunTest, TellsOfAQuantityThatBecomesNothing) {
    EXPECT_EQ(Kkm({"check", "--dry-run", "-"},
                  R"({"lines": [{"name": "a|b", "price": 100, "quantity": 0.0004}]})"),
              0);
    EXPECT_THAT(out.str(), EndsWith("   1  a|b\n"
                                    "      0.000 x 100.00 = 0.00\n"
                                    "      so small a quantity becomes nothing\n"
                                    "total 0.00\n"));
}

TEST_F(DryRunTest, TellsProgramsEveryFigure) {
    EXPECT_EQ(Kkm({"check", "--dry-run", "--json", "-"},
                  R"({"discount": -5, "cash": 500, "lines":
                      [{"name": "a", "price": 680, "quantity": 0.345, "section": 2}]})"),
              0);
    EXPECT_EQ(out.str(),
              "{\n  \"firmware\": 303,\n  \"mode\": \"sale\",\n  \"lines\": [\n    {\n"
              "      \"name\": \"a\",\n      \"price\": 680.0,\n      \"quantity\": 0.345,\n"
              "      \"section\": 2,\n      \"printed\": \"a\",\n      \"pieces\": [\n"
              "        \"a\"\n      ],\n      \"short_name\": \"a\",\n      \"lost\": [],\n      "
              "\"cut\": \"\",\n"
              "      \"sum\": 234.6,\n      \"error\": 0\n    }\n  ],\n"
              "  \"discount\": -5,\n  \"discount_sum\": -11.73,\n  \"total\": 222.87,\n"
              "  \"cash\": 500.0,\n  \"change\": 277.13,\n  \"refused\": false,\n"
              "  \"why\": []\n}\n");
}

}  // namespace
}  // namespace kkm
