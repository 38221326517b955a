#include "interface/last_error.h"

int errVeskTarvo = echOk;
char strErrorMsg[256];
void (*EventErrorProc)(int, char*) = nullptr;

int GetErrorCode() {
    return errVeskTarvo;
}

char* GetErrorMsg() {
    return nullptr;
}

void SetErrorCode(ErrorVeskTarvo code) {
    errVeskTarvo = code;
    if (code == echOk || EventErrorProc == nullptr) {
        return;
    }
    try {
        EventErrorProc(code, GetErrorMsg());
    } catch (...) {
        // A host that fails to hear of an error must not get another one.
    }
}
