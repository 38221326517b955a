#include "interface/vesk.h"

#include "interface/last_error.h"

TVesk kvesk;

void (*EventQuery)() = nullptr;
void (*EventCheckPrepare)(unsigned char) = nullptr;
void (*EventCloseCheck)() = nullptr;
void* hInstance = nullptr;
void* LibID = nullptr;

void TVesk::event_checkprepare(unsigned char step, const ETarvoVesk* error) {
    if (error != nullptr) {
        SetErrorCode(error->getCode());
        return;
    }
    if (step == 0 && EventQuery != nullptr) {
        EventQuery();
    }
    if (EventCheckPrepare != nullptr) {
        EventCheckPrepare(step);
    }
}

void TVesk::OnCheckClose() {
    if (EventCloseCheck != nullptr) {
        EventCloseCheck();
    }
}

void TVesk::Identify() {
    if (version() == kkm_ver_unknown) {
        setVersion(getKKMVersion(true));
    }
}
