// How time grows: the check buffer with its lines, a reading of the tape with its records, the
// trace file with its length. The tape is that of a register in this process, whose line takes no
// time.
//
//   growth_bench            in a folder where a file of 1 GB may lie (it has holes)
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "cost/heap_count.h"
#include "cost/local_register.h"
#include "interface/vesk.h"
#include "measured.h"
#include "support/trace.h"

namespace {

constexpr int kRepetitions = 7;

double clock_us = 0;  // what a look at the clock takes, which is part of every run

void Report(const char* curve, double size, double us) {
    std::printf("word=%zu curve=%s size=%.0f us=%.4f\n", sizeof(void*) * 8, curve, size, us);
}

// The best of some runs: what disturbs a run makes it longer only.
template <typename Prepare, typename Action>
double Best(Prepare prepare, Action action) {
    double best = 1e30;
    for (int i = 0; i < kRepetitions; ++i) {
        prepare();
        const double begin = bench::ProcessorUs();
        action();
        best = std::min(best, bench::ProcessorUs() - begin);
    }
    return std::max(best - clock_us, 0.01);
}

void Fill(int lines) {
    char goods[] = "Moloko Otbornoe 3.2%";
    cbClearSales();
    for (int i = 0; i < lines; ++i) {
        if (cbAddSale(goods, 49.90, 2, 2) != 1) {
            throw std::runtime_error("the buffer is full");
        }
    }
}

void GrowBuffer() {
    kvesk.setVersion(kkm_ver_400);  // without a limit of its own
    for (const int lines : {1, 3, 10, 30, 100, 300, 1000, 3000, 10000}) {
        const auto fill = [lines] { Fill(lines); };
        Report("fill", lines, Best([] {}, fill));
        Report("sum", lines, Best(fill, [] { cbGetSum(); }));
        Report("delete_first", lines, Best(fill, [] { cbDeleteSale(1); }));
        Report("clear", lines, Best(fill, [] { cbClearSales(); }));
    }
    cbClearSales();
}

// The most memory that this process ever had, in kilobytes.
long PeakKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::strtol(line.c_str() + 6, nullptr, 10);
        }
    }
    throw std::runtime_error("this system does not tell the memory of a process");
}

void GrowTape() {
    cost::LocalRegister kkm(303);
    cost::Use(&kkm);
    char path[] = "/dev/cost";
    if (ConnectKKMDevice(path) != 1) {
        throw std::runtime_error("no connection");
    }
    for (const int records : {1, 10, 100, 1000, 10000, 65535}) {
        kkm.FillTape(records);
        double total = 0;
        const long before = PeakKb();
        const double us = Best([] {},
                               [&] {
                                   if (GetNI(&total) != 1) {
                                       throw std::runtime_error("no total");
                                   }
                               });
        Report("total", records, us);
        Report("cash_sum", records,
               Best([] {},
                    [&] {
                        if (GetCashSum(1, &total) != 1) {
                            throw std::runtime_error("no sum");
                        }
                    }));
        Report("kb_for_reading", records, static_cast<double>(PeakKb() - before));
    }
    cost::Use(nullptr);
}

void GrowTrace() {
    const char* const file = "growth.log";
    const std::string text = "Info: TrySendSale SaleNumberBefore = 3\n";
    for (const long size : {0L, 1000L, 1000000L, 10000000L, 100000000L, 1000000000L}) {
        const auto make = [&] {
            TraceLogFile(file, text);
            if (truncate(file, size) != 0) {
                throw std::runtime_error("no file of such a size here");
            }
            TraceLogFile(file, text);
        };
        double best = 1e30;
        for (int i = 0; i < 10; ++i) {
            best = std::min(best, Best(make, [&] { TraceLogFile(file, text); }));
        }
        Report("trace", static_cast<double>(size), best);
    }
    unlink(file);
}

}  // namespace

int main() {
    // Memory stays with the process, or the kernel's clearing of it would bend the curves.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    clock_us = Best([] {}, [] {});
    try {
        GrowBuffer();
        GrowTape();
        GrowTrace();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
