#include "simulation/trace_files.h"

#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace simulation {
namespace {

namespace fs = std::filesystem;

constexpr auto kTraceFile = "VeskTarvoM5.log";

// Made once in a process and removed at its end.
class Directories {
  public:
    Directories() {
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
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
    Directories(const Directories&) = delete;
    Directories& operator=(const Directories&) = delete;

    fs::path operator[](const char* name) const { return root_ / name; }

  private:
    fs::path root_;
};

}  // namespace

TraceFiles::TraceFiles(const FaultPlan& plan) {
    const bool full = plan.Has(FaultKind::trace_disk_full);
    if (!full && !plan.Has(FaultKind::trace_unwritable)) {
        return;
    }
    static const Directories directories;
    before_ = fs::current_path().string();
    fs::current_path(directories[full ? "full" : "unwritable"]);
}

TraceFiles::~TraceFiles() {
    if (!before_.empty()) {
        std::error_code ignored;
        fs::current_path(before_, ignored);
    }
}

}  // namespace simulation
