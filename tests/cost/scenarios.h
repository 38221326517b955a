// What the driver is made to do while its cost is counted.
#pragma once

#include "cost/local_register.h"

namespace cost {

// The scenarios, each by its name. An exchange is named by its request; `status` has no data,
// `status_sale_add` 33 bytes, `status_sale_code` is the state that costs three exchanges more;
// `check_4` is a whole check of four lines, from the filling of the buffer to the verdict.
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
    DO(check_4)

struct Scenario {
    const char* name;
    void (*prepare)();
    void (*run)();       // as a warm-up
    void (*measured)();  // the same, where the profiler counts
};

extern const Scenario kScenarios[];
extern const int kScenarioCount;

// Connects the driver under test to the register that the scenarios speak to. Not owned.
void Begin(LocalRegister& kkm, const char* path);
void End();

}  // namespace cost
