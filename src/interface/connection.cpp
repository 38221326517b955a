#include "interface/last_error.h"
#include "interface/vesk.h"

int ConnectKKM(int port) {
    return Guarded([&] { kvesk.Connect(static_cast<unsigned char>(port)); });
}

int ConnectKKMDevice(char* device) {
    return Guarded([&] {
        RequireArguments(device);
        if (*device == '\0') {
            throw ETarvoVesk(echParam);
        }
        kvesk.ConnectDevice(device);
    });
}

void DisconnectKKM() {
    Guarded([] { kvesk.Disconnect(); });
    ClearError();  // a disconnect never leaves an error behind
}
