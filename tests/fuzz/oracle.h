// What must hold for every input, beyond what the sanitizers see.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace fuzz {

// Ends the process as a crash, so that every runner keeps the input.
inline void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

// What all runs so far have shown, in one number. Both word sizes must come to the same.
inline std::uint64_t digest = 0xCBF29CE484222325;

inline void NoteBytes(const unsigned char* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        digest = (digest ^ bytes[i]) * 0x100000001B3;
    }
}

// For numbers that have one width everywhere.
template <typename Number>
void Note(Number number) {
    static_assert(std::is_arithmetic_v<Number> && !std::is_same_v<Number, long> &&
                  !std::is_same_v<Number, unsigned long>);
    unsigned char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    NoteBytes(bytes, sizeof bytes);
}

}  // namespace fuzz
