// Random numbers that are the same on every machine and word size.
#pragma once

#include <cstdint>

namespace simulation {

// SplitMix64. Small, seedable with any number, and more than good enough to choose faults.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    // 0 to n - 1; 0 when n is 0.
    std::uint32_t Below(std::uint32_t n) {
        return static_cast<std::uint32_t>(((Next() >> 32U) * n) >> 32U);
    }
    // first to last, both included.
    int Between(int first, int last) {
        return first + static_cast<int>(Below(static_cast<std::uint32_t>(last - first) + 1));
    }
    bool Chance(std::uint32_t per_mille) { return Below(1000) < per_mille; }
    unsigned char Byte() { return static_cast<unsigned char>(Below(256)); }
    template <typename T, std::size_t N>
    const T& OneOf(const T (&values)[N]) {
        return values[Below(static_cast<std::uint32_t>(N))];
    }
    // Numbers that do not depend on how many were drawn here afterwards.
    Random Branch() { return Random(Next()); }

  private:
    std::uint64_t state_;
};

}  // namespace simulation
