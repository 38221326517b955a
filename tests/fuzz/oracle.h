// What must hold for every input, beyond what the sanitizers see.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

// Ends the process as a crash, so that every runner keeps the input.
inline void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

}  // namespace fuzz
