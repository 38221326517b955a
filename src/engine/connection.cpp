#include "engine/tarvo_vesk.h"
#include "support/trace.h"

void TTarvoVesk::Connect(unsigned char port) {
    ConnectThrough([&] { Open(port); });
}

void TTarvoVesk::ConnectDevice(const std::string& device) {
    ConnectThrough([&] { OpenDevice(device); });
}

template <typename OpenPort>
void TTarvoVesk::ConnectThrough(OpenPort open_port) {
    Trace("Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n");
    try {
        wait();
        Close();
        setVersion(kkm_ver_unknown);
        free_sale_set_ = false;
        open_port();
        const bool found = FindAtFirstSpeed() || FindAtSecondSpeed();
        SwitchHostWaitOn();
        if (!found) {
            throw ETarvoVesk(echDevice);
        }
        Trace("Connect - OK\n");
    } catch (const ETarvoVesk&) {
        throw;
    } catch (const ETarvo& e) {
        throw ETarvoVesk(e.code() == errPort || e.code() == errLine ? echNoPort : echDevice);
    } catch (const EMiniCom& e) {
        throw ETarvoVesk(e.code == errCreateFile ? echNoPort : echDevice);
    } catch (...) {
        throw ETarvoVesk(echDevice);
    }
}

bool TTarvoVesk::FindAtFirstSpeed() {
    try {
        InitCom(baud_9600);
        setVersion(getKKMVersion(false));
    } catch (...) {
        // Nobody answers at this speed.
    }
    if (version() == kkm_ver_unknown) {
        Trace("TTarvoVesk::Connect: error getKKMVersion\n");
        return false;
    }
    Trace(trace::Line("TTarvoVesk::Connect: getKKMVersion: ", static_cast<int>(version())));
    return true;
}

bool TTarvoVesk::FindAtSecondSpeed() {
    InitCom(baud_57600);
    try {
        setVersion(getKKMVersion(false));
    } catch (const ETarvoVesk&) {
        throw;
    } catch (...) {
        return false;
    }
    if (version() == kkm_ver_unknown) {
        throw ETarvoVesk(echNoVersion);
    }
    return true;
}

void TTarvoVesk::SwitchHostWaitOn() {
    if (GetEnabledFreeSale()) {
        return;
    }
    try {
        writeCfgParam(cfg_host_wait, 1);
        free_sale_set_ = true;
    } catch (const ETarvoVesk&) {
        throw;
    } catch (...) {
        // A register that refuses the parameter still connects.
    }
}

void TTarvoVesk::Disconnect() {
    wait();
    try {
        status_info status;
        do {
            GetStatusInfo(status);
            if (status.command != ks_none) {
                resetStatus();
            }
        } while (status.command != ks_none);
    } catch (...) {
        // A register that does not answer is left as it is.
    }
    if (free_sale_set_) {
        writeCfgParam(cfg_host_wait, 0);
    }
    Close();
    setVersion(kkm_ver_unknown);
    free_sale_set_ = false;
    Trace("Disconnect - OK");
}
