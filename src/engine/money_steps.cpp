#include "engine/attempts.h"
#include "engine/probe.h"
#include "engine/tarvo_vesk.h"
#include "support/time.h"
#include "support/trace.h"

namespace {

constexpr std::uint32_t kStatePolls = 100;
constexpr unsigned kCashRetryMs = 10;
constexpr unsigned kAfterCopyMs = 20;

// Firmware that takes the cash tendered.
bool TakesCash(kkm_ver version) {
    return version >= 301 && version <= 309;
}

}  // namespace

void TTarvoVesk::TrySendDiscount(int percent) {
    Trace(trace::Line("Info: TrySendDiscount = ", percent, "%"));
    const int attempts = Attempts(
        kStepAttempts,
        [&] {
            sendDiscount(static_cast<std::int8_t>(percent));
            status_info status;
            GetStatusInfo(status);
            if (status.command != ks_kkmgo) {
                throw ETarvoVesk(echDevice);
            }
            resetStatus();
        },
        [] {});
    if (Exhausted(attempts)) {
        Trace("Error: TrySendDiscount try ");
        throw ETarvoVesk(echDevice);
    }
    if (attempts > 1) {
        Trace(trace::Line("Warning: TrySendDiscount try ", attempts));
    }
    Trace("TrySendDiscount-ok\n");
}

void TTarvoVesk::TrySendCheckCash(unsigned long checkCash) {
    Trace(trace::Line("Info: TrySendCheckCash checkCash = ", checkCash));
    CheckVersion(true);
    if (checkCash != 0 && TakesCash(version())) {
        const int attempts = Attempts(
            kStepAttempts,
            [&] {
                if (!waitKKMStatus(ks_checkout, kStatePolls)) {
                    Trace("Error: !waitKKMStatus(ks_checkout)\n");
                    throw ETarvoVesk(echDevice);
                }
                sendCash(check_.cash);
                Trace("Info: TrySendCheckCash - Send Ok\n");
            },
            [] {
                const Failure failure = CurrentFailure();
                if (failure == Failure::money) {
                    Trace("Error:  echNoCash");
                    throw ETarvoVesk(echNoCash);
                }
                if (failure == Failure::other) {
                    Trace("TrySendCheckCash: error\n");
                }
                Sleep(kCashRetryMs);
            });
        if (Exhausted(attempts)) {
            Trace("Error: TrySendCheckCash try");
            throw ETarvoVesk(echDevice);
        }
        if (attempts > 1) {
            Trace(trace::Line("Warning: TrySendCheckCash try", attempts));
        }
    }
    Trace("Info: TrySendCheckCash end\n");
}

bool TTarvoVesk::ProbeStatistics() {
    TStatistics statistics;
    return Probe([&] { GetStatistics(statistics); }, [] { return true; });
}

bool TTarvoVesk::TryPrintDoubleCheck() {
    Trace("Info: TryPrintDoubleCheck - begin\n");
    if (!ProbeStatistics()) {
        Trace("Info: TryPrintDoubleCheck no inteface for DoubleCheck\n");
        return false;
    }
    try {
        printDoubleCheck();
    } catch (...) {
        // Whether the register is still there is what the second probe finds out.
    }
    Sleep(kAfterCopyMs);
    if (!ProbeStatistics()) {
        Trace("Info: TryPrintDoubleCheck no inteface after DoubleCheck\n");
        return false;
    }
    Trace("Info: TryPrintDoubleCheck - ok\n");
    return true;
}
