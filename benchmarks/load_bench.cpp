// Loading and unloading of the library, in a program that has the C++ library already.
//
//   load_bench LIBRARY TIMES
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
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s LIBRARY TIMES\n", argv[0]);
        return 2;
    }
    const char* const library = argv[1];
    const char* const name = std::strrchr(library, '/') + 1;
    bench::Runs load;
    bench::Runs unload;
    for (int i = 0; i < std::atoi(argv[2]); ++i) {
        void* handle = nullptr;
        load.Time([&] { handle = Load(library); });
        unload.Time([&] { dlclose(handle); });
    }
    Load(library);
    const Memory memory = MemoryOf(name);
    std::printf("word=%zu times=%s private=%ld dirty=%ld mapped=%ld", sizeof(void*) * 8, argv[2],
                memory.private_kb, memory.dirty_kb, memory.mapped_kb);
    load.Print("load_");
    unload.Print("unload_");
    std::printf("\n");
    return 0;
}
