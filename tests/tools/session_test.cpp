// A session of kkm that the register recorded, played to kkm once more.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "tools/program_fixture.h"

namespace test {
namespace {

using testing::HasSubstr;

class SessionTest : public ProgramTest {
  protected:
    // kkm prints a check of one line of that price.
    int Check(const RegisterProcess& at, const std::string& price) {
        std::ofstream("check.json") << R"({"lines":[{"name":"Tea","price":)" << price << "}]}";
        return Kkm(at, "check check.json");
    }
    void SetUp() override {
        RegisterProcess kassa({"--firmware", "310", "--record", "session"});
        kassa.Say("host");
        ASSERT_EQ(Check(kassa, "20"), 0) << output;
        ASSERT_EQ(kassa.Stop(), 0);
    }
    static RegisterProcess Replayed() {
        return RegisterProcess({"--replay", "session"}, RegisterProcess::Prompt::none);
    }
};

TEST_F(SessionTest, IsPlayedToTheEndForTheSameCheck) {
    RegisterProcess kassa = Replayed();
    EXPECT_EQ(Check(kassa, "20"), 0) << output;
    EXPECT_EQ(kassa.Wait(), 0);
}

TEST_F(SessionTest, EndsWhenTheCheckIsAnother) {
    RegisterProcess kassa = Replayed();
    EXPECT_NE(Check(kassa, "20.01"), 0);
    EXPECT_THAT(output, HasSubstr("(error 2, echDevice)"));
    EXPECT_EQ(kassa.Wait(), 3);
}

}  // namespace
}  // namespace test
