// The check that has to be on the paper, worked out from what the host gave.
#pragma once

#include <cstdint>
#include <string>

#include "simulation/required_driver.h"
#include "virtual_register/check.h"

namespace simulation {

// In what a printed check differs from the required one.
enum class Difference : std::uint8_t { none, lines, names, discount, type, cash };

Difference Compare(const RequiredCheck& required, int firmware,
                   const virtual_register::PrintedCheck& printed);

const char* NameOf(Difference difference);

}  // namespace simulation
