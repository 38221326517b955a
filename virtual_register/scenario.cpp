// What a scenario does while it runs.
#include "scenario.h"

#include <algorithm>

namespace virtual_register {
namespace {

// What the line makes of an answer.
struct Line {
    bool loses = false;
    std::optional<std::size_t> cut;
    std::vector<std::size_t> garbled;
};

FrameBytes carried(const FrameBytes& frame, const Line& line) {
    std::vector<std::uint8_t> bytes(frame.begin(), frame.end());
    for (const std::size_t place : line.garbled) {
        const std::size_t at = place == 0 ? bytes.size() : std::min(place, bytes.size());
        bytes[at - 1] = static_cast<std::uint8_t>(~bytes[at - 1]);
    }
    FrameBytes carried;
    carried.add(bytes.data(), std::min(line.cut.value_or(bytes.size()), bytes.size()));
    return carried;
}

}  // namespace

std::vector<Scenario::Rule*> Scenario::rules_for(std::uint8_t command) {
    std::vector<Rule*> rules;
    for (Rule& rule : rules_) {
        const bool meant =
            !rule.at_us && (!rule.command || static_cast<std::uint8_t>(*rule.command) == command);
        if (meant && ++rule.come >= rule.first && rule.come <= rule.last) {
            rules.push_back(&rule);
        }
    }
    return rules;
}

Scenario::Exchange Scenario::handle(Model& model, const Request& request, std::int64_t now_us) {
    Exchange exchange;
    Line line;
    bool heard = true;
    if (!begin_us_) {
        begin_us_ = now_us;
    }
    model.advance(now_us);
    exchange.remarks = act(model, now_us);
    const std::vector<Rule*> rules = rules_for(request.command);
    for (Rule* rule : rules) {
        rule->met = true;
        std::string remark = "line " + std::to_string(rule->line) + ": " + rule->text;
        switch (rule->kind) {
            case Kind::lose_request:
                heard = false;
                break;
            case Kind::lose_answer:
                line.loses = true;
                break;
            case Kind::delay:
                exchange.delay_us += rule->value;
                break;
            case Kind::cut:
                line.cut = static_cast<std::size_t>(rule->value);
                break;
            case Kind::garble:
                line.garbled.push_back(static_cast<std::size_t>(rule->value));
                break;
            case Kind::refuse:
                if (model.powered() && !model.printing()) {
                    model.refuse(static_cast<Command>(request.command), 1,
                                 static_cast<std::uint8_t>(rule->value));
                }
                break;
            case Kind::busy:
                model.set_states_late(static_cast<unsigned>(rule->value));
                break;
            case Kind::before:
                remark = carry_out(*rule, model);
                break;
            case Kind::after:
                continue;
        }
        exchange.remarks.push_back(remark);
    }
    if (heard) {
        exchange.answer = model.handle(request, now_us);
    }
    for (Rule* rule : rules) {
        if (rule->kind == Kind::after) {
            exchange.remarks.push_back(carry_out(*rule, model));
        }
    }
    if (exchange.answer && !line.loses) {
        exchange.bytes = carried(build_frame(*exchange.answer, model.settings().net_number), line);
    }
    return exchange;
}

std::string Scenario::carry_out(Rule& rule, Model& model) {
    rule.met = true;
    std::string remark = "line " + std::to_string(rule.line) + ": " + rule.text;
    if (!rule.act) {
        quits_ = true;
        return remark;
    }
    const std::string said = rule.act->carry_out(model);
    return said.empty() ? remark : remark + " (" + said + ')';
}

std::vector<std::string> Scenario::act(Model& model, std::int64_t now_us) {
    std::vector<std::string> remarks;
    // The earliest first, whatever the order in the file.
    for (auto due = next_us(); due && *due <= now_us; due = next_us()) {
        for (Rule& rule : rules_) {
            if (!rule.met && rule.at_us && *begin_us_ + *rule.at_us == *due) {
                model.advance(now_us);
                remarks.push_back(carry_out(rule, model));
            }
        }
    }
    return remarks;
}

std::optional<std::int64_t> Scenario::next_us() const {
    std::optional<std::int64_t> next;
    if (!begin_us_) {
        return next;
    }
    for (const Rule& rule : rules_) {
        if (rule.at_us && !rule.met && (!next || *begin_us_ + *rule.at_us < *next)) {
            next = *begin_us_ + *rule.at_us;
        }
    }
    return next;
}

std::vector<std::string> Scenario::unmet() const {
    std::vector<std::string> lines;
    for (const Rule& rule : rules_) {
        if (!rule.met) {
            lines.push_back("line " + std::to_string(rule.line) + ": " + rule.text);
        }
    }
    return lines;
}

}  // namespace virtual_register
