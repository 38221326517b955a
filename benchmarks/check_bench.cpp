// A whole check over a tty at 57600 baud: its time beside what has to be waited for, and its
// exchanges.
//
//   check_bench FIRMWARE LINES TIMES
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "measured.h"
#include "register_on_tty.h"
#include "required_time.h"

namespace {

constexpr int kBaud = 57600;

void Require(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(std::string(what) + " failed with code " +
                                 std::to_string(GetErrorCode()));
    }
}

void PrintOne(int lines) {
    char goods[] = "Moloko Otbornoe 3.2%";
    for (int i = 0; i < lines; ++i) {
        Require(cbAddSale(goods, 49.90, 2, 2) == 1, "cbAddSale");
    }
    cbSetCash(5000);
    Require(CheckClose() == 1, "CheckClose");
    Require(PrintCheck() == 1, "PrintCheck");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s FIRMWARE LINES TIMES\n", argv[0]);
        return 2;
    }
    try {
        const int firmware = std::atoi(argv[1]);
        const int lines = std::atoi(argv[2]);
        const auto kkm = bench::StartRegister(firmware, kBaud);
        std::string tty = kkm->Tty();
        Require(ConnectKKMDevice(tty.data()) == 1, "ConnectKKMDevice");
        bench::Runs runs;
        bench::Samples ratios;
        std::int64_t required_us = 0;
        for (int i = 0; i < std::atoi(argv[3]); ++i) {
            kkm->Say("host");
            bench::Required().Begin(kBaud);
            const double begin = bench::NowUs();
            runs.Time([lines] { PrintOne(lines); });
            const double wall_us = bench::NowUs() - begin;
            required_us = bench::Required().End();
            ratios.Add(wall_us / static_cast<double>(required_us));
        }
        std::printf("word=%zu firmware=%d lines=%d times=%s required=%.3f ratio=%.5f worst=%.5f",
                    sizeof(void*) * 8, firmware, lines, argv[3],
                    static_cast<double>(required_us) / 1e3, ratios.Percentile(50), ratios.Max());
        runs.Print("");
        std::printf(" exchanges=%u", bench::Required().Exchanges());
        const auto& requests = bench::Required().Requests();
        for (std::size_t command = 0; command < requests.size(); ++command) {
            if (requests[command] != 0) {
                std::printf(" 0x%02zX=%u", command, requests[command]);
            }
        }
        std::printf("\n");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
