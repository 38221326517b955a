#include "protocol/tarvo.h"

#include <stdlib.h>

#include <ctime>
#include <stdexcept>

#include "support/fixtures.h"
#include "support/temp_directory.h"

namespace test {
namespace {

// The local time zone while the object lives.
class TimeZone {
  public:
    explicit TimeZone(const char* zone) {
        const char* const before = std::getenv("TZ");
        if (before != nullptr) {
            before_ = before;
        }
        was_set_ = before != nullptr;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone() {
        if (was_set_) {
            setenv("TZ", before_.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

  private:
    std::string before_;
    bool was_set_ = false;
};

class TarvoObjectTest : public TarvoTest {
  protected:
    TarvoObjectTest() { world.wall_clock = 1'199'275'445; }  // 2008-01-02 12:04:05 UTC

    TimeZone zone{"UTC"};
};

TEST_F(TarvoObjectTest, NewObjectKnowsNothing) {
    CTarvo fresh;
    EXPECT_EQ(fresh.version(), kkm_ver_unknown);
    EXPECT_EQ(fresh.netNum(), 0);
    EXPECT_FALSE(fresh.getTrace());
    fresh.traceMsg("silent");
    EXPECT_TRUE(world.Traces().empty());
}

TEST_F(TarvoObjectTest, InitClassGoesBackToTheBeginning) {
    kkm.setVersion(kkm_ver_400);
    kkm.setNetNum(9);
    kkm.setTrace(true, "other.log");
    kkm.initClass();
    EXPECT_EQ(kkm.version(), 0);
    EXPECT_EQ(kkm.netNum(), 0);
    EXPECT_FALSE(kkm.getTrace());
    // The port is forgotten with the rest: its trace settings stay as they were.
    kkm.setTrace(false, "third.log");
    EXPECT_TRUE(port.trace());
    EXPECT_EQ(port.logFileName(), "other.log");
}

TEST_F(TarvoObjectTest, InitClassForgetsTheSectionOfTheRegister) {
    status_info status;
    kkm.GetStatusInfo({ks_kkmon, {0, 1, 0, 2, 4}}, status);  // section 5
    kkm.initClass();
    kkm.setCom(&port);
    kkm.setVersion(kkm_ver_400);
    line.Always(0x0A, Frame(0x8A, Bytes(11, 0)));
    line.Always(0x37, Frame(0xB7, {0}));
    line.Always(0x02, Frame(0x82, {6}));
    kkm.GetStatusInfo({ks_salecode, Bytes(7, 0)}, status);
    EXPECT_EQ(status.section, 7);
    EXPECT_EQ(world.Steps(), (std::vector<std::string>{"0A", "37", "02 00 00 00 12 01"}));
}

TEST_F(TarvoObjectTest, PortMayComeWithTheConstructor) {
    CTarvo attached(&port);
    attached.sendPacket(static_cast<kkm_command>(0x34));
    EXPECT_EQ(world.Log().back(), "write 00 03 00 34 34");
    EXPECT_EQ(attached.version(), 0);
}

TEST_F(TarvoObjectTest, TraceSettingsReachTheAttachedPort) {
    kkm.setTrace(true, "TarvoM5.log");
    EXPECT_TRUE(kkm.getTrace());
    EXPECT_TRUE(port.trace());
    EXPECT_EQ(port.logFileName(), "TarvoM5.log");
    kkm.setTrace(false, "");
    EXPECT_FALSE(kkm.getTrace());
    EXPECT_FALSE(port.trace());
    EXPECT_EQ(port.logFileName(), "");
}

TEST_F(TarvoObjectTest, PortFollowsOnTheNextTraceSettingOnly) {
    CMiniCom other;
    CTarvo alone;
    alone.setTrace(true, "early.log");
    EXPECT_TRUE(alone.getTrace());
    alone.setCom(&other);
    EXPECT_EQ(other.logFileName(), "");
    alone.setTrace(true, "late.log");
    EXPECT_EQ(other.logFileName(), "late.log");
}

TEST_F(TarvoObjectTest, MessageStandsBehindTheStamp) {
    kkm.setTrace(true, "TarvoM5.log");
    kkm.traceMsg("first\n");
    kkm.traceMsg("second, no line end");
    EXPECT_EQ(world.Traced("TarvoM5.log"),
              "2008:1:2 12:4:5 first\n2008:1:2 12:4:5 second, no line end");
}

TEST_F(TarvoObjectTest, StampHasNoLeadingZerosAndCountsMonthsFromOne) {
    const std::pair<std::time_t, const char*> stamps[] = {
        {0, "1970:1:1 0:0:0 m"},
        {946'684'799, "1999:12:31 23:59:59 m"},
        {1'709'210'096, "2024:2:29 12:34:56 m"},
    };
    kkm.setTrace(true, "t.log");
    for (const auto& [moment, text] : stamps) {
        world.ClearTraces();
        world.wall_clock = moment;
        kkm.traceMsg("m");
        EXPECT_EQ(world.Traced("t.log"), text);
    }
}

TEST_F(TarvoObjectTest, StampIsLocalTime) {
    const TimeZone east("XXX-13:30");  // 13 and a half hours ahead
    kkm.setTrace(true, "t.log");
    kkm.traceMsg("m");
    EXPECT_EQ(world.Traced("t.log"), "2008:1:3 1:34:5 m");
}

TEST_F(TarvoObjectTest, NothingIsTracedWithoutSwitchOrName) {
    kkm.setTrace(false, "t.log");
    kkm.traceMsg("m");
    kkm.setTrace(true, "");
    kkm.traceMsg("m");
    EXPECT_TRUE(world.Traces().empty());
}

TEST_F(TarvoObjectTest, MessagesAreAppendedToARealFile) {
    const TempDirectory directory;
    world.WriteTracesToDisk(true);
    kkm.setTrace(true, "TarvoM5.log");
    kkm.traceMsg("one\n");
    world.wall_clock += 60;
    kkm.traceMsg("two\n");
    EXPECT_EQ(directory.Content("TarvoM5.log"), "2008:1:2 12:4:5 one\n2008:1:2 12:5:5 two\n");
}

TEST_F(TarvoObjectTest, FileThatCannotBeWrittenChangesNothingElse) {
    const TempDirectory directory;
    world.WriteTracesToDisk(true);
    kkm.setTrace(true, "missing/TarvoM5.log");
    kkm.traceMsg("lost\n");
    EXPECT_TRUE(directory.IsEmpty());
    line.Answer(0x30, Frame(0xB0));
    EXPECT_NO_THROW(kkm.feed(1));
}

TEST_F(TarvoObjectTest, FailureOfTracingIsDropped) {
    kkm.setTrace(true, "t.log");
    world.on_trace = [](const std::string&) { throw std::runtime_error("no room"); };
    EXPECT_NO_THROW(kkm.traceMsg("m"));
    EXPECT_EQ(world.Traces().size(), 1U);
}

TEST(Tarvo, ArrayIsTracedAsDecimalNumbers) {
    const unsigned char bytes[] = {0x01, 0xA0, 0x03};
    EXPECT_EQ(CTarvo::TraceArrayByte(bytes, 3), "1 160 3 ");
    EXPECT_EQ(CTarvo::TraceArrayByte(bytes, 1), "1 ");
    EXPECT_EQ(CTarvo::TraceArrayByte(bytes, 0), "");
    const unsigned char zero[] = {0x00, 0xA0};
    EXPECT_EQ(CTarvo::TraceArrayByte(zero, 2), "0 160 ");
}

TEST(Tarvo, VectorIsTracedAsDecimalNumbers) {
    EXPECT_EQ(CTarvo::TraceVector({0x01, 0xA0, 0x03}), "1 160 3 ");
    EXPECT_EQ(CTarvo::TraceVector({0xFF}), "255 ");
    EXPECT_EQ(CTarvo::TraceVector({}), "");
}

}  // namespace
}  // namespace test
