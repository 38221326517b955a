#include "support/fixtures.h"

namespace test {
namespace {

class PacketsTest : public TarvoTest {};

TEST_F(PacketsTest, EmptyRequestIsHeadCommandAndChecksum) {
    kkm.sendPacket(static_cast<kkm_command>(0x34));
    EXPECT_EQ(world.Log(), (std::vector<std::string>{"sleep 10", "flush", "write 00 03 00 34 34"}));
}

TEST_F(PacketsTest, ChecksumCoversTheNetworkNumber) {
    kkm.setNetNum(5);
    kkm.sendPacket(static_cast<kkm_command>(0x34));
    EXPECT_EQ(world.Log().back(), "write 00 03 05 34 39");
}

}  // namespace
}  // namespace test
