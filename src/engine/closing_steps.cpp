#include "engine/attempts.h"
#include "engine/probe.h"
#include "engine/tarvo_vesk.h"
#include "support/time.h"
#include "support/trace.h"

namespace {

constexpr std::uint32_t kStatePolls = 100;
constexpr unsigned kBeforeTypeMs = 50;
constexpr unsigned kBeforeCheckOutMs = 50;
constexpr unsigned kPrintMs = 3000;
constexpr unsigned kPrintLineMs = 500;
constexpr int kPaperAbsent = 16;  // the register's own error number

}  // namespace

void TTarvoVesk::TrySendCheckType(kkm_check type) {
    Trace(trace::Line("Info: TrySendCheckType type check = ", static_cast<int>(type)));
    Sleep(kBeforeTypeMs);
    const int attempts = Attempts(
        kStepAttempts,
        [&] {
            outCheck(type == check_sale ? check_sale_on_wire : type);
            if (!waitKKMStatus(ks_kkmgo, kStatePolls)) {
                throw ETarvoVesk(echDevice);
            }
            resetStatus();
        },
        [] {
            if (CurrentFailure() == Failure::money) {
                Trace("Error:  echNoCash");
                throw ETarvoVesk(echNoCash);
            }
        });
    if (Exhausted(attempts)) {
        Trace("Error: TrySendCheckType  try");
        throw ETarvoVesk(echDevice);
    }
    if (attempts > 1) {
        Trace(trace::Line("Warning: TrySendCheckType try ", attempts));
    }
    Trace("Info: TrySendCheckType-ok\n");
}

void TTarvoVesk::TryEnableCheckOut() {
    Trace("Info: TryEnableCheckOut - begin\n");
    unsigned print_ms = 0;
    const int attempts = Attempts(
        kCheckOutAttempts,
        [&] {
            print_ms = 0;
            Sleep(kBeforeCheckOutMs);
            if (!waitKKMStatus(ks_checkout, kStatePolls)) {
                Trace("Error: TryEnableCheckOut - !waitKKMStatus(ks_checkout)\n");
                throw ETarvoVesk(echDevice);
            }
            print_ms = kPrintLineMs * static_cast<unsigned>(check_.sales.size()) + kPrintMs;
            resetStatus();
            Sleep(print_ms);
        },
        [&] {
            Trace("TryEnableCheckOut: error\n");
            Sleep(print_ms);
        });
    // Kept: the step never fails. A check that was not closed fails its print test.
    if (attempts > 1) {
        Trace(trace::Line("Warning: TryEnableCheckOut ", attempts));
    }
    Trace("Info: TryEnableCheckOut - ok\n");
}

int TTarvoVesk::TryReadError() {
    Trace("Info: TryReadError - begin\n");
    int error = 0;
    // Kept: one attempt, unlike every other step.
    try {
        error = ReadError();
    } catch (...) {
        Trace("Error TryReadError: ???\n");
        Trace("Error: TryReadError  try");
        throw ETarvoVesk(echDevice);
    }
    Trace(trace::Line("Info: TryReadError result = ", error));
    return error;
}

void TTarvoVesk::TestCheckPrint(int checksBefore, int salesBefore, int lines) {
    Trace("Info: TestCheckPrint - begin\n");
    TStatistics after;
    ErrorVeskTarvo failure = echDevice;
    const bool was_read = Probe(
        [&] {
            try {
                GetStatistics(after);
            } catch (const ETarvoVesk& e) {
                failure = e.getCode();
                throw;
            }
        },
        [&] { return failure == echDevice; });
    if (!was_read) {
        Trace("Error: TestCheckPrint - !readed\n");
        throw ETarvoVesk(failure);
    }
    // Kept: compared without wrap, so that the check behind number 65535 fails.
    if (after.checks == checksBefore + 1 && after.sales == salesBefore + lines) {
        Trace("Info: TestCheckPrint - ok\n");
        return;
    }
    Trace(trace::Line("Error:  TestCheckPrint  (  ", after.checks, ":", checksBefore + 1, "; ", " ",
                      after.sales, ":", salesBefore + lines, ")"));
    if ((TryReadError() & 0xFF) == kPaperAbsent) {
        Trace("Error: TestCheckPrint iPaperAbsent");
        throw ETarvoVesk(echPaperAbsent);
    }
    Trace("Error: TestCheckPrint <> iPaperAbsent");
    throw ETarvoVesk(echPrintTest);
}
