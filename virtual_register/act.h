#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model.h"

namespace virtual_register {

using Words = std::vector<std::string>;

// Splits at blanks.
Words split_words(std::string_view line);
// Decimal, or hexadecimal behind 0x.
std::optional<unsigned> to_number(std::string_view text);

// Something done to a register from outside: "host", "barcode 4601234567890", "cancel",
// "key 0x2B", "sell 19.99 Milk", "paper out", "power off", "shift close". The prompt and the
// scenario files say them in the same words.
struct Act {
    std::string words;
    // Gives a remark for the user (UTF-8, without a line end), empty when there is nothing to say.
    std::function<std::string(Model&)> carry_out;
};

// Either the act or what is wrong with the words. `unknown`: already the first word is none.
struct ParsedAct {
    std::optional<Act> act;
    std::string error;
    bool unknown = false;
};
ParsedAct parse_act(const Words& words);

// One line for each act.
extern const char* const kActsHelp;

}  // namespace virtual_register
