#include <set>

#include "support/interface_fixture.h"

namespace test {
namespace {

const std::vector<std::pair<int, std::string>> kNames{
    {0, "echOk"},           {1, "echNoPort"},  {2, "echDevice"},     {3, "echNoVersion"},
    {5, "echPaperAbsent"},  {6, "echRegKass"}, {10, "echKLRead"},    {11, "echIndex"},
    {12, "echParam"},       {14, "echPrice"},  {15, "echQuantity"},  {17, "echSalesFull"},
    {19, "echDiscount"},    {20, "echNoCash"}, {32, "echPrintTest"}, {34, "echCancelCheck"},
    {71, "echNotSupported"}};

class ErrorAdviceTest : public InterfaceTest {};

TEST_F(ErrorAdviceTest, EveryCodeHasItsName) {
    for (const auto& [code, name] : kNames) {
        EXPECT_EQ(KKMErrorName(code), name);
    }
}

TEST_F(ErrorAdviceTest, EveryCodeHasAnAdviceOfItsOwnInWholeSentences) {
    std::set<std::string> advices;
    for (const auto& [code, name] : kNames) {
        const std::string advice = KKMErrorAdvice(code);
        EXPECT_TRUE(advices.insert(advice).second) << name << " says: " << advice;
        ASSERT_FALSE(advice.empty()) << name;
        EXPECT_EQ(advice.back(), '.') << name;
    }
}

TEST_F(ErrorAdviceTest, AdviceNamesWhatTheHostCanDo) {
    const auto says = [](int code, const char* word) {
        return std::string(KKMErrorAdvice(code)).find(word) != std::string::npos;
    };
    EXPECT_TRUE(says(1, "dialout"));
    EXPECT_TRUE(says(2, "counter"));
    EXPECT_TRUE(says(5, "paper"));
    EXPECT_TRUE(says(14, "99999.99"));
    EXPECT_TRUE(says(15, "65535"));
    EXPECT_TRUE(says(17, "19 lines"));
    EXPECT_TRUE(says(19, "-99 to 99"));
    EXPECT_TRUE(says(20, "cash"));
}

TEST_F(ErrorAdviceTest, NumbersThatAreNoCodesAreToldSo) {
    for (const int code : {-1, 4, 7, 13, 70, 72, 1000}) {
        EXPECT_STREQ(KKMErrorName(code), "unknown") << code;
        EXPECT_STREQ(KKMErrorAdvice(code), "This number is not an error code of the library.");
    }
}

TEST_F(ErrorAdviceTest, AskingLeavesTheLastErrorAlone) {
    errVeskTarvo = 14;
    KKMErrorName(2);
    KKMErrorAdvice(2);
    EXPECT_EQ(errVeskTarvo, 14);
}

}  // namespace
}  // namespace test
