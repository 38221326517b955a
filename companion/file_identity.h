// Whether a path still names the file that was opened.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <utility>

namespace kkmcheck {

using FileIdentity = std::pair<dev_t, ino_t>;

inline std::optional<FileIdentity> IdentityOf(const std::string& path) {
    struct stat seen {};
    return ::stat(path.c_str(), &seen) == 0
               ? std::optional<FileIdentity>({seen.st_dev, seen.st_ino})
               : std::nullopt;
}

inline std::optional<FileIdentity> IdentityOf(int descriptor) {
    struct stat seen {};
    return ::fstat(descriptor, &seen) == 0 ? std::optional<FileIdentity>({seen.st_dev, seen.st_ino})
                                           : std::nullopt;
}

}  // namespace kkmcheck
