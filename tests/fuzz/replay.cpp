// Runs a target without libFuzzer: the checked-in inputs, then as many random ones as asked for,
// always the same.
//
//   replay [--random N] [--must-find] [FILE or FOLDER]...
//
// An input that violates something is written to NAME.finding in the working folder, NAME being
// that of this program. With --must-find the target bears a planted fault: the run is good when it
// is found, bad when not.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "fuzz/oracle.h"
#include "support/payload.h"

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// Of the sanitizers' runtime, where there is one: what to do before they end the process.
__attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());
}

namespace {

constexpr unsigned kSeed = 20240229;

bool must_find = false;
std::string finding_file;
Bytes current;
std::size_t runs = 0;

// The process is lost anyway: an unsafe call in a handler can make it no worse.
void KeepFinding() {
    if (must_find) {
        std::printf("the planted fault was found by input %zu\n", runs);
        std::fflush(stdout);
        std::_Exit(EXIT_SUCCESS);
    }
    if (std::FILE* file = std::fopen(finding_file.c_str(), "wb")) {
        std::fwrite(current.data(), 1, current.size(), file);
        std::fclose(file);
    }
    std::fprintf(stderr, "input %zu crashed; it is kept in %s\n", runs, finding_file.c_str());
}

void OnCrash(int signal) {
    KeepFinding();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void Run(Bytes input) {
    ++runs;
    current = std::move(input);
    LLVMFuzzerTestOneInput(current.data(), current.size());
}

void RunFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    Run({std::istreambuf_iterator<char>(file), {}});
}

std::size_t RunPath(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) {
        RunFile(path);
        return 1;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        RunFile(file);
    }
    return files.size();
}

// Half of the inputs are random all over; the others have stretches of zeros, which choose the
// obliging answers, so that some get far.
void RunRandom(unsigned long count) {
    std::mt19937 random(kSeed);
    for (unsigned long i = 0; i < count; ++i) {
        Bytes input(random() % 300);
        const bool stretches = random() % 2 == 0;
        bool zeros = false;
        for (unsigned char& byte : input) {
            if (stretches && random() % 16 == 0) {
                zeros = !zeros;
            }
            byte = zeros ? 0 : static_cast<unsigned char>(random());
        }
        Run(std::move(input));
    }
}

}  // namespace

int main(int argc, char** argv) {
    finding_file = std::filesystem::path(argv[0]).filename().string() + ".finding";
    unsigned long random_count = 0;
    std::vector<std::string> paths;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--must-find") == 0) {
            must_find = true;
        } else if (std::strcmp(argv[i], "--random") == 0 && i + 1 < argc) {
            random_count = std::strtoul(argv[++i], nullptr, 10);
        } else {
            paths.emplace_back(argv[i]);
        }
    }
    for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGILL, SIGBUS}) {
        std::signal(signal, OnCrash);
    }
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(KeepFinding);
    }
    for (const std::string& path : paths) {
        if (RunPath(path) == 0) {
            std::fprintf(stderr, "%s: no inputs\n", path.c_str());
            return EXIT_FAILURE;
        }
    }
    RunRandom(random_count);
    std::printf("%zu inputs, digest %016llx\n", runs,
                static_cast<unsigned long long>(fuzz::digest));
    return must_find ? EXIT_FAILURE : EXIT_SUCCESS;
}
