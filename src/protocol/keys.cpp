#include "protocol/tarvo.h"

namespace {

constexpr int kUnlockAttempts = 20;

// Firmware above this one has the lock switch.
constexpr int kLastWithoutLockSwitch = 302;

}  // namespace

void CTarvo::sendKey(kkm_keys key) {
    CheckVersion(true);
    if (m_ver == kkm_ver_300) {
        throw ETarvo(this, errVersion, "      ");
    }
    const status_info status = ExchangeStatus(commands::kKey.request,
                                              frame::NewPayload({static_cast<unsigned char>(key)}));
    if (status.command != commands::kKey.answer) {
        throw ETarvo(this, errProtocol, commands::kKey.fault);
    }
    // Kept: no answer to a key fills reply, so this never happens, and the text is that of cash.
    if (status.reply != 0) {
        throw ETarvo(this, errMoney, commands::kCash.fault);
    }
}

void CTarvo::lockKey() {
    if (m_ver > kLastWithoutLockSwitch) {
        _lockKeyReal(false);
    } else {
        _lockKey();
    }
}

void CTarvo::unlockKey() {
    if (m_ver > kLastWithoutLockSwitch) {
        _lockKeyReal(true);
    } else {
        _unlockKey();
    }
}

void CTarvo::_lockKeyReal(bool unlock) {
    Exchange(commands::kKeySwitch, frame::NewPayload({static_cast<unsigned char>(unlock ? 1 : 0)}));
}

void CTarvo::_lockKey() {
    Exchange(commands::kKeyLock);
}

void CTarvo::_unlockKey() {
    status_info status;
    GetStatusInfo(status);
    if (status.command == ks_keylock) {
        resetStatus();
    }
}

void CTarvo::TryUnlockKey() {
    int attempts = 0;
    bool unlocked = false;
    do {
        ++attempts;
        try {
            unlockKey();
            unlocked = true;
        } catch (...) {
            // The next attempt follows.
        }
    } while (!unlocked && attempts < kUnlockAttempts);
    // Kept: success on the last attempt counts as a failure.
    if (attempts >= kUnlockAttempts) {
        throw ETarvo(this, errProtocol, "CTarvo::TryUnlockKey - error");
    }
}
