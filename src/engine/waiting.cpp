#include "engine/attempts.h"
#include "engine/tarvo_vesk.h"
#include "support/time.h"
#include "support/trace.h"

namespace {

constexpr int kQueryPolls = 10;
constexpr unsigned kCancelPauseMs = 50;
constexpr unsigned kPendingCancelPauseMs = 20;

}  // namespace

void TTarvoVesk::StartWait(bool wait) {
    if (GetEnabledFreeSale()) {
        writeCfgParam(cfg_host_wait, 1);
    }
    status_info status;
    GetStatusInfo(status);
    if (status.command == ks_checkout) {
        DoCheckOut();
    } else {
        Trace("SaleNum\n");
        if (TryReadSaleNumber() > 0) {
            Trace("SaleNum > 0\n");
            DropPendingSale(status);
        }
    }
    wait_mode_ = wait;
    Trace("Before Start\n");
    start();
    Trace("After Start\n");
}

void TTarvoVesk::DropPendingSale(status_info& status) {
    sendQuerySale();
    int polls = 0;
    do {
        GetStatusInfo(status);
        ++polls;
    } while (status.command != ks_salebarcode && polls < kQueryPolls);
    if (status.command == ks_discountcard) {
        lockKey();
        CancelOpenCheck(kPendingCancelPauseMs);
        unlockKey();
    } else if (status.command == ks_salebarcode) {
        resetStatus();
        ClearCheck();
    } else {
        throw ETarvoVesk(echRegKass);
    }
}

void TTarvoVesk::StopWait() {
    wait();
    if (GetEnabledFreeSale()) {
        writeCfgParam(cfg_host_wait, 0);
    }
}

void TTarvoVesk::PrintCheck() {
    start();
    while (execute() == 0 && !terminated()) {
    }
}

void TTarvoVesk::DoCheckOut() {
    _lockKey();
    CancelOpenCheck(kCancelPauseMs);
    sendQuerySale();
}

void TTarvoVesk::CancelOpenCheck(unsigned pause_ms) {
    resetStatus();
    Sleep(pause_ms);
    ClearCheck();
    Sleep(pause_ms);
    sendKey(key_clear);
    Sleep(pause_ms);
    sendKey(key_confirm);
    Sleep(pause_ms);
    resetStatus();
}

int TTarvoVesk::TryReadSaleNumber() {
    Trace("Info: TryReadSaleNumber\n");
    int number = 0;
    const int attempts = Attempts(
        kStepAttempts, [&] { number = ReadSaleNumber(); },
        [] { Trace("ReadSaleNumber -  error: ???\n"); });
    if (Exhausted(attempts)) {
        Trace("Error: TryReadSaleNumber (count)");
        throw ETarvoVesk(echDevice);
    }
    if (attempts > 1) {
        Trace(trace::Line("Warning: TryReadSaleNumber ", attempts, ">1"));
    }
    Trace(trace::Line("Info: resulr TryReadSaleNumber = ", number));
    return number;
}
