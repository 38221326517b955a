#include "serial/mini_com.h"

#include <cerrno>
#include <memory>

#include "support/fixtures.h"

namespace test {
namespace {

using Log = std::vector<std::string>;

// Code and message of the EMiniCom that the action throws.
struct Failure {
    int code;
    std::string message;

    bool operator==(const Failure& other) const {
        return code == other.code && message == other.message;
    }
    friend void PrintTo(const Failure& failure, std::ostream* to) {
        *to << failure.code << " \"" << failure.message << '"';
    }
};

const Failure kNone{-1, "(none)"};

template <typename Action>
Failure FailureOf(Action action) {
    try {
        action();
    } catch (const EMiniCom& e) {
        return {e.code, e.message};
    }
    return kNone;
}

class MiniComTest : public WorldTest {
  protected:
    CMiniCom port;
};

TEST_F(MiniComTest, NewPortIsClosed) {
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(port.handle(), -1);
    EXPECT_TRUE(port.trace());
    EXPECT_EQ(port.logFileName(), "");
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(MiniComTest, PortOneIsTheFirstDevice) {
    port.Open(1);
    EXPECT_TRUE(port.IsOpen());
    EXPECT_NE(port.handle(), -1);
    // Read-write (2), no controlling terminal (0x100), without waiting (0x800).
    EXPECT_EQ(world.Log(), Log{"open /dev/ttyS0 0x902"});
}

TEST_F(MiniComTest, PortTwoHundredFiftyFiveIsTheLastDevice) {
    world.Attach("/dev/ttyS254", &line);
    port.Open(255);
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(world.Log(), Log{"open /dev/ttyS254 0x902"});
}

TEST_F(MiniComTest, KeepsTheDeviceNameOfPortZero) {
    EXPECT_EQ(FailureOf([&] { port.Open(0); }), (Failure{0, "errCreateFile: /dev/ttyS4294967295"}));
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(port.handle(), -1);
}

TEST_F(MiniComTest, DeviceThatCannotBeOpenedLeavesThePortClosed) {
    EXPECT_EQ(FailureOf([&] { port.Open(4); }), (Failure{0, "errCreateFile: /dev/ttyS3"}));
    EXPECT_FALSE(port.IsOpen());
}

TEST_F(MiniComTest, DeviceOfAnyNameCanBeOpened) {
    world.Attach("/dev/serial/by-id/register", &line);
    port.OpenDevice("/dev/serial/by-id/register");
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(world.Log(), Log{"open /dev/serial/by-id/register 0x902"});

    CMiniCom other;
    EXPECT_EQ(FailureOf([&] { other.OpenDevice("/dev/ttyUSB7"); }),
              (Failure{0, "errCreateFile: /dev/ttyUSB7"}));
    EXPECT_FALSE(other.IsOpen());
}

TEST_F(MiniComTest, SecondCloseIsHarmless) {
    port.Close();
    EXPECT_EQ(world.Log(), Log{});
    port.Open(1);
    world.ClearLog();
    port.Close();
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(port.handle(), -1);
    port.Close();
    EXPECT_EQ(world.Log(), Log{"close"});
}

TEST_F(MiniComTest, DestructorClosesAnOpenPortOnly) {
    auto open = std::make_unique<CMiniCom>();
    auto closed = std::make_unique<CMiniCom>();
    open->Open(1);
    world.ClearLog();
    closed.reset();
    EXPECT_EQ(world.Log(), Log{});
    open.reset();
    EXPECT_EQ(world.Log(), Log{"close"});
}

TEST_F(MiniComTest, InitClassForgetsTheDeviceAndTheTraceSwitch) {
    CMiniCom other;
    other.Open(1);
    const int handle = other.handle();
    other.setTrace(false, "port.log");
    other.initClass();
    EXPECT_EQ(other.handle(), -1);
    EXPECT_TRUE(other.trace());
    world.Close(handle);
}

TEST_F(MiniComTest, TraceSettingsAreKept) {
    port.setTrace(false, "port.log");
    EXPECT_FALSE(port.trace());
    EXPECT_EQ(port.logFileName(), "port.log");
    port.setTrace(true, "");
    EXPECT_TRUE(port.trace());
    EXPECT_EQ(port.logFileName(), "");
}

TEST_F(MiniComTest, TimeLimitsComeBackAsTheyWereSet) {
    const _COMMTIMEOUTS set{1, 2, 3, 4, 4294967295};
    port.SetCommTimeouts(&set);
    _COMMTIMEOUTS got{};
    port.GetCommTimeouts(&got);
    EXPECT_EQ(got.ReadIntervalTimeout, 1U);
    EXPECT_EQ(got.ReadTotalTimeoutMultiplier, 2U);
    EXPECT_EQ(got.ReadTotalTimeoutConstant, 3U);
    EXPECT_EQ(got.WriteTotalTimeoutMultiplier, 4U);
    EXPECT_EQ(got.WriteTotalTimeoutConstant, 4294967295U);
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(MiniComTest, KeepsTheEmptyRestOfThePortsInterface) {
    unsigned short errors = 7;
    port.setCommState(nullptr);
    port.EscapeCommFunction(6);
    port.ClearCommError(&errors, nullptr);
    port.traceMsg("text");
    port.Open(1);
    world.ClearLog();
    port.setCommState(nullptr);
    port.EscapeCommFunction(6);
    port.ClearCommError(&errors, nullptr);
    port.traceMsg("text");
    EXPECT_EQ(errors, 7);
    EXPECT_EQ(world.Log(), Log{});
    EXPECT_TRUE(world.Traces().empty());
}

TEST_F(MiniComTest, ClosedPortRefusesEverything) {
    unsigned char byte = 0;
    EXPECT_EQ(FailureOf([&] { port.Read(&byte, 1); }),
              (Failure{0, "errCreateFile: CMiniCom::Read"}));
    EXPECT_EQ(FailureOf([&] { port.Read(1); }), (Failure{0, "errCreateFile: CMiniCom::Read"}));
    EXPECT_EQ(FailureOf([&] { port.Write(&byte, 1); }), (Failure{0, "errCreateFile"}));
    EXPECT_EQ(FailureOf([&] { port.purgeComm(12); }),
              (Failure{0, "errCreateFile: CMiniCom::purgeComm"}));
    EXPECT_EQ(FailureOf([&] { port.setSpeed(9600); }),
              (Failure{0, "errCreateFile: CMiniCom::setSpeed"}));
    EXPECT_EQ(world.Log(), Log{});
}

class OpenPortTest : public MiniComTest {
  protected:
    OpenPortTest() {
        port.Open(1);
        // Interval, multiplier, constant: no two limits of a read are alike.
        const _COMMTIMEOUTS limits{70, 30, 1000, 1, 2};
        port.SetCommTimeouts(&limits);
        world.ClearLog();
    }

    void Arrive(Reply reply) { line.Inject(reply, world.Now()); }

    // Whole milliseconds since the action began.
    template <typename Action>
    Micros MillisecondsOf(Action action) {
        const Micros before = world.Now();
        action();
        return (world.Now() - before) / 1000;
    }
};

TEST_F(OpenPortTest, KeepsSetSpeedWithoutSuccess) {
    for (const int baud : {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 0, -1, 300}) {
        EXPECT_EQ(FailureOf([&] { port.setSpeed(baud); }), (Failure{9, "Unknoun error"})) << baud;
    }
    EXPECT_EQ(world.Log(), Log{});
}

TEST_F(OpenPortTest, PurgeDiscardsBothQueuesWhateverTheFlags) {
    for (const unsigned flags : {12U, 0U, 4U, 8U, 0xFFFFFFFFU}) {
        Arrive(Bytes{0x41});
        port.purgeComm(flags);
        EXPECT_EQ(port.waitComEvent(0), 0) << flags;
    }
    EXPECT_EQ(world.Log(), (Log{"flush", "wait 0", "flush", "wait 0", "flush", "wait 0", "flush",
                                "wait 0", "flush", "wait 0"}));
}

TEST_F(OpenPortTest, BufferIsWrittenWhole) {
    const unsigned char bytes[] = {0x00, 0x03, 0xFF};
    port.Write(bytes, 3);
    port.Write(bytes, 0);
    EXPECT_EQ(world.Log(), (Log{"write 00 03 FF", "write "}));
}

TEST_F(OpenPortTest, WriteOfAnotherLengthFailsWithoutARetry) {
    const unsigned char bytes[] = {1, 2, 3, 4, 5};
    for (const long result : {4L, 0L, 6L, long{-EIO}, long{-EINTR}, long{-EAGAIN}}) {
        line.FailWrite(result);
        EXPECT_EQ(FailureOf([&] { port.Write(bytes, 5); }), (Failure{2, "errWriteFile"})) << result;
        EXPECT_TRUE(port.IsOpen());
    }
    EXPECT_EQ(world.Log(), Log(6, "write 01 02 03 04 05"));
}

TEST_F(OpenPortTest, WaitAnswersWhetherInputCame) {
    EXPECT_EQ(port.waitComEvent(20), 0);
    Arrive(Reply(Bytes{0x41}).After(15));
    EXPECT_EQ(port.waitComEvent(14), 0);
    EXPECT_GT(port.waitComEvent(1), 0);
    world.InterruptPoll(0, EIO);
    EXPECT_LT(port.waitComEvent(5), 0);
    EXPECT_EQ(world.Log(), (Log{"wait 20", "wait 14", "wait 1", "wait 5"}));
}

TEST_F(OpenPortTest, SignalDoesNotShortenAWait) {
    world.InterruptPoll(150, EINTR);
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_EQ(port.waitComEvent(400), 0); }), 400U);
    EXPECT_EQ(world.Log(), (Log{"wait 400", "wait 250"}));
}

TEST_F(OpenPortTest, SignalDoesNotShortenAWaitByAPartOfAMillisecond) {
    world.Advance(998);
    world.InterruptPoll(0, EINTR);
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_EQ(port.waitComEvent(100), 0); }), 100U);
    EXPECT_EQ(world.Log(), (Log{"wait 100", "wait 100"}));
}

