// Queries and services: what the library reads and does, compared with what the register holds.
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include "system/register_fixture.h"
#include "virtual_register/memory_file.h"

namespace test {
namespace {

using virtual_register::TapeRecord;

class QueriesTest : public RegisterTest {
  protected:
    static TapeRecord Record(std::uint8_t kind, std::uint32_t amount, std::uint8_t payment) {
        TapeRecord record;
        record.kind = kind;
        record.amount_kopecks = amount;
        record.payment = payment;
        record.quantity_thousandths = 1000;
        record.barcode_digits = {0, 0, 0, 0, 0};
        return record;
    }

    // Puts down a memory in which every figure differs.
    void PrepareMemory(int firmware) {
        virtual_register::Identity identity;
        identity.firmware = firmware;
        identity.serial = "00042715";
        for (std::size_t tax = 0; tax < identity.taxes.size(); ++tax) {
            identity.taxes[tax] = static_cast<std::uint8_t>(200 + tax);
        }
        virtual_register::Memory memory(identity);
        memory.tape_number = 258;
        memory.checks = 772;
        memory.put_eeprom(0x04FD, 0x27);  // closed shifts: 0x2710 = 10000 kopecks
        memory.put_eeprom(0x04FE, 0x10);
        TapeRecord sale = Record(0, 76550, 0);
        sale.price_kopecks = 61240;
        sale.discount_kopecks = 123;
        sale.discount_percent = -10;
        sale.barcode_digits = {0x45, 0x67, 0x89, 0x01, 0x23};
        sale.code = 513;
        sale.quantity_thousandths = 1250;
        sale.marked = true;
        memory.tape.add(sale);
        memory.tape.add(Record(1, 550, 0));
        memory.tape.add(Record(2, 2000, 1));
        memory.tape.add(Record(0, 300, 1));
        std::ofstream(folder.Path(kMemoryFile)) << virtual_register::memory_to_text(memory);
    }
};

class FirmwareQueriesTest : public QueriesTest, public testing::WithParamInterface<int> {
  protected:
    void SetUp() override {
        PrepareMemory(GetParam());
        Start(GetParam());
        Connect();
    }

    int IntOf(int (*query)(int*)) {
        int number = -1;
        EXPECT_EQ(query(&number), 1) << library.GetErrorCode();
        return number;
    }

