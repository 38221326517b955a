#include "simulation/host.h"

#include <new>
#include <string>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "interface/vesk.h"

namespace simulation {
namespace {

std::string told;
bool callbacks_throw = false;

void Tell(const std::string& what) {
    told += what;
    if (callbacks_throw) {
        throw 1;  // anything at all
    }
}

void TellQuery() {
    Tell("q");
}

void TellStep(unsigned char step) {
    Tell(std::to_string(step) + ";");
}

void TellError(int code, char* /*text*/) {
    Tell("e" + std::to_string(code) + ";");
}

template <typename Function>
int QueryInt(Function function, std::optional<double>& value) {
    int number = 0;
    const int result = function(&number);
    if (result == 1) {
        value = number;
    }
    return result;
}

template <typename Function>
int QueryDouble(Function function, std::optional<double>& value) {
    double number = 0;
    const int result = function(&number);
    if (result == 1) {
        value = number;
    }
    return result;
}

int ReadTape(int number, std::optional<double>& value) {
    unsigned char bytes[7];
    double amounts[6];
    unsigned short code = 0;
    const int result = ReadSaleFromKL(number, &bytes[0], &bytes[1], &amounts[0], &amounts[1],
                                      &amounts[2], &amounts[3], &amounts[4], &amounts[5], &bytes[2],
                                      &code, &bytes[3], &bytes[4], &bytes[5], &bytes[6]);
    if (result == 1) {
        value = amounts[0];
    }
    return result;
}

int GetSale(int index, std::optional<double>& value) {
    char buffer[256];
    char* name = buffer;
    double price = 0;
    double quantity = 0;
    int section = 0;
    const int result = cbGetSale(index, &name, &price, &quantity, &section);
    if (result == 1) {
        value = price;
    }
    return result;
}

int Ask(const Call& call, std::optional<double>& value) {
    switch (call.kind) {
        case CallKind::get_shift_number:
            return QueryInt(GetSmenaNum, value);
        case CallKind::get_tape_number:
            return QueryInt(GetKLNum, value);
        case CallKind::get_sale_number:
            return QueryInt(GetSaleNum, value);
        case CallKind::get_check_count:
            return QueryInt(GetCheckCount, value);
        case CallKind::get_grand_total:
            return QueryDouble(GetNI, value);
        case CallKind::get_serial:
            return QueryInt(GetKKMNum, value);
        case CallKind::get_cash_sum:
            return QueryDouble([&](double* to) { return GetCashSum(call.number, to); }, value);
        case CallKind::get_tax:
            return QueryDouble(
                [&](double* to) { return GetTax(static_cast<unsigned char>(call.number), to); },
                value);
        case CallKind::get_shift_status:
            return QueryInt(GetSmenaStatus, value);
        case CallKind::get_version:
            return QueryInt(GetKKMVers, value);
        case CallKind::read_tape:
            return ReadTape(call.number, value);
        case CallKind::get_sale:
            return GetSale(call.number, value);
        default:
            value = cbGetSum();
            return 1;
    }
}

int Serve(const Call& call, std::string& text) {
    switch (call.kind) {
        case CallKind::connect:
            return ConnectKKM(call.number);
        case CallKind::connect_device:
            return ConnectKKMDevice(text.data());
        case CallKind::disconnect:
            DisconnectKKM();
            return 1;
        case CallKind::clear_title:
            return cbClearTitle();
        case CallKind::clear_bottom:
            return cbClearBottom();
        case CallKind::check_close:
            return CheckClose();
        case CallKind::print_check:
            return PrintCheck();
        case CallKind::check_cancel:
            return CheckCancel();
        case CallKind::lock:
            return Lock();
        case CallKind::unlock:
            return UnLock();
        case CallKind::clear_indicator:
            return ClearIndicator();
        case CallKind::feed:
            return Feed(call.number);
        default:
            return KKMPrintStr(text.data());
    }
}

int Fill(const Call& call, std::string& text) {
    switch (call.kind) {
        case CallKind::add_sale:
            return cbAddSale(text.data(), call.money, call.quantity, call.number);
        case CallKind::delete_sale:
            return cbDeleteSale(call.number);
        case CallKind::clear_sales:
            cbClearSales();
            return 1;
        case CallKind::set_cash:
            return cbSetCash(call.money);
        case CallKind::set_cash_over_total:
            return cbSetCash(cbGetSum() + call.money);
        case CallKind::set_return:
            cbSetReturnMode(call.number);
            return 1;
        case CallKind::set_credit:
            cbSetCreditMode(call.number);
            return 1;
        case CallKind::set_discount:
            return cbSetDiscountValue(call.number);
        default:
            cbSetClearBufMode(call.number);
            return 1;
    }
}

bool IsFill(CallKind kind) {
    return kind >= CallKind::add_sale && kind <= CallKind::set_clear_mode &&
           kind != CallKind::get_sale && kind != CallKind::get_sum;
}

bool IsAsk(CallKind kind) {
    return (kind >= CallKind::get_shift_number && kind <= CallKind::read_tape) ||
           kind == CallKind::get_sale || kind == CallKind::get_sum;
}

}  // namespace

Answered Perform(const Call& call) {
    Answered answered;
    std::string text = call.text;
    told.clear();
    try {
        answered.result = IsFill(call.kind)  ? Fill(call, text)
                          : IsAsk(call.kind) ? Ask(call, answered.value)
                                             : Serve(call, text);
    } catch (...) {
        answered.threw = true;
    }
    answered.error = GetErrorCode();
    answered.told = told;
    return answered;
}

void Reload(std::uint8_t number, Callbacks callbacks) {
    kvesk.~TVesk();
    new (&kvesk) TVesk;
    kvesk.setNetNum(number);
    errVeskTarvo = echOk;
    const bool calls = callbacks != Callbacks::none;
    EventQuery = calls ? TellQuery : nullptr;
    EventCheckPrepare = calls ? TellStep : nullptr;
    EventErrorProc = calls ? TellError : nullptr;
    callbacks_throw = callbacks == Callbacks::throwing;
}

}  // namespace simulation
