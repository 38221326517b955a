#include "prompt.h"

#include <charconv>
#include <optional>
#include <sstream>
#include <vector>

#include "cp866.h"
#include "receipt.h"

namespace virtual_register {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kHelp =
    "host              ask the host for a check\n"
    "barcode DIGITS    ask the host for a check by barcode\n"
    "cancel            clear the open check, or tell the host that none is wanted\n"
    "key CODE          press a key (32 clear, 40 cancel after clear, 43 copy, 0x2B works too)\n"
    "sell PRICE NAME   type a line at the keyboard\n"
    "paper out|in [N]  take the paper out, put a roll in (with N lines left)\n"
    "power off|on      pull the plug, put it back\n"
    "shift open|close  open or close the shift\n"
    "status            what the register holds\n"
    "help, quit";

std::optional<unsigned> to_number(const std::string& text) {
    const bool hexadecimal = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const char* begin = text.data() + (hexadecimal ? 2 : 0);
    const char* end = text.data() + text.size();
    unsigned number = 0;
    const auto [stopped, error] = std::from_chars(begin, end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stopped != end) {
        return std::nullopt;
    }
    return number;
}

// "19.99" or "20", in kopecks.
std::optional<std::uint32_t> to_kopecks(const std::string& text) {
    const std::size_t dot = text.find('.');
    const auto whole = to_number(text.substr(0, dot));
    std::string cents = dot == std::string::npos ? "00" : text.substr(dot + 1);
    cents.resize(2, '0');
    const auto part = to_number(cents);
    if (!whole || !part || *whole > 99999) {
        return std::nullopt;
    }
    return *whole * 100 + *part;
}

std::string done_or_not(bool done) {
    return done ? "" : "the register does not let it happen now";
}

std::string press(Model& model, const Words& words) {
    const auto code = words.size() > 1 ? to_number(words[1]) : std::nullopt;
    if (!code || *code > 0xFF) {
        return "key needs a code from 0 to 255";
    }
    return done_or_not(model.press(static_cast<std::uint8_t>(*code)));
}

std::string sell(Model& model, const Words& words) {
    const auto price = words.size() > 2 ? to_kopecks(words[1]) : std::nullopt;
    if (!price) {
        return "sell needs a price and a name: sell 19.99 Milk";
    }
    SaleLine line;
    for (std::size_t i = 2; i < words.size(); ++i) {
        line.name.add(to_cp866(i == 2 ? words[i] : ' ' + words[i]));
    }
    line.price_kopecks = *price;
    line.amount_kopecks = *price;
    line.quantity_thousandths = 1000;
    line.department = 1;
    return done_or_not(model.enter_line(line));
}

std::string paper(Model& model, const Words& words) {
    if (words.size() > 1 && words[1] == "out") {
        model.paper_out();
        return "no paper";
    }
    if (words.size() > 1 && words[1] == "in") {
        const auto lines = words.size() > 2 ? to_number(words[2]) : std::nullopt;
        if (words.size() > 2 && !lines) {
            return "paper in needs a number of lines or nothing";
        }
        lines ? model.paper_in(*lines) : model.paper_in();
        return "paper is in";
    }
    return "paper out, or paper in";
}

std::string power(Model& model, const Words& words) {
    if (words.size() > 1 && words[1] == "off") {
        model.power_off();
        return "switched off";
    }
    if (words.size() > 1 && words[1] == "on") {
        model.power_on();
        return "switched on";
    }
    return "power off, or power on";
}

std::string shift(Model& model, const Words& words) {
    if (words.size() > 1 && words[1] == "open") {
        return done_or_not(model.open_shift());
    }
    if (words.size() > 1 && words[1] == "close") {
        return done_or_not(model.close_shift());
    }
    return "shift open, or shift close";
}

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
    std::istringstream stream{std::string(line)};
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    if (words.empty()) {
        return {};
    }
    const std::string& first = words[0];
    if (first == "host") {
        return {done_or_not(model.ask_host())};
    }
    if (first == "barcode") {
        return {words.size() > 1 ? done_or_not(model.ask_host_by_barcode(words[1]))
                                 : "barcode needs its digits"};
    }
    if (first == "cancel") {
        return {done_or_not(model.cancel())};
    }
    if (first == "key") {
        return {press(model, words)};
    }
    if (first == "sell") {
        return {sell(model, words)};
    }
    if (first == "paper") {
        return {paper(model, words)};
    }
    if (first == "power") {
        return {power(model, words)};
    }
    if (first == "shift") {
        return {shift(model, words)};
    }
    if (first == "status") {
        return {status(model)};
    }
    if (first == "help") {
        return {kHelp};
    }
    if (first == "quit") {
        return {"", true};
    }
    return {"\"" + first + "\" is unknown; help tells what can be said"};
}

}  // namespace virtual_register
