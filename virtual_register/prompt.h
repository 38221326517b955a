#pragma once

#include <string>
#include <string_view>

#include "model.h"

namespace virtual_register {

struct PromptAnswer {
    std::string text;  // UTF-8, without a line end; may be empty
    bool quit = false;
};

// Carries out one line that the cashier typed: an act, "status", "quit" or "help", which tells all
// of them.
PromptAnswer obey(Model& model, std::string_view line);

}  // namespace virtual_register
