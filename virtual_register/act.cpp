#include "act.h"

#include <charconv>
#include <sstream>
#include <utility>

#include "cp866.h"

namespace virtual_register {
namespace {

using CarryOut = std::function<std::string(Model&)>;

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

ParsedAct wrong(std::string error) {
    return {std::nullopt, std::move(error)};
}

ParsedAct good(const Words& words, CarryOut carry_out) {
    std::string all;
    for (const std::string& word : words) {
        all += (all.empty() ? "" : " ") + word;
    }
    return {Act{std::move(all), std::move(carry_out)}, ""};
}

bool second_is(const Words& words, const char* word) {
    return words.size() > 1 && words[1] == word;
}

ParsedAct parse_barcode(const Words& words) {
    if (words.size() < 2) {
        return wrong("barcode needs its digits");
    }
    return good(words, [digits = words[1]](Model& model) {
        return done_or_not(model.ask_host_by_barcode(digits));
    });
}

ParsedAct parse_key(const Words& words) {
    const auto code = words.size() > 1 ? to_number(words[1]) : std::nullopt;
    if (!code || *code > 0xFF) {
        return wrong("key needs a code from 0 to 255");
    }
    return good(words, [code = static_cast<std::uint8_t>(*code)](Model& model) {
        return done_or_not(model.press(code));
    });
}

ParsedAct parse_sell(const Words& words) {
    const auto price = words.size() > 2 ? to_kopecks(words[1]) : std::nullopt;
    if (!price) {
        return wrong("sell needs a price and a name: sell 19.99 Milk");
    }
    SaleLine line;
    for (std::size_t i = 2; i < words.size(); ++i) {
        line.name.add(to_cp866(i == 2 ? words[i] : ' ' + words[i]));
    }
    line.price_kopecks = *price;
    line.amount_kopecks = *price;
    line.quantity_thousandths = 1000;
    line.department = 1;
    return good(words, [line](Model& model) { return done_or_not(model.enter_line(line)); });
}

ParsedAct parse_paper(const Words& words) {
    if (second_is(words, "out")) {
        return good(words, [](Model& model) {
            model.paper_out();
            return std::string("no paper");
        });
    }
    if (!second_is(words, "in")) {
        return wrong("paper out, or paper in");
    }
    const auto lines = words.size() > 2 ? to_number(words[2]) : std::nullopt;
    if (words.size() > 2 && !lines) {
        return wrong("paper in needs a number of lines or nothing");
    }
    return good(words, [lines](Model& model) {
        lines ? model.paper_in(*lines) : model.paper_in();
        return std::string("paper is in");
    });
}

ParsedAct parse_power(const Words& words) {
    if (second_is(words, "off")) {
        return good(words, [](Model& model) {
            model.power_off();
            return std::string("switched off");
        });
    }
    if (second_is(words, "on")) {
        return good(words, [](Model& model) {
            model.power_on();
            return std::string("switched on");
        });
    }
    return wrong("power off, or power on");
}

ParsedAct parse_shift(const Words& words) {
    if (second_is(words, "open")) {
        return good(words, [](Model& model) { return done_or_not(model.open_shift()); });
    }
    if (second_is(words, "close")) {
        return good(words, [](Model& model) { return done_or_not(model.close_shift()); });
    }
    return wrong("shift open, or shift close");
}

}  // namespace

const char* const kActsHelp =
    "host              ask the host for a check\n"
    "barcode DIGITS    ask the host for a check by barcode\n"
    "cancel            clear the open check, or tell the host that none is wanted\n"
    "key CODE          press a key (32 clear, 40 cancel after clear, 43 copy, 0x2B works too)\n"
    "sell PRICE NAME   type a line at the keyboard\n"
    "paper out|in [N]  take the paper out, put a roll in (with N lines left)\n"
    "power off|on      pull the plug, put it back\n"
    "shift open|close  open or close the shift\n";

Words split_words(std::string_view line) {
    std::istringstream stream{std::string(line)};
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::optional<unsigned> to_number(std::string_view text) {
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

ParsedAct parse_act(const Words& words) {
    const std::string first = words.empty() ? "" : words[0];
    if (first == "host") {
        return good(words, [](Model& model) { return done_or_not(model.ask_host()); });
    }
    if (first == "cancel") {
        return good(words, [](Model& model) { return done_or_not(model.cancel()); });
    }
    if (first == "barcode") {
        return parse_barcode(words);
    }
    if (first == "key") {
        return parse_key(words);
    }
    if (first == "sell") {
        return parse_sell(words);
    }
    if (first == "paper") {
        return parse_paper(words);
    }
    if (first == "power") {
        return parse_power(words);
    }
    if (first == "shift") {
        return parse_shift(words);
    }
    return {std::nullopt, '"' + first + "\" is unknown", true};
}

}  // namespace virtual_register
