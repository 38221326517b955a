#include "kkm/open_check.h"

#include <nlohmann/json.hpp>

namespace kkm {
namespace {

constexpr int kReady = 0xC0;
constexpr int kCheckOut = 0xC8;
constexpr int kDiscount = 0xC9;
constexpr int kDiscountCard = 0xCA;
constexpr int kKeyLock = 0xCE;

}  // namespace

bool MayHideAClosing(int state) {
    return state == kReady || state == kKeyLock;
}

bool HoldsOpenCheck(const RegisterLook& look) {
    const int state = look.state.code;
    return state == kCheckOut || state == kDiscount || state == kDiscountCard ||
           (MayHideAClosing(state) && look.open_lines.value_or(0) > 0);
}

std::optional<RegisterState> OpenCheckAt(const Address& address) {
    const auto look = LookAtRegister(address);
    if (!look || !HoldsOpenCheck(*look)) {
        return std::nullopt;
    }
    return look->state;
}

std::string OpenCheckText(const RegisterState& state) {
    return "a check is open at the register (" + StateText(state.code) +
           "); the driver would have it printed, so nothing more is done";
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
