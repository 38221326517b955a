// Real files for the tests that need them.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace test {

// A fresh directory that is the working directory while the object lives; gone behind it.
class TempDirectory {
  public:
    TempDirectory() : before_(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "vesk-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = name;
        std::filesystem::current_path(path_);
    }
    ~TempDirectory() {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(path_);
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    std::string Path(const std::string& name) const { return (path_ / name).string(); }
    bool Has(const std::string& name) const { return std::filesystem::exists(path_ / name); }
    bool IsEmpty() const { return std::filesystem::is_empty(path_); }
    std::string Content(const std::string& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};

}  // namespace test
