#pragma once

#include <string>

namespace virtual_register {

// Two registers with one memory would overwrite each other's counters: the second is refused. The
// memory file itself is replaced again and again, so a file beside it, with ".lock" behind its
// name, is what is locked; it stays.
class MemoryLock {
  public:
    // Nothing is locked for an empty path. Throws std::runtime_error with a sentence for the user.
    explicit MemoryLock(const std::string& path);
    ~MemoryLock();
    MemoryLock(const MemoryLock&) = delete;
    MemoryLock& operator=(const MemoryLock&) = delete;

  private:
    int file_ = -1;
};

}  // namespace virtual_register
