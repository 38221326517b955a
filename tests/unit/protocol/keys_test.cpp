#include "support/fault.h"
#include "support/fixtures.h"
#include "support/requests.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

constexpr auto kUnlockFault = "2 CTarvo::TryUnlockKey - error";

class KeysTest : public TarvoTest {
  protected:
    KeysTest() { kkm.setVersion(kkm_ver_303); }
};

TEST_F(KeysTest, KeyIsOneByte) {
    line.Always(request::kKey, Frame(0xA9));
    for (const kkm_keys key :
         {key_none, key_clear, key_confirm, key_copy, static_cast<kkm_keys>(0xFF)}) {
        kkm.sendKey(key);
    }
    EXPECT_EQ(world.Steps(), (Strings{"29 00", "29 20", "29 28", "29 2B", "29 FF"}));
}

TEST_F(KeysTest, Firmware300RefusesEveryKeyUnsent) {
    kkm.setVersion(kkm_ver_300);
    EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }), "7       ");
    EXPECT_EQ(world.Log(), Strings{});
}

TEST_F(KeysTest, UnknownFirmwareRefusesEveryKeyUnsent) {
    kkm.setVersion(kkm_ver_unknown);
    EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }), "7    ");
    EXPECT_EQ(world.Log(), Strings{});
}

TEST_F(KeysTest, EveryOtherFirmwareTakesKeys) {
    line.Always(request::kKey, Frame(0xA9));
    for (const kkm_ver version :
         {kkm_ver_301, kkm_ver_302, kkm_ver_303, kkm_ver_310, kkm_ver_400}) {
        kkm.setVersion(version);
        EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }), "");
    }
}

TEST_F(KeysTest, OtherAnswerToAKeyIsCode2) {
    // 0xE8 would fill the reply: the answer code is judged before it.
    for (const unsigned char code : Bytes{0xA8, 0xAA, 0x29, 0xC0}) {
        line.Answer(request::kKey, Frame(code, {1}));
        EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }),
                  "2 CTarvo::sendKey - pack.cmd !=sendKey");
    }
    line.Answer(request::kKey, Frame(0xE8, {1}));
    EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }), "2 CTarvo::sendKey - pack.cmd !=sendKey");
    EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }), kSilenceFault);
}

TEST_F(KeysTest, KeepsTakenKeyTakenWhateverItsAnswerCarries) {
    line.Answer(request::kKey, Frame(0xA9, {6, 7, 8}));
    EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_clear); }), "");
}

TEST_F(KeysTest, KeepsDecodingTheAnswerToAKeyBeforeItIsJudged) {
    line.Answer(request::kKey, Frame(0xA1, FromHex("00 2A 03 00 00 02 01")));
    line.Answer(0x0A, Frame(0x8A, Bytes(11)));
    line.Answer(0x04, Frame(0x84, {0})).Answer(0x02, Frame(0x82, {0}));
    EXPECT_EQ(FaultOf([&] { kkm.sendKey(key_copy); }), "2 CTarvo::sendKey - pack.cmd !=sendKey");
    EXPECT_EQ(world.Steps(), (Strings{"29 2B", "0A", "04 15 95 01", "02 00 12 01"}));
}

TEST_F(KeysTest, FirmwareAbove302HasTheLockSwitch) {
    line.Always(request::kLockSwitch, Frame(0xB7));
    for (const kkm_ver version : {kkm_ver_303, kkm_ver_310, kkm_ver_400}) {
        kkm.setVersion(version);
        world.ClearLog();
        kkm.lockKey();
        kkm.unlockKey();
        EXPECT_EQ(world.Steps(), (Strings{"36 00", "36 01"}));
    }
}

TEST_F(KeysTest, FirmwareUpTo302HasTheSimpleLock) {
    line.Always(0x10, Frame(0xAF))
        .Always(request::kStatus, Frame(0xCE))
        .Always(request::kReset, Frame(0x90));
    for (const kkm_ver version : {kkm_ver_unknown, kkm_ver_300, kkm_ver_301, kkm_ver_302}) {
        kkm.setVersion(version);
        world.ClearLog();
        kkm.lockKey();
        kkm.unlockKey();
        EXPECT_EQ(world.Steps(), (Strings{"10", "20", "7F"}));
    }
}

TEST_F(KeysTest, LockMechanismsAskNoVersion) {
    kkm.setVersion(kkm_ver_301);
    line.Answers(request::kLockSwitch, 2, Frame(0xB7));
    kkm._lockKeyReal(false);
    kkm._lockKeyReal(true);
    kkm.setVersion(kkm_ver_400);
    line.Answer(0x10, Frame(0xAF)).Answer(request::kStatus, Frame(0xC0));
    kkm._lockKey();
    kkm._unlockKey();
    EXPECT_EQ(world.Steps(), (Strings{"36 00", "36 01", "10", "20"}));
}

