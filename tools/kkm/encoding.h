// Texts for the register's printer.
#pragma once

#include <string>
#include <vector>

namespace kkm {

struct RegisterText {
    std::string bytes;              // code page 866
    std::vector<std::string> lost;  // UTF-8 letters without a place in it, each once, in order
};

// Converts UTF-8 to code page 866 with iconv. A letter that the code page lacks becomes '?'; a byte
// that is no UTF-8 is lost too. Throws std::runtime_error when this system's iconv has no
// converter.
RegisterText ToRegisterText(const std::string& utf8);

// Converts code page 866 to UTF-8. Each control character becomes a blank.
std::string FromRegisterText(const std::string& bytes);

}  // namespace kkm
