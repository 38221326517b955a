// The times that docs/host-guide.md promises, measured on the virtual clock.
#include <fstream>
#include <sstream>

#include "support/interface_fixture.h"
#include "support/requests.h"

namespace test {
namespace {

const Bytes kQuery = Frame(0xA1, {0, 0, 0, 0, 0, 0, 0});
const Bytes kCard = Frame(0xCA);
const Bytes kCountersBefore = Frame(0x8A, {0, 9, 0, 7, 0, 40, 0, 0, 0, 0, 0});
const Bytes kCountersAfter = Frame(0x8A, {0, 9, 0, 8, 0, 41, 0, 0, 0, 0, 0});

class HostGuideTimes : public InterfaceTest {
  protected:
    // The row of the guide's tables whose first cell names all of this.
    static std::string Row(const std::string& first) {
        std::ifstream guide(PROJECT_FOLDER "/docs/host-guide.md");
        for (std::string row; std::getline(guide, row);) {
            if (row.rfind("| ", 0) == 0 && row.substr(0, row.find(" |")).find(first) < row.size()) {
                return row;
            }
        }
        return "no row for " + first;
    }

    // Milliseconds that the call takes, and the words that the guide has for them.
    template <typename Call>
    void Takes(double ms, const std::string& words, const std::string& row, Call call) {
        const Micros before = world.Now();
        call();
        EXPECT_NEAR(static_cast<double>(world.Now() - before) / 1000, ms, 2) << row;
        EXPECT_THAT(Row(row), testing::HasSubstr(words));
    }

    // Exchanges that the call makes, and the words that the guide has for the most of them.
    template <typename Call>
    void Asks(std::size_t most, const std::string& words, const std::string& row, Call call) {
        world.ClearLog();
        call();
        EXPECT_EQ(world.Requests().size(), most) << row;
        EXPECT_THAT(Row(row), testing::HasSubstr(words));
    }

    // A register of firmware 302 that answers everything with its figures of a sale query, and
    // that the driver has not identified yet. Section 256 is never remembered.
    void Disoblige() {
        ConnectTooEarly(kkm_ver_302);
        line.Always(0x20, kQuery).Always(0x29, kQuery).Always(0x0A, kCountersBefore);
        line.Always(0x02, Frame(0x82, {255})).Always(0x04, Frame(0x84, {0}));
        line.Always(0x7F, Frame(0x90)).Always(0x10, Frame(0xAF)).Always(0x07, Frame(0x87));
        line.Always(0x30, Frame(0xB0)).Always(0x31, Frame(0xB1));
    }

    // A register of firmware 303 that answers everything at once.
    void Oblige() {
        line.Always(0x0B, Frame(0x7B)).Always(0x20, Frame(0xA0)).Always(0x0A, kCountersBefore);
        line.Always(0x02, Frame(0x82, {0, 0, 0, 0, 0, 0, 0, 0})).Always(0x04, Frame(0x84, {0}));
        line.Always(0x36, Frame(0xB7)).Always(0x7F, Frame(0x90)).Always(0x07, Frame(0x87));
        line.Always(0x31, Frame(0xB1)).Always(0x29, Frame(0xA9)).Always(0x30, Frame(0xB0));
    }

    // Firmware 303 takes and prints a check of one line, until the n-th request of the code, to
    // which nothing answers any more. Returns the milliseconds from that request to the end of
    // PrintCheck.
    double PrintUntil(unsigned char code, int n) {
        Connect();
        char name[] = "tea";
        cbClearSales();
        cbAddSale(name, 1.0, 1.0, 1);
        cbSetCash(1.0);
        ScriptCheck();
        Reply cut;
        Micros cut_at = 0;
        cut.at_request = [&] {
            cut_at = world.Now();
            line.Cut();
        };
        Replace(code, n, cut);
        EXPECT_EQ(PrintCheck(), 0);
        EXPECT_NE(cut_at, 0U);
        return static_cast<double>(world.Now() - cut_at) / 1000;
    }

  private:
    using Script = std::vector<std::pair<unsigned char, Bytes>>;

