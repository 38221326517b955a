#pragma once

#include <string>

namespace virtual_register {

// A symbolic link to the tty, there as long as this lives.
class TtyLink {
  public:
    // No link for an empty path. Throws std::runtime_error with a sentence for the user.
    TtyLink(std::string path, const std::string& tty_name);
    ~TtyLink();
    TtyLink(const TtyLink&) = delete;
    TtyLink& operator=(const TtyLink&) = delete;

  private:
    std::string path_;
};

}  // namespace virtual_register