TEST_F(OpenPortTest, ManySignalsDoNotShortenOrStretchAWait) {
    for (int i = 0; i < 30; ++i) {
        world.InterruptPoll(10, EINTR);
    }
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_EQ(port.waitComEvent(400), 0); }), 400U);
    EXPECT_EQ(world.Log().size(), 31U);
}

TEST_F(OpenPortTest, InputBehindASignalIsFound) {
    Arrive(Reply(Bytes{0x41}).After(399));
    world.InterruptPoll(150, EINTR);
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_GT(port.waitComEvent(400), 0); }), 399U);
}

TEST_F(OpenPortTest, SignalAtTheVeryEndOfAWaitAddsNothing) {
    world.InterruptPoll(40, EINTR);
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_EQ(port.waitComEvent(40), 0); }), 40U);
    EXPECT_EQ(world.Log(), (Log{"wait 40", "wait 0"}));
}

TEST_F(OpenPortTest, OldErrorNumberIsNotMistakenForASignal) {
    errno = EINTR;
    EXPECT_EQ(port.waitComEvent(30), 0);
    EXPECT_EQ(world.Log(), Log{"wait 30"});
}

TEST_F(OpenPortTest, FailedWaitIsNotRepeated) {
    world.InterruptPoll(5, EBADF);
    EXPECT_EQ(port.waitComEvent(30), -1);
    EXPECT_EQ(world.Log(), Log{"wait 30"});
}

