#include <cerrno>

#include "support/fixtures.h"

namespace test {
namespace {

using Log = std::vector<std::string>;

constexpr auto kGetVersionCode = static_cast<kkm_command>(0x34);

class PacketsTest : public TarvoTest {
  protected:
    // Reads one answer frame that arrives without delay.
    void Receive(const Bytes& bytes) {
        line.Inject(bytes, world.Now());
        kkm.GetPacket(answer);
    }

    packet answer{};
};

// --- sending

TEST_F(PacketsTest, EmptyRequestIsHeadCommandAndChecksum) {
    kkm.sendPacket(kGetVersionCode);
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "flush", "write 00 03 00 34 34"}));
}

TEST_F(PacketsTest, ChecksumCoversTheNetworkNumber) {
    kkm.setNetNum(5);
    kkm.sendPacket(kGetVersionCode);
    EXPECT_EQ(world.Log().back(), "write 00 03 05 34 39");
}

TEST_F(PacketsTest, RequestLeavesTheFrameInItsPayload) {
    Bytes data{0x07, 0x01};
    kkm.sendPacket(static_cast<kkm_command>(0x0B), data);
    EXPECT_EQ(Hex(data), "00 05 00 0B 07 01 13");
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "flush", "write 00 05 00 0B 07 01 13"}));
}

TEST_F(PacketsTest, MakePacketBuildsInPlaceAndSendsNothing) {
    kkm.setNetNum(2);
    Bytes data{0xFF};
    kkm.MakePacket(static_cast<kkm_command>(0x30), data);
    EXPECT_EQ(Hex(data), "00 04 02 30 FF 31");
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(PacketsTest, LateAnswerIsDroppedBeforeTheNextRequest) {
    line.Inject(Frame(0x86, {1, 2, 3}), world.Now());
    line.Answer(0x34, Frame(0xB4, {0x03, 0x03}));
    kkm.sendPacket(kGetVersionCode);
    kkm.GetPacket(answer);
    EXPECT_EQ(answer.cmd, 0xB4);
    EXPECT_EQ(answer.data, (Bytes{0x03, 0x03}));
}

TEST_F(PacketsTest, SendDataPurgesAndWritesWithoutAPause) {
    kkm.SendData({0x01, 0x02});
    EXPECT_EQ(world.Log(), (Log{"flush", "write 01 02"}));
}

TEST_F(PacketsTest, ClearErrorPurgesTheLine) {
    kkm.COMMClearError();
    EXPECT_EQ(world.Log(), Log{"flush"});
}

TEST_F(PacketsTest, ChecksumsOfBothFamiliesAreTheSameSum) {
    const unsigned char bytes[] = {0xFF, 0x02, 0x80};
    EXPECT_EQ(CTarvo::calcKS(bytes, 3), 0x81);
    EXPECT_EQ(CTarvo::calcKS(bytes, 2), 0x01);
    EXPECT_EQ(CTarvo::calcKS(bytes, 0), 0);
    EXPECT_EQ(CTarvo::calcKS(bytes, -5), 0);
    EXPECT_EQ(CTarvo::calcKSNoSuppleer(bytes, 3), 0x81);
    EXPECT_EQ(CTarvo::calcKSNoSuppleer(bytes, 2), 0x01);
    EXPECT_EQ(CTarvo::calcKSNoSuppleer(bytes, 0), 0);
    EXPECT_EQ(CTarvo::calcKSNoSuppleer(bytes, -5), 0);
}

TEST_F(PacketsTest, SecondFamilyLooksTheSameOnTheLine) {
    kkm.setNetNum(5);
    Bytes data{0x16, 0x58, 0x08};
    kkm.sendPacketNoSuppleer(kGetVersionCode);
    kkm.sendPacketNoSuppleer(static_cast<kkm_command>(0x04), data);
    EXPECT_EQ(Hex(data), "00 06 05 04 16 58 08 7F");
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "flush", "write 00 03 05 34 39", "sleep 10", "flush",
                                "write 00 06 05 04 16 58 08 7F"}));
}

