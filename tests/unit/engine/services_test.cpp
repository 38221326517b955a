#include "unit/engine/engine_test.h"

namespace test {
namespace {

const std::string kBlankLine = "20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20";

class EngineServicesTest : public EngineTest {
  protected:
    explicit EngineServicesTest(kkm_ver version = kkm_ver_303) : EngineTest(version) {
        line.Always(request::kShowInfo, Frame(0x87));
    }

    void HoldSerial(const std::string& text) {
        line.Answer(request::kRam, Frame(0x84, Bytes(text.begin(), text.end())));
    }
};

class ServicesAt302Test : public EngineServicesTest {
  protected:
    ServicesAt302Test() : EngineServicesTest(kkm_ver_302) {}
};

class ServicesAt400Test : public EngineServicesTest {
  protected:
    ServicesAt400Test() : EngineServicesTest(kkm_ver_400) {}
};

TEST_F(EngineServicesTest, KeyboardIsLockedAndAnEmptyLineShown) {
    driver.keylock();
    EXPECT_EQ(Steps(), (Lines{"36 00", "07 " + kBlankLine + " 10 02", "sleep 100"}));
}

TEST_F(ServicesAt302Test, KeyboardIsLockedTheSimpleWay) {
    driver.keylock();
    EXPECT_EQ(Steps(), (Lines{"10", "07 " + kBlankLine + " 10 02", "sleep 100"}));
}

TEST_F(EngineServicesTest, FailedLockShowsNothing) {
    line.Answer(request::kLockSwitch, Silence());
    EXPECT_THROW(driver.keylock(), EMiniCom);
    EXPECT_EQ(Steps(), (Lines{"36 00"}));
}

TEST_F(EngineServicesTest, KeyboardIsUnlockedAndKeyZeroPressed) {
    driver.keyunlock();
    EXPECT_EQ(Steps(), (Lines{"36 01", "29 00"}));
}

TEST_F(ServicesAt302Test, KeyboardIsUnlockedTheSimpleWay) {
    line.Answer(request::kStatus, answer::State(0xCE));
    driver.keyunlock();
    EXPECT_EQ(Steps(), (Lines{"20", "7F", "29 00"}));
}

TEST_F(EngineServicesTest, FeedTakesTheCount) {
    line.Always(request::kFeed, Frame(0xB0));
    driver.feed(255);
    EXPECT_EQ(Steps(), (Lines{"30 FF"}));
}

TEST_F(EngineServicesTest, IndicatorIsClearedWithValueZero) {
    driver.indicator_clear();
    EXPECT_EQ(Steps(), (Lines{"07 " + kBlankLine + " 00 02", "sleep 100"}));
}

TEST_F(EngineServicesTest, SerialNumberIsTheTextsLeadingDigits) {
    const std::vector<std::pair<std::string, int>> numbers = {
        {"00012345", 12345}, {"12AB3456", 12}, {"ABCDEFGH", 0},        {"", 0},
        {"  42    ", 42},    {"-5", -5},       {"99999999", 99999999},
    };
    for (const auto& [text, number] : numbers) {
        HoldSerial(text);
        EXPECT_EQ(driver.kkmnum(), number) << text;
    }
    EXPECT_EQ(world.Requests().front(), "04 1A 5D 08");
}

TEST_F(EngineServicesTest, SerialNumberEndsAtThirtyTwoBitsOnEveryMachine) {
    HoldSerial("2147483647");
    EXPECT_EQ(driver.kkmnum(), 2147483647);
    HoldSerial("2147483648");
    EXPECT_EQ(driver.kkmnum(), 2147483647);
    HoldSerial("99999999999999999999");
    EXPECT_EQ(driver.kkmnum(), 2147483647);
    HoldSerial("-2147483649");
    EXPECT_EQ(driver.kkmnum(), -2147483647 - 1);
}

TEST_F(ServicesAt400Test, SerialNumberIsAskedForByCommand) {
    line.Answer(request::kSerial, Frame(0x95, {'7', '7'}));
    EXPECT_EQ(driver.kkmnum(), 77);
    EXPECT_EQ(Steps(), (Lines{"15"}));
}

TEST_F(EngineServicesTest, TapeAndCheckNumbersAreTheFirstTwoCounters) {
    line.Always(request::kStatistics, Frame(0x8A, {1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0}));
    EXPECT_EQ(driver.klnum(), 0x0102);
    EXPECT_EQ(driver.checkscount(), 0x0304);
    EXPECT_EQ(Steps(), (Lines{"0A", "0A"}));
}

TEST_F(EngineServicesTest, CountersReachSixteenBits) {
    line.Always(request::kStatistics, Frame(0x8A, Bytes(11, 0xFF)));
    EXPECT_EQ(driver.klnum(), 65535);
    EXPECT_EQ(driver.checkscount(), 65535);
}

TEST_F(EngineServicesTest, FailedCounterReadLeaves) {
    line.Always(request::kStatistics, Frame(0x8A, Bytes(10)));
    EXPECT_THROW(driver.klnum(), ETarvo);
    EXPECT_THROW(driver.checkscount(), ETarvo);
}

TEST_F(EngineServicesTest, CopyIsTheKeyFortyThree) {
    driver.printDoubleCheck();
    EXPECT_EQ(Steps(), (Lines{"29 2B"}));
}

TEST_F(EngineServicesTest, TraceGoesToTheEnginesFileAsItStandsWhateverTheSwitchSays) {
    for (const bool on : {false, true}) {
        world.ClearTraces();
        driver.CTarvo::setTrace(on, "other.log");
        driver.Trace("a text");
        ASSERT_EQ(world.Traces().size(), 1U);
        EXPECT_EQ(world.Traces()[0].file, "VeskTarvoM5.log");
        EXPECT_EQ(world.Traces()[0].text, "a text");
    }
}

TEST_F(EngineServicesTest, HookOfTheEngineItselfDoesNothing) {
    const ETarvoVesk error(echDevice);
    driver.event_checkprepare(0, &error);
    driver.event_checkprepare(100, nullptr);
    EXPECT_TRUE(world.Log().empty());
    EXPECT_TRUE(world.Traces().empty());
}

}  // namespace
}  // namespace test
