// What the driver is made to do while its cost is counted.
#pragma once

#include "cost/local_register.h"

namespace cost {

// The scenarios, each by its name. An exchange is named by its request; `status` has no data,
// `status_sale_add` 32 bytes, `status_sale_code` is the state that costs two exchanges more.
// `read_N` is the mere reading of the N bytes of an answer from the port, which makes up part of
// the exchanges. `check_4` is a whole check of four lines, from the filling of the buffer to the
// verdict.
#define COST_SCENARIOS(DO) \
    DO(reset)              \
    DO(status)             \
    DO(status_sale_add)    \
    DO(status_sale_code)   \
    DO(statistics)         \
    DO(sale_number)        \
    DO(key)                \
    DO(title)              \
    DO(sale)               \
    DO(eeprom_197)         \
    DO(read_5)             \
    DO(read_16)            \
    DO(read_38)            \
    DO(read_202)           \
    DO(check_4)

struct Scenario {
    const char* name;
    void (*prepare)();
    void (*run)();       // as a warm-up
    void (*measured)();  // the same, where the profiler counts
};

extern const Scenario kScenarios[];
extern const int kScenarioCount;

// Connects the driver under test to the register that the scenarios speak to. Not owned. Only the
// register in this process has the `read_` scenarios.
void Begin(LocalRegister& kkm, const char* path);
void End();

}  // namespace cost
