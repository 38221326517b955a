#include "engine/attempts.h"

#include "protocol/tarvo_error.h"

Failure CurrentFailure() {
    try {
        throw;
    } catch (const ETarvo& e) {
        return e.code() == errMoney ? Failure::money : Failure::protocol;
    } catch (...) {
        return Failure::other;
    }
}
