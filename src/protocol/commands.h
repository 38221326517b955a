// Codes of the register's protocol: requests with their answers, register states, versions,
// memory locations and parameters.
#pragma once

// One 8-bit code space for requests, answers and register states.
enum kkm_command : int {
    kkm_readeprom = 0x02,
    kkm_clearcheck = 0x03,
    kkm_readram = 0x04,
    kkm_readtime = 0x06,
    kkm_showinfo = 0x07,
    kkm_readdbsale = 0x08,
    kkm_writedbsale = 0x09,
    kkm_statistics = 0x0A,
    kkm_writecfg = 0x0B,
    kkm_writechecktitle = 0x0C,
    kkm_writecheckbottom = 0x0D,
    kkm_keylock = 0x10,
    kkm_readklsale = 0x12,
    kkm_kkmnum = 0x15,
    dev_reque = 0x20,
    dev_salecode = 0x21,
    dev_discount = 0x23,
    dev_discountcard = 0x24,
    dev_outcheck = 0x25,
    dev_weight = 0x26,
    dev_salestr = 0x27,
    dev_cash = 0x28,
    dev_key = 0x29,
    kkm_cancelcheckout = 0x2A,
    kkm_feed = 0x30,
    kkm_print = 0x31,
    kkm_printwide = 0x32,
    kkm_getversion = 0x34,
    kkm_querysale = 0x35,
    kkm_keyswitch = 0x36,
    kkm_salenumber = 0x37,
    kkm_readerror = 0x38,
    dev_resetinf = 0x7E,
    dev_reset = 0x7F,

    kkm_reset = 0x90,
    kkm_resetinf = 0x91,
    kkm_discount = 0xB4,
    kkm_salecode = 0xC1,
    kkm_saleaccepted = 0xC3,
    kkm_cash = 0xE8,

    ks_none = 0xA0,
    ks_salecode = 0xA1,
    ks_saleadd = 0xA2,
    ks_salebarcode = 0xA3,
    ks_salenoadd = 0xA7,
    ks_kkmgo = 0xC0,
    ks_saledel = 0xC4,
    ks_checkbufclear = 0xC5,
    ks_salefree = 0xC6,
    ks_checkout = 0xC8,
    ks_discount = 0xC9,
    ks_discountcard = 0xCA,
    ks_kkmon = 0xCB,
    ks_smenaclose = 0xCC,
    ks_weight = 0xCD,
    ks_keylock = 0xCE
};

// Name of a code for traces; "UnNone" for a code without one.
const char* cmdToStr(kkm_command code);

// A request, the answer that it must bring, and the fault text of any other answer. The texts are
// in part those of other commands; they are kept as service staff know them.
struct Command {
    kkm_command request;
    kkm_command answer;
    const char* fault;
};

