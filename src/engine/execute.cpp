#include "engine/tarvo_vesk.h"
#include "support/time.h"
#include "support/trace.h"

namespace {

constexpr auto kHookText = "  ";
constexpr auto kOpenedText = "Check is opened";
constexpr unsigned char kOpenedValue = 16;
constexpr unsigned kAfterResetMs = 50;
constexpr unsigned kBeforeCashMs = 50;
constexpr unsigned kCancelPauseMs = 50;
constexpr std::uint16_t kCancelledByCashier = 7;
constexpr int kLastWithoutLockSwitch = 302;

constexpr unsigned char kStarted = 0;
constexpr unsigned char kClosed = 100;

// What an empty buffer is printed as.
sale ZeroLine() {
    sale line;
    line.section = 1;
    line.fractional = true;
    line.code = 1;
    return line;
}

}  // namespace

bool TTarvoVesk::KeyLockApplies() const {
    return version() > kLastWithoutLockSwitch && version() != kkm_ver_400;
}

int TTarvoVesk::execute() {
    status_info status;
    try {
        GetStatusInfo(status);
    } catch (...) {
        return 0;  // as a register in its neutral state: the loop polls on
    }
    try {
        Dispatch(status);
    } catch (const ETarvoVesk& error) {
        FailCheck(error);
    } catch (...) {
        FailCheckUnknown();
    }
    return 0;
}

void TTarvoVesk::Dispatch(const status_info& status) {
    switch (status.command) {
        case ks_saleadd:
            Trace("Info: query ks_saleadd");
            [[fallthrough]];
        case ks_salefree:
            Trace("Info: query ks_salefree");
            resetStatus();
            Sleep(kAfterResetMs);
            ClearCheck();  // drops the line that the cashier was entering
            [[fallthrough]];
        case ks_salebarcode:
            Trace("Info: query ks_salebarcode");
            [[fallthrough]];
        case ks_salecode:
            Trace("Info:query ks_salecode");
            PrintQueriedCheck(status);
            return;
        case ks_none:
            return;
        case ks_checkout:
            DoCheckOut();
            return;
        default:
            resetStatus();
            return;
    }
}

void TTarvoVesk::PrintQueriedCheck(const status_info& status) {
    if (ReadSaleNumber() != 0) {
        Trace("Warning:Check is opened - Exit");
        resetStatusInfo(kOpenedText, kOpenedValue, indicator_line);
        return;
    }
    if (status.marked) {
        Trace("Warning: echRegKass - Exit");
        throw ETarvoVesk(echRegKass);
    }
    if (status.code == kCancelledByCashier) {
        Trace("Warning: echCancelCheck - Exit");
        throw ETarvoVesk(echCancelCheck);
    }
    if (KeyLockApplies()) {
        lockKey();
    }
    TStatistics before;
    GetStatistics(before);
    DoCheckPrepare(kStarted, nullptr, kHookText);
    SendCheck();
    CloseCheck(before);
    PrintCopies();
    if (KeyLockApplies()) {
        try {
            TryUnlockKey();
        } catch (...) {
            Trace("Error TTarvoVesk::execute unlockKey\n");
        }
    }
    if (clear_buffer_) {
        check_.clear();
    }
    DoCloseCheck();
    if (close_after_check_) {
        terminate();
    }
}

void TTarvoVesk::SendCheck() {
    if (check_.sales.empty()) {
        check_.sales.push_back(ZeroLine());
    }
    for (const sale& line : check_.sales) {
        TrySendSale(line);
    }
    resetStatus();
    if (check_.discount != 0) {
        TrySendDiscount(check_.discount);
    } else {
        sendDiscountCard(0, "");
        resetStatus();
    }
}

void TTarvoVesk::CloseCheck(const TStatistics& before) {
    TrySendCheckType(static_cast<kkm_check>(check_.mode));
    Sleep(kBeforeCashMs);
    TrySendCheckCash(check_.cash);
    TryEnableCheckOut();
    DoCheckPrepare(kClosed, nullptr, kHookText);
    TestCheckPrint(before.checks, before.sales, static_cast<int>(check_.sales.size()));
}

void TTarvoVesk::PrintCopies() {
    try {
        for (int copy = 0; copy < copy_count_; ++copy) {
            if (!TryPrintDoubleCheck()) {
                return;
            }
        }
    } catch (...) {
        Trace("Error TTarvoVesk::execute TryPrintDoubleCheck\n");
    }
}

void TTarvoVesk::FailCheck(const ETarvoVesk& error) {
    Trace("Error Interface\n");
    terminate();
    if (version() > kLastWithoutLockSwitch) {
        try {
            unlockKey();
        } catch (...) {
            Trace("Error: unlockKey  Error\n");
        }
    }
    // Without paper the check stays open, to be finished when there is paper again.
    if (error.getCode() != echPaperAbsent) {
        try {
            _lockKey();
            CancelOpenCheck(kCancelPauseMs);
        } catch (...) {
            Trace("Error: ClearCheck()  Error\n");
        }
    }
    DoCheckPrepare(kStarted, &error, kHookText);
}

void TTarvoVesk::FailCheckUnknown() {
    Trace("Error: unknown error in print check\n");
    terminate();
    // Kept: unlike above, the first failure ends the whole clean-up.
    try {
        if (version() > kLastWithoutLockSwitch) {
            unlockKey();
        }
        _lockKey();
        CancelOpenCheck(kCancelPauseMs);
    } catch (...) {
        Trace("Error: ClearCheck\n");
    }
    const ETarvoVesk error(echDevice);
    DoCheckPrepare(kStarted, &error, kHookText);
}

void TTarvoVesk::DoCheckPrepare(unsigned char step, const ETarvoVesk* error,
                                const std::string& text) {
    try {
        event_checkprepare(step, error);
    } catch (...) {
        Trace(trace::Line(text, "\nWarning: DoCheckPrepare event_checkprepare (", text, ")"));
    }
}
