#include "system/host.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace test {

namespace {

constexpr auto kLibrary = VESK_LIBRARY;

[[noreturn]] void GiveUp(const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    std::abort();
}

}  // namespace

// The members are looked up behind the handle, in the order in which they are declared.
Library::Library() : handle_(dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL)) {}

Library::~Library() {
    dlclose(handle_);
}

void* Library::Lookup(const char* symbol) const {
    return dlsym(handle_, symbol);
}

void* Library::Find(const char* symbol) const {
    if (handle_ == nullptr) {
        GiveUp(std::string("cannot load ") + kLibrary + ": " + dlerror());
    }
    void* const address = Lookup(symbol);
    if (address == nullptr) {
        GiveUp(dlerror());
    }
    return address;
}

bool LibraryIsLoaded() {
    void* const handle = dlopen(kLibrary, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

WorkingFolder::WorkingFolder() : left_(std::filesystem::current_path()) {
    const bool shared_memory = access("/dev/shm", W_OK) == 0;
    path_ = shared_memory ? "/dev/shm" : std::filesystem::temp_directory_path().string();
    path_ += "/vesk-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
        GiveUp("cannot make " + path_);
    }
    std::filesystem::current_path(path_);
}

WorkingFolder::~WorkingFolder() {
    std::filesystem::current_path(left_);
    std::filesystem::remove_all(path_);
}

std::string WorkingFolder::Read(const std::string& file) const {
    std::ostringstream text;
    text << std::ifstream(Path(file), std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace test
