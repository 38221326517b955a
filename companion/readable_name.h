// Names of goods for people who read a journal.
#pragma once

#include <string>

namespace kkmcheck {

// UTF-8 from the register's code page 866, the letters at least: anything else beyond ASCII is '?'.
std::string ReadableName(const std::string& bytes);

}  // namespace kkmcheck
