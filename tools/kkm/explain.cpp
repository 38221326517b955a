#include "kkm/explain.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/figures.h"
#include "kkm/protocol_trace.h"
#include "kkm/register_state.h"
#include "kkm/report.h"
#include "kkm/trace_story.h"

namespace kkm {
namespace {

struct Meaning {
    const char* kind;  // "error", "state" or "key"
    int code;
    std::string name;
    std::string text;
};

constexpr int kLastError = 255;
constexpr std::streamoff kMostOfATrace = 32 << 20;

struct Key {
    int code;
    const char* name;
    const char* text;
};
// The keys that the driver presses.
constexpr Key kKeys[] = {
    {0x00, "key 0x00", "pressed to unlock the keyboard"},
    {0x20, "key 0x20", "clears a check, twice and then key 0x28; begins the closing of one"},
    {0x28, "key 0x28", "confirms"},
    {0x2B, "key 0x2B", "prints a copy of the last check"},
};

std::optional<int> NumberOf(const std::string& text) {
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || number < 0 || number > kLastError) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

// Nobody types ks_KKMgo as it is written.
bool SameWord(const std::string& one, const std::string& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    });
}

std::vector<Meaning> MeaningsOf(const std::string& what) {
    std::vector<Meaning> meanings;
    const auto number = NumberOf(what);
    const auto meant = [&](int code, const std::string& name) {
        return number ? *number == code : SameWord(what, name);
    };
    for (int code = 0; code <= kLastError; ++code) {
        const std::string name = KKMErrorName(code);
        if (name != "unknown" && meant(code, name)) {
            meanings.push_back({"error", code, name, KKMErrorAdvice(code)});
        }
    }
    for (const StateName& state : States()) {
        if (meant(state.code, state.name)) {
            meanings.push_back(
                {"state", state.code, state.name,
                 std::string("The register ") + "is in this state: " + state.meaning + "."});
        }
    }
    for (const Key& key : kKeys) {
        if (meant(key.code, key.name)) {
            meanings.push_back({"key", key.code, key.name, key.text});
        }
    }
    return meanings;
}

void WriteMeanings(const std::vector<Meaning>& meanings, bool as_json, std::ostream& out) {
    if (as_json) {
        auto list = nlohmann::ordered_json::array();
        for (const Meaning& meaning : meanings) {
            list.push_back({{"kind", meaning.kind},
                            {"code", meaning.code},
                            {"name", meaning.name},
                            {"text", meaning.text}});
        }
        out << nlohmann::ordered_json{{"meanings", list}}.dump(2) << std::endl;
        return;
    }
    for (const Meaning& meaning : meanings) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "0x%02X", static_cast<unsigned>(meaning.code));
        out << meaning.kind << ' ' << meaning.code << " (" << hex << "), " << meaning.name << '\n'
            << "  " << meaning.text << '\n';
    }
    out << std::flush;
}

const char* NameOf(StoryOutcome outcome) {
    switch (outcome) {
        case StoryOutcome::printed:
            return "printed";
        case StoryOutcome::failed:
            return "not printed";
        case StoryOutcome::unknown:
            return "unknown: look at the paper";
        case StoryOutcome::unfinished:
            break;
    }
    return "the trace ends in the middle of it";
}

const char* NameOf(StoryEvent::Kind kind) {
    switch (kind) {
        case StoryEvent::Kind::connected:
            return "connected";
        case StoryEvent::Kind::not_connected:
            return "not connected";
        case StoryEvent::Kind::disconnected:
            return "disconnected";
        case StoryEvent::Kind::check:
            break;
    }
    return "check";
}

void WriteCheck(const StoryCheck& check, int number, std::ostream& out) {
    out << "check " << number << ": " << NameOf(check.outcome) << '\n';
    for (const StoryLine& line : check.lines) {
        out << "  " << line.quantity << " x " << MoneyText(line.price) << "  " << line.name
            << " (section " << line.section << ')' << (line.taken ? "" : ", not taken") << '\n';
    }
    if (check.discount && *check.discount != 0) {
        out << "  " << (*check.discount < 0 ? "discount " : "surcharge ")
            << std::abs(*check.discount) << " %\n";
    }
    if (!check.type.empty()) {
        out << "  closed as a " << check.type;
        if (check.cash) {
            out << ", cash " << MoneyText(*check.cash);
        }
        out << '\n';
    }
    for (const std::string& step : check.repeated) {
        out << "  repeated: " << step << '\n';
    }
    for (const std::string& trouble : check.troubles) {
        out << "  " << trouble << '\n';
    }
    if (!check.reason.empty() && check.outcome != StoryOutcome::printed) {
        out << "  why: " << check.reason << " (error " << check.error << ", "
            << KKMErrorName(check.error) << ")\n";
    }
}

