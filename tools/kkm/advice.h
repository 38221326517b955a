// The library's error codes in words.
#pragma once

namespace kkm {

struct Advice {
    const char* name;      // as in the public header, "echNoPort"
    const char* happened;  // one sentence
    const char* remedy;    // what to do about it
};

// Never without words: a number that is no code of the library says so.
Advice AdviceFor(int code);

}  // namespace kkm
