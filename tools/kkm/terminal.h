// What the output may look like.
#pragma once

namespace kkm {

struct Terminal {
    bool live = false;    // a line may be drawn over
    bool colour = false;  // escape sequences for colours are welcome
};

// Judges a stream by what it is and by the environment variables NO_COLOR and TERM (null when
// unset).
Terminal JudgeTerminal(bool is_terminal, const char* no_color, const char* term);

// The same for an open file of this process.
Terminal DetectTerminal(int file);

}  // namespace kkm