TEST_F(OpenPortTest, LongestWaitFitsASignedNumber) {
    Arrive(Bytes{0x41});
    EXPECT_GT(port.waitComEvent(2147483647U), 0);
    EXPECT_GT(port.waitComEvent(2147483648U), 0);
    EXPECT_GT(port.waitComEvent(4294967295U), 0);
    EXPECT_EQ(world.Log(), Log(3, "wait 2147483647"));
}

TEST_F(OpenPortTest, ReadTakesOneByteACall) {
    Arrive(Bytes{0x41, 0x00, 0xFF, 0x7E});
    unsigned char bytes[4] = {9, 9, 9, 9};
    port.Read(bytes, 3);
    EXPECT_EQ(Hex(Bytes(bytes, bytes + 4)), "41 00 FF 09");
    EXPECT_EQ(world.Log(),
              (Log{"wait 1090", "wait 70", "read 41", "wait 70", "read 00", "wait 70", "read FF"}));
}

TEST_F(OpenPortTest, ReadGivesAVectorToo) {
    Arrive(Bytes{0x41, 0x00, 0xFF});
    EXPECT_EQ(port.Read(2), (Bytes{0x41, 0x00}));
    EXPECT_EQ(port.Read(0), Bytes{});
    EXPECT_EQ(world.Log(),
              (Log{"wait 1060", "wait 70", "read 41", "wait 70", "read 00", "wait 1000"}));
    EXPECT_EQ(FailureOf([&] { port.Read(2); }),
              (Failure{1, "errReadFile: CMiniCom::Read ReadIntervalTimeout on 1 byte"}));
}

