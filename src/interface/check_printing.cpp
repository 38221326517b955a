#include "interface/last_error.h"
#include "interface/vesk.h"

int CheckPrintPrepare() {
    return SuccessFlag();
}

int CheckClose() {
    return Guarded([] {
        kvesk.Identify();
        kvesk.setCloseAfterCheck(true);
        kvesk.StartWait(true);
    });
}

int PrintCheck() {
    return Guarded([] { kvesk.PrintCheck(); });
}

int CheckCancel() {
    return Guarded([] {
        status_info status;
        kvesk.GetStatusInfo(status);
        kvesk.resetStatus();
    });
}

int GetDiscountMode() {
    return Guarded([] {});
}