    void ScriptCheck() {
        script_ = {{0x20, kQuery},           {0x20, Frame(0xA2)},      {0x20, Frame(0xC0)},
                   {0x20, Frame(0xC8)},      {0x20, Frame(0xC8)},      {0x0A, kCountersBefore},
                   {0x0A, kCountersBefore},  {0x0A, kCountersAfter},   {0x02, Frame(0x82, {0})},
                   {0x04, Frame(0x84, {0})}, {0x04, Frame(0x84, {0})}, {0x04, Frame(0x84, {0})},
                   {0x04, Frame(0x84, {1})}, {0x36, Frame(0xB7)},      {0x36, Frame(0xB7)},
                   {0x21, Frame(0xC1, {0})}, {0x27, Frame(0x97)},      {0x24, Frame(0xB5)},
                   {0x25, Frame(0xE4, {1})}, {0x28, Frame(0xE8, {0})}};
        for (int i = 0; i < 5; ++i) {
            script_.emplace_back(0x7F, Frame(0x90));
        }
    }

    void Replace(unsigned char code, int n, const Reply& reply) {
        for (const auto& [asked, answer] : script_) {
            const bool replaced = asked == code && --n == 0;
            line.Answer(asked, replaced ? reply : Reply(answer));
        }
    }

    Script script_;
};

TEST_F(HostGuideTimes, HoldOnASilentLine) {
    Takes(870, "0.87 s", "`ConnectKKM`", [] { ConnectKKM(1); });
    Takes(430, "0.43 s", "`cbSetCash`", [] { cbClearTitle(); });
    Takes(430, "0.43 s", "`GetKKMVers`", [] {
        int version = 0;
        GetKKMVers(&version);
    });
    Connect();
    int number = 0;
    double sum = 0;
    Takes(420, "0.42 s", "`GetKLNum`", [&] { GetKLNum(&number); });
    Takes(420, "0.42 s", "`GetCashSum`", [&] { GetCashSum(1, &sum); });
    Takes(420, "0.42 s", "`Feed(n)`", [] { Feed(3); });
    Takes(520, "0.52 s", "`KKMPrintStr`", [] {
        char text[] = "text";
        KKMPrintStr(text);
    });
    Takes(420, "0.42 s", "`ClearIndicator`", [] { ClearIndicator(); });
    Takes(420, "0.42 s", "`Lock`", [] { Lock(); });
    Takes(420, "0.42 s", "`UnLock`", [] { UnLock(); });
    Takes(420, "0.42 s", "`CheckCancel`", [] { CheckCancel(); });
    Takes(840, "0.84 s", "`DisconnectKKM`", [] { DisconnectKKM(); });
}

TEST_F(HostGuideTimes, HoldForALineThatDiesBetweenTheExchanges) {
    Connect();
    line.Answer(0x20, Frame(0xA0));
    Takes(20 + 20 * 420, "8.4 s", "`CheckClose`", [] { CheckClose(); });
    line.Answer(0x02, Frame(0x82, {0, 0, 0, 0, 0, 0, 0, 0})).Answer(0x0A, kCountersBefore);
    Takes(40 + 20 * 420, "8.4 s", "`GetNI`", [] {
        double total = 0;
        GetNI(&total);
    });
}

TEST_F(HostGuideTimes, HoldForARegisterThatAnswersAtOnce) {
    Oblige();
    line.Answer(0x34, VersionAnswer(kkm_ver_303));
    int number = 0;
    Takes(50, "| 0.05 s |", "`ConnectKKM`", [] { ConnectKKM(1); });
    Takes(20, "| 0.02 s |", "`GetKLNum`", [&] { GetKLNum(&number); });
    Takes(20, "| n × 0.02 s |", "`Feed(n)`", [] { Feed(1); });
    Takes(120, "| 0.12 s |", "`KKMPrintStr`", [] {
        char text[] = "text";
        KKMPrintStr(text);
    });
    Takes(120, "| 0.12 s |", "`ClearIndicator`", [] { ClearIndicator(); });
    Takes(140, "| 0.14 s |", "`Lock`", [] { Lock(); });
    Takes(40, "| 0.04 s |", "`UnLock`", [] { UnLock(); });
    Takes(40, "| 0.04 s |", "`CheckCancel`", [] { CheckCancel(); });
    Takes(40, "| 0.04 s; ", "`CheckClose`", [] { CheckClose(); });
    Takes(40, "| 0.04 s |", "`DisconnectKKM`", [] { DisconnectKKM(); });
}

TEST_F(HostGuideTimes, HoldForTheMostUnhelpfulRegister) {
    int number = 0;
    char text[] = "text";
    const auto asks = [this](std::size_t most, const std::string& words, const std::string& row,
                             auto call) {
        world.Attach("/dev/ttyS0", &(line = ScriptedLine()));
        Disoblige();
        Asks(most, words, row, call);
    };
    asks(3, "| 3 exchanges + 20 ms |", "`ConnectKKM`", [this] {
        line = ScriptedLine();
        ConnectKKM(1);
    });
    asks(1, "| 1 |", "`cbSetCash`", [] { cbSetCash(1); });
    asks(2, "| 2 |", "`GetKLNum`", [&] { GetKLNum(&number); });
    asks(1, "| 1 |", "`GetKKMVers`", [&] { GetKKMVers(&number); });
    asks(1 + 3, "| 1 + n |", "`Feed(n)`", [] { Feed(3); });
    asks(2, "| 2 |", "`KKMPrintStr`", [&] { KKMPrintStr(text); });
    asks(2, "| 2 |", "`ClearIndicator`", [] { ClearIndicator(); });
    asks(3, "| 3 |", "`Lock`", [] { Lock(); });
    asks(9, "| 9 |", "`UnLock`", [] { UnLock(); });
    asks(5, "| 5 |", "`CheckCancel`", [&] {
        GetKKMVers(&number);
        world.ClearLog();
        CheckCancel();
    });
}

TEST_F(HostGuideTimes, HoldForACheckThatIsLeftOver) {
    const auto clears = [this](unsigned char sales, const std::vector<Bytes>& states, double ms) {
        world.Attach("/dev/ttyS0", &(line = ScriptedLine()));
        Connect();
        Oblige();
        line.Always(0x04, Frame(0x84, {sales})).Always(0x35, Frame(0xB5));
        line.Always(0x10, Frame(0xAF)).Always(0x03, Frame(0x83));
        for (const Bytes& state : states) {
            line.Answer(0x20, state);
        }
        Takes(ms, "0.2 to 0.5 s when a check is left over", "`CheckClose`",
              [] { EXPECT_EQ(CheckClose(), 1); });
    };
    // A check in its closing: 8 exchanges and 4 pauses of 50 ms.
    clears(0, {Frame(0xC8)}, 360);
    // A line that is pending: a barcode costs three exchanges more for its figures.
    clears(1, {Frame(0xA0), Frame(0xA3)}, 180);
    // A discount card: ten looks at the state, 4 pauses of 20 ms.
    clears(1, {Frame(0xA0), kCard, kCard, kCard, kCard, kCard, kCard, kCard, kCard, kCard, kCard},
           480);
}

TEST_F(HostGuideTimes, HoldForALineThatDiesInACheck) {
    const std::string wait = "`PrintCheck`, from then on";
    const auto dies = [this](unsigned char code, int n) {
        world.Attach("/dev/ttyS0", &(line = ScriptedLine()));
        return PrintUntil(code, n);
    };
    // The sale, the readings of the sale number, the unlocking and the locking behind the failure.
    EXPECT_NEAR(dies(0x21, 1), 410 + 20 * 420 + 840, 2);
    EXPECT_THAT(Row("at a line"), testing::HasSubstr("| 9.7 s |"));
    EXPECT_NEAR(dies(0x27, 1), 20 * 420 - 10 + 840, 2);
    EXPECT_NEAR(dies(0x25, 1), 20 * 420 - 10 + 840, 2);
    EXPECT_THAT(Row("at a name"), testing::HasSubstr("| 9.2 s |"));
    EXPECT_NEAR(dies(0x28, 1), 20 * 430 - 10 + 840, 2);
    EXPECT_THAT(Row("at the cash"), testing::HasSubstr("| 9.4 s |"));
    // 72 readings of the counters are the first that take 30 s.
    EXPECT_NEAR(dies(0x20, 5), 10 * 470 - 60 + 72 * 420 + 840, 2);
    EXPECT_THAT(Row("before the register"), testing::HasSubstr("| 36 s |"));
    EXPECT_NEAR(dies(0x7F, 5), 410 + 3500 + 9 * 470 + 72 * 420 + 840, 2);
    EXPECT_THAT(Row("at the order to print"), testing::HasSubstr("| 39 s + 0.5 s × lines |"));
    EXPECT_THAT(Row(wait), testing::HasSubstr("| 39 s + 0.5 s × lines |"));
}

}  // namespace
}  // namespace test
