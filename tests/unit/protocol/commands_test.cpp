#include "protocol/commands.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace test {
namespace {

static_assert(sizeof(kkm_command) == 4 && sizeof(kkm_check) == 4 && sizeof(kkm_ver) == 4);
static_assert(sizeof(kkm_BaundRate) == 4 && sizeof(TRamAddr) == 4 && sizeof(kkm_cfg) == 4);

TEST(Commands, CodesHaveTheirNamesAndAllOthersNone) {
    const std::map<int, std::string> names = {
        {0x20, "dev_reque"},    {0x21, "dev_salecode"},     {0x23, "dev_discount"},
        {0x7E, "dev_resetinf"}, {0x7F, "dev_reset"},        {0x90, "kkm_reset"},
        {0x91, "kkm_resetinf"}, {0xA0, "ks_none"},          {0xA1, "ks_salecode"},
        {0xA2, "ks_saleadd"},   {0xA3, "ks_salebarcode"},   {0xA7, "ks_salenoadd"},
        {0xB4, "kkm_discount"}, {0xC0, "ks_kkmgo"},         {0xC1, "kkm_salecode"},
        {0xC4, "ks_saledel"},   {0xC5, "ks_checkbufclear"}, {0xC6, "ks_salefree"},
        {0xC8, "ks_checkout"},  {0xC9, "ks_discount"},      {0xCA, "ks_discountcard"},
        {0xCB, "ks_kkmon"},     {0xCC, "ks_smenaclose"},    {0xCD, "ks_weight"},
        {0xCE, "ks_keylock"},
    };
    for (int code = -2; code <= 0x1FF; ++code) {
        const auto row = names.find(code);
        EXPECT_EQ(cmdToStr(static_cast<kkm_command>(code)),
                  row == names.end() ? "UnNone" : row->second)
            << code;
    }
}

TEST(Commands, KnownCheckTypesHaveAnEmptyText) {
    for (int type = 0; type <= 4; ++type) {
        EXPECT_STREQ(CheckTypeInStr(static_cast<kkm_check>(type)), "") << type;
    }
    for (const int type : {-1, 5, 6, 255, -2147483647 - 1}) {
        EXPECT_STREQ(CheckTypeInStr(static_cast<kkm_check>(type)), "UnNone") << type;
    }
}

struct Row {
    const Command& command;
    int request;
    int answer;
    const char* fault;
};

void ExpectRow(const Row& row) {
    EXPECT_EQ(row.command.request, row.request) << row.fault;
    EXPECT_EQ(row.command.answer, row.answer) << row.fault;
    EXPECT_STREQ(row.command.fault, row.fault);
}

TEST(Commands, IdentificationAndServices) {
    using namespace commands;
    const char* const write = "CTarvo::write_checktitle, pack.cmd!=kkm_writechecktitle";
    const char* const cancel = "CTarvo::CancelCheckOut(pac.cmd!=kkm_cancelcheckout)";
    const Row rows[] = {
        {kGetVersion, 0x34, 0xB4, "CTarvo::get_version - pack.cmd !=kkm_querysale"},
        {kReadRam, 0x04, 0x84, "CTarvo::readEprom, pack.cmd!=readEprom"},
        {kKkmNum, 0x15, 0x95, "CTarvo::ReadKKMNum(pac.cmd!=kkm_kkmnum)"},
        {kScan, 0x35, 0xB5, cancel},
        {kReadTime, 0x06, 0x86, "CTarvo::read_time"},
        {kWriteCfg, 0x0B, 0x7B, write},
        {kFeed, 0x30, 0xB0, write},
        {kWriteTitle, 0x0C, 0x7C, write},
        {kWriteBottom, 0x0D, 0x7D, write},
        {kReadError, 0x38, 0xB8, "CTarvo::ReadError(count != 1)"},
        {kSaleNumber, 0x37, 0xB7, "CTarvo::ReadSaleNumberCmd - errInterface"},
        {kCancelCheckOut, 0x2A, 0xAA, cancel},
    };
    for (const Row& row : rows) {
        ExpectRow(row);
    }
}

TEST(Commands, StatusKeysAndPrinting) {
    using namespace commands;
    const Row rows[] = {
        {kReset, 0x7F, 0x90, "CTarvoOnline::reset_status (pac.cmd!=kkm_reset)"},
        {kKey, 0x29, 0xA9, "CTarvo::sendKey - pack.cmd !=sendKey"},
        {kKeyLock, 0x10, 0xAF, "CTarvo::keylock - error"},
        {kKeySwitch, 0x36, 0xB7, "CTarvo::_lockKeyReal - error"},
        {kShowInfo, 0x07, 0x87, "CTarvoOnline::reset_status_info(pac.cmd!=kkm_reset_info)"},
        {kPrint, 0x31, 0xB1, "CTarvo::printstr - error"},
        {kPrintWide, 0x32, 0xB2, "CTarvo::printstr - error"},
    };
    for (const Row& row : rows) {
        ExpectRow(row);
    }
    EXPECT_EQ(dev_reque, 0x20);
    EXPECT_EQ(dev_resetinf, 0x7E);
    EXPECT_EQ(kkm_resetinf, 0x91);
}

TEST(Commands, SalesAndRegisters) {
    using namespace commands;
    const Row rows[] = {
        {kReadEprom, 0x02, 0x82, "CTarvo::readEprom, pack.cmd!=read_eprom"},
        {kReadDbsale, 0x08, 0x88, "CTarvo::read_dbsale, pack.cmd!=kkm_dbsale"},
        {kWriteDbsale, 0x09, 0x89, "CTarvo::write_dbsale, pack.cmd!=kkm_dbsalewrite"},
        {kReadKlSale, 0x12, 0x8B, "CTarvo::readKLSale, pack.cmd!=kkm_klsaleread"},
        {kDiscount, 0x23, 0xB4, "CTarvo::send_discount - si.command!=kkm_discount"},
        {kDiscountCard, 0x24, 0xB5, ""},
        {kOutCheck, 0x25, 0xE4, "CTarvo::check_out, pack.cmd!=kkm_checkuot"},
        {kSaleStr, 0x27, 0x97, "CTarvo::send_salestr - error"},
        {kCash, 0x28, 0xE8, "CTarvo::send_cash - pack.cmd !=kkm_cash"},
        {kQuerySale, 0x35, 0xB5, "CTarvo::send_querysale - pack.cmd !=kkm_querysale"},
    };
    for (const Row& row : rows) {
        ExpectRow(row);
    }
    EXPECT_EQ(kkm_clearcheck, 0x03);
    EXPECT_EQ(kkm_statistics, 0x0A);
    EXPECT_EQ(dev_salecode, 0x21);
    EXPECT_EQ(dev_weight, 0x26);
    EXPECT_EQ(kkm_salecode, 0xC1);
    EXPECT_EQ(kkm_saleaccepted, 0xC3);
}

TEST(Commands, VersionsSpeedsAndParametersAreTheirOwnNumbers) {
    EXPECT_EQ(kkm_ver_unknown, 0);
    EXPECT_EQ(kkm_ver_300, 300);
    EXPECT_EQ(kkm_ver_301, 301);
    EXPECT_EQ(kkm_ver_302, 302);
    EXPECT_EQ(kkm_ver_303, 303);
    EXPECT_EQ(kkm_ver_310, 310);
    EXPECT_EQ(kkm_ver_400, 400);
    EXPECT_EQ(baud_9600, 9600);
    EXPECT_EQ(baud_57600, 57600);
    EXPECT_EQ(cfg_host_wait, 7);
    EXPECT_EQ(indicator_line, 2);
    EXPECT_EQ(key_none, 0x00);
    EXPECT_EQ(key_clear, 0x20);
    EXPECT_EQ(key_confirm, 0x28);
    EXPECT_EQ(key_copy, 0x2B);
}

TEST(Commands, MemoryLocationsAreNumberedInOrder) {
    EXPECT_EQ(ramKKMNum, 0);
    EXPECT_EQ(ramReserved, 1);
    EXPECT_EQ(ramSaleNumber, 2);
    EXPECT_EQ(ramError, 3);
    EXPECT_EQ(ramCodeInput, 4);
    EXPECT_EQ(ramSaleBarCode, 5);
    EXPECT_EQ(ramCheckTitle, 6);
    EXPECT_EQ(ramCheckBottom, 7);
    EXPECT_EQ(ramZero, 8);
}

}  // namespace
}  // namespace test