    double CashSum(int which) {
        double sum = -1.0;
        EXPECT_EQ(library.GetCashSum(which, &sum), 1) << library.GetErrorCode();
        return sum;
    }
};

INSTANTIATE_TEST_SUITE_P(Firmware, FirmwareQueriesTest, testing::Values(301, 302, 303, 310, 400),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_P(FirmwareQueriesTest, CountersAndSumsAreThoseOfTheRegister) {
    EXPECT_EQ(IntOf(library.GetKKMVers), GetParam());
    EXPECT_EQ(IntOf(library.GetSmenaNum), 258);
    EXPECT_EQ(IntOf(library.GetKLNum), 258);
    EXPECT_EQ(IntOf(library.GetCheckCount), 772);
    EXPECT_EQ(IntOf(library.GetSaleNum), 5);
    EXPECT_EQ(IntOf(library.GetKKMNum), 42715);
    double total = 0.0;
    EXPECT_EQ(library.GetNI(&total), 1);
    EXPECT_DOUBLE_EQ(total, 888.50);  // 100.00 + 765.50 + 20.00 + 3.00
    EXPECT_DOUBLE_EQ(CashSum(1), 760.00);
    EXPECT_DOUBLE_EQ(CashSum(2), 3.00);
    EXPECT_EQ(CashSum(3), 0.0);
    EXPECT_EQ(library.cbClearTitle(), 1);
}

TEST_P(FirmwareQueriesTest, SettingsAreThoseOfTheRegister) {
    for (unsigned char tax = 0; tax <= 16; ++tax) {
        double setting = -1.0;
        EXPECT_EQ(library.GetTax(tax, &setting), 1);
        EXPECT_EQ(setting, 200.0 + tax);
    }
    EXPECT_EQ(IntOf(library.GetSmenaStatus), 0);
    kkm->Say("shift open");
    EXPECT_EQ(library.CheckCancel(), 1);
    EXPECT_EQ(IntOf(library.GetSmenaStatus), 1);
    EXPECT_TRUE(Memory().shift_is_open());
}

TEST_P(FirmwareQueriesTest, TapeRecordIsReadWhole) {
    unsigned char bytes[7] = {};
    double reals[6] = {};
    unsigned short word = 0;
    const auto read = [&](int number) {
        return library.ReadSaleFromKL(number, &bytes[0], &bytes[1], &reals[0], &reals[1], &reals[2],
                                      &reals[3], &reals[4], &reals[5], &bytes[2], &word, &bytes[3],
                                      &bytes[4], &bytes[5], &bytes[6]);
    };
    ASSERT_EQ(read(1), 1);
    EXPECT_EQ(std::vector<int>(bytes, bytes + 7),
              (std::vector<int>{0, 0, 1, 0x45, 0x67, 0x89, 0x01}));
    EXPECT_EQ(std::vector<double>(reals, reals + 6),
              (std::vector<double>{765.5, 612.4, 1.23, 0.0, -10.0, 1.25}));
    EXPECT_EQ(word, 513);
    ASSERT_EQ(read(4), 1);
    EXPECT_EQ(reals[0], 3.0);
    EXPECT_EQ(bytes[1], 1);
    EXPECT_EQ(bytes[2], 0);
    EXPECT_EQ(read(5), 0);
    EXPECT_EQ(library.GetErrorCode(), 10);
}

TEST_P(FirmwareQueriesTest, ServicesReachPaperKeyboardAndDisplay) {
    EXPECT_EQ(library.KKMPrintStr(Text("\x8F\xE0\xA8\xA2\xA5\xE2, tea and bread").data()), 1);
    EXPECT_EQ(library.Feed(2), 1);
    EXPECT_EQ(library.Lock(), 1);
    EXPECT_TRUE(kkm->Says("keyboard locked"));
    EXPECT_EQ(library.UnLock(), 1);
    EXPECT_TRUE(kkm->Says("keyboard free"));
    EXPECT_EQ(library.ClearIndicator(), 1);
    EXPECT_TRUE(kkm->Says("indicator \"\""));
    EXPECT_EQ(library.CheckCancel(), 1);
    EXPECT_TRUE(kkm->Says("state idle"));
    library.SetSupplierCode(Text("4711").data());
    EXPECT_EQ(library.GetErrorCode(), 0);
    EXPECT_EQ(Paper(),
              "Привет, tea and\n"
              "~~~ 40 empty lines ~~~\n"
              "~~~ 40 empty lines ~~~\n");
}

// A name /dev/ttySNNN for a tty, taken where none was.
class SerialName {
  public:
    explicit SerialName(const std::string& tty) {
        for (int number = 254; number > 100 && port_ == 0; --number) {
            path_ = "/dev/ttyS" + std::to_string(number);
            if (symlink(tty.c_str(), path_.c_str()) == 0) {
                port_ = number + 1;
            } else if (errno != EEXIST) {
                return;
            }
        }
    }
    ~SerialName() {
        if (port_ != 0) {
            unlink(path_.c_str());
        }
    }

    int Port() const { return port_; }  // 0 when this user may not make one

  private:
    std::string path_;
    int port_ = 0;
};

TEST_F(QueriesTest, PortNumberReachesTheSerialDevice) {
    Start(303);
    const SerialName name(kkm->Tty());
    if (name.Port() == 0) {
        GTEST_SKIP() << "only root may make a name in /dev";
    }
    EXPECT_EQ(library.ConnectKKM(name.Port()), 1);
    EXPECT_EQ(Memory().parameter(7), 1);
    int version = 0;
    EXPECT_EQ(library.GetKKMVers(&version), 1);
    EXPECT_EQ(version, 303);
    library.DisconnectKKM();
    EXPECT_EQ(Memory().parameter(7), 0);
}

TEST_F(QueriesTest, UnknownFirmwareAtTheSecondSpeedIsCode3) {
    Start(300, {"--baud", "57600"});
    EXPECT_EQ(library.ConnectKKMDevice(Text(kkm->Tty()).data()), 0);
    EXPECT_EQ(library.GetErrorCode(), 3);
}

TEST_F(QueriesTest, UnknownFirmwareAtTheFirstSpeedIsLookedForAtTheSecondInVain) {
    Start(300);
    EXPECT_EQ(library.ConnectKKMDevice(Text(kkm->Tty()).data()), 0);
    EXPECT_EQ(library.GetErrorCode(), 2);
}

TEST_F(QueriesTest, RegisterThatIsOffGivesCode2) {
    Start(310);
    Connect();
    kkm->Say("power off");
    int number = -1;
    EXPECT_EQ(library.GetKLNum(&number), 0);
    EXPECT_EQ(library.GetErrorCode(), 2);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(Heard(), Texts{"error 2"});
    kkm->Say("power on");
    EXPECT_EQ(library.GetKLNum(&number), 1);
    EXPECT_EQ(number, 1);
}

}  // namespace
}  // namespace test
