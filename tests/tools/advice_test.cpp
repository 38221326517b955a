#include "kkm/advice.h"

#include <gtest/gtest.h>

#include <string>

namespace kkm {
namespace {

TEST(Advice, EveryCodeOfTheLibraryHasItsName) {
    const std::pair<int, const char*> names[] = {
        {0, "echOk"},           {1, "echNoPort"},        {2, "echDevice"},
        {3, "echNoVersion"},    {5, "echPaperAbsent"},   {6, "echRegKass"},
        {10, "echKLRead"},      {11, "echIndex"},        {12, "echParam"},
        {14, "echPrice"},       {15, "echQuantity"},     {17, "echSalesFull"},
        {19, "echDiscount"},    {20, "echNoCash"},       {32, "echPrintTest"},
        {34, "echCancelCheck"}, {71, "echNotSupported"},
    };
    for (const auto& [code, name] : names) {
        EXPECT_STREQ(AdviceFor(code).name, name);
    }
}

TEST(Advice, EveryNumberHasWholeSentences) {
    for (int code = -1; code < 100; ++code) {
        const Advice advice = AdviceFor(code);
        for (const std::string text : {advice.happened, advice.remedy}) {
            EXPECT_GT(text.size(), 10U) << code;
            EXPECT_TRUE(text[0] >= 'A' && text[0] <= 'Z') << code << ": " << text;
            EXPECT_EQ(text.back(), '.') << code << ": " << text;
        }
    }
}

TEST(Advice, NumberThatIsNoCodeSaysSo) {
    for (const int code : {-1, 4, 7, 9, 13, 16, 18, 33, 70, 72, 1000}) {
        EXPECT_STREQ(AdviceFor(code).name, "unknown") << code;
    }
    EXPECT_STREQ(AdviceFor(4).happened, "This is not an error code of the library.");
}

TEST(Advice, PaperThatRanOutIsNotAnsweredByAnotherCheck) {
    EXPECT_STREQ(AdviceFor(5).remedy,
                 "Load paper and finish the check at the register. Do not send it again.");
}

}  // namespace
}  // namespace kkm
