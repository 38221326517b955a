#include "protocol/frame.h"

#include <gtest/gtest.h>

#include "support/world.h"

namespace test {
namespace {

constexpr auto kNoMask = ~0U;

std::string Built(int command, unsigned char net_num, Bytes payload, unsigned mask = 0xFF) {
    frame::Build(static_cast<kkm_command>(command), net_num, payload, mask);
    return Hex(payload);
}

void ExpectFault(const frame::Fault& fault, int code, const char* detail) {
    EXPECT_EQ(fault.code, code);
    EXPECT_STREQ(fault.detail, detail);
}

void ExpectNoFault(const frame::Fault& fault) {
    EXPECT_EQ(fault.code, 0);
    EXPECT_EQ(fault.detail, nullptr);
}

frame::Fault Check(const Bytes& body, unsigned char net_num) {
    return frame::CheckBody(body.data(), static_cast<unsigned>(body.size()), net_num);
}

TEST(Frame, NewPayloadHasRoomForTheFrame) {
    for (const std::size_t size : {0U, 1U, 41U}) {
        Bytes payload = frame::NewPayload(size);
        EXPECT_EQ(payload, Bytes(size, 0));
        const unsigned char* const memory = payload.data();
        frame::Build(static_cast<kkm_command>(0x21), 0, payload, 0xFF);
        EXPECT_EQ(payload.data(), memory);
        EXPECT_EQ(payload.size(), size + 5);
    }
}

TEST(Frame, NewPayloadTakesBytesAndWords) {
    EXPECT_EQ(frame::NewPayload({0x01, 0xFF, 0x00}), (Bytes{0x01, 0xFF, 0x00}));
    EXPECT_EQ(frame::NewPayload({}), Bytes{});
    EXPECT_EQ(frame::NewWordPayload(0x12FE), (Bytes{0x12, 0xFE}));
    EXPECT_EQ(frame::NewWordPayload(0x00FF), (Bytes{0x00, 0xFF}));
}

TEST(Frame, SumWrapsAtEightBits) {
    const unsigned char bytes[] = {0xFF, 0x02, 0x80, 0x80};
    EXPECT_EQ(frame::Sum(bytes, 1), 0xFF);
    EXPECT_EQ(frame::Sum(bytes, 2), 0x01);
    EXPECT_EQ(frame::Sum(bytes, 4), 0x01);
}

TEST(Frame, SumOfNothingIsZero) {
    const unsigned char byte = 5;
    EXPECT_EQ(frame::Sum(&byte, 0), 0);
    EXPECT_EQ(frame::Sum(&byte, -1), 0);
}

TEST(Frame, HeadPayloadAndChecksumStandInOrder) {
    EXPECT_EQ(Built(0x34, 0, {}), "00 03 00 34 34");
    EXPECT_EQ(Built(0x34, 5, {}), "00 03 05 34 39");
    EXPECT_EQ(Built(0x04, 0, {0x16, 0x58, 0x08}), "00 06 00 04 16 58 08 7A");
    EXPECT_EQ(Built(0x28, 255, {0x00, 0xFF}), "00 05 FF 28 00 FF 26");
}

TEST(Frame, CommandIsCutToEightBits) {
    EXPECT_EQ(Built(0x134, 0, {}), "00 03 00 34 34");
    EXPECT_EQ(Built(-1, 0, {}), "00 03 00 FF FF");
}

TEST(Frame, LengthIsCutToEightBits) {
    EXPECT_EQ(Built(0x0C, 0, Bytes(252, 0)).substr(0, 11), "00 FF 00 0C");
    EXPECT_EQ(Built(0x0C, 0, Bytes(253, 0)).substr(0, 11), "00 00 00 0C");
    EXPECT_EQ(Built(0x0C, 0, Bytes(300, 0)).substr(0, 11), "00 2F 00 0C");
}

TEST(Frame, ChecksumCoversTheMaskedLengthOnly) {
    // 304 bytes less 2 are 302: with 8 bits of it the checksum ends behind byte 47.
    Bytes data(300, 0);
    data.back() = 0x05;
    EXPECT_EQ(Built(0x0C, 0, data, 0xFF).substr(303 * 3), "05 0C");
    EXPECT_EQ(Built(0x0C, 0, data, kNoMask).substr(303 * 3), "05 11");
    data[43] = 0x40;
    EXPECT_EQ(Built(0x0C, 0, data, 0xFF).substr(303 * 3), "05 4C");
    data[44] = 0x80;
    EXPECT_EQ(Built(0x0C, 0, data, 0xFF).substr(303 * 3), "05 4C");
    EXPECT_EQ(Built(0x0C, 0, data, kNoMask).substr(303 * 3), "05 D1");
}

TEST(Frame, HeadIsGoodFromThreeToTwoHundred) {
    for (int length = 0; length <= 255; ++length) {
        const frame::Fault fault = frame::CheckHead(0, static_cast<unsigned char>(length));
        EXPECT_EQ(fault.detail == nullptr, length >= 3 && length <= 200) << length;
        EXPECT_EQ(fault.code, length >= 3 && length <= 200 ? 0 : 2) << length;
    }
    ExpectFault(frame::CheckHead(0, 201), 2, "CTarvo::getPacket: size packet>200");
    ExpectFault(frame::CheckHead(0, 255), 2, "CTarvo::getPacket: size packet>200");
    ExpectFault(frame::CheckHead(0, 2), 2, "CTarvo::getPacket: size packet<3");
    ExpectFault(frame::CheckHead(0, 0), 2, "CTarvo::getPacket: size packet<3");
}

TEST(Frame, StartByteIsJudgedFirst) {
    for (int start = 1; start <= 255; ++start) {
        for (const unsigned char length : Bytes{0, 3, 200, 201}) {
            ExpectFault(frame::CheckHead(static_cast<unsigned char>(start), length), 2,
                        "CTarvo::getPacket: ctrlbuf[0]!=0");
        }
    }
}

TEST(Frame, GoodBodyHasNoFault) {
    ExpectNoFault(Check({0x00, 0xB4, 0xB4}, 0));
    ExpectNoFault(Check({0x05, 0xB4, 0x03, 0x02, 0xBE}, 0));
    ExpectNoFault(Check({0x05, 0xB4, 0x03, 0x02, 0xBE}, 5));
}

TEST(Frame, EveryByteOfTheBodyCounts) {
    const Bytes good{0x05, 0xB4, 0x03, 0x02, 0xBE};
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            Bytes body = good;
            body[i] = static_cast<unsigned char>(body[i] ^ 1U << bit);
            ExpectFault(Check(body, 0), 2, "CTarvo::getPacket: ERROR ks");
        }
    }
}

TEST(Frame, ChecksumIsJudgedBeforeTheNetworkNumber) {
    ExpectFault(Check({0x07, 0xB4, 0x00}, 3), 2, "CTarvo::getPacket: ERROR ks");
}

TEST(Frame, NumberZeroAcceptsEveryRegisterAndAnyOtherOnlyItsOwn) {
    for (int own = 0; own <= 255; ++own) {
        for (int theirs = 0; theirs <= 255; ++theirs) {
            const auto number = static_cast<unsigned char>(theirs);
            const Bytes body{number, 0x01, static_cast<unsigned char>(number + 1)};
            const frame::Fault fault = Check(body, static_cast<unsigned char>(own));
            ASSERT_EQ(fault.code, own == 0 || own == theirs ? 0 : 4) << own << " " << theirs;
        }
    }
    ExpectFault(Check({0x07, 0xB4, 0xBB}, 3), 4, "CTarvo::getPacket: ERROR m_NetNum");
}

}  // namespace
}  // namespace test
