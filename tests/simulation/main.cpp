#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "simulation/run.h"
int main(int argc, char** argv) {
    simulation::Runner runner;
    simulation::Scenario s;
    if (argc > 2 && !strcmp(argv[1], "--seed")) {
        simulation::DrawScenario(strtoul(argv[2], nullptr, 0), s);
        std::string log;
        auto r = runner.Run(s, &log);
        fputs(log.c_str(), stdout);
        return !r.violation.empty();
    }
    unsigned long from = argc > 1 ? strtoull(argv[1], 0, 0) : 1,
                  n = argc > 2 ? strtoull(argv[2], 0, 0) : 1000;
    simulation::Figures f;
    for (auto seed = from; seed < from + n; ++seed) {
        simulation::DrawScenario(seed, s);
        auto r = runner.Run(s);
        f.Add(r.figures);
        if (!r.violation.empty())
            printf("seed %lu: %s: %s\n", seed, r.call.c_str(), r.violation.c_str());
    }
    printf("runs %lu checks %lu calls %lu exchanges %lu violations %lu\n", f.runs, f.checks,
           f.calls, f.exchanges, f.violations);
    for (size_t i = 0; i < simulation::kVerdicts; ++i)
        printf("  %-20s %lu\n", std::string(NameOf(simulation::Verdict(i))).c_str(), f.verdicts[i]);
    for (size_t i = 0; i < simulation::kRemarks; ++i)
        printf("  %-20s %lu\n", std::string(NameOf(simulation::Remark(i))).c_str(), f.remarks[i]);
    for (size_t i = 0; i < f.errors.size(); ++i)
        if (f.errors[i])
            printf("  code %zu %lu\n", i, f.errors[i]);
}
