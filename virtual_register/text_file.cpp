#include "text_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace virtual_register {

std::string read_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file.peek() != std::ifstream::traits_type::eof()) {  // copying nothing counts as a failure
        text << file.rdbuf();
    }
    if (!file || !text) {
        throw std::runtime_error("cannot read " + path + ": " + std::strerror(errno));
    }
    return text.str();
}

}  // namespace virtual_register
