// Loading and unloading of the library, in a program that has the C++ library already, and beside
// it those of a library with nothing in it.
//
//   load_bench LIBRARY EMPTY_LIBRARY TIMES
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "measured.h"

namespace {

struct Memory {
    long private_kb = 0;
    long dirty_kb = 0;
    long mapped_kb = 0;
};

// Of all mappings whose line contains the text.
Memory MemoryOf(const std::string& text) {
    Memory memory;
    std::ifstream maps("/proc/self/smaps");
    bool wanted = false;
    for (std::string line; std::getline(maps, line);) {
        long kb = 0;
        char name[64] = "";
        if (std::sscanf(line.c_str(), "%60[A-Za-z_]: %ld kB", name, &kb) != 2) {
            if (line.find('-') != std::string::npos && line.find(':') > 16) {
                wanted = line.find(text) != std::string::npos;
            }
            continue;
        }
        const std::string what = name;
        if (wanted && (what == "Private_Clean" || what == "Private_Dirty")) {
            memory.private_kb += kb;
        }
        if (wanted && what == "Private_Dirty") {
            memory.dirty_kb += kb;
        }
        if (wanted && what == "Size") {
            memory.mapped_kb += kb;
        }
    }
    return memory;
}

void* Load(const char* library) {
    void* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    return handle;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s LIBRARY EMPTY_LIBRARY TIMES\n", argv[0]);
        return 2;
    }
    const char* const library = argv[1];
    const char* const name = std::strrchr(library, '/') + 1;
    dlclose(Load(library));  // from the disk, perhaps
    dlclose(Load(argv[2]));
    bench::Runs load;
    bench::Runs unload;
    bench::Runs null_load;
    bench::Runs null_unload;
    for (int i = 0; i < std::atoi(argv[3]); ++i) {
        void* handle = nullptr;
        load.Time([&] { handle = Load(library); });
        unload.Time([&] { dlclose(handle); });
        null_load.Time([&] { handle = Load(argv[2]); });
        null_unload.Time([&] { dlclose(handle); });
    }
    Load(library);
    const Memory memory = MemoryOf(name);
    std::printf("word=%zu times=%s private=%ld dirty=%ld mapped=%ld", sizeof(void*) * 8, argv[3],
                memory.private_kb, memory.dirty_kb, memory.mapped_kb);
    load.Print("load_");
    unload.Print("unload_");
    null_load.Print("null_load_");
    null_unload.Print("null_unload_");
    std::printf("\n");
    return 0;
}
