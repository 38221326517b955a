#include "output_file.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <stdexcept>

namespace virtual_register {

OutputFile::OutputFile(const std::string& path, Mode mode) : path_(path) {
    if (path == "-") {
        to_ = &std::cerr;
    } else if (!path.empty()) {
        file_.open(path, mode == Mode::append ? std::ios::app : std::ios::trunc);
        if (!file_) {
            throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
        }
        to_ = &file_;
    }
}

void OutputFile::write(std::string_view text) {
    if (to_ == nullptr || *to_ << text << std::flush) {
        return;
    }
    std::cerr << "tarvo-register: " << path_ << " ends here: " << std::strerror(errno) << std::endl;
    to_ = nullptr;
    complete_ = false;
}

}  // namespace virtual_register
