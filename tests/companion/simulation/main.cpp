// Many stories, in several processes: the driver is one object in a process.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "companion/simulation/till_run.h"
#include "simulation/trace_files.h"

namespace outcome_simulation {
namespace {

struct Options {
    std::uint64_t stories = 10'000;
    std::uint64_t from = 1;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
    std::uint64_t seed = 0;  // to replay one
    bool must_find = false;  // a wrong answer: something was planted
};

struct Tally {
    std::uint64_t stories = 0;
    std::uint64_t printed = 0;
    std::uint64_t not_printed = 0;
    std::uint64_t unknown_at_first = 0;
    std::map<std::string, std::uint64_t> unknown;  // in the end, by reason

    void Add(const Tally& other) {
        stories += other.stories;
        printed += other.printed;
        not_printed += other.not_printed;
        unknown_at_first += other.unknown_at_first;
        for (const auto& [reason, count] : other.unknown) {
            unknown[reason] += count;
        }
    }
    std::uint64_t Unknown() const { return stories - printed - not_printed; }
};

using Tallies = std::map<std::string, Tally>;

void Count(const Answer& answer, Tally& to) {
    using kkmcheck::Outcome;
    ++to.stories;
    to.printed += answer.last.outcome == Outcome::printed ? 1 : 0;
    to.not_printed += answer.last.outcome == Outcome::not_printed ? 1 : 0;
    to.unknown_at_first += answer.first.outcome == Outcome::unknown ? 1 : 0;
    if (answer.last.outcome == Outcome::unknown) {
        ++to.unknown[std::string(Name(answer.last.reason))];
    }
}

// One process: every `jobs`-th story. What it found goes through the pipe as lines of text.
[[noreturn]] void Work(const Options& options, unsigned job, int pipe) {
    FILE* const out = fdopen(pipe, "w");
    Tallies tallies;
    Story story;
    for (std::uint64_t i = job; i < options.stories; i += options.jobs) {
        DrawStory(options.from + i, story);
        const Answer answer = Run(story, false);
        Count(answer, tallies[story.kind]);
        if (!answer.wrong.empty()) {
            std::fprintf(out, "wrong\t%llu\t%s: %s\n",
                         static_cast<unsigned long long>(options.from + i), story.kind.c_str(),
                         answer.wrong.c_str());
        }
    }
    for (const auto& [kind, tally] : tallies) {
        std::fprintf(out, "tally\t%s\t%llu\t%llu\t%llu\t%llu\n", kind.c_str(),
                     static_cast<unsigned long long>(tally.stories),
                     static_cast<unsigned long long>(tally.printed),
                     static_cast<unsigned long long>(tally.not_printed),
                     static_cast<unsigned long long>(tally.unknown_at_first));
        for (const auto& [reason, count] : tally.unknown) {
            std::fprintf(out, "unknown\t%s\t%s\t%llu\n", kind.c_str(), reason.c_str(),
                         static_cast<unsigned long long>(count));
        }
    }
    std::fprintf(out, "end\n");
    std::fclose(out);
    std::_Exit(0);
}

std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> cells(1);
    for (const char character : line) {
        if (character == '\t') {
            cells.emplace_back();
        } else if (character != '\n') {
            cells.back() += character;
        }
    }
    return cells;
}

std::uint64_t Number(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 10);
}

// False when a process died on its way.
bool Gather(FILE* from, Tallies& tallies, std::uint64_t& wrong) {
    char line[512];
    while (std::fgets(line, sizeof line, from) != nullptr) {
        const auto cells = Split(line);
        if (cells[0] == "end") {
            return true;
        }
        if (cells[0] == "wrong") {
            ++wrong;
            std::printf("WRONG: %s (replay: --seed %s)\n", cells[2].c_str(), cells[1].c_str());
        } else if (cells[0] == "unknown") {
            tallies[cells[1]].unknown[cells[2]] += Number(cells[3]);
        } else {
            Tally& tally = tallies[cells[1]];
            tally.stories += Number(cells[2]);
            tally.printed += Number(cells[3]);
            tally.not_printed += Number(cells[4]);
            tally.unknown_at_first += Number(cells[5]);
        }
    }
    return false;
}

