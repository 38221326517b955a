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

// Hosts show these to cashiers as they stand.
const std::vector<std::pair<int, std::string>> kAdvices{
    {0, "No error."},
    {1,
     "The serial port could not be opened. Check the port number or device name, that the cable or "
     "adapter is plugged in, and that this user may open it (on Debian: member of the group "
     "dialout)."},
    {2,
     "The register did not answer, or answered wrongly. Check its power and the cable and try "
     "again. After PrintCheck compare the check counter with the one before: if it has moved, the "
     "check is on the paper and must not be printed again."},
    {3,
     "A register answers, but its firmware is not one that the driver knows (301, 302, 303, 310, "
     "400). Ask the service for a register or firmware that is supported."},
    {5,
     "The check was not printed because the paper ran out. It is still open at the register: load "
     "paper and let the cashier finish or cancel it there before the next check."},
    {6,
     "The register is in a state in which no check can be registered. Bring it to the mode for "
     "sales (or take back what is marked on it) and try again."},
    {10, "There is no such record on the control tape. Ask for 1 up to the number of records."},
    {11, "There is no such line in the check buffer. Lines count from 1 to cbGetSalesCount()."},
    {12,
     "An argument is out of its range or a null pointer. Sections are 1 to 15, tax numbers 0 to "
     "16."},
    {14,
     "The price is zero, not a number or above the register's limit. Prices are 0.01 to 99999.99 "
     "(9999.99 on firmware 300); the check was not printed."},
    {15,
     "The quantity is not a number or too large. At most 65535 pieces, or 65 of goods with a "
     "fraction."},
    {17, "The check is full: this firmware takes 19 lines. Print it and begin another."},
    {19, "The discount is outside -99 to 99 per cent; it has been set to 0."},
    {20,
     "The register refused the check for want of money: the cash is below the total, or the drawer "
     "holds too little for a return. The check was cancelled; correct the sum and print it again."},
    {32,
     "The counters do not show this check as printed. It was cancelled at the register; look at "
     "the paper and at the register's display before you print it again."},
    {34,
     "The cashier cancelled the check at the register. Nothing was printed; print it again when "
     "the cashier is ready."},
    {71, "This register has no such operation."},
};

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

TEST_F(ErrorAdviceTest, EveryAdviceReadsAsWritten) {
    ASSERT_EQ(kAdvices.size(), kNames.size());
    for (const auto& [code, advice] : kAdvices) {
        EXPECT_EQ(KKMErrorAdvice(code), advice);
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
