#include "fuzz/host_arguments.h"

#include <array>
#include <limits>

namespace fuzz {

double AnyDouble(Input& input) {
    using Limits = std::numeric_limits<double>;
    static constexpr std::array<double, 32> kEdges{1.0,
                                                   2.5,
                                                   0.0,
                                                   -0.0,
                                                   0.004,
                                                   0.005,
                                                   -1.0,
                                                   -0.01,
                                                   65.0,
                                                   65.001,
                                                   65.5,
                                                   65535.0,
                                                   65535.5,
                                                   65536.0,
                                                   9999.99,
                                                   10000.0,
                                                   99999.99,
                                                   99999.995,
                                                   100000.0,
                                                   42949672.95,
                                                   42949672.96,
                                                   21474836.5,
                                                   1e15,
                                                   1e19,
                                                   1e300,
                                                   -1e300,
                                                   3.5e38,
                                                   0.0005,
                                                   0.0015,
                                                   Limits::infinity(),
                                                   -Limits::infinity(),
                                                   Limits::quiet_NaN()};
    const unsigned choice = input.Byte();
    return choice < 224 ? kEdges[choice % kEdges.size()] : input.Double();
}

int AnyInt(Input& input) {
    static constexpr std::array<int, 20> kEdges{1,   0,   2,    3,     -1,        15,       16,
                                                17,  18,  19,   20,    255,       256,      99,
                                                100, -99, -100, 65536, INT32_MAX, INT32_MIN};
    const unsigned choice = input.Byte();
    return choice < 240 ? kEdges[choice % kEdges.size()] : input.Int32();
}

AnyText::AnyText(Input& input) : text_(input.Text(100)), null_(text_.size() == 13) {
    for (char& character : text_) {
        character = character == '\0' ? ' ' : character;
    }
}

}  // namespace fuzz
