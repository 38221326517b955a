#include "memory_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace virtual_register {

MemoryLock::MemoryLock(const std::string& path) {
    if (path.empty()) {
        return;
    }
    const std::string name = path + ".lock";
    file_ = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (file_ < 0) {
        throw std::runtime_error("cannot write " + name + ": " + std::strerror(errno));
    }
    if (::flock(file_, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        ::close(file_);
        throw std::runtime_error(error == EWOULDBLOCK
                                     ? path + " is the memory of a register that is running"
                                     : "cannot lock " + name + ": " + std::strerror(error));
    }
}

MemoryLock::~MemoryLock() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

}  // namespace virtual_register
