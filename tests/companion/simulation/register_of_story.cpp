#include "companion/simulation/register_of_story.h"

#include <algorithm>

namespace outcome_simulation {

using virtual_register::Command;
using virtual_register::Memory;
using virtual_register::Model;
using virtual_register::PrintedCheck;
using virtual_register::SaleLine;

namespace {

constexpr auto kOther = "OTHER";

SaleLine MakeLine(const char* name, std::uint32_t kopecks) {
    SaleLine line;
    line.name.add(name);
    line.price_kopecks = kopecks;
    line.quantity_thousandths = 1000;
    line.amount_kopecks = kopecks;
    line.code = 77;
    line.department = 1;
    return line;
}

// As the driver sends every line.
SaleLine MakeSentLine(std::uint32_t kopecks) {
    SaleLine line = MakeLine(kOther, kopecks);
    line.code = 1;
    line.barcode.add("1234567890123");
    return line;
}

Model MakeModel(const Story& story) {
    const simulation::RegisterPlan& plan = story.scenario.kkm;
    virtual_register::Identity identity;
    identity.firmware = plan.firmware;
    identity.drawer_kopecks = plan.drawer_kopecks;
    virtual_register::Settings settings;
    settings.net_number = story.scenario.line.net_number;
    settings.print_us_per_line = plan.print_us_per_line;
    Model model(Memory(identity), settings);
    if (plan.shift_open) {
        model.open_shift();
        model.memory().checks = plan.checks;
        // The last of the records that are counted are there.
        const std::uint16_t kept = plan.records < 3 ? plan.records : 3;
        model.memory().tape.start(static_cast<std::uint16_t>(plan.records - kept));
        for (std::uint16_t i = 0; i < kept; ++i) {
            PrintedCheck past;
            past.number = plan.checks;
            past.lines.push_back(MakeLine("PAST", 100U + i));
            model.memory().tape.add(make_tape_record(past, 0));
        }
    }
    return model;
}

bool IsOurs(const SaleLine& line, std::string_view names) {
    const std::string_view name = line.name.text();
    if (!names.empty()) {
        return name.substr(0, names.size()) == names;
    }
    // Whatever else came from a program came from this host: a name may change on the line.
    return line.code != 77 && name.substr(0, 5) != kOther;
}

}  // namespace

RegisterOfStory::RegisterOfStory(const Story& story)
    : story_(story),
      expected_(kkmcheck::ExpectedRecords(story.check)),
      model_(MakeModel(story)),
      older_(model_.memory()) {
    const simulation::RegisterPlan& plan = story.scenario.kkm;
    if (story.between == Between::older_memory) {
        model_.enter_line(MakeLine("PAST", 500));
        CloseByHand();
    }
    if (plan.switched_on_long_ago) {
        Ask(0x7F, {});
    }
    for (std::uint32_t i = 0; i < plan.lines_in_open_check; ++i) {
        model_.enter_line(MakeLine("LEFT", 100));
    }
    if (plan.lines_in_open_check > 0 && plan.open_check_closed) {
        Ask(0x25, {6});
        if (plan.in_check_out) {
            Ask(0x7F, {});
        }
    }
    if (plan.paper_out) {
        model_.paper_out();
    }
}

void RegisterOfStory::Ask(std::uint8_t command, std::initializer_list<int> payload) {
    virtual_register::Request request;
    request.command = command;
    for (const int byte : payload) {
        request.payload.add(static_cast<std::uint8_t>(byte));
    }
    model_.handle(request, now_us_);
}

// The check in the register, to its end.
void RegisterOfStory::CloseByHand() {
    Ask(0x25, {6});
    Ask(0x7F, {});
    Ask(0x7F, {});
}

void RegisterOfStory::Happens(Between what, simulation::RegisterSide& side,
                              simulation::Micros now_us) {
    now_us_ = static_cast<std::int64_t>(now_us);
    model_.advance(now_us_);
    if (what == Between::nothing) {
        return;
    }
    model_.power_off();
    model_.power_on();
    const bool open = model_.open_check().is_open();
    switch (what) {
        case Between::cashiers_check:
        case Between::longer_check:
        case Between::other_program:
            if (open) {
                model_.cancel();
            }
            Ask(0x7F, {});
            for (std::uint32_t i = 0; i < (what == Between::cashiers_check ? 1U : 3U); ++i) {
                model_.enter_line(what == Between::other_program ? MakeSentLine(300 + i)
                                                                 : MakeLine("TYPED", 300 + i));
            }
            CloseByHand();
            break;
        case Between::typed_into_it:
            model_.enter_line(MakeLine("TYPED", 300));
            CloseByHand();
            break;
        case Between::shift_closed:
            model_.cancel();
            Ask(0x7F, {});
            model_.close_shift();
            break;
        case Between::paper_in_and_key:
            model_.paper_in();
            model_.press(1);
            break;
        case Between::paper_in:
            model_.paper_in();
            break;
        case Between::other_register:
            model_.memory().set_serial("00099999");
            exchanged_ = true;
            break;
        case Between::older_memory:
            model_.memory() = older_;
            exchanged_ = true;
            // Half of them come to stand where the exchanged one stood.
            if (story_.check.lines.size() % 2 == 0) {
                Ask(0x7F, {});
                model_.enter_line(MakeLine("LATER", 700));
                CloseByHand();
            }
            break;
        default:
            break;
    }
    // For the next exchange to find it as it is now.
    side.BeginCall(0, false);
}

bool RegisterOfStory::IsWhole(const PrintedCheck& check) const {
    if (check.lines.size() != expected_.size()) {
        return false;
    }
    for (std::size_t i = 0; i < expected_.size(); ++i) {
        const auto record = make_tape_record(check, i);
        if (record.amount_kopecks != expected_[i].sum_kopecks || record.kind != expected_[i].kind ||
            check.lines[i].quantity_thousandths != expected_[i].quantity_thousandths) {
            return false;
        }
    }
    return true;
}

Truth RegisterOfStory::Look(std::string_view names) const {
    const auto is_ours = [names](const SaleLine& line) { return IsOurs(line, names); };
    Truth truth;
    for (const PrintedCheck& check : model_.printed()) {
        const bool ours = std::any_of(check.lines.begin(), check.lines.end(), is_ours);
        truth.receipts += ours ? 1 : 0;
        truth.whole += ours && IsWhole(check) ? 1 : 0;
    }
    const auto& open = model_.open_check().lines;
    truth.open = std::any_of(open.begin(), open.end(), is_ours);
    return truth;
}

}  // namespace outcome_simulation
