// One process at a time works with the register of a till.
#pragma once

#include <string>

#include "companion/deadline.h"

namespace kkmcheck {

std::string LockPath(const std::string& journal_path);

// A file beside the journal. A worker inherits the lock and keeps it as long as it lives, whatever
// becomes of the process that started it.
class TillLock {
  public:
    // Throws JournalFailure when the file cannot be made.
    explicit TillLock(const std::string& journal_path);
    ~TillLock();
    TillLock(const TillLock&) = delete;
    TillLock& operator=(const TillLock&) = delete;

    // False when another process held it until the deadline.
    bool Take(const Deadline& deadline);
    int descriptor() const { return descriptor_; }

  private:
    void Open();

    std::string path_;
    int descriptor_ = -1;
};

}  // namespace kkmcheck
