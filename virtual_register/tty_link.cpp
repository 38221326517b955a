#include "tty_link.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace virtual_register {

TtyLink::TtyLink(std::string path, const std::string& tty_name) : path_(std::move(path)) {
    if (path_.empty()) {
        return;
    }
    struct stat about {};
    const bool exists = ::lstat(path_.c_str(), &about) == 0;
    // What an earlier run left behind may go; anything else is somebody's.
    const bool in_the_way = exists && (!S_ISLNK(about.st_mode) || ::unlink(path_.c_str()) != 0);
    if (in_the_way) {
        errno = EEXIST;
    }
    if (in_the_way || ::symlink(tty_name.c_str(), path_.c_str()) != 0) {
        throw std::runtime_error("cannot make the link " + path_ + ": " + std::strerror(errno));
    }
}

TtyLink::~TtyLink() {
    if (!path_.empty()) {
        ::unlink(path_.c_str());
    }
}

}  // namespace virtual_register
