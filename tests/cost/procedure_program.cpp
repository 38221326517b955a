// Prints checks at a register in this process, in virtual time, and tells for each how long the
// driver waited and what it exchanged:
//
//   procedure_program FIRMWARE LINES
//
//   check first=1 waited_ms=4400 sent_at_ms=10,30,... exchanges=20:5:12,0A:5:16,...
//
// The first check has to ask for the section, the second has not. Then the same for a check whose
// line the register refuses.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "cost/local_register.h"

namespace {

char goods[] = "Moloko Otbornoe 3.2%";

void Require(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(std::string(what) + " failed with code " +
                                 std::to_string(GetErrorCode()));
    }
}

// Records each exchange by its command, its bytes and those of its answer.
class RecordingRegister : public cost::LocalRegister {
  public:
    using LocalRegister::LocalRegister;

    void Take(const unsigned char* bytes, std::size_t count, std::int64_t now_us) override {
        LocalRegister::Take(bytes, count, now_us);
        char one[32];
        std::snprintf(one, sizeof one, "%s%02X:%zu:%zu", record.empty() ? "" : ",", bytes[3], count,
                      pending_.size());
        record += one;
        std::snprintf(one, sizeof one, "%s%g", times.empty() ? "" : ",",
                      static_cast<double>(now_us - begin_us) / 1e3);
        times += one;
    }

    void Begin() {
        record.clear();
        times.clear();
        begin_us = cost::NowUs();
    }

    std::string record;
    std::string times;  // of the requests
    std::int64_t begin_us = 0;
};

void PrintCheckOf(int lines) {
    for (int i = 0; i < lines; ++i) {
        Require(cbAddSale(goods, 49.90, 2, 2) == 1, "cbAddSale");
    }
    cbSetCash(5000);
    Require(CheckClose() == 1, "CheckClose");
    Require(PrintCheck() == 1, "PrintCheck");
}

void PrintInVain(int /*lines*/) {
    Require(cbAddSale(goods, 99999.99, 65535, 2) == 1, "cbAddSale");
    Require(CheckClose() == 1, "CheckClose");
    Require(PrintCheck() == 0 && GetErrorCode() == echPrice, "the refusal");
    cbClearSales();
}

void Report(RecordingRegister& kkm, const char* what, bool first, int lines, void (*print)(int)) {
    kkm.AskForCheck();
    kkm.Begin();
    print(lines);
    std::printf("%s first=%d waited_ms=%g sent_at_ms=%s exchanges=%s\n", what, first ? 1 : 0,
                static_cast<double>(cost::NowUs() - kkm.begin_us) / 1e3, kkm.times.c_str(),
                kkm.record.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s FIRMWARE LINES\n", argv[0]);
        return 2;
    }
    try {
        RecordingRegister kkm(std::atoi(argv[1]));
        const int lines = std::atoi(argv[2]);
        cost::Use(&kkm);
        std::string path = cost::kPath;
        Require(ConnectKKMDevice(path.data()) == 1, "ConnectKKMDevice");
        Report(kkm, "check", true, lines, PrintCheckOf);
        Report(kkm, "check", false, lines, PrintCheckOf);
        if (std::atoi(argv[1]) > 301) {  // the oldest is cleared by keys, until it shows so
            Report(kkm, "refused_line", false, lines, PrintInVain);
        }
        DisconnectKKM();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
