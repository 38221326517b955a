#include "kkm/doctor.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "kkm/progress.h"

namespace kkm {
namespace {

bool IsBad(const Finding& finding) {
    return finding.grade == Grade::bad;
}

const char* NameOf(Grade grade) {
    switch (grade) {
        case Grade::good:
            return "good";
        case Grade::note:
            return "note";
        case Grade::bad:
            break;
    }
    return "bad";
}

const char* ColourOf(Grade grade) {
    switch (grade) {
        case Grade::good:
            return "\033[32m";
        case Grade::note:
            return "\033[33m";
        case Grade::bad:
            break;
    }
    return "\033[31m";
}

void WriteText(const std::vector<Finding>& findings, bool colour, std::ostream& out) {
    for (const Finding& finding : findings) {
        out << (colour ? ColourOf(finding.grade) : "") << NameOf(finding.grade)
            << (colour ? "\033[0m" : "") << std::string(finding.grade == Grade::bad ? 3 : 2, ' ')
            << finding.what << '\n';
        if (!finding.advice.empty()) {
            out << "      " << finding.advice << '\n';
        }
    }
    const auto bad = std::count_if(findings.begin(), findings.end(), IsBad);
    out << (bad == 0 ? "nothing to mend"
                     : std::to_string(bad) + (bad == 1 ? " thing" : " things") + " to mend")
        << std::endl;
}

void WriteJson(const std::vector<Finding>& findings, std::ostream& out) {
    auto list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        list.push_back({{"grade", NameOf(finding.grade)},
                        {"finding", finding.key},
                        {"what", finding.what},
                        {"advice", finding.advice}});
    }
    out << nlohmann::ordered_json{{"findings", list}}.dump(2) << std::endl;
}

std::vector<Finding> Examine(const std::string& device, const std::string& directory,
                             Progress& progress, bool live) {
    std::vector<Finding> findings = ExamineDevice(device);
    // A line that somebody else reads gives parts of answers, and takes parts of theirs.
    if (std::none_of(findings.begin(), findings.end(), IsBad)) {
        if (live) {
            progress.Step("asking the register");
        }
        const auto more = ExamineRegister(device);
        progress.Erase();
        findings.insert(findings.end(), more.begin(), more.end());
    }
    const auto trace = ExamineTraceFiles(directory);
    findings.insert(findings.end(), trace.begin(), trace.end());
    return findings;
}

}  // namespace

ExitStatus RunDoctor(const Address& address, const std::string& directory, bool as_json,
                     Streams& streams) {
    const std::string device = address.Device();
    Progress progress(streams.err, streams.err_terminal);
    const auto findings = Examine(device, directory, progress, streams.err_terminal.live);
    if (as_json) {
        WriteJson(findings, streams.out);
    } else {
        WriteText(findings, streams.out_terminal.colour, streams.out);
    }
    return std::any_of(findings.begin(), findings.end(), IsBad) ? ExitStatus::findings
                                                                : ExitStatus::done;
}

}  // namespace kkm
