// Reading a scenario.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "scenario.h"

namespace virtual_register {
namespace {

constexpr std::int64_t kLongestMs = 86400000;  // a day

// The name by which a command is called in a scenario.
std::string name_of(const CommandRow& row) {
    std::string name = row.name;
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::optional<Command> to_command(const std::string& word) {
    std::string names;
    for (unsigned code = 0; code <= 0xFF; ++code) {
        const CommandRow* row = find_command(static_cast<std::uint8_t>(code));
        if (row == nullptr) {
            continue;
        }
        if (name_of(*row) == word || to_number(word) == code) {
            return row->command;
        }
        names += ' ' + name_of(*row);
    }
    if (word == "any") {
        return std::nullopt;
    }
    throw ScenarioError('"' + word + "\" is no command; there are: any" + names);
}

// 300ms, 2s, 1.5s.
std::int64_t to_us(const std::string& word) {
    double number = 0;
    const char* end = word.data() + word.size();
    const auto read = std::from_chars(word.data(), end, number);
    const std::string_view unit(read.ptr, static_cast<std::size_t>(end - read.ptr));
    const double ms = unit == "ms" ? number : unit == "s" ? number * 1000 : -1;
    if (read.ec != std::errc() || !(ms >= 0) || ms > static_cast<double>(kLongestMs)) {
        throw ScenarioError('"' + word + "\" is no time; write 300ms or 2.5s");
    }
    return std::llround(ms * 1000);
}

const std::string& word_at(const Words& words, std::size_t at, const char* missing) {
    if (at >= words.size()) {
        throw ScenarioError(missing);
    }
    return words[at];
}

void no_more_than(const Words& words, std::size_t count) {
    if (words.size() > count) {
        throw ScenarioError('"' + words[count] + "\" is too much");
    }
}

unsigned number_at(const Words& words, std::size_t at, unsigned min, unsigned max,
                   const std::string& what) {
    const auto number = at < words.size() ? to_number(words[at]) : std::nullopt;
    if (!number || *number < min || *number > max) {
        throw ScenarioError(what + " needs a number from " + std::to_string(min) + " to " +
                            std::to_string(max));
    }
    return *number;
}

struct Which {
    std::uint64_t first = 1;
    std::uint64_t last = 1;
};

// Nothing for a word that does not say which.
std::optional<Which> to_which(const std::string& word) {
    if (word == "always") {
        return Which{1, std::numeric_limits<std::uint64_t>::max()};
    }
    const std::size_t dash = word.find('-');
    const auto first = to_number(word.substr(0, dash));
    const auto last = dash == std::string::npos ? first : to_number(word.substr(dash + 1));
    if (!first || !last) {
        return std::nullopt;
    }
    if (*first == 0 || *last < *first) {
        throw ScenarioError('"' + word + "\" is never; count from 1, and upwards");
    }
    return Which{*first, *last};
}

Words behind(const Words& words, std::size_t count) {
    return {words.begin() + static_cast<std::ptrdiff_t>(std::min(count, words.size())),
            words.end()};
}

}  // namespace

Scenario::Scenario(std::string_view text) {
    std::size_t number = 0;
    while (!text.empty()) {
        ++number;
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        Words words = split_words(line);
        words.erase(std::find_if(words.begin(), words.end(),
                                 [](const std::string& word) { return word[0] == '#'; }),
                    words.end());
        if (words.empty()) {
            continue;
        }
        try {
            Rule rule = parse_rule(words);
            rule.line = number;
            for (const std::string& word : words) {
                rule.text += (rule.text.empty() ? "" : " ") + word;
            }
            rules_.push_back(std::move(rule));
        } catch (const ScenarioError& error) {
            throw ScenarioError("line " + std::to_string(number) + ": " + error.what());
        }
    }
}

Scenario::Rule Scenario::parse_rule(const Words& words) {
    if (words[0] == "when") {
        return parse_when(words);
    }
    if (words[0] == "at") {
        return parse_at(words);
    }
    throw ScenarioError("a line begins with when or at, not with \"" + words[0] + '"');
}

Scenario::Rule Scenario::parse_when(const Words& words) {
    Rule rule;
    rule.command = to_command(word_at(words, 1, "when needs a command and what happens"));
    std::size_t at = 2;
    if (const auto which = at < words.size() ? to_which(words[at]) : std::nullopt) {
        rule.first = which->first;
        rule.last = which->last;
        ++at;
    }
    parse_effect(behind(words, at), rule);
    return rule;
}

Scenario::Rule Scenario::parse_at(const Words& words) {
    Rule rule;
    rule.at_us = to_us(word_at(words, 1, "at needs a time and what happens"));
    parse_act_of(behind(words, 2), rule);
    return rule;
}

void Scenario::parse_effect(const Words& words, Rule& rule) {
    const std::string& effect = word_at(words, 0, "what happens is missing");
    std::size_t count = 2;
    if (effect == "lose") {
        parse_lose(words, rule);
    } else if (effect == "delay") {
        rule.kind = Kind::delay;
        rule.value = to_us(word_at(words, 1, "delay needs a time"));
    } else if (effect == "cut") {
        rule.kind = Kind::cut;
        rule.value = number_at(words, 1, 0, 2 + kLongestBody, effect);
    } else if (effect == "garble") {
        rule.kind = Kind::garble;
        rule.value = words.size() > 1 ? number_at(words, 1, 1, 2 + kLongestBody, effect) : 0;
    } else if (effect == "refuse") {
        if (rule.command == Command::status || !rule.command) {
            throw ScenarioError("only one command can be refused, and status never is");
        }
        rule.kind = Kind::refuse;
        rule.value = number_at(words, 1, 0, 0xFF, effect);
    } else if (effect == "busy") {
        rule.kind = Kind::busy;
        rule.value = number_at(words, 1, 0, 1000000, effect);
    } else {
        const bool after = effect == "then";
        parse_act_of(after ? behind(words, 1) : words, rule);
        rule.kind = after ? Kind::after : Kind::before;
        count = words.size();
    }
    no_more_than(words, count);
}

void Scenario::parse_lose(const Words& words, Rule& rule) {
    const std::string& what = word_at(words, 1, "lose the request or the answer?");
    if (what != "request" && what != "answer") {
        throw ScenarioError("lose the request or the answer?");
    }
    rule.kind = what == "request" ? Kind::lose_request : Kind::lose_answer;
}

void Scenario::parse_act_of(const Words& words, Rule& rule) {
    if (words.empty()) {
        throw ScenarioError("what happens is missing");
    }
    if (words[0] == "quit") {
        no_more_than(words, 1);
        return;
    }
    ParsedAct parsed = parse_act(words);
    if (!parsed.act) {
        throw ScenarioError(parsed.error);
    }
    rule.act = std::move(parsed.act);
}

}  // namespace virtual_register