TEST_F(PacketsTest, KeepsTheTwoFamiliesApartBeyondTheLegalLength) {
    Bytes plain(300, 0);
    plain.back() = 0x05;
    Bytes other = plain;
    kkm.MakePacket(static_cast<kkm_command>(0x0C), plain);
    kkm.MakePacketNoSuppleer(static_cast<kkm_command>(0x0C), other);
    ASSERT_EQ(plain.size(), 305U);
    ASSERT_EQ(other.size(), 305U);
    EXPECT_EQ(plain[1], 0x2F);
    EXPECT_EQ(other[1], 0x2F);
    EXPECT_EQ(plain.back(), 0x0C);
    EXPECT_EQ(other.back(), 0x11);
}

TEST_F(PacketsTest, WriteFaultPassesThrough) {
    line.FailWrite(-EIO);
    try {
        kkm.sendPacket(kGetVersionCode);
        FAIL();
    } catch (const EMiniCom& e) {
        EXPECT_EQ(e.message, "errWriteFile");
    }
}

TEST_F(PacketsTest, ClosedPortPassesThroughAtThePurge) {
    port.Close();
    world.ClearLog();
    try {
        kkm.sendPacket(kGetVersionCode);
        FAIL();
    } catch (const EMiniCom& e) {
        EXPECT_EQ(e.message, "errCreateFile: CMiniCom::purgeComm");
    }
    EXPECT_EQ(world.Log(), Log{"sleep 10"});
}

// --- receiving

TEST_F(PacketsTest, AnswerIsReadInTwoParts) {
    Receive(Frame(0xB4, {0x02}));
    EXPECT_EQ(answer.cmd, 0xB4);
    EXPECT_EQ(answer.data, Bytes{0x02});
    // 100 ms a byte and 200 ms, once for the two bytes of the head and once for the body.
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "wait 400", "wait 100", "read 00", "wait 100",
                                "read 04", "wait 600", "wait 100", "read 00", "wait 100", "read B4",
                                "wait 100", "read 02", "wait 100", "read B6"}));
}

TEST_F(PacketsTest, AnswerWithoutPayloadLeavesNone) {
    answer.data = {1, 2, 3};
    Receive(Frame(0x90));
    EXPECT_EQ(answer.cmd, 0x90);
    EXPECT_EQ(answer.data, Bytes{});
}

TEST_F(PacketsTest, EveryLengthByteFromThreeToTwoHundredIsAccepted) {
    for (unsigned length = 0; length <= 255; ++length) {
        const Bytes payload(length < 3 ? 0 : length - 3, 0x11);
        Bytes bytes = Frame(0xB4, payload);
        bytes[1] = static_cast<unsigned char>(length);
        world.ClearLog();
        const int code = CodeOf([&] { Receive(bytes); });
        if (length >= 3 && length <= 200) {
            EXPECT_EQ(code, 0) << length;
            EXPECT_EQ(answer.cmd, 0xB4) << length;
            EXPECT_EQ(answer.data, payload) << length;
        } else {
            EXPECT_EQ(code, 2) << length;
            EXPECT_EQ(answer.cmd, ks_none) << length;
            // Refused before the body is read.
            EXPECT_EQ(world.Log().size(), 6U) << length;
            EXPECT_EQ(LastDetail(), length > 200 ? "CTarvo::getPacket: size packet>200"
                                                 : "CTarvo::getPacket: size packet<3");
        }
        port.purgeComm(12);
    }
}

TEST_F(PacketsTest, WrongStartByteIsCode2WhateverFollows) {
    for (const unsigned char length : Bytes{0x03, 0xFF, 0x00}) {
        world.ClearLog();
        EXPECT_EQ(CodeOf([&] { Receive({0x01, length, 0x00, 0xB4, 0xB4}); }), 2);
        EXPECT_EQ(LastDetail(), "CTarvo::getPacket: ctrlbuf[0]!=0");
        EXPECT_EQ(answer.cmd, ks_none);
        EXPECT_EQ(world.Log().size(), 6U);
        port.purgeComm(12);
    }
}

