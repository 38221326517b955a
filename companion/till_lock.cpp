#include "companion/till_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "companion/register_session.h"

namespace kkmcheck {
namespace {

constexpr long kPauseNs = 10'000'000;
constexpr mode_t kRights = 0666;

}  // namespace

TillLock::TillLock(const std::string& journal_path) {
    const std::string path = journal_path + ".lock";
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kRights);
    if (descriptor_ < 0) {
        throw JournalFailure("the lock file " + path + ": " + std::strerror(errno));
    }
}

TillLock::~TillLock() {
    ::close(descriptor_);
}

bool TillLock::Take(const Deadline& deadline) {
    while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        if (deadline.Left() == 0) {
            return false;
        }
        const timespec pause{0, kPauseNs};
        ::nanosleep(&pause, nullptr);
    }
    return true;
}

}  // namespace kkmcheck
