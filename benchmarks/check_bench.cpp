// Whole checks over a tty. For each its time and its exchanges, which whoever called this holds
// against the procedure; then the times of all but the first, which has to ask for the section.
//
//   check_bench FIRMWARE BAUD LINES TIMES [PLANTED_US]
//
// Every pause of the driver is made longer by PLANTED_US: that must be seen in the result.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "line_record.h"
#include "measured.h"
#include "register_on_tty.h"

namespace {

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

void Measure(int firmware, int baud, int lines, int times) {
    const auto kkm = bench::StartRegister(firmware, baud);
    std::string tty = kkm->Tty();
    Require(ConnectKKMDevice(tty.data()) == 1, "ConnectKKMDevice");
    bench::Runs runs;
    for (int i = 0; i <= times; ++i) {
        kkm->Say("host");
        bench::Runs first;
        bench::Line().Begin();
        (i == 0 ? first : runs).Time([lines] { PrintOne(lines); });
        const double wall_ms = (i == 0 ? first : runs).Wall().Last() / 1e3;
        std::printf("run first=%d wall=%.3f exchanges=%s\n", i == 0 ? 1 : 0, wall_ms,
                    bench::Line().Text().c_str());
    }
    std::printf("word=%zu firmware=%d baud=%d lines=%d times=%d", sizeof(void*) * 8, firmware, baud,
                lines, times);
    runs.Print("");
    std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5 && argc != 6) {
        std::fprintf(stderr, "usage: %s FIRMWARE BAUD LINES TIMES [PLANTED_US]\n", argv[0]);
        return 2;
    }
    try {
        if (argc == 6) {
            bench::Line().PlantDelay(static_cast<unsigned>(std::atoi(argv[5])));
        }
        Measure(std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