TEST_F(PacketsTest, WrongChecksumIsCode2) {
    EXPECT_EQ(CodeOf([&] { Receive({0x00, 0x05, 0x00, 0xB4, 0x03, 0x03, 0xBB}); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::getPacket: ERROR ks");
    EXPECT_EQ(answer.cmd, ks_none);
    EXPECT_EQ(CodeOf([&] { Receive({0x00, 0x05, 0x01, 0xB4, 0x03, 0x03, 0xBA}); }), 2);
    EXPECT_EQ(CodeOf([&] { Receive({0x00, 0x05, 0x00, 0xB5, 0x03, 0x03, 0xBA}); }), 2);
    EXPECT_EQ(CodeOf([&] { Receive({0x00, 0x05, 0x00, 0xB4, 0x03, 0x03, 0xBA}); }), 0);
}

TEST_F(PacketsTest, AnswerFromAnotherRegisterIsCode4) {
    kkm.setNetNum(3);
    EXPECT_EQ(CodeOf([&] { Receive(Frame(0xB4, {}, 7)); }), 4);
    EXPECT_EQ(LastDetail(), "CTarvo::getPacket: ERROR m_NetNum");
    EXPECT_EQ(answer.cmd, ks_none);
    EXPECT_EQ(CodeOf([&] { Receive(Frame(0xB4, {}, 0)); }), 4);
    EXPECT_EQ(CodeOf([&] { Receive(Frame(0xB4, {}, 3)); }), 0);
}

TEST_F(PacketsTest, NumberZeroTakesTheAnswerOfAnyRegister) {
    Receive(Frame(0xB4, {0x01}, 7));
    EXPECT_EQ(answer.cmd, 0xB4);
    EXPECT_EQ(answer.data, Bytes{0x01});
}

TEST_F(PacketsTest, BytesBehindAFaultStayOnTheLine) {
    EXPECT_EQ(CodeOf([&] { Receive({0x00, 0xC9, 0x41}); }), 2);
    EXPECT_EQ(port.Read(1), Bytes{0x41});
}

TEST_F(PacketsTest, FirstByteMayTakeFourHundredMilliseconds) {
    line.Inject(Reply(Frame(0x90)).After(410), world.Now());
    kkm.GetPacket(answer);
    EXPECT_EQ(answer.cmd, 0x90);
}

TEST_F(PacketsTest, SilentRegisterIsGivenUpBehindTheFirstByteLimit) {
    const Micros before = world.Now();
    try {
        kkm.sendPacket(kGetVersionCode);
        kkm.GetPacket(answer);
        FAIL();
    } catch (const EMiniCom& e) {
        EXPECT_EQ(e.message, "errReadFile: CMiniCom::Read sum timeout need read");
    }
    EXPECT_EQ((world.Now() - before) / 1000, 420U);
    EXPECT_EQ(answer.cmd, ks_none);
}

TEST_F(PacketsTest, AnswerThatBreaksOffIsATimeOut) {
    line.Inject(Bytes{0x00, 0x05, 0x00, 0xB4}, world.Now());
    try {
        kkm.GetPacket(answer);
        FAIL();
    } catch (const EMiniCom& e) {
        EXPECT_EQ(e.message, "errReadFile: CMiniCom::Read ReadIntervalTimeout on 2 byte");
    }
    EXPECT_EQ(answer.cmd, ks_none);
}

TEST_F(PacketsTest, GapInsideAPartMayTakeAHundredMilliseconds) {
    line.Inject(Reply(Frame(0x90)).Gap(1, 100).Gap(3, 100).Gap(4, 100), world.Now());
    kkm.GetPacket(answer);
    EXPECT_EQ(answer.cmd, 0x90);

    line.Inject(Reply(Frame(0x90)).Gap(1, 111), world.Now());
    EXPECT_THROW(kkm.GetPacket(answer), EMiniCom);
}

TEST_F(PacketsTest, BodyHasAFirstByteLimitOfItsOwn) {
    line.Inject(Reply(Frame(0x90)).Gap(2, 510), world.Now());
    kkm.GetPacket(answer);
    EXPECT_EQ(answer.cmd, 0x90);

    line.Inject(Reply(Frame(0x90)).Gap(2, 511), world.Now());
    EXPECT_THROW(kkm.GetPacket(answer), EMiniCom);
}

TEST_F(PacketsTest, SecondFamilyReadsAndJudgesTheSame) {
    line.Inject(Frame(0xB4, {0x02}, 3), world.Now());
    kkm.setNetNum(3);
    kkm.GetPacketNoSuppleer(answer);
    EXPECT_EQ(answer.cmd, 0xB4);
    EXPECT_EQ(answer.data, Bytes{0x02});
    EXPECT_EQ(world.Log().front(), "sleep 10");
    EXPECT_EQ(world.Log()[1], "wait 400");

    const std::pair<Bytes, const char*> faults[] = {
        {{0x01, 0x03, 0x03, 0xB4, 0xB7}, "CTarvo::getPacket: ctrlbuf[0]!=0"},
        {{0x00, 0xC9, 0x03, 0xB4, 0xB7}, "CTarvo::getPacket: size packet>200"},
        {{0x00, 0x02, 0x03, 0xB4, 0xB7}, "CTarvo::getPacket: size packet<3"},
        {{0x00, 0x03, 0x03, 0xB4, 0xB8}, "CTarvo::getPacket: ERROR ks"},
        {{0x00, 0x03, 0x04, 0xB4, 0xB8}, "CTarvo::getPacket: ERROR m_NetNum"},
    };
    for (const auto& [bytes, detail] : faults) {
        port.purgeComm(12);
        line.Inject(bytes, world.Now());
        EXPECT_THROW(kkm.GetPacketNoSuppleer(answer), ETarvo);
        EXPECT_EQ(LastDetail(), detail);
        EXPECT_EQ(answer.cmd, ks_none);
    }
}

TEST_F(PacketsTest, KeepsTheMomentAtWhichTheNoAnswerCodeIsSet) {
    int seen = 0;
    world.on_sleep = [&] { seen = answer.cmd; };
    answer.cmd = kkm_reset;
    line.Inject(Frame(0xB4), world.Now());
    kkm.GetPacket(answer);
    EXPECT_EQ(seen, 0x90);  // behind the pause

    answer.cmd = kkm_reset;
    line.Inject(Frame(0xB4), world.Now());
    kkm.GetPacketNoSuppleer(answer);
    EXPECT_EQ(seen, 0xA0);  // before it
}

// --- offline

TEST_F(PacketsTest, OfflineRequestsAreBuiltAndNotSent) {
    CTarvo offline;  // no port either
    offline.setOffline(true);
    Bytes data{0x05};
    offline.sendPacket(static_cast<kkm_command>(0x30), data);
    EXPECT_EQ(Hex(data), "00 04 00 30 05 35");
    offline.sendPacketNoSuppleer(static_cast<kkm_command>(0x30));
    offline.SendData(data);
    offline.COMMClearError();
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "sleep 10"}));
}

TEST_F(PacketsTest, OfflineThereIsNoAnswer) {
    kkm.setOffline(true);
    line.Inject(Frame(0xB4), world.Now());
    EXPECT_EQ(CodeOf([&] { kkm.GetPacket(answer); }), 2);
    EXPECT_EQ(LastDetail(), "CTarvo::getPacket: size packet<3");
    EXPECT_EQ(CodeOf([&] { kkm.GetPacketNoSuppleer(answer); }), 2);
    EXPECT_EQ(world.Log(), (Log{"sleep 10", "sleep 10"}));

    kkm.setOffline(false);
    kkm.GetPacket(answer);
    EXPECT_EQ(answer.cmd, 0xB4);
}

}  // namespace
}  // namespace test
