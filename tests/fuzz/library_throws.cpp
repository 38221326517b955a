// The standard library's own refusals (a substring behind the end, a vector of impossible size).
// The frames of exported functions would turn them into an error code and hide them; here they end
// the run.
#include "fuzz/oracle.h"

extern "C" {
[[noreturn]] void RefusedRange(const char* format,
                               ...) __asm__("__wrap__ZSt24__throw_out_of_range_fmtPKcz");
[[noreturn]] void RefusedLength(const char* what) __asm__("__wrap__ZSt20__throw_length_errorPKc");
[[noreturn]] void RefusedLogic(const char* what) __asm__("__wrap__ZSt19__throw_logic_errorPKc");
}

void RefusedRange(const char* format, ...) {
    fuzz::Require(false, format);
    std::abort();
}

void RefusedLength(const char* what) {
    fuzz::Require(false, what);
    std::abort();
}

void RefusedLogic(const char* what) {
    fuzz::Require(false, what);
    std::abort();
}
