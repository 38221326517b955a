#include "kkm/run_command.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "kkm/connection.h"

namespace kkm {
namespace {

namespace fs = std::filesystem;

constexpr int kCannotRun = 126;
constexpr int kNoSuchProgram = 127;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

void WriteFile(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    const bool written =
        file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const int error = errno;
    if (file >= 0) {
        close(file);
    }
    if (!written) {
        errno = error;
        Fail(path);
    }
}

// A user without rights gets them in a namespace of users, where only its own files are its own.
void EnterNamespace() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNS) == 0) {
        return;
    }
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        Fail(
            "this system gives no mount namespace to this user (start kkm run as root, or allow "
            "user namespaces)");
    }
    WriteFile("/proc/self/setgroups", "deny");
    WriteFile("/proc/self/uid_map", std::to_string(user) + " " + std::to_string(user) + " 1");
    WriteFile("/proc/self/gid_map", std::to_string(group) + " " + std::to_string(group) + " 1");
}

// A node can be covered only where there is one. Where there is none, /dev becomes a folder of
// links to what it was, which is then found in `folder`, with one more file in it.
void AddNode(const std::string& node, const fs::path& folder) {
    if (mount("/dev", folder.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0 ||
        mount("tmpfs", "/dev", "tmpfs", 0, "mode=755") != 0) {
        Fail("/dev");
    }
    for (const auto& entry : fs::directory_iterator(folder)) {
        fs::create_symlink(entry.path(), fs::path("/dev") / entry.path().filename());
    }
    const int file = open(node.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0) {
        Fail(node);
    }
    close(file);
}

void PutDevice(const std::string& device, const std::string& node, const fs::path& folder) {
    const fs::path real = fs::canonical(device);
    // What is mounted from here on is for this program alone.
    // In a changed root only /dev may be a place where something is mounted.
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 &&
        mount(nullptr, "/dev", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        Fail("this system gives no private mount namespace");
    }
    // The device is held by a file of this process: /dev may be covered in between.
    const int held = open(real.c_str(), O_PATH | O_CLOEXEC);
    if (held < 0) {
        Fail(device);
    }
    struct stat present {};
    if (stat(node.c_str(), &present) != 0) {
        AddNode(node, folder);
    }
    const std::string source = "/proc/self/fd/" + std::to_string(held);
    if (mount(source.c_str(), node.c_str(), nullptr, MS_BIND, nullptr) != 0) {
        Fail(node);
    }
    close(held);
}

[[noreturn]] void Start(const RunOptions& options, const fs::path& folder, Streams& streams) {
    try {
        EnterNamespace();
        PutDevice(options.device, Address{"", options.port}.Device(), folder);
        if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) {
            Fail(options.directory);
        }
    } catch (const std::exception& e) {
        streams.err << "kkm: " << e.what() << std::endl;
        _exit(static_cast<int>(ExitStatus::not_started));
    }
    std::vector<char*> arguments;
    std::vector<std::string> texts = options.host;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    std::signal(SIGPIPE, SIG_DFL);  // kkm itself ignores it
    execvp(arguments[0], arguments.data());
    const int error = errno;
    streams.err << "kkm: " << texts[0] << ": " << std::generic_category().message(error)
                << std::endl;
    _exit(error == ENOENT ? kNoSuchProgram : kCannotRun);
}

// A place to mount on, for as long as the program runs.
class MountFolder {
  public:
    MountFolder() : path_((fs::temp_directory_path() / "kkm-dev-XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr) {
            Fail(path_);
        }
    }
    ~MountFolder() { rmdir(path_.c_str()); }
    MountFolder(const MountFolder&) = delete;
    MountFolder& operator=(const MountFolder&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

volatile pid_t host_process = 0;

void PassOn(int signal) {
    if (host_process > 0) {
        kill(host_process, signal);
    }
}

}  // namespace

int RunHost(const RunOptions& options, Streams& streams) {
    struct stat device {};
    if (stat(options.device.c_str(), &device) != 0) {
        streams.err << "kkm: " << options.device << ": " << std::generic_category().message(errno)
                    << std::endl;
        return static_cast<int>(ExitStatus::not_started);
    }
    const MountFolder folder;
    const pid_t child = fork();
    if (child < 0) {
        Fail("no room for another process");
    }
    if (child == 0) {
        Start(options, folder.path(), streams);
    }
    host_process = child;
    // The keyboard's signals reach the program by themselves.
    for (const int signal : {SIGINT, SIGQUIT}) {
        std::signal(signal, SIG_IGN);
    }
    for (const int signal : {SIGTERM, SIGHUP, SIGUSR1, SIGUSR2}) {
        std::signal(signal, PassOn);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace kkm
