// A check that somebody left at the register in its closing: no command has it printed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kkm/line_client.h"
#include "tools/program_fixture.h"

namespace test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr std::uint8_t kReset = 0x7F;
constexpr std::uint8_t kClose = 0x25;
constexpr std::uint8_t kSimpleLock = 0x10;
constexpr std::uint8_t kSale = 6;

enum Stage { told_to_close, closing, locked_while_closing };

class OpenCheckTest : public ProgramTest,
                      public testing::WithParamInterface<std::tuple<const char*, Stage>> {
  protected:
    OpenCheckTest() : kassa_({"--firmware", std::get<0>(GetParam()), "--paper", "paper"}) {
        kassa_.Say("sell 5.00 Bread");
        kkm::LineClient host(kassa_.Tty(), 9600);
        host.Exchange(kReset);
        host.Exchange(kClose, {kSale});
        if (std::get<1>(GetParam()) != told_to_close) {
            host.Exchange(kReset);
        }
        if (std::get<1>(GetParam()) == locked_while_closing) {
            host.Exchange(kSimpleLock);
        }
    }

    RegisterProcess kassa_;
};

std::string NameOf(const testing::TestParamInfo<OpenCheckTest::ParamType>& info) {
    static constexpr const char* kStages[] = {"told_to_close", "closing", "locked"};
    return std::string(std::get<0>(info.param)) + "_" + kStages[std::get<1>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Register, OpenCheckTest,
                         testing::Combine(testing::Values("301", "303", "400"),
                                          testing::Values(told_to_close, closing,
                                                          locked_while_closing)),
                         NameOf);

TEST_P(OpenCheckTest, IsRefusedAndThenCancelled) {
    EXPECT_EQ(Kkm(kassa_, "unlock"), 7);
    EXPECT_THAT(output, HasSubstr("kkm: a check is open at the register (0xC"));
    EXPECT_EQ(Kkm(kassa_, "doctor"), 10);
    EXPECT_THAT(output, HasSubstr("kkm cancel cancels it"));
    EXPECT_TRUE(kassa_.Says("open check: 1 lines, total 5.00"));

    EXPECT_EQ(Kkm(kassa_, "cancel"), 0) << output;
    EXPECT_TRUE(kassa_.Says("open check: 0 lines"));
    EXPECT_TRUE(kassa_.Says("state idle, keyboard free")) << kassa_.Status();
    EXPECT_TRUE(kassa_.Says(", checks 0,"));
    EXPECT_THAT(folder.Content("paper"), Not(HasSubstr("Bread")));
}

TEST_F(ProgramTest, LinesThatACashierLeftAreCancelled) {
    RegisterProcess kassa({});
    kassa.Say("sell 5.00 Bread");
    kassa.Say("sell 7.00 Tea");
    EXPECT_EQ(Kkm(kassa, "cancel"), 0);
    EXPECT_TRUE(kassa.Says("open check: 0 lines"));
    EXPECT_TRUE(kassa.Says(", checks 0,"));
}

TEST_F(ProgramTest, LockIsThereUntilTheUnlock) {
    for (const char* firmware : {"301", "302", "303", "400"}) {
        RegisterProcess kassa({"--firmware", firmware});
        EXPECT_EQ(Kkm(kassa, "lock"), 0);
        EXPECT_TRUE(kassa.Says("keyboard locked")) << firmware;
        EXPECT_EQ(Kkm(kassa, "unlock"), 0);
        EXPECT_TRUE(kassa.Says("keyboard free")) << firmware;
    }
}

TEST_F(ProgramTest, StatusOfARegisterThatAsksShowsWhereTheCheckWillStand) {
    for (const char* firmware : {"302", "310", "400"}) {
        RegisterProcess kassa({"--firmware", firmware});
        kassa.Say("sell 5.00 Bread");
        kassa.Say("host");
        EXPECT_EQ(Kkm(kassa, "status"), 0);
        EXPECT_THAT(output, HasSubstr("ks_salecode")) << firmware;
        EXPECT_THAT(output, HasSubstr("  document     1\n  position     1\n"
                                      "  sale         1\n  section      1\n"));
    }
}

}  // namespace
}  // namespace test
