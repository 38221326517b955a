// The last error, and the frame of every exported function that can fail.
#pragma once

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "engine/tarvo_vesk_error.h"

// Stores the code. A code other than 0 is told to EventErrorProc, whose exceptions are dropped.
void SetErrorCode(ErrorVeskTarvo code);

inline void ClearError() {
    errVeskTarvo = echOk;
}

// 1 when there is no error, else 0.
inline int SuccessFlag() {
    return errVeskTarvo == echOk ? 1 : 0;
}

// Clears the last error, runs the action and turns what it throws into an error code. Nothing
// escapes to the host.
template <typename Action>
int Guarded(Action action) {
    ClearError();
    try {
        action();
    } catch (const ETarvoVesk& e) {
        SetErrorCode(e.getCode());
    } catch (...) {
        SetErrorCode(echDevice);
    }
    return SuccessFlag();
}

// Refuses null pointers of the host before anything is done.
template <typename... Pointers>
void RequireArguments(const Pointers*... pointers) {
    const bool missing = ((pointers == nullptr) || ...);
    if (missing) {
        throw ETarvoVesk(echParam);
    }
}
