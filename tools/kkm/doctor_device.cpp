#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "kkm/doctor.h"

namespace kkm {
namespace {

namespace fs = std::filesystem;

using Findings = std::vector<Finding>;

std::string SystemText(int error) {
    return std::generic_category().message(error);
}

std::string GroupName(gid_t id) {
    const group* const known = getgrgid(id);
    return known != nullptr ? known->gr_name : std::to_string(id);
}

std::string ContentOf(const fs::path& path) {
    std::ifstream file(path);
    std::string word;
    file >> word;
    return word;
}

// `error` is set when it is somebody else's process.
bool IsOpenIn(const fs::path& process, dev_t device, std::error_code& error) {
    for (fs::directory_iterator file(process / "fd", error), end; file != end;
         file.increment(error)) {
        struct stat open_file {};
        if (stat(file->path().c_str(), &open_file) == 0 && S_ISCHR(open_file.st_mode) &&
            open_file.st_rdev == device) {
            return true;
        }
    }
    return false;
}

struct Holders {
    std::vector<std::string> processes;  // "1234 (pos-program)"
    bool some_hidden = false;            // not every process lets itself be looked at
};

// Every other process that has the device open, as far as /proc tells. The program behind a
// pseudo-terminal is not one of them: it is the register.
Holders HoldersOf(dev_t device) {
    const dev_t master = makedev(5, 2);
    Holders holders;
    std::error_code ignored;
    for (const auto& process : fs::directory_iterator("/proc", ignored)) {
        const std::string pid = process.path().filename().string();
        if (pid.find_first_not_of("0123456789") != std::string::npos ||
            pid == std::to_string(getpid())) {
            continue;
        }
        std::error_code error;
        if (IsOpenIn(process.path(), device, error) && !IsOpenIn(process.path(), master, error)) {
            holders.processes.push_back(pid + " (" + ContentOf(process.path() / "comm") + ")");
        }
        holders.some_hidden = holders.some_hidden || error == std::errc::permission_denied;
    }
    return holders;
}

constexpr gid_t kRootGroup = 0;
constexpr mode_t kGroupUses = S_IRGRP | S_IWGRP;

Finding NoPermission(const struct stat& node, const std::string& device) {
    const std::string group = GroupName(node.st_gid);
    // Being in the group of root gives more than a till, and a group without rights gives nothing.
    if (node.st_gid == kRootGroup || (node.st_mode & kGroupUses) != kGroupUses) {
        char mode[8];
        std::snprintf(mode, sizeof mode, "%03o", static_cast<unsigned>(node.st_mode & 0777U));
        return {Grade::bad, "no_permission",
                "this user may not open " + device + ", which has mode " + mode +
                    " and belongs to the group " + group,
                "give it to a group by a udev rule, such as KERNEL==\"" +
                    fs::path(device).filename().string() + "\", GROUP=\"dialout\", MODE=\"0660\""};
    }
    return {Grade::bad, "no_permission",
            "this user may not open " + device + ", which belongs to the group " + group,
            "adduser USER " + group + ", then log in again"};
}

Findings ExamineOpening(const std::string& device, const struct stat& node) {
    const int file = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        const int error = errno;
        if (error == EACCES || error == EPERM) {
            return {NoPermission(node, device)};
        }
        if (error == EBUSY) {
            return {{Grade::bad, "held_exclusively", "another program holds " + device + " alone",
                     "end that program: fuser -v " + device}};
        }
        return {{Grade::bad, "cannot_open", device + " cannot be opened: " + SystemText(error),
                 "check the adapter and its cable; dmesg tells what the system saw"}};
    }
    termios line{};
    const bool is_line = tcgetattr(file, &line) == 0;
    close(file);
    if (!is_line) {
        return {{Grade::bad, "not_a_serial_line", device + " is no serial line",
                 "name the tty of the register: ls -l /dev/serial/by-id"}};
    }
    return {{Grade::good, "device", device + " is a serial line that this user may open", ""}};
}

void ExamineHolders(dev_t device, Findings& findings) {
    const Holders holders = HoldersOf(device);
    for (const std::string& process : holders.processes) {
        findings.push_back({Grade::bad, "held_by_another",
                            "process " + process + " has the device open as well",
                            "end it: two programs on one line read parts of each answer"});
    }
    if (holders.some_hidden) {
        findings.push_back({Grade::note, "holders_hidden",
                            "the processes of other users could not be looked at",
                            "run kkm doctor as root to see whether they hold the device"});
    }
}

void ExamineLatency(const std::string& device, const fs::path& tty_class, Findings& findings) {
    std::error_code ignored;
    const fs::path real = fs::canonical(device, ignored);
    const fs::path timer = tty_class / real.filename() / "device/latency_timer";
    const std::string ms = ContentOf(timer);
    if (!ms.empty() && std::atoi(ms.c_str()) > 1) {
        findings.push_back({Grade::note, "adapter_latency",
                            "the adapter keeps received bytes back for up to " + ms + " ms",
                            "a check gets quicker with: echo 1 > " + timer.string()});
    }
}

constexpr std::uintmax_t kHugeTrace = 100'000'000;
constexpr std::uintmax_t kLittleRoom = 10'000'000;

void ExamineTraceFile(const fs::path& path, Findings& findings) {
    std::error_code ignored;
    if (!fs::exists(path, ignored)) {
        return;
    }
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        findings.push_back({Grade::bad, "trace_not_writable",
                            path.string() + " cannot be written: " + SystemText(errno),
                            "give it to the user of the host program, or remove it"});
        return;
    }
    close(file);
    const std::uintmax_t size = fs::file_size(path, ignored);
    if (!ignored && size > kHugeTrace) {
        findings.push_back(
            {Grade::bad, "trace_huge",
             path.string() + " has grown to " + std::to_string(size / 1'000'000) + " MB",
             "move or delete it, also while the host runs"});
    }
}

}  // namespace

