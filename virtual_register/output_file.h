#pragma once

#include <fstream>
#include <ostream>
#include <string>
#include <string_view>

namespace virtual_register {

// A text file that grows while the register runs; whoever follows it sees every line at once.
class OutputFile {
  public:
    enum class Mode { append, replace };

    // Nothing is written for an empty path; "-" is the standard error. Throws std::runtime_error
    // with a sentence for the user when the file cannot be had.
    OutputFile(const std::string& path, Mode mode);

    bool is_open() const { return to_ != nullptr; }
    // Text that cannot be written is told of once, and ends the file: the register goes on.
    void write(std::string_view text);
    bool complete() const { return complete_; }

  private:
    std::string path_;
    bool complete_ = true;
    std::ofstream file_;
    std::ostream* to_ = nullptr;
};

}  // namespace virtual_register
