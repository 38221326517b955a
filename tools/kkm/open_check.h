// A check that stands open at the register, and what must not be done to it.
#pragma once

#include <optional>

#include "kkm/exit_status.h"
#include "kkm/register_state.h"
#include "kkm/streams.h"

namespace kkm {

// A check may stand in its closing behind this state: its totals are made and it was told to come
// out, or a lock hides what the register does. The lines that are open tell.
bool MayHideAClosing(int state);

// The register closes a check, or takes a discount or a discount card for it. The driver's leaving
// resets such a state, and the register then prints the check.
bool HoldsOpenCheck(const RegisterLook& look);

// The register's state if it holds an open check. Only looks.
std::optional<RegisterState> OpenCheckAt(const Address& address);

constexpr auto kOpenCheckAdvice =
    "let the cashier finish or cancel the check; kkm cancel cancels it, kkm resolve one of the "
    "journal";

// "a check is open at the register (0xC8 ks_checkout: is closing a check): ..."
std::string OpenCheckText(const RegisterState& state);
ExitStatus ReportOpenCheck(const RegisterState& state, bool as_json, Streams& streams);

}  // namespace kkm