std::vector<Finding> ExamineDevice(const std::string& device, const std::string& tty_class) {
    struct stat node {};
    if (stat(device.c_str(), &node) != 0) {
        if (errno == EACCES) {
            return {{Grade::bad, "no_permission", "this user may not look at " + device,
                     "check the rights of its folder"}};
        }
        return {{Grade::bad, "device_missing", device + " does not exist",
                 "plug the adapter in and look at ls -l /dev/serial/by-id"}};
    }
    if (!S_ISCHR(node.st_mode)) {
        return {{Grade::bad, "not_a_serial_line", device + " is no device",
                 "name the tty of the register: ls -l /dev/serial/by-id"}};
    }
    Findings findings = ExamineOpening(device, node);
    if (findings.front().grade == Grade::bad && findings.front().key != "held_exclusively") {
        return findings;
    }
    ExamineHolders(node.st_rdev, findings);
    ExamineLatency(device, tty_class, findings);
    return findings;
}

std::vector<Finding> ExamineTraceFiles(const std::string& directory) {
    Findings findings;
    const fs::path folder = directory.empty() ? fs::path(".") : fs::path(directory);
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) {
        return {{Grade::bad, "trace_not_writable", folder.string() + " is no directory",
                 "name the working directory of the host program"}};
    }
    for (const char* name : {"VeskTarvoM5.log", "TarvoM5.log"}) {
        ExamineTraceFile(folder / name, findings);
    }
    if (findings.empty() && access(folder.c_str(), W_OK | X_OK) != 0) {
        findings.push_back({Grade::bad, "trace_not_writable",
                            "no trace file can be made in " + folder.string(),
                            "give the directory to the user of the host program"});
    }
    const auto space = fs::space(folder, ignored);
    if (!ignored && space.available < kLittleRoom) {
        findings.push_back({Grade::bad, "disk_full",
                            "less than 10 MB are free for trace files in " + folder.string(),
                            "make room: the driver goes on, but its story is lost"});
    }
    if (findings.empty()) {
        findings.push_back(
            {Grade::good, "trace", "trace files can be written in " + folder.string(), ""});
    }
    return findings;
}

}  // namespace kkm
