#include "kkm/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace kkm {

Terminal JudgeTerminal(bool is_terminal, const char* no_color, const char* term) {
    Terminal terminal;
    terminal.live = is_terminal && term != nullptr && std::string_view(term) != "dumb";
    const bool colour_unwanted = no_color != nullptr && *no_color != '\0';
    terminal.colour = terminal.live && !colour_unwanted;
    return terminal;
}

Terminal DetectTerminal(int file) {
    return JudgeTerminal(isatty(file) == 1, std::getenv("NO_COLOR"), std::getenv("TERM"));
}

}  // namespace kkm