TEST_F(OpenPortTest, FirstByteMayTakeTheSumOfTheLimits) {
    Arrive(Reply(Bytes{0x41, 0x42}).After(1060));
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_EQ(port.Read(2), (Bytes{0x41, 0x42})); }), 1060U);
}

TEST_F(OpenPortTest, FirstByteBeyondTheSumOfTheLimitsIsTooLate) {
    Arrive(Reply(Bytes{0x41, 0x42}).After(1061));
    EXPECT_EQ(MillisecondsOf([&] {
                  EXPECT_EQ(FailureOf([&] { port.Read(2); }),
                            (Failure{1, "errReadFile: CMiniCom::Read sum timeout need read"}));
              }),
              1060U);
    EXPECT_EQ(world.Log(), Log{"wait 1060"});
    EXPECT_TRUE(port.IsOpen());
}

TEST_F(OpenPortTest, FailedWaitForTheFirstByteIsATimeOut) {
    Arrive(Reply(Bytes{0x41}).After(20));
    world.InterruptPoll(10, EIO);
    EXPECT_EQ(FailureOf([&] { port.Read(1); }),
              (Failure{1, "errReadFile: CMiniCom::Read sum timeout need read"}));
    EXPECT_EQ(world.Log(), Log{"wait 1030"});
}

TEST_F(OpenPortTest, EachByteMayTakeTheInterval) {
    Arrive(Reply(Bytes{0x41, 0x42, 0x43}).Gap(1, 70).Gap(2, 70));
    EXPECT_EQ(MillisecondsOf([&] { EXPECT_EQ(port.Read(3), (Bytes{0x41, 0x42, 0x43})); }), 140U);
}

TEST_F(OpenPortTest, ByteBeyondTheIntervalIsTooLate) {
    for (unsigned byte = 1; byte <= 3; ++byte) {
        world.ClearLog();
        Arrive(Reply(Bytes{0x41, 0x42, 0x43, 0x44}).After(500).Gap(byte, 71));
        unsigned char bytes[4] = {0, 0, 0, 0};
        EXPECT_EQ(FailureOf([&] { port.Read(bytes, 4); }),
                  (Failure{1, "errReadFile: CMiniCom::Read ReadIntervalTimeout on " +
                                  std::to_string(byte) + " byte"}));
        EXPECT_EQ(world.Log().back(), "wait 70");
        // What came before stays in the buffer.
        EXPECT_EQ(bytes[byte - 1], 0x40 + byte);
        EXPECT_EQ(bytes[byte], 0);
        EXPECT_TRUE(port.IsOpen());
        world.Advance(1'000'000);
        port.purgeComm(12);
    }
}

