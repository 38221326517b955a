#include "kkm/open_check.h"

#include <nlohmann/json.hpp>

namespace kkm {

bool HoldsOpenCheck(int state) {
    return state == 0xC8 || state == 0xC9 || state == 0xCA;
}

std::optional<RegisterState> OpenCheckAt(const Address& address) {
    const auto look = LookAtRegister(address);
    if (!look || !HoldsOpenCheck(look->state.code)) {
        return std::nullopt;
    }
    return look->state;
}

std::string OpenCheckText(const RegisterState& state) {
    return "a check is open at the register (" + StateAsFigures(state).front().text +
           "); the driver would have it printed, so nothing more is read";
}

ExitStatus ReportOpenCheck(const RegisterState& state, bool as_json, Streams& streams) {
    const std::string what = OpenCheckText(state);
    if (as_json) {
        const nlohmann::ordered_json error = {
            {"what", what},
            {"advice", kOpenCheckAdvice},
            {"exit_status", static_cast<int>(ExitStatus::refused)}};
        streams.out << nlohmann::ordered_json{{"error", error}}.dump(2) << std::endl;
    }
    streams.err << "kkm: " << what << "\n     " << kOpenCheckAdvice << std::endl;
    return ExitStatus::refused;
}

}  // namespace kkm
