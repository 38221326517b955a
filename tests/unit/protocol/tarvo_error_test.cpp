#include "protocol/tarvo_error.h"

#include <stdexcept>
#include <type_traits>

#include "support/fixtures.h"

namespace test {
namespace {

// Catchers tell the layers apart: neither exception is a kind of the other.
static_assert(std::is_base_of_v<std::exception, ETarvo>);
static_assert(!std::is_base_of_v<ETarvo, EMiniCom> && !std::is_base_of_v<EMiniCom, ETarvo>);
static_assert(!std::is_base_of_v<std::runtime_error, ETarvo>);

class TarvoErrorTest : public TarvoTest {};

TEST_F(TarvoErrorTest, CarriesCodeTextAndDeviceNumber) {
    kkm.setNetNum(200);
    const ETarvo error(&kkm, 4, "detail");
    EXPECT_EQ(error.code(), 4);
    EXPECT_STREQ(error.what(), "     ");
    EXPECT_EQ(error.deviceNumber(), 200);
    EXPECT_EQ(error.debugMessage(), "");
}

TEST_F(TarvoErrorTest, TextOfEachCodeComesFromTheTable) {
    const char* const texts[] = {"  ", "   ", " ", "   ", "     ", "  ", "  ", "   "};
    for (int code = 0; code < 8; ++code) {
        EXPECT_STREQ(ETarvo(&kkm, code, "").what(), texts[code]) << code;
        EXPECT_EQ(ETarvo(&kkm, code, "").code(), code);
    }
}

TEST_F(TarvoErrorTest, EnumeratorsHaveTheirNumbers) {
    EXPECT_EQ(errPort, 1);
    EXPECT_EQ(errProtocol, 2);
    EXPECT_EQ(errLine, 3);
    EXPECT_EQ(errNetNum, 4);
    EXPECT_EQ(errProduct, 5);
    EXPECT_EQ(errMoney, 6);
    EXPECT_EQ(errVersion, 7);
}

TEST_F(TarvoErrorTest, KeepsDroppingTheDetail) {
    kkm.setTrace(true, "TarvoM5.log");
    const ETarvo error(&kkm, 2, "CTarvo::getPacket: ERROR ks");
    EXPECT_EQ(error.debugMessage(), "");
    EXPECT_STREQ(error.what(), " ");
    EXPECT_EQ(world.Traced("TarvoM5.log").find("ERROR ks"), std::string::npos);
}

TEST_F(TarvoErrorTest, TracesOneLineWhenTheSwitchIsOn) {
    kkm.setNetNum(12);
    kkm.setTrace(true, "TarvoM5.log");
    const ETarvo error(&kkm, 2, "detail");
    const std::string line = world.Traced("TarvoM5.log");
    ASSERT_EQ(world.Traces().size(), 1U);
    // A stamp of two words stands before it.
    EXPECT_EQ(line.substr(line.find(' ', line.find(' ') + 1) + 1),
              "DevNum=12, Code=2, Msg= , DbgMsg =\n");
}

TEST_F(TarvoErrorTest, EachCodeHasItsBlanksInTheTrace) {
    kkm.setTrace(true, "t.log");
    const ETarvo error(&kkm, 7, "   ");
    const std::string line = world.Traced("t.log");
    EXPECT_EQ(line.substr(line.find("DevNum")), "DevNum=0, Code=7, Msg=   , DbgMsg =\n");
}

TEST_F(TarvoErrorTest, TracesNothingWhenTheSwitchIsOff) {
    kkm.setTrace(false, "TarvoM5.log");
    const ETarvo error(&kkm, 2, "detail");
    EXPECT_TRUE(world.Traces().empty());
}

TEST_F(TarvoErrorTest, FailureOfTracingLeavesTheErrorWhole) {
    kkm.setTrace(true, "TarvoM5.log");
    world.on_trace = [](const std::string&) { throw std::runtime_error("no room"); };
    EXPECT_EQ(ETarvo(&kkm, 6, "detail").code(), 6);
}

}  // namespace
}  // namespace test
