#pragma once

#include <string>

namespace virtual_register {

// The whole file. Throws std::runtime_error with a sentence for the user.
std::string read_text(const std::string& path);

}  // namespace virtual_register
