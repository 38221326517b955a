#include "companion/till_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "companion/file_identity.h"
#include "companion/register_session.h"

namespace kkmcheck {
namespace {

constexpr long kPauseNs = 10'000'000;
constexpr mode_t kRights = 0666;

}  // namespace

std::string LockPath(const std::string& journal_path) {
    return journal_path + ".lock";
}

TillLock::TillLock(const std::string& journal_path) : path_(LockPath(journal_path)) {
    Open();
}

TillLock::~TillLock() {
    ::close(descriptor_);
}

void TillLock::Open() {
    const int descriptor = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kRights);
    if (descriptor < 0) {
        throw JournalFailure("the lock file " + path_ + ": " + std::strerror(errno));
    }
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    descriptor_ = descriptor;
}

bool TillLock::Take(const Deadline& deadline) {
    for (;;) {
        if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            if (deadline.Left() == 0) {
                return false;
            }
            const timespec pause{0, kPauseNs};
            ::nanosleep(&pause, nullptr);
        } else if (IdentityOf(path_) == IdentityOf(descriptor_)) {
            return true;
        } else {
            Open();  // somebody removed the file: the lock of a file without a name locks nobody
                     // out
        }
    }
}

}  // namespace kkmcheck