void Show(const std::string& kind, const Tally& tally) {
    std::printf("%-32s%9llu%9llu%9llu%9llu%9llu %6.2f%% ", kind.c_str(),
                static_cast<unsigned long long>(tally.stories),
                static_cast<unsigned long long>(tally.printed),
                static_cast<unsigned long long>(tally.not_printed),
                static_cast<unsigned long long>(tally.unknown_at_first),
                static_cast<unsigned long long>(tally.Unknown()),
                100.0 * static_cast<double>(tally.Unknown()) / static_cast<double>(tally.stories));
    for (const auto& [reason, count] : tally.unknown) {
        std::printf(" %s %llu", reason.c_str(), static_cast<unsigned long long>(count));
    }
    std::printf("\n");
}

int RunAll(const Options& options) {
    const auto begun = std::chrono::steady_clock::now();
    std::vector<FILE*> pipes;
    simulation::PrepareTraceFiles();
    std::fflush(nullptr);
    for (unsigned job = 0; job < options.jobs; ++job) {
        int ends[2];
        if (pipe(ends) != 0) {
            return 2;
        }
        const pid_t pid = fork();
        if (pid == 0) {
            close(ends[0]);
            Work(options, job, ends[1]);
        }
        close(ends[1]);
        pipes.push_back(fdopen(ends[0], "r"));
    }
    Tallies tallies;
    std::uint64_t wrong = 0;
    for (FILE* const from : pipes) {
        if (!Gather(from, tallies, wrong)) {
            ++wrong;
            std::printf("WRONG: a process of the simulation died\n");
        }
        std::fclose(from);
    }
    while (wait(nullptr) > 0) {
    }
    std::printf("%-32s%9s%9s%9s%9s%9s\n", "what goes wrong", "stories", "printed", "not", "unknown",
                "unknown");
    std::printf("%-32s%9s%9s%9s%9s%9s\n", "", "", "", "", "at first", "for good");
    Tally all;
    for (const auto& [kind, tally] : tallies) {
        Show(kind, tally);
        all.Add(tally);
    }
    Show("all", all);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    std::printf("%llu stories from seed %llu, %llu wrong answers, %.0f s in %u processes\n",
                static_cast<unsigned long long>(all.stories),
                static_cast<unsigned long long>(options.from),
                static_cast<unsigned long long>(wrong), seconds, options.jobs);
    const bool right = all.stories == options.stories && (wrong != 0) == options.must_find;
    return right ? 0 : 1;
}

int Replay(std::uint64_t seed) {
    Story story;
    DrawStory(seed, story);
    std::printf("%s; firmware %d, %zu lines; kill %d at %u, disk full %u\n", story.kind.c_str(),
                story.scenario.kkm.firmware, story.check.lines.size(), static_cast<int>(story.kill),
                story.kill_at, story.disk_full);
    std::printf("register: shift %s, checks %u, records %u, paper %s, %u lines open\n",
                story.scenario.kkm.shift_open ? "open" : "closed", story.scenario.kkm.checks,
                story.scenario.kkm.records, story.scenario.kkm.paper_out ? "out" : "in",
                story.scenario.kkm.lines_in_open_check);
    for (const auto& fault : story.scenario.faults.faults) {
        std::printf("fault %s at %u (command %u, %u, %u)\n", NameOf(fault.kind).data(), fault.at,
                    fault.command, fault.a, fault.b);
    }
    const Answer answer = Run(story, true);
    std::printf("%s\n", answer.wrong.empty() ? "the truth" : answer.wrong.c_str());
    return answer.wrong.empty() ? 0 : 1;
}

}  // namespace
}  // namespace outcome_simulation

int main(int argc, char** argv) {
    outcome_simulation::Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const std::uint64_t value = std::strtoull(argv[i + 1], nullptr, 10);
        if (name == "--must-find") {
            options.must_find = value != 0;
        } else if (name == "--stories") {
            options.stories = value;
        } else if (name == "--from") {
            options.from = value;
        } else if (name == "--jobs") {
            options.jobs = static_cast<unsigned>(std::max<std::uint64_t>(value, 1));
        } else if (name == "--seed") {
            options.seed = value;
        } else {
            std::fprintf(
                stderr, "%s [--stories N] [--from SEED] [--jobs N] [--seed SEED] [--must-find 1]\n",
                argv[0]);
            return 2;
        }
    }
    return options.seed != 0 ? outcome_simulation::Replay(options.seed)
                             : outcome_simulation::RunAll(options);
}
