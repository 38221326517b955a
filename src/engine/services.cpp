#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "engine/tarvo_vesk.h"
#include "support/trace.h"

namespace {

constexpr unsigned char kLockedValue = 16;  // sent with the empty line when the keyboard is locked

}  // namespace

void TTarvoVesk::keylock() {
    lockKey();
    showInfo("", kLockedValue, indicator_line);
}

void TTarvoVesk::keyunlock() {
    unlockKey();
    sendKey(key_none);
}

void TTarvoVesk::feed(unsigned char lines) {
    CTarvo::feed(lines);
}

void TTarvoVesk::indicator_clear() {
    showInfo("", 0, indicator_line);
}

int TTarvoVesk::kkmnum() {
    const long long number = std::strtoll(ReadKKMNum().c_str(), nullptr, 10);
    // As a 32-bit long conversion ends, whatever the word size.
    return static_cast<int>(std::clamp<long long>(number, INT32_MIN, INT32_MAX));
}

int TTarvoVesk::klnum() {
    TStatistics statistics;
    GetStatistics(statistics);
    return statistics.number;
}

int TTarvoVesk::checkscount() {
    TStatistics statistics;
    GetStatistics(statistics);
    return statistics.checks;
}

void TTarvoVesk::printDoubleCheck() {
    sendKey(key_copy);
}

void TTarvoVesk::Trace(const std::string& msg) {
    TraceLogFile("VeskTarvoM5.log", msg);
}

void TTarvoVesk::Trace(const char* msg) {
    Trace(std::string(msg));
}

void TTarvoVesk::event_checkprepare(unsigned char /*step*/, const ETarvoVesk* /*error*/) {}
