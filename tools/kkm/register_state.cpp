#include "kkm/register_state.h"

namespace kkm {
namespace {

constexpr std::uint8_t kStatus = 0x20;
constexpr std::uint8_t kStatistics = 0x0A;
constexpr std::size_t kStatisticsLength = 11;
constexpr std::chrono::milliseconds kLongestSilence{500};

std::optional<RegisterCounters> ReadCounters(LineClient& line) {
    const LineAnswer answer = line.Exchange(kStatistics, {}, kLongestSilence);
    if (answer.kind != AnswerKind::whole || answer.data.size() != kStatisticsLength) {
        return std::nullopt;
    }
    const auto word = [&](std::size_t at) { return answer.data[at] * 256 + answer.data[at + 1]; };
    return RegisterCounters{word(0), word(2), word(4)};
}

}  // namespace

std::optional<RegisterLook> LookAtRegister(const Address& address) {
    const std::string device = address.Device();
    for (const int baud : {9600, 57600}) {
        try {
            LineClient line(device, baud);
            const LineAnswer answer = line.Exchange(kStatus, {}, kLongestSilence);
            if (answer.kind == AnswerKind::whole) {
                return RegisterLook{{baud, answer.code, answer.data}, ReadCounters(line)};
            }
        } catch (const LineFailure&) {
            return std::nullopt;  // the driver, which comes next, says it better
        }
    }
    return std::nullopt;
}

}  // namespace kkm
