// Makes the driver do each scenario some times, and counts what that costs.
//
//   cost_program            calls, heap allocations: "scenario measure count" per line, each count
//                           that of one time. Run by callgrind it counts nothing but instructions.
//   cost_program NAME       that scenario alone, for a look at its profile
//   cost_program --tty      all of them on a real tty, for strace: a write to descriptor -1 marks
//   the
//                           beginning and the end of each scenario.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>

#include "cost/heap_count.h"
#include "cost/scenarios.h"

namespace {

constexpr int kFirmware = 303;
constexpr int kWarmUps = 2;
constexpr int kTimes = 5;

// A message that only a tracer hears.
void Mark(const char* what, const char* name) {
    char text[100];
    const int size = std::snprintf(text, sizeof text, "%s %s", what, name);
    const ssize_t nobody = write(-1, text, static_cast<std::size_t>(size));
    static_cast<void>(nobody);
}

void Report(const char* name, const char* measure, unsigned long sum) {
    std::printf("%s %s %g\n", name, measure, static_cast<double>(sum) / kTimes);
}

void Measure(const cost::Scenario& scenario, bool marks) {
    for (int i = 0; i < kWarmUps; ++i) {
        scenario.prepare();
        scenario.run();
    }
    unsigned long calls[cost::call_count] = {};
    cost::allocations = 0;
    for (int i = 0; i < kTimes; ++i) {
        scenario.prepare();
        unsigned long before[cost::call_count];
        std::memcpy(before, cost::calls, sizeof before);
        if (marks) {
            Mark("begin", scenario.name);
        }
        cost::counting = !marks;
        scenario.measured();
        cost::counting = false;
        if (marks) {
            Mark("end", scenario.name);
        }
        for (int call = 0; call < cost::call_count; ++call) {
            calls[call] += cost::calls[call] - before[call];
        }
    }
    if (!marks) {
        Report(scenario.name, "allocations", cost::allocations);
        for (int call = 0; call < cost::call_count; ++call) {
            Report(scenario.name, cost::kCallNames[call], calls[call]);
        }
    }
}

// All scenarios, or the one of that name.
void MeasureAll(cost::LocalRegister& kkm, const char* path, bool marks, const char* only) {
    cost::Begin(kkm, path);
    for (int i = 0; i < cost::kScenarioCount; ++i) {
        const bool needs_local_line = std::strncmp(cost::kScenarios[i].name, "read_", 5) == 0;
        const bool wanted = only == nullptr || std::strcmp(cost::kScenarios[i].name, only) == 0;
        if (wanted && !(marks && needs_local_line)) {
            Measure(cost::kScenarios[i], marks);
        }
    }
    cost::End();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 2 && std::strcmp(argv[1], "--tty") == 0) {
            cost::TtyRegister kkm(kFirmware);
            MeasureAll(kkm, kkm.Tty().c_str(), true, nullptr);
        } else if (argc <= 2) {
            cost::LocalRegister kkm(kFirmware);
            cost::Use(&kkm);
            MeasureAll(kkm, cost::kPath, false, argv[1]);
        } else {
            std::fprintf(stderr, "usage: %s [--tty | NAME]\n", argv[0]);
            return 2;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
