#include "simulation/summary.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>

namespace simulation {
namespace {

constexpr std::size_t kViolationsShown = 20;

__attribute__((format(printf, 2, 3))) void Add(std::string& text, const char* format, ...) {
    char line[400];
    std::va_list rest;
    va_start(rest, format);
    std::vsnprintf(line, sizeof line, format, rest);
    va_end(rest);
    text += line;
}

template <typename Kind, std::size_t N>
void AddRows(const std::array<std::uint64_t, N>& counts, std::string& text) {
    for (std::size_t i = 0; i < N; ++i) {
        if (counts[i] != 0) {
            const std::string name(NameOf(static_cast<Kind>(i)));
            Add(text, "  %-26s %12" PRIu64 "\n", name.c_str(), counts[i]);
        }
    }
}

template <typename Kind, std::size_t N>
void AddRows(const char* title, const std::array<std::uint64_t, N>& counts, std::string& text) {
    Add(text, "%s\n", title);
    AddRows<Kind>(counts, text);
}

template <typename Kind, std::size_t N>
nlohmann::ordered_json Rows(const std::array<std::uint64_t, N>& counts) {
    nlohmann::ordered_json rows = nlohmann::ordered_json::object();
    for (std::size_t i = 0; i < N; ++i) {
        rows[std::string(NameOf(static_cast<Kind>(i)))] = counts[i];
    }
    return rows;
}

template <std::size_t N>
bool Happened(const std::array<std::uint64_t, N>& counts) {
    return counts != std::array<std::uint64_t, N>{};
}

// What zero findings in so many independent checks say at 95%.
double BoundAtNone(std::uint64_t checks) {
    return checks == 0 ? 1 : 3.0 / static_cast<double>(checks);
}

double PerSecond(const Summary& summary, double seconds) {
    return seconds > 0 ? static_cast<double>(summary.figures.checks) / seconds : 0;
}

}  // namespace

std::string AsText(const Summary& summary) {
    const Figures& all = summary.figures;
    std::string text = summary.what + "\n";
    Add(text, "  %-26s %12" PRIu64 "\n", "checks", all.checks);
    Add(text, "  %-26s %12" PRIu64 "\n", "runs", all.runs);
    Add(text, "  %-26s %12" PRIu64 "\n", "calls of the host", all.calls);
    Add(text, "  %-26s %12" PRIu64 "\n", "exchanges", all.exchanges);
    Add(text, "  %-26s %12" PRIu64 " h\n", "virtual time", all.virtual_s / 3600);
    AddRows<FaultKind>("faults injected", all.faults, text);
    AddRows<Verdict>("outcomes of PrintCheck", all.verdicts, text);
    for (std::size_t code = 0; code < kErrorCodes; ++code) {
        if (Happened(all.errors[code])) {
            Add(text, "of these 0 with code %zu\n", code);
            AddRows<Verdict>(all.errors[code], text);
        }
    }
    AddRows<Remark>("remarks", all.remarks, text);
    if (Happened(all.endings)) {
        AddRows<Ending>("reference checks", all.endings, text);
    }
    Add(text, "violations                   %12" PRIu64 "\n", all.violations);
    for (std::size_t i = 0; i < summary.violations.size() && i < kViolationsShown; ++i) {
        text += "  " + summary.violations[i].text + "\n    replay: scripts/simulate --log " +
                summary.violations[i].replay + "\n";
    }
    if (all.violations == 0) {
        Add(text, "a violation is rarer than 1 in %.0f checks (95%%)\n",
            1 / BoundAtNone(all.checks));
    }
    Add(text, "%.1f s on %u jobs: %.0f checks a second, %.0f a second of one processor\n",
        summary.seconds, summary.jobs, PerSecond(summary, summary.seconds),
        PerSecond(summary, summary.processor_seconds));
    return text;
}

std::string AsJson(const Summary& summary) {
    const Figures& all = summary.figures;
    nlohmann::ordered_json json;
    json["what"] = summary.what;
    json["checks"] = all.checks;
    json["runs"] = all.runs;
    json["calls"] = all.calls;
    json["exchanges"] = all.exchanges;
    json["virtual_seconds"] = all.virtual_s;
    json["faults"] = Rows<FaultKind>(all.faults);
    json["outcomes"] = Rows<Verdict>(all.verdicts);
    json["remarks"] = Rows<Remark>(all.remarks);
    json["reference_checks"] = Rows<Ending>(all.endings);
    json["errors"] = nlohmann::ordered_json::object();
    for (std::size_t code = 0; code < kErrorCodes; ++code) {
        if (Happened(all.errors[code])) {
            json["errors"][std::to_string(code)] = Rows<Verdict>(all.errors[code]);
        }
    }
    json["violations"] = all.violations;
    json["found"] = nlohmann::ordered_json::array();
    for (const Violation& one : summary.violations) {
        json["found"].push_back({{"replay", one.replay}, {"what", one.text}});
    }
    json["bound_95"] = all.violations == 0 ? BoundAtNone(all.checks) : 1.0;
    json["seconds"] = summary.seconds;
    json["jobs"] = summary.jobs;
    json["processor_seconds"] = summary.processor_seconds;
    json["checks_per_second"] = PerSecond(summary, summary.seconds);
    json["checks_per_processor_second"] = PerSecond(summary, summary.processor_seconds);
    return json.dump(2) + "\n";
}

std::string SweepTable(const std::vector<SweepRow>& rows) {
    std::string text;
    Add(text, "%-9s%-26s%9s%9s%9s%9s%9s\n", "firmware", "fault", "runs", "at once", "again", "not",
        "unknown");
    for (const SweepRow& row : rows) {
        const auto& endings = row.figures.endings;
        Add(text, "%-9d%-26s%9" PRIu64 "%9" PRIu64 "%9" PRIu64 "%9" PRIu64 "%9" PRIu64 "\n",
            row.firmware, std::string(NameOf(row.kind)).c_str(), row.figures.runs, endings[0],
            endings[1], endings[2], endings[3]);
    }
    return text;
}

}  // namespace simulation
