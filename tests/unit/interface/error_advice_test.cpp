#include <gtest/gtest.h>

#include <string>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace test {
namespace {

TEST(ErrorAdvice, EveryCodeOfTheLibraryHasItsName) {
    const std::pair<int, const char*> names[] = {
        {0, "echOk"},           {1, "echNoPort"},        {2, "echDevice"},
        {3, "echNoVersion"},    {5, "echPaperAbsent"},   {6, "echRegKass"},
        {10, "echKLRead"},      {11, "echIndex"},        {12, "echParam"},
        {14, "echPrice"},       {15, "echQuantity"},     {17, "echSalesFull"},
        {19, "echDiscount"},    {20, "echNoCash"},       {32, "echPrintTest"},
        {34, "echCancelCheck"}, {71, "echNotSupported"},
    };
    for (const auto& [code, name] : names) {
        EXPECT_STREQ(KKMErrorName(code), name);
    }
}

TEST(ErrorAdvice, EveryNumberHasWholeSentences) {
    for (int code = -1; code < 100; ++code) {
        const std::string advice = KKMErrorAdvice(code);
        EXPECT_GE(advice.size(), 9U) << code;
        EXPECT_TRUE(advice[0] >= 'A' && advice[0] <= 'Z') << code << ": " << advice;
        EXPECT_EQ(advice.back(), '.') << code << ": " << advice;
    }
}

TEST(ErrorAdvice, NumberThatIsNoCodeSaysSo) {
    for (const int code : {-1, 4, 7, 9, 13, 16, 18, 33, 70, 72, 1000}) {
        EXPECT_STREQ(KKMErrorName(code), "unknown") << code;
    }
    EXPECT_STREQ(KKMErrorAdvice(4), "This number is not an error code of the library.");
}

TEST(ErrorAdvice, PaperThatRanOutIsNotAnsweredByAnotherCheck) {
    EXPECT_NE(std::string(KKMErrorAdvice(5)).find("It is still open at the register: load paper"),
              std::string::npos);
}

TEST(ErrorAdvice, LastErrorIsLeftAlone) {
    errVeskTarvo = 14;
    KKMErrorName(5);
    KKMErrorAdvice(5);
    EXPECT_EQ(GetErrorCode(), 14);
    errVeskTarvo = 0;
}

}  // namespace
}  // namespace test
