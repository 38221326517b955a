#include "cost/scenarios.h"

#include <stdexcept>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "interface/vesk.h"

namespace cost {

namespace {

constexpr int kLines = 4;
// 20 letters of code page 866, as a till names its goods: two pieces of a title.
char goods[] = "\x8C\xAE\xAB\xAE\xAA\xAE \x8E\xE2\xA1\xAE\xE0\xAD\xAE\xA5 3.2% 1";

LocalRegister* kkm = nullptr;
status_info status;
TStatistics statistics;
CMiniCom port;         // a second one on the line
unsigned waiting = 0;  // bytes of an answer

void Require(bool good) {
    if (!good) {
        throw std::runtime_error("the driver failed, with code " + std::to_string(GetErrorCode()));
    }
}

sale Line() {
    sale line;
    line.title = goods;
    line.barcode = "1234567890123";
    line.code = 1;
    line.section = 2;
    line.price = 4990;
    line.count = 2;
    return line;
}

const sale& GoodsLine() {
    static const sale line = Line();
    return line;
}

void BringTo(kkm_command state) {
    kvesk.GetStatusInfo(status);
    Require(status.command == state);
}

void prepare_idle() {
    kvesk.ClearCheck();
    kvesk.resetStatus();
    BringTo(ks_none);
}

void LetWait(unsigned count) {
    waiting = count;
    kkm->LetWait(count);
}

void prepare_reset() {}
void prepare_status() {
    prepare_idle();
}
void prepare_status_sale_add() {
    prepare_idle();
    kvesk.sendSaleInfo(GoodsLine());
    BringTo(ks_saleadd);
}
void prepare_status_sale_code() {
    prepare_idle();
    kkm->AskForCheck();
}
void prepare_statistics() {
    prepare_idle();
}
void prepare_sale_number() {}
void prepare_key() {}
void prepare_title() {
    kvesk.sendSaleInfo(GoodsLine());
}
void prepare_sale() {
    prepare_idle();
}
void prepare_eeprom_197() {}
void prepare_read_5() {
    LetWait(5);
}
void prepare_read_16() {
    LetWait(16);
}
void prepare_read_38() {
    LetWait(38);
}
void prepare_read_202() {
    LetWait(202);
}
void prepare_check_4() {
    prepare_idle();
    kkm->ForgetPrinted();
    kkm->AskForCheck();
}

void Reset() {
    kvesk.resetStatus();
}
void Status() {
    kvesk.GetStatusInfo(status);
}
void Statistics() {
    kvesk.GetStatistics(statistics);
}
void SaleNumber() {
    kvesk.ReadSaleNumber();
}
void Key() {
    kvesk.sendKey(key_none);
}
void Title() {
    static const std::string piece(goods, 18);
    kvesk.sendSaleStr(0, 0, piece);
}
void Sale() {
    kvesk.sendSaleInfo(GoodsLine());
}
void Eeprom() {
    kvesk.readEprom(0, 197);
}

// An answer is read in two pieces: two bytes, and as many as they say.
void Read() {
    unsigned char bytes[256];
    port.Read(bytes, 2);
    port.Read(bytes, waiting - 2);
}

void Check() {
    for (int i = 0; i < kLines; ++i) {
        Require(cbAddSale(goods, 49.90, 2, 2) == 1);
    }
    Require(CheckClose() == 1);
    Require(PrintCheck() == 1);
}

}  // namespace

// Functions of their own, so that the profiler can find them by name.
#define COST_FUNCTIONS(name, action)                                  \
    extern "C" [[gnu::noinline, gnu::noipa]] void run_##name() {      \
        action();                                                     \
    }                                                                 \
    extern "C" [[gnu::noinline, gnu::noipa]] void measured_##name() { \
        run_##name();                                                 \
    }

COST_FUNCTIONS(reset, Reset)
COST_FUNCTIONS(status, Status)
COST_FUNCTIONS(status_sale_add, Status)
COST_FUNCTIONS(status_sale_code, Status)
COST_FUNCTIONS(statistics, Statistics)
COST_FUNCTIONS(sale_number, SaleNumber)
COST_FUNCTIONS(key, Key)
COST_FUNCTIONS(title, Title)
COST_FUNCTIONS(sale, Sale)
COST_FUNCTIONS(eeprom_197, Eeprom)
COST_FUNCTIONS(read_5, Read)
COST_FUNCTIONS(read_16, Read)
COST_FUNCTIONS(read_38, Read)
COST_FUNCTIONS(read_202, Read)
COST_FUNCTIONS(check_4, Check)

#define COST_SCENARIO(name) {#name, prepare_##name, run_##name, measured_##name},
const Scenario kScenarios[] = {COST_SCENARIOS(COST_SCENARIO)};
const int kScenarioCount = sizeof kScenarios / sizeof *kScenarios;

void Begin(LocalRegister& to, const char* path) {
    kkm = &to;
    std::string device = path;
    Require(ConnectKKMDevice(device.data()) == 1);
    constexpr _COMMTIMEOUTS kTimeouts{100, 100, 200, 5, 5};
    port.OpenDevice(device);
    port.SetCommTimeouts(&kTimeouts);
}

void End() {
    port.Close();
    DisconnectKKM();
}

}  // namespace cost