namespace commands {

constexpr auto kWriteText = "CTarvo::write_checktitle, pack.cmd!=kkm_writechecktitle";
constexpr auto kCancelText = "CTarvo::CancelCheckOut(pac.cmd!=kkm_cancelcheckout)";
constexpr auto kResetInfoText = "CTarvoOnline::reset_status_info(pac.cmd!=kkm_reset_info)";

constexpr kkm_command Answer(int code) {
    return static_cast<kkm_command>(code);
}

constexpr Command kReadEprom{kkm_readeprom, Answer(0x82),
                             "CTarvo::readEprom, pack.cmd!=read_eprom"};
constexpr Command kReadRam{kkm_readram, Answer(0x84), "CTarvo::readEprom, pack.cmd!=readEprom"};
constexpr Command kReadTime{kkm_readtime, Answer(0x86), "CTarvo::read_time"};
constexpr Command kShowInfo{kkm_showinfo, Answer(0x87), kResetInfoText};
constexpr Command kReadDbsale{kkm_readdbsale, Answer(0x88),
                              "CTarvo::read_dbsale, pack.cmd!=kkm_dbsale"};
constexpr Command kWriteDbsale{kkm_writedbsale, Answer(0x89),
                               "CTarvo::write_dbsale, pack.cmd!=kkm_dbsalewrite"};
constexpr Command kWriteCfg{kkm_writecfg, Answer(0x7B), kWriteText};
constexpr Command kWriteTitle{kkm_writechecktitle, Answer(0x7C), kWriteText};
constexpr Command kWriteBottom{kkm_writecheckbottom, Answer(0x7D), kWriteText};
constexpr Command kKeyLock{kkm_keylock, Answer(0xAF), "CTarvo::keylock - error"};
constexpr Command kReadKlSale{kkm_readklsale, Answer(0x8B),
                              "CTarvo::readKLSale, pack.cmd!=kkm_klsaleread"};
constexpr Command kKkmNum{kkm_kkmnum, Answer(0x95), "CTarvo::ReadKKMNum(pac.cmd!=kkm_kkmnum)"};
constexpr Command kDiscount{dev_discount, kkm_discount,
                            "CTarvo::send_discount - si.command!=kkm_discount"};
constexpr Command kDiscountCard{dev_discountcard, Answer(0xB5), ""};
constexpr Command kOutCheck{dev_outcheck, Answer(0xE4),
                            "CTarvo::check_out, pack.cmd!=kkm_checkuot"};
constexpr Command kSaleStr{dev_salestr, Answer(0x97), "CTarvo::send_salestr - error"};
constexpr Command kCash{dev_cash, kkm_cash, "CTarvo::send_cash - pack.cmd !=kkm_cash"};
constexpr Command kKey{dev_key, Answer(0xA9), "CTarvo::sendKey - pack.cmd !=sendKey"};
constexpr Command kCancelCheckOut{kkm_cancelcheckout, Answer(0xAA), kCancelText};
constexpr Command kFeed{kkm_feed, Answer(0xB0), kWriteText};
constexpr Command kPrint{kkm_print, Answer(0xB1), "CTarvo::printstr - error"};
constexpr Command kPrintWide{kkm_printwide, Answer(0xB2), "CTarvo::printstr - error"};
constexpr Command kGetVersion{kkm_getversion, Answer(0xB4),
                              "CTarvo::get_version - pack.cmd !=kkm_querysale"};
constexpr Command kQuerySale{kkm_querysale, Answer(0xB5),
                             "CTarvo::send_querysale - pack.cmd !=kkm_querysale"};
constexpr Command kScan{kkm_querysale, Answer(0xB5), kCancelText};
constexpr Command kKeySwitch{kkm_keyswitch, Answer(0xB7), "CTarvo::_lockKeyReal - error"};
constexpr Command kSaleNumber{kkm_salenumber, Answer(0xB7),
                              "CTarvo::ReadSaleNumberCmd - errInterface"};
constexpr Command kReadError{kkm_readerror, Answer(0xB8), "CTarvo::ReadError(count != 1)"};
constexpr Command kReset{dev_reset, kkm_reset, "CTarvoOnline::reset_status (pac.cmd!=kkm_reset)"};

}  // namespace commands

// Kind of a check, 0 to 4. An ordinary sale is never sent as 0 but as 6.
enum kkm_check : int { check_sale = 0, check_return = 1, check_credit = 2, check_sale_on_wire = 6 };

// Empty for 0 to 4, "UnNone" for any other value.
const char* CheckTypeInStr(kkm_check type);

enum kkm_BaundRate : int { baud_9600 = 9600, baud_57600 = 57600 };

// Firmware version of the register; 0 while unknown.
enum kkm_ver : int {
    kkm_ver_unknown = 0,
    kkm_ver_300 = 300,
    kkm_ver_301 = 301,
    kkm_ver_302 = 302,
    kkm_ver_303 = 303,
    kkm_ver_310 = 310,
    kkm_ver_400 = 400
};

// Named locations of the register's memory.
enum TRamAddr : int {
    ramKKMNum = 0,
    ramReserved = 1,
    ramSaleNumber = 2,
    ramError = 3,
    ramCodeInput = 4,
    ramSaleBarCode = 5,
    ramCheckTitle = 6,
    ramCheckBottom = 7,
    ramZero = 8
};

// Configuration parameters. The driver writes this one only.
enum kkm_cfg : int { cfg_host_wait = 7 };

enum kkm_keys : int { key_none = 0x00, key_clear = 0x20, key_confirm = 0x28, key_copy = 0x2B };

// Indicator mode byte, sent as it stands.
enum kkm_indicator : int { indicator_line = 2 };
