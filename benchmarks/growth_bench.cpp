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
#include <stdexcept>
#include <string>
#include <utility>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "cost/local_register.h"
#include "interface/vesk.h"
#include "measured.h"
#include "support/trace.h"

namespace {

constexpr int kRepetitions = 15;

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

// Looks at the memory in use whenever it is asked something.
class WatchingRegister : public cost::LocalRegister {
  public:
    using LocalRegister::LocalRegister;

    void Take(const unsigned char* bytes, std::size_t count, std::int64_t now_us) override {
        if (watching) {
            const struct mallinfo2 heap = mallinfo2();
            most_bytes = std::max(most_bytes, heap.uordblks + heap.hblkhd);
        }
        LocalRegister::Take(bytes, count, now_us);
    }

    bool watching = false;
    std::size_t most_bytes = 0;
};

void ReadTotal() {
    double total = 0;
    if (GetNI(&total) != 1) {
        throw std::runtime_error("no total");
    }
}

void ReadCashSum() {
    double sum = 0;
    if (GetCashSum(1, &sum) != 1) {
        throw std::runtime_error("no sum");
    }
}

// The most memory that reading needs above what was in use before, in bytes.
double MemoryFor(WatchingRegister& kkm, void (*read)()) {
    const struct mallinfo2 before = mallinfo2();
    kkm.most_bytes = 0;
    kkm.watching = true;
    read();
    kkm.watching = false;
    const std::size_t used = before.uordblks + before.hblkhd;
    return static_cast<double>(kkm.most_bytes) - static_cast<double>(used);
}

void GrowTape() {
    WatchingRegister kkm(303);
    cost::Use(&kkm);
    char path[] = "/dev/cost";
    if (ConnectKKMDevice(path) != 1) {
        throw std::runtime_error("no connection");
    }
    const int tapes[] = {1, 10, 100, 1000, 10000, 65535};
    // Memory first: what a run keeps would make room for the next one.
    for (const int records : tapes) {
        kkm.FillTape(records);
        for (const auto& [curve, read] :
             {std::pair{"bytes_for_total", ReadTotal}, {"bytes_for_cash_sum", ReadCashSum}}) {
            std::printf("word=%zu curve=%s size=%d bytes=%.0f\n", sizeof(void*) * 8, curve, records,
                        MemoryFor(kkm, read));
        }
    }
    for (const int records : tapes) {
        kkm.FillTape(records);
        Report("total", records, Best([] {}, ReadTotal));
        Report("cash_sum", records, Best([] {}, ReadCashSum));
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
