#include "kkm/protocol_trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kkm {
namespace {

TEST(ProtocolTrace, SameFaultsInARowAreOne) {
    const auto all = ReadProtocolTrace(
        "2026:11:21 9:5:3 DevNum=0, Code=2, Msg= , DbgMsg =\n"
        "2026:11:21 10:15:30 DevNum=0, Code=2, Msg= , DbgMsg =\n"
        "2026:1:2 0:0:0 DevNum=7, Code=4, Msg=     , DbgMsg =\n");
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].first, "2026-11-21 09:05:03");
    EXPECT_EQ(all[0].last, "2026-11-21 10:15:30");
    EXPECT_EQ(all[0].count, 2);
    EXPECT_EQ(all[0].code, 2);
    EXPECT_EQ(all[0].network_number, 0);
    EXPECT_EQ(all[1].first, "2026-01-02 00:00:00");
    EXPECT_EQ(all[1].count, 1);
    EXPECT_EQ(all[1].code, 4);
    EXPECT_EQ(all[1].network_number, 7);
}

TEST(ProtocolTrace, ForeignTextIsPassedOver) {
    EXPECT_TRUE(ReadProtocolTrace("").empty());
    EXPECT_TRUE(ReadProtocolTrace("Connect - OK\n2026:11:21 9:5:3 DevNum=0\n").empty());
    EXPECT_EQ(ReadProtocolTrace("cut\n2026:11:21 9:5:3 DevNum=0, Code=9").size(), 1U);
}

TEST(ProtocolTrace, EveryCodeHasAText) {
    EXPECT_THAT(ProtocolFaultText(2), testing::StartsWith("an answer was broken"));
    EXPECT_THAT(ProtocolFaultText(7), testing::StartsWith("the firmware is not known"));
    for (const int code : {-1, 0, 8, 999999999}) {
        EXPECT_EQ(ProtocolFaultText(code), "the driver has no such code");
    }
}

}  // namespace
}  // namespace kkm
