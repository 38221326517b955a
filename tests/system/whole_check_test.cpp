// Whole checks: the shipped library prints them on registers of every firmware.
#include <atomic>
#include <chrono>
#include <regex>
#include <thread>

#include "system/register_fixture.h"
#include "virtual_register/cp866.h"

namespace test {
namespace {

using virtual_register::CheckType;
using virtual_register::PrintedCheck;
using virtual_register::SaleLine;
using virtual_register::to_cp866;

constexpr auto kMilk = "\x8C\xAE\xAB\xAE\xAA\xAE";  // "Молоко"

std::string ShortName(const SaleLine& line) {
    return std::string(virtual_register::without_padding(line.name.text()));
}

class WholeCheckTest : public RegisterTest {
  protected:
    void ExpectAtRest() {
        EXPECT_FALSE(Memory().check.is_open());
        EXPECT_TRUE(kkm->Says("state idle, keyboard free"));
    }

    // One line of 20.00, for checks whose point is something else.
    void AddTea() { ASSERT_TRUE(Add("Tea", 20.0, 1.0, 4)); }
};

// --- a sale on each firmware

class FirmwareTest : public WholeCheckTest, public testing::WithParamInterface<int> {
  protected:
    bool SendsTitles() const { return GetParam() > 301; }
    bool SendsCash() const { return GetParam() <= 303; }
};

INSTANTIATE_TEST_SUITE_P(Firmware, FirmwareTest, testing::Values(301, 302, 303, 310, 400),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_P(FirmwareTest, PrintsASaleWithDiscountAndCash) {
    const std::string cheese = to_cp866("Сыр российский выдержанный");
    Start(GetParam());
    Connect();
    ASSERT_TRUE(Add(kMilk, 45.50, 2.0, 1));
    ASSERT_TRUE(Add(cheese, 612.40, 1.25, 2));
    ASSERT_TRUE(Add("Bag", 3.0, 1.0, 15));
    ASSERT_EQ(library.cbSetDiscountValue(-10), 1);
    ASSERT_EQ(library.cbSetCash(1000.0), 1);
    EXPECT_DOUBLE_EQ(library.cbGetSum(), 773.55);

    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(Heard(), (Texts{"query", "prepare 0", "prepare 100"}));
    EXPECT_EQ(library.cbGetSalesCount(), 0);
    ExpectAtRest();

    const PrintedCheck check = LastCheck();
    EXPECT_EQ(check.number, 1);
    EXPECT_EQ(check.type, CheckType::sale);
    EXPECT_EQ(check.discount_percent, -10);
    EXPECT_EQ(check.discount_kopecks, -8595);
    EXPECT_EQ(check.total_kopecks, 77355U);
    EXPECT_EQ(check.cash_kopecks, SendsCash() ? 100000U : 77355U);
    EXPECT_EQ(check.change_kopecks, SendsCash() ? 22645U : 0U);

    ASSERT_EQ(check.lines.size(), 3U);
    EXPECT_EQ(ShortName(check.lines[0]), kMilk);
    EXPECT_EQ(check.lines[0].barcode.text(), "1234567890123");
    EXPECT_EQ(check.lines[0].price_kopecks, 4550U);
    EXPECT_EQ(check.lines[0].quantity_thousandths, 2000U);
    EXPECT_EQ(check.lines[0].amount_kopecks, 9100U);
    EXPECT_EQ(check.lines[0].department, 1);
    EXPECT_EQ(check.lines[0].code, 1);
    EXPECT_FALSE(check.lines[0].weighed);
    EXPECT_EQ(ShortName(check.lines[1]), cheese.substr(0, 14)) << "15 characters, the last a blank";
    EXPECT_EQ(check.lines[1].printed_name(), SendsTitles() ? cheese : cheese.substr(0, 14));
    EXPECT_EQ(check.lines[1].quantity_thousandths, 1250U);
    EXPECT_EQ(check.lines[1].amount_kopecks, 76550U);
    EXPECT_EQ(check.lines[1].department, 2);
    EXPECT_TRUE(check.lines[1].weighed);
    EXPECT_EQ(check.lines[2].quantity_thousandths, 1000U) << "one piece travels as 0";
    EXPECT_EQ(check.lines[2].department, 15);

    int number = 0;
    EXPECT_EQ(library.GetCheckCount(&number), 1);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(library.GetSaleNum(&number), 1);
    EXPECT_EQ(number, 4);
    double total = 0.0;
    EXPECT_EQ(library.GetNI(&total), 1);
    EXPECT_DOUBLE_EQ(total, 773.55);
    EXPECT_EQ(Memory().drawer_kopecks, 100000 + 77355);

    EXPECT_EQ(Memory().parameter(7), 1);
    library.DisconnectKKM();
    EXPECT_EQ(Memory().parameter(7), 0);
    EXPECT_NE(folder.Traced().find("Info: TestCheckPrint - ok\n"), std::string::npos);
}

TEST_F(WholeCheckTest, PaperShowsTheReceipt) {
    Start(303, {"--serial", "00042715", "--net", "7"});
    Connect();
    ASSERT_TRUE(Add(kMilk, 45.50, 2.0, 1));
    ASSERT_TRUE(Add(to_cp866("Сыр российский выдержанный"), 612.40, 1.25, 2));
    ASSERT_EQ(library.cbSetDiscountValue(-10), 1);
    ASSERT_EQ(library.cbSetCash(1000.0), 1);
    EXPECT_EQ(Print("barcode 4601234567890"), 0);

    const std::regex stamp(R"(\d\d\.\d\d\.\d\d \d\d:\d\d)");
    EXPECT_EQ(std::regex_replace(Paper(), stamp, "DD.MM.YY HH:MM"),
              "        МАГАЗИН\n"
              "       \"У ДОМА\"\n"
              "КАССА 00042715\n"
              "ЧЕК 1     DD.MM.YY HH:MM\n"
              "ПРОДАЖА          СМЕНА 1\n"
              "Молоко\n"
              "2 x 45.50         =91.00\n"
              "Сыр российский выдержанн\n"
              "ый\n"
              "1.250 x 612.40   =765.50\n"
              "СКИДКА -10%       -85.65\n"
              "ИТОГО            =770.85\n"
              "НАЛИЧНЫМИ        1000.00\n"
              "СДАЧА             229.15\n"
              "        СПАСИБО\n"
              "      ЗА ПОКУПКУ!\n"
              "- - - - - - - - - - - -\n");
}

// --- other kinds of checks

TEST_F(WholeCheckTest, RegisterAt57600TakesASurcharge) {
    Start(310, {"--baud", "57600"});
    Connect();
    ASSERT_TRUE(Add("Tea", 20.10, 3.0, 4));
    ASSERT_EQ(library.cbSetDiscountValue(7), 1);
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(LastCheck().discount_percent, 7);
    EXPECT_EQ(LastCheck().discount_kopecks, 422);
    EXPECT_EQ(LastCheck().total_kopecks, 6452U);
    EXPECT_NE(folder.Traced().find("TTarvoVesk::Connect: error getKKMVersion\n"),
              std::string::npos);
    ExpectAtRest();
}

TEST_F(WholeCheckTest, ReturnTakesMoneyFromTheDrawer) {
    Start(302, {"--drawer", "5000"});
    Connect();
    AddTea();
    library.cbSetReturnMode(1);
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(LastCheck().type, CheckType::refund);
    EXPECT_EQ(LastCheck().total_kopecks, 2000U);
    EXPECT_EQ(Memory().drawer_kopecks, 3000);
    EXPECT_EQ(library.cbGetReturnMode(), 0) << "the buffer was cleared";
    ExpectAtRest();
}

TEST_F(WholeCheckTest, CreditLeavesTheDrawerAlone) {
    Start(310);
    Connect();
    AddTea();
    library.cbSetCreditMode(1);
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(LastCheck().type, CheckType::credit);
    EXPECT_EQ(Memory().drawer_kopecks, 100000);
    double sum = 0.0;
    EXPECT_EQ(library.GetCashSum(2, &sum), 1);
    EXPECT_EQ(sum, 0.0) << "credit is no payment of any kind";
    EXPECT_EQ(library.GetNI(&sum), 1);
    EXPECT_EQ(sum, 20.0);
}

TEST_F(WholeCheckTest, EmptyBufferPrintsOneZeroLine) {
    Start(400);
    Connect();
    EXPECT_EQ(Print(), 0);
    const PrintedCheck check = LastCheck();
    ASSERT_EQ(check.lines.size(), 1U);
    EXPECT_EQ(check.lines[0].name.text(), std::string(15, '\0'));
    EXPECT_EQ(check.lines[0].price_kopecks, 0U);
    EXPECT_EQ(check.lines[0].quantity_thousandths, 0U);
    EXPECT_EQ(check.lines[0].department, 1);
    EXPECT_TRUE(check.lines[0].weighed);
    EXPECT_EQ(check.total_kopecks, 0U);
    EXPECT_EQ(library.cbGetSalesCount(), 0);
}

TEST_F(WholeCheckTest, BufferThatIsKeptPrintsAgain) {
    Start(303);
    Connect();
    library.cbSetClearBufMode(0);
    AddTea();
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(library.cbGetSalesCount(), 1);
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(LastCheck().number, 2);
    EXPECT_EQ(Memory().tape.count(), 2);
    EXPECT_EQ(Memory().drawer_kopecks, 100000 + 4000);
}

// --- checks that fail

TEST_F(WholeCheckTest, CashBelowTheTotalIsCode20AndCancelsTheCheck) {
    Start(303);
    Connect();
    AddTea();
    ASSERT_EQ(library.cbSetCash(19.99), 1);
    EXPECT_EQ(Print(), 20);
    EXPECT_EQ(Heard(), (Texts{"query", "prepare 0", "error 20"}));
    EXPECT_EQ(Memory().checks, 0);
    EXPECT_EQ(library.cbGetSalesCount(), 1) << "the host may correct its check";
    EXPECT_FALSE(Memory().check.is_open());
    EXPECT_EQ(Paper(), "");
}

TEST_F(WholeCheckTest, ReturnFromAnEmptyDrawerIsCode20) {
    Start(400, {"--drawer", "1999"});
    Connect();
    AddTea();
    library.cbSetReturnMode(1);
    EXPECT_EQ(Print(), 20);
    EXPECT_EQ(Memory().checks, 0);
    EXPECT_EQ(Memory().drawer_kopecks, 1999);
    EXPECT_FALSE(Memory().check.is_open());
}

TEST_F(WholeCheckTest, SumThatTheRegisterCannotHoldIsCode14) {
    Start(310);
    Connect();
    AddTea();
    ASSERT_TRUE(Add("Gold", 99999.99, 65535.0, 1));
    EXPECT_EQ(Print(), 14);
    EXPECT_EQ(Heard(), (Texts{"query", "prepare 0", "error 14"}));
    EXPECT_EQ(Memory().checks, 0);
    EXPECT_FALSE(Memory().check.is_open());
    EXPECT_TRUE(kkm->Says("state idle"));
}

TEST_F(WholeCheckTest, CashierWhoDeclinesIsCode34) {
    Start(302);
    Connect();
    AddTea();
    EXPECT_EQ(Print("cancel"), 34);
    EXPECT_EQ(Heard(), Texts{"error 34"});
    EXPECT_EQ(Memory().checks, 0);
    EXPECT_EQ(library.cbGetSalesCount(), 1);
}

// The register keeps its error in memory (301) or tells it by command (310).
class PaperTest : public WholeCheckTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Firmware, PaperTest, testing::Values(301, 310),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_P(PaperTest, CheckWithoutPaperIsCode5AndStaysToBeFinished) {
    Start(GetParam());
    Connect();
    AddTea();
    HostEvents::Get().at_query = [&] { kkm->Say("paper out"); };
    EXPECT_EQ(Print(), 5);
    EXPECT_EQ(Heard(), (Texts{"query", "prepare 0", "prepare 100", "error 5"}));
    EXPECT_EQ(Memory().checks, 0);
    EXPECT_EQ(Memory().last_error(), 16);
    EXPECT_TRUE(Memory().check.is_open());
    EXPECT_TRUE(kkm->Says("keyboard free"));

    kkm->Say("paper in");
    kkm->Say("key 0x01");
    EXPECT_EQ(Memory().checks, 1);
    EXPECT_EQ(LastCheck().total_kopecks, 2000U);
    EXPECT_NE(Paper().find("Tea\n1 x 20.00         =20.00\n"), std::string::npos);
}

// --- lines that are pulled

TEST_F(WholeCheckTest, PlugPulledInMidCheckIsCode2AndTheNextCheckPrintsOnce) {
    Start(310);
    Connect();
    AddTea();
    HostEvents::Get().at_query = [&] { kkm->Say("power off"); };
    EXPECT_EQ(Print(), 2);
    EXPECT_EQ(Heard(), (Texts{"query", "prepare 0", "error 2"}));
    EXPECT_EQ(Memory().checks, 0);

    kkm->Say("power on");
    HostEvents::Get().at_query = nullptr;
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(Memory().checks, 1);
    EXPECT_EQ(Memory().tape.count(), 1);
    ExpectAtRest();
}

TEST_F(WholeCheckTest, CableGoneAmongTheLinesIsCode2AndTheNextCheckPrintsOnce) {
    constexpr int kLines = 6;
    Start(303);
    Connect();
    for (int line = 0; line < kLines; ++line) {
        AddTea();
    }
    std::thread pull;
    HostEvents::Get().at_query = [&] {
        pull = std::thread([&] {
            while (Memory().sale_number() == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            kkm->Kill();
        });
    };
    EXPECT_EQ(Print(), 2);
    pull.join();
    EXPECT_EQ(Heard(), (Texts{"query", "prepare 0", "error 2"}));
    EXPECT_EQ(library.cbGetSalesCount(), kLines);
    EXPECT_EQ(Memory().checks, 0);
    EXPECT_TRUE(Memory().check.is_open()) << "the register lost its line, not its memory";
    library.DisconnectKKM();
    EXPECT_EQ(library.GetErrorCode(), 0);

    Start(303);
    Connect();
    HostEvents::Get().at_query = nullptr;
    ASSERT_EQ(library.CheckClose(), 1) << "cancels what is open";
    EXPECT_FALSE(Memory().check.is_open());
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(Memory().checks, 1);
    EXPECT_EQ(Memory().tape.count(), kLines);
    ExpectAtRest();
}

// --- a check that somebody left at the register

class OpenCheckTest : public WholeCheckTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Firmware, OpenCheckTest, testing::Values(301, 303),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_P(OpenCheckTest, CheckCloseCancelsWhatIsOpenAtTheRegister) {
    Start(GetParam());
    Connect();
    kkm->Say("sell 5.00 Bread");
    ASSERT_TRUE(Memory().check.is_open());
    EXPECT_EQ(library.CheckClose(), 1) << library.GetErrorCode();
    EXPECT_FALSE(Memory().check.is_open());

    AddTea();
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(LastCheck().lines.size(), 1U);
    ExpectAtRest();
}

TEST_F(WholeCheckTest, OpenCheckIsShownAndWaitedFor) {
    Start(303);
    Connect();
    AddTea();
    kkm->Say("sell 5.00 Bread");
    kkm->Say("host");
    std::string indicator;
    std::atomic<bool> printed{false};
    // The cashier, who sees the message and ends the open check, then asks for the host's.
    std::thread cashier([&] {
        for (int look = 0; look < 100 && indicator.empty(); ++look) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            indicator = kkm->Says("indicator \"Check is opened\"") ? "Check is opened" : "";
        }
        kkm->Say("cancel");
        // Again, when the driver has repeated its message and so taken the request back.
        while (!printed) {
            const std::string status = kkm->Status();
            const auto has = [&](const char* text) {
                return status.find(text) != std::string::npos;
            };
            if (has("checks 0, ") && has("open check: 0 lines") && !has("asks the host")) {
                kkm->Say("host");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    });
    EXPECT_EQ(library.PrintCheck(), 1);
    printed = true;
    cashier.join();
    EXPECT_EQ(indicator, "Check is opened");
    EXPECT_EQ(LastCheck().lines.size(), 1U);
    EXPECT_EQ(LastCheck().total_kopecks, 2000U);
}

}  // namespace
}  // namespace test
