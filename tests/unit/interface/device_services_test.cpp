#include <climits>
#include <functional>

#include "support/interface_fixture.h"

namespace test {
namespace {

class DeviceServicesTest : public InterfaceTest {};

// --- Feed

TEST_F(DeviceServicesTest, FeedAdvances40LinesAtATime) {
    Connect();
    line.Always(0x30, Frame(0xB0));
    EXPECT_EQ(Feed(3), 1);
    EXPECT_EQ(world.Requests(), (Texts{"30 28", "30 28", "30 28"}));
}

TEST_F(DeviceServicesTest, FeedOfNothingOnlyIdentifies) {
    ConnectTooEarly();
    for (const int times : {0, -1, INT_MIN}) {
        EXPECT_EQ(Feed(times), 1) << times;
    }
    EXPECT_EQ(world.Requests(), Texts{"34"});
}

TEST_F(DeviceServicesTest, FeedStopsAtTheFirstFailure) {
    Connect();
    line.Answer(0x30, Frame(0xB0)).Answer(0x30, Frame(0xB1)).Answer(0x30, Frame(0xB0));
    EXPECT_EQ(Feed(3), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(world.Requests(), (Texts{"30 28", "30 28"}));
}

// --- KKMPrintStr

TEST_F(DeviceServicesTest, TextIsPrintedInNormalLetters) {
    Connect();
    line.Answer(0x31, Frame(0xB1));
    char text[] = "\x8F\xE0i";  // the host's own bytes
    EXPECT_EQ(KKMPrintStr(text), 1);
    EXPECT_EQ(world.Steps(),
              (Texts{"31 00 8F E0 69 20 20 20 20 20 20 20 20 20 20 20 20 20 00 00", "sleep 100"}));
}

TEST_F(DeviceServicesTest, MissingTextIsCode12BeforeAnyTraffic) {
    ConnectTooEarly();
    errVeskTarvo = 14;
    EXPECT_EQ(KKMPrintStr(nullptr), 0);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(world.Log(), Texts{});
}

// --- Lock, UnLock, ClearIndicator

const char* const kEmptyLine = "20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20";

TEST_F(DeviceServicesTest, LockLocksAndShowsAnEmptyLine) {
    Connect(kkm_ver_303);
    line.Answer(0x36, Frame(0xB7)).Answer(0x07, Frame(0x87));
    EXPECT_EQ(Lock(), 1);
    EXPECT_EQ(world.Steps(),
              (Texts{"36 00", std::string("07 ") + kEmptyLine + " 10 02", "sleep 100"}));
}

TEST_F(DeviceServicesTest, LockOfOldFirmwareIsTheSimpleOne) {
    Connect(kkm_ver_302);
    line.Answer(0x10, Frame(0xAF)).Answer(0x07, Frame(0x87));
    EXPECT_EQ(Lock(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"10", std::string("07 ") + kEmptyLine + " 10 02"}));
}

TEST_F(DeviceServicesTest, LockThatIsRefusedShowsNothing) {
    Connect(kkm_ver_303);
    line.Answer(0x36, Frame(0xAF));
    EXPECT_EQ(Lock(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
    EXPECT_EQ(world.Requests(), Texts{"36 00"});
}

TEST_F(DeviceServicesTest, UnLockUnlocksAndPressesKeyZero) {
    Connect(kkm_ver_310);
    line.Answer(0x36, Frame(0xB7)).Answer(0x29, Frame(0xA9));
    EXPECT_EQ(UnLock(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"36 01", "29 00"}));
}

TEST_F(DeviceServicesTest, UnLockOfOldFirmwareResetsALockedState) {
    Connect(kkm_ver_301);
    line.Answer(0x20, Frame(0xCE)).Answer(0x7F, Frame(0x90)).Answer(0x29, Frame(0xA9));
    EXPECT_EQ(UnLock(), 1);
    EXPECT_EQ(world.Requests(), (Texts{"20", "7F", "29 00"}));
}

TEST_F(DeviceServicesTest, UnLockFailsWithItsKey) {
    Connect(kkm_ver_310);
    line.Answer(0x36, Frame(0xB7)).Answer(0x29, Frame(0xA8));
    EXPECT_EQ(UnLock(), 0);
    EXPECT_EQ(GetErrorCode(), 2);
}

TEST_F(DeviceServicesTest, ClearIndicatorShowsAnEmptyLine) {
    Connect();
    line.Answer(0x07, Frame(0x87));
    EXPECT_EQ(ClearIndicator(), 1);
    EXPECT_EQ(world.Steps(), (Texts{std::string("07 ") + kEmptyLine + " 00 02", "sleep 100"}));
}

// --- SetSupplierCode

TEST_F(DeviceServicesTest, SupplierCodeIsStoredWithoutTraffic) {
    Connect();
    char code[] = "4711";
    errVeskTarvo = 14;
    SetSupplierCode(code);
    EXPECT_EQ(GetErrorCode(), 0);
    EXPECT_EQ(world.Log(), Texts{});
}

TEST_F(DeviceServicesTest, MissingSupplierCodeIsCode12) {
    ListenToErrors();
    SetSupplierCode(nullptr);
    EXPECT_EQ(GetErrorCode(), 12);
    EXPECT_EQ(Events(), Texts{"error 12"});
}

// --- what all services share

struct Service {
    const char* name;
    std::function<int()> call;
    const char* first_request;
};

class AnyServiceTest : public DeviceServicesTest {
  protected:
    std::vector<Service> Services() {
        return {{"Feed", [] { return Feed(1); }, "30"},
                {"KKMPrintStr", [&] { return KKMPrintStr(text); }, "31"},
                {"Lock", [] { return Lock(); }, "36"},
                {"UnLock", [] { return UnLock(); }, "36"},
                {"ClearIndicator", [] { return ClearIndicator(); }, "07"}};
    }

    char text[4] = "tea";
};

TEST_F(AnyServiceTest, UnknownFirmwareIsAskedForFirst) {
    for (const Service& service : Services()) {
        DisconnectKKM();
        ConnectTooEarly();
        EXPECT_EQ(service.call(), 0) << service.name;
        ASSERT_EQ(world.Requests().size(), 2U) << service.name;
        EXPECT_EQ(world.Requests()[0], "34") << service.name;
        EXPECT_EQ(world.Requests()[1].substr(0, 2), service.first_request) << service.name;
        line.Always(0x34, Silence());
    }
}

TEST_F(AnyServiceTest, FirmwareThatNobodyKnowsIsCode2AndEndsTheService) {
    ConnectTooEarly(kkm_ver_unknown);
    ListenToErrors();
    for (const Service& service : Services()) {
        world.ClearLog();
        HostEvents::All().clear();
        EXPECT_EQ(service.call(), 0) << service.name;
        EXPECT_EQ(GetErrorCode(), 2) << service.name;
        EXPECT_EQ(Events(), Texts{"error 2"}) << service.name;
        EXPECT_EQ(world.Requests(), Texts{"34"}) << service.name;
    }
}

TEST_F(AnyServiceTest, SilenceIsCode2) {
    Connect();
    for (const Service& service : Services()) {
        world.ClearLog();
        EXPECT_EQ(service.call(), 0) << service.name;
        EXPECT_EQ(GetErrorCode(), 2) << service.name;
        EXPECT_EQ(world.Requests().size(), 1U) << service.name;
    }
}

}  // namespace
}  // namespace test
