#include "simulation/trace_files.h"

#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace simulation {
namespace {

namespace fs = std::filesystem;

constexpr auto kTraceFile = "VeskTarvoM5.log";

// Removed at the end of the process that made them; its children may use them until then.
class Directories {
  public:
    Directories() : owner_(getpid()) {
        std::string pattern = (fs::temp_directory_path() / "simulate-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        root_ = pattern;
        // A directory in the file's place stops even a user who may write everywhere.
        fs::create_directories(root_ / "unwritable" / kTraceFile);
        fs::create_directories(root_ / "full");
        fs::create_symlink("/dev/full", root_ / "full" / kTraceFile);
    }
    ~Directories() {
        if (getpid() == owner_) {
            std::error_code ignored;
            fs::remove_all(root_, ignored);
        }
    }
    Directories(const Directories&) = delete;
    Directories& operator=(const Directories&) = delete;

    fs::path operator[](const char* name) const { return root_ / name; }

    static const Directories& Get() {
        static const Directories directories;
        return directories;
    }

  private:
    pid_t owner_;
    fs::path root_;
};

}  // namespace

void PrepareTraceFiles() {
    Directories::Get();
}

TraceFiles::TraceFiles(const FaultPlan& plan) {
    const bool full = plan.Has(FaultKind::trace_disk_full);
    if (!full && !plan.Has(FaultKind::trace_unwritable)) {
        return;
    }
    before_ = fs::current_path().string();
    fs::current_path(Directories::Get()[full ? "full" : "unwritable"]);
}

TraceFiles::~TraceFiles() {
    if (!before_.empty()) {
        std::error_code ignored;
        fs::current_path(before_, ignored);
    }
}

}  // namespace simulation