TEST_F(KeysTest, SimpleUnlockOfAFreeKeyboardOnlyReadsTheStatus) {
    kkm.setVersion(kkm_ver_302);
    for (const unsigned char state : Bytes{0xC0, 0xCD, 0xCF, 0xA0, 0xCB}) {
        line.Answer(request::kStatus, Frame(state));
        world.ClearLog();
        kkm.unlockKey();
        EXPECT_EQ(world.Steps(), (Strings{"20"}));
    }
}

TEST_F(KeysTest, OtherAnswerToALockIsCode2) {
    line.Answer(request::kLockSwitch, Frame(0xB6)).Answer(request::kLockSwitch, Frame(0xAF));
    EXPECT_EQ(FaultOf([&] { kkm.lockKey(); }), "2 CTarvo::_lockKeyReal - error");
    EXPECT_EQ(FaultOf([&] { kkm.unlockKey(); }), "2 CTarvo::_lockKeyReal - error");
    EXPECT_EQ(FaultOf([&] { kkm.lockKey(); }), kSilenceFault);
    kkm.setVersion(kkm_ver_302);
    line.Answer(0x10, Frame(0xB7));
    EXPECT_EQ(FaultOf([&] { kkm.lockKey(); }), "2 CTarvo::keylock - error");
    line.Answer(request::kStatus, Frame(0xCE)).Answer(request::kReset, Frame(0x91));
    EXPECT_EQ(FaultOf([&] { kkm.unlockKey(); }),
              "2 CTarvoOnline::reset_status (pac.cmd!=kkm_reset)");
}

TEST_F(KeysTest, UnlockIsTriedUntilItSucceeds) {
    for (const int attempt : {1, 2, 19}) {
        line.Answers(request::kLockSwitch, attempt - 1, Frame(0xB6))
            .Answer(request::kLockSwitch, Frame(0xB7));
        world.ClearLog();
        EXPECT_EQ(FaultOf([&] { kkm.TryUnlockKey(); }), "");
        EXPECT_EQ(world.Steps(), Strings(static_cast<std::size_t>(attempt), "36 01"));
    }
}

TEST_F(KeysTest, KeepsUnlockThatSucceedsInTheTwentiethRoundAFailure) {
    line.Answers(request::kLockSwitch, 19, Frame(0xB6)).Answer(request::kLockSwitch, Frame(0xB7));
    EXPECT_EQ(FaultOf([&] { kkm.TryUnlockKey(); }), kUnlockFault);
    EXPECT_EQ(world.Steps(), Strings(20, "36 01"));
    EXPECT_EQ(line.QueuedAnswers(), 0U);
}

TEST_F(KeysTest, UnlockThatNeverSucceedsEndsAfterTwentyRounds) {
    line.Always(request::kLockSwitch, Frame(0xB6));
    EXPECT_EQ(FaultOf([&] { kkm.TryUnlockKey(); }), kUnlockFault);
    EXPECT_EQ(world.Steps(), Strings(20, "36 01"));
}

TEST_F(KeysTest, RoundsOfAnUnlockSwallowEveryException) {
    line.Answer(request::kLockSwitch, Silence())
        .Answer(request::kLockSwitch, Bytes{0, 1})
        .Answer(request::kLockSwitch, Frame(0xB7));
    EXPECT_EQ(FaultOf([&] { kkm.TryUnlockKey(); }), "");
    // An empty sale number is a plain exception.
    kkm.setVersion(kkm_ver_302);
    line.Answer(request::kStatus, Frame(0xA1)).Answer(request::kStatus, Frame(0xC0));
    line.Answer(0x0A, Frame(0x8A, Bytes(11))).Answer(0x04, Frame(0x84));
    world.ClearLog();
    EXPECT_EQ(FaultOf([&] { kkm.TryUnlockKey(); }), "");
    EXPECT_EQ(world.Steps(), (Strings{"20", "0A", "04 15 95 01", "20"}));
}

TEST_F(KeysTest, SilentRegisterCostsTwentyTimeLimits) {
    const Micros start = world.Now();
    EXPECT_EQ(FaultOf([&] { kkm.TryUnlockKey(); }), kUnlockFault);
    EXPECT_EQ((world.Now() - start) / 1000, 20 * (10 + 10 + 400));
}

}  // namespace
}  // namespace test
