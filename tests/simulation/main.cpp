// Whole checks under faults, from a seed or by a sweep.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <thread>

#include "simulation/summary.h"
#include "simulation/sweep.h"

namespace simulation {
namespace {

struct Options {
    std::uint64_t checks = 10'000;
    std::uint64_t from = 1;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
    std::optional<std::uint64_t> seed;
    std::string one_case;
    bool log = false;
    bool single_sweep = false;
    bool pair_sweep = false;
    bool all_pairs = false;
    bool table = false;
    bool must_find = false;
    bool json = false;
    std::string expected_table;
};

class Clock {
  public:
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun_).count();
    }

  private:
    std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
};

// A line on the terminal that is written over.
class ProgressLine {
  public:
    void Show(const Figures& figures, double share, double seconds) {
        if (!shown_ || seconds - last_ < 0.5) {
            return;
        }
        last_ = seconds;
        std::fprintf(stderr, "\r%3.0f%%  %llu checks, %llu violations, %.0f s ", share * 100,
                     static_cast<unsigned long long>(figures.checks),
                     static_cast<unsigned long long>(figures.violations), seconds);
    }
    void Clear() const {
        if (shown_) {
            std::fprintf(stderr, "\r%60s\r", "");
        }
    }

  private:
    bool shown_ = isatty(STDERR_FILENO) == 1;
    double last_ = 0;
};

int Replay(const Options& options) {
    Scenario scenario;
    if (options.seed) {
        DrawScenario(*options.seed, scenario);
    } else if (const auto one = ReadCase(options.one_case)) {
        scenario = MakeScenario(*one);
    } else {
        std::fprintf(stderr, "simulate: no such case: %s\n", options.one_case.c_str());
        return 2;
    }
    std::string log;
    const RunResult result = Runner().Run(scenario, options.log ? &log : nullptr);
    std::cout << log;
    if (result.violation.empty()) {
        std::cout << "no violation\n";
        return 0;
    }
    std::cout << "violation in " << result.call << ": " << result.violation << "\n";
    return 1;
}

Summary Run(const Campaign& campaign, const Options& options, std::uint64_t checks,
            std::vector<Figures>* by_chunk) {
    const Clock clock;
    ProgressLine line;
    Summary summary;
    summary.jobs = options.jobs;
    const auto chunks = static_cast<double>(campaign.Chunks());
    RunCampaign(campaign, options.jobs, [&](std::size_t chunk, const Report& report) {
        summary.figures.Add(report.figures);
        summary.violations.insert(summary.violations.end(), report.violations.begin(),
                                  report.violations.end());
        if (by_chunk != nullptr) {
            by_chunk->push_back(report.figures);
        }
        const double done = static_cast<double>(chunk + 1) / chunks;
        const double share =
            checks == 0 ? done
                        : static_cast<double>(summary.figures.checks) / static_cast<double>(checks);
        line.Show(summary.figures, share, clock.Seconds());
        const bool found = options.must_find && summary.figures.violations > 0;
        return !found && (checks == 0 || summary.figures.checks < checks);
    });
    line.Clear();
    summary.seconds = clock.Seconds();
    return summary;
}

// 0 when everything held, or when something had to be found and was.
int Tell(const Summary& summary, const Options& options) {
    std::cout << (options.json ? AsJson(summary) : AsText(summary)) << std::flush;
    return (summary.figures.violations > 0) == options.must_find ? 0 : 1;
}

int SweepSingles(const Options& options) {
    std::vector<Figures> by_chunk;
    Summary summary = Run(SingleSweep(), options, 0, &by_chunk);
    summary.what = "every single fault at every exchange of a reference check";
    std::vector<SweepRow> rows;
    for (std::size_t chunk = 0; chunk < by_chunk.size(); ++chunk) {
        rows.push_back(
            {SingleSweep::FirmwareOf(chunk), SingleSweep::KindOf(chunk), by_chunk[chunk]});
    }
    const std::string table = SweepTable(rows);
    if (options.table) {
        std::cout << table;
        return summary.figures.violations > 0 ? 1 : 0;
    }
    const int result = Tell(summary, options);
    if (!options.expected_table.empty()) {
        std::ifstream file(options.expected_table);
        const std::string expected(std::istreambuf_iterator<char>(file), {});
        if (expected != table) {
            std::cout << "the outcomes differ from " << options.expected_table << ":\n" << table;
            return 1;
        }
    }
    return result;
}

int SweepPairs(const Options& options) {
    Summary summary = Run(PairSweep(options.all_pairs, options.all_pairs), options, 0, nullptr);
    summary.what = options.all_pairs
                       ? "every pair of faults at every pair of exchanges of a one-line check, on "
                         "every firmware"
                       : "every pair of effects at every pair of exchanges of a one-line check";
    return Tell(summary, options);
}

int RunSeeds(const Options& options) {
    Summary summary =
        Run(RandomCampaign(options.from, options.checks), options, options.checks, nullptr);
    summary.what = "random runs from seed " + std::to_string(options.from);
    return Tell(summary, options);
}

int Main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Prints checks through the driver on a virtual register, under faults, in virtual "
        "time, and holds what the driver says against the register's truth.");
    app.add_option("--checks", options.checks, "at least so many checks")->capture_default_str();
    app.add_option("--from", options.from, "the first seed")->capture_default_str();
    app.add_option("--jobs", options.jobs, "processes")->check(CLI::Range(1U, 1024U));
    auto* const seed = app.add_option("--seed", options.seed, "replay this seed alone");
    app.add_option("--case", options.one_case, "replay this case of a sweep alone")->excludes(seed);
    app.add_flag("--log", options.log, "tell the replayed run, exchange by exchange");
    app.add_flag("--sweep", options.single_sweep, "every single fault at every exchange");
    app.add_flag("--pairs", options.pair_sweep, "every pair of effects at every two exchanges");
    app.add_flag("--all-pairs", options.all_pairs, "every pair of faults on every firmware");
    app.add_flag("--table", options.table, "with --sweep: the outcomes by firmware and fault");
    app.add_option("--expect", options.expected_table, "with --sweep: a table that must come out")
        ->check(CLI::ExistingFile);
    app.add_flag("--must-find", options.must_find, "succeed at the first violation, fail without");
    app.add_flag("--json", options.json, "the summary for programs");
    CLI11_PARSE(app, argc, argv);
    if (options.seed || !options.one_case.empty()) {
        return Replay(options);
    }
    if (options.single_sweep) {
        return SweepSingles(options);
    }
    if (options.pair_sweep || options.all_pairs) {
        return SweepPairs(options);
    }
    return RunSeeds(options);
}

}  // namespace
}  // namespace simulation

int main(int argc, char** argv) {
    return simulation::Main(argc, argv);
}