TEST_F(OpenPortTest, ByteOfTwoDigitsIsNamedInDecimal) {
    Arrive(Reply(Bytes(20, 0x41)).Gap(12, 200));
    EXPECT_EQ(FailureOf([&] { port.Read(20); }),
              (Failure{1, "errReadFile: CMiniCom::Read ReadIntervalTimeout on 12 byte"}));
}

TEST_F(OpenPortTest, EndOfFileIsAnError) {
    Arrive(Reply(Bytes{}).EndWith(0));
    EXPECT_EQ(FailureOf([&] { port.Read(2); }),
              (Failure{1, "errReadFile: CMiniCom::Read error 0 byte"}));
    EXPECT_EQ(world.Log(), (Log{"wait 1060", "wait 70", "read = end"}));
    EXPECT_TRUE(port.IsOpen());
}

TEST_F(OpenPortTest, FailedReadNamesTheBytesBeforeIt) {
    Arrive(Reply(Bytes{0x41, 0x42}).EndWith(-EIO));
    unsigned char bytes[3] = {0, 0, 0};
    EXPECT_EQ(FailureOf([&] { port.Read(bytes, 3); }),
              (Failure{1, "errReadFile: CMiniCom::Read error 2 byte"}));
    EXPECT_EQ(world.Log().back(), "read = error");
    EXPECT_EQ(Hex(Bytes(bytes, bytes + 3)), "41 42 00");
    EXPECT_TRUE(port.IsOpen());
}

TEST_F(OpenPortTest, InterruptedReadIsNotRepeated) {
    Arrive(Reply(Bytes{}).EndWith(-EINTR));
    EXPECT_EQ(FailureOf([&] { port.Read(1); }),
              (Failure{1, "errReadFile: CMiniCom::Read error 0 byte"}));
    EXPECT_EQ(world.Log(), (Log{"wait 1030", "wait 70", "read = error"}));
}

TEST_F(OpenPortTest, ReadOfNothingWaitsForInput) {
    unsigned char byte = 9;
    EXPECT_EQ(MillisecondsOf([&] {
                  EXPECT_EQ(FailureOf([&] { port.Read(&byte, 0); }),
                            (Failure{1, "errReadFile: CMiniCom::Read sum timeout need read"}));
              }),
              1000U);
    Arrive(Bytes{0x41});
    port.Read(&byte, 0);
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(world.Log(), (Log{"wait 1000", "wait 1000"}));
}

TEST_F(OpenPortTest, SumOfTheLimitsIsCountedInThirtyTwoBits) {
    const _COMMTIMEOUTS limits{70, 0x80000000U, 25, 0, 0};
    port.SetCommTimeouts(&limits);
    EXPECT_EQ(FailureOf([&] { port.Read(2); }),
              (Failure{1, "errReadFile: CMiniCom::Read sum timeout need read"}));
    EXPECT_EQ(world.Log(), Log{"wait 25"});
}

// A line whose input is there at one look and gone at the next.
class FleetingDevice : public Device {
  public:
    long Write(const unsigned char*, std::size_t count, Micros) override {
        return static_cast<long>(count);
    }
    std::optional<Micros> NextInput(Micros now) override {
        return looks_++ == 0 ? std::optional<Micros>(now) : std::nullopt;
    }
    long Read(unsigned char*, Micros) override { return -EAGAIN; }
    void Flush(Micros) override {}

  private:
    int looks_ = 0;
};

TEST_F(MiniComTest, FirstByteHasItsIntervalToo) {
    FleetingDevice device;
    world.Attach("/dev/ttyS1", &device);
    CMiniCom port;  // goes before its device
    port.Open(2);
    const _COMMTIMEOUTS limits{70, 30, 1000, 1, 2};
    port.SetCommTimeouts(&limits);
    world.ClearLog();
    EXPECT_EQ(FailureOf([&] { port.Read(1); }),
              (Failure{1, "errReadFile: CMiniCom::Read ReadIntervalTimeout on 0 byte"}));
    EXPECT_EQ(world.Log(), (Log{"wait 1030", "wait 70"}));
}

}  // namespace
}  // namespace test
