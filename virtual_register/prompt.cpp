#include "prompt.h"

#include <sstream>

#include "act.h"
#include "cp866.h"
#include "receipt.h"

namespace virtual_register {
namespace {

std::string status(const Model& model) {
    const Memory& memory = model.memory();
    const auto yes = [](bool is) { return is ? "yes" : "no"; };
    std::ostringstream text;
    text << "firmware " << memory.firmware().number << ", serial "
         << to_utf8(without_padding(memory.serial())) << ", network number "
         << int{model.settings().net_number} << ", section " << int{memory.section()} << '\n'
         << "state " << state_name(static_cast<std::uint8_t>(model.state())) << ", keyboard "
         << (model.keyboard_locked() ? "locked" : "free") << ", paper "
         << yes(model.paper().present()) << ", power " << yes(model.powered()) << ", last error "
         << int{memory.last_error()} << '\n'
         << "shift " << (memory.shift_is_open() ? "open" : "closed") << ", tape "
         << memory.tape_number << ", checks " << memory.checks << ", records "
         << memory.tape.count() << ", drawer " << money(memory.drawer_kopecks) << '\n'
         << "open check: " << memory.check.lines.size() << " lines, total "
         << money(memory.check.total_kopecks()) << '\n'
         << "indicator \"" << to_utf8(without_padding(model.indicator())) << '"';
    return text.str();
}

}  // namespace

PromptAnswer obey(Model& model, std::string_view line) {
    const Words words = split_words(line);
    if (words.empty()) {
        return {};
    }
    const std::string& first = words[0];
    if (first == "status") {
        return {status(model)};
    }
    if (first == "help") {
        return {std::string(kActsHelp) +
                "status            what the register holds\n"
                "help, quit"};
    }
    if (first == "quit") {
        return {"", true};
    }
    const ParsedAct parsed = parse_act(words);
    if (parsed.act) {
        return {parsed.act->carry_out(model)};
    }
    return {parsed.error + (parsed.unknown ? "; help tells what can be said" : "")};
}

}  // namespace virtual_register
