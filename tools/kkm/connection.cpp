#include "kkm/connection.h"

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/report.h"

namespace kkm {

std::string Address::Text() const {
    return device.empty() ? "port " + std::to_string(port) : device;
}

std::string Address::Device() const {
    return device.empty() ? "/dev/ttyS" + std::to_string(port - 1) : device;
}

Connection::Connection(const Address& address, Leaving leaving) : leaving_(leaving) {
    std::string device = address.device;  // the library takes texts that may be changed
    const int connected =
        device.empty() ? ConnectKKM(address.port) : ConnectKKMDevice(device.data());
    Require(connected, ExitStatus::no_connection, "no connection to " + address.Text());
}

Connection::~Connection() {
    // Leaving may report errors that concern nobody.
    EventErrorProc = nullptr;
    if (leaving_ == Leaving::reset) {
        DisconnectKKM();
    }
}

int Firmware() {
    int version = 0;
    Require(GetKKMVers(&version), ExitStatus::not_read, "the firmware could not be read");
    return version;
}

}  // namespace kkm