void WriteFaults(const std::vector<ProtocolFaults>& all, std::ostream& out) {
    for (const ProtocolFaults& faults : all) {
        out << faults.first;
        if (faults.count > 1) {
            out << " to " << faults.last << ", " << faults.count << " times";
        }
        out << ": protocol fault " << faults.code;
        if (faults.network_number != 0) {
            out << " at register " << faults.network_number;
        }
        out << "\n  " << ProtocolFaultText(faults.code) << '\n';
    }
    out << std::flush;
}

void WriteStory(const std::vector<StoryEvent>& events, std::ostream& out) {
    int checks = 0;
    for (const StoryEvent& event : events) {
        if (event.kind == StoryEvent::Kind::check) {
            WriteCheck(event.check, ++checks, out);
        } else {
            out << NameOf(event.kind) << event.text << '\n';
        }
    }
    out << std::flush;
}

nlohmann::ordered_json CheckAsJson(const StoryCheck& check) {
    nlohmann::ordered_json json;
    json["outcome"] = NameOf(check.outcome);
    json["error"] = check.error;
    json["reason"] = check.reason;
    json["lines"] = nlohmann::ordered_json::array();
    for (const StoryLine& line : check.lines) {
        json["lines"].push_back({{"name", line.name},
                                 {"price", MoneyFigure("", "", line.price).value},
                                 {"quantity", std::strtod(line.quantity.c_str(), nullptr)},
                                 {"section", line.section},
                                 {"taken", line.taken}});
    }
    json["discount"] = check.discount.value_or(0);
    json["type"] = check.type;
    json["cash"] = check.cash ? MoneyFigure("", "", *check.cash).value : nullptr;
    json["repeated"] = check.repeated;
    json["troubles"] = check.troubles;
    return json;
}

nlohmann::ordered_json FaultsAsJson(const std::vector<ProtocolFaults>& all) {
    auto list = nlohmann::ordered_json::array();
    for (const ProtocolFaults& faults : all) {
        list.push_back({{"first", faults.first},
                        {"last", faults.last},
                        {"count", faults.count},
                        {"network_number", faults.network_number},
                        {"code", faults.code},
                        {"text", ProtocolFaultText(faults.code)}});
    }
    return list;
}

void WriteStoryAsJson(const std::vector<StoryEvent>& events,
                      const std::vector<ProtocolFaults>& faults, std::ostream& out) {
    auto checks = nlohmann::ordered_json::array();
    auto connections = nlohmann::ordered_json::array();
    for (const StoryEvent& event : events) {
        if (event.kind == StoryEvent::Kind::check) {
            checks.push_back(CheckAsJson(event.check));
        } else {
            const auto about = std::min(event.text.size(), std::strlen(", "));
            connections.push_back({{"event", NameOf(event.kind)},
                                   {"about", event.text.substr(about)},
                                   {"checks_before", checks.size()}});
        }
    }
    const nlohmann::ordered_json story{{"checks", checks},
                                       {"connections", connections},
                                       {"protocol_faults", FaultsAsJson(faults)}};
    out << story.dump(2) << std::endl;
}

// Trace files grow without limit; what matters stands at the end. Nothing, and errno, without a
// file.
std::optional<std::string> ReadEnd(const std::string& path, std::ostream& remarks) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    const bool cut = file.seekg(0, std::ios::end) && file.tellg() > kMostOfATrace;
    file.clear();
    file.seekg(cut ? -kMostOfATrace : 0, cut ? std::ios::end : std::ios::beg);
    file.clear();  // a pipe has no places to go to
    errno = 0;
    std::string text;
    char piece[1U << 16];
    while (text.size() < kMostOfATrace && (file.read(piece, sizeof piece) || file.gcount() > 0)) {
        text.append(piece, static_cast<std::size_t>(file.gcount()));
    }
    if (errno != 0) {
        return std::nullopt;
    }
    if (cut) {
        remarks << "kkm: only the last " << (kMostOfATrace >> 20) << " MiB of " << path
                << " are retold" << std::endl;
    }
    return text;
}

}  // namespace

ExitStatus RunExplain(const std::string& what, bool as_json, Streams& streams) {
    const std::vector<Meaning> meanings = MeaningsOf(what);
    if (!meanings.empty()) {
        WriteMeanings(meanings, as_json, streams.out);
        return ExitStatus::done;
    }
    const auto trace = ReadEnd(what, streams.err);
    if (!trace) {
        return Report(ExitStatus::bad_file,
                      what + " is no code of an error, a state or a key, and no file: " +
                          std::generic_category().message(errno),
                      as_json, streams);
    }
    const std::vector<StoryEvent> events = TellTrace(*trace);
    const std::vector<ProtocolFaults> faults = ReadProtocolTrace(*trace);
    if (events.empty() && faults.empty()) {
        return Report(ExitStatus::bad_file,
                      what + " tells of no connection, no check and no fault of the protocol",
                      as_json, streams);
    }
    if (as_json) {
        WriteStoryAsJson(events, faults, streams.out);
    } else {
        WriteStory(events, streams.out);
        WriteFaults(faults, streams.out);
    }
    return ExitStatus::done;
}

}  // namespace kkm
