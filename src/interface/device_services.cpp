#include "interface/last_error.h"
#include "interface/vesk.h"

namespace {

constexpr unsigned char kFeedLines = 40;

}  // namespace

int Feed(int n) {
    return Guarded([&] {
        kvesk.Identify();
        for (int i = 0; i < n; ++i) {
            kvesk.feed(kFeedLines);
        }
    });
}

int KKMPrintStr(char* text) {
    return Guarded([&] {
        RequireArguments(text);
        kvesk.Identify();
        kvesk.printStr(false, 0, text);
    });
}

int Lock() {
    return Guarded([] {
        kvesk.Identify();
        kvesk.keylock();
    });
}

int UnLock() {
    return Guarded([] {
        kvesk.Identify();
        kvesk.keyunlock();
    });
}

int ClearIndicator() {
    return Guarded([] {
        kvesk.Identify();
        kvesk.indicator_clear();
    });
}

void SetSupplierCode(char* code) {
    Guarded([&] {
        RequireArguments(code);
        kvesk.setSupplierCode(code);
    });
}
