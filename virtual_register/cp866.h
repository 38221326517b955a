#pragma once

#include <string>
#include <string_view>

namespace virtual_register {

// The register's code page, for the screen and the paper file. Control characters and whatever else
// has no picture become a dot, so that a receipt cannot steer a terminal.
std::string to_utf8(std::string_view cp866);
// Letters that the code page lacks become '?'.
std::string to_cp866(std::string_view utf8);

}  // namespace virtual_register
