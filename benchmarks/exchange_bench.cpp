// One exchange over a tty, and beside it the null run: the same waits, the same calls and the same
// bytes on the same tty without a driver.
//
//   exchange_bench BAUD TIMES EXCHANGE
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "interface/vesk.h"
#include "measured.h"
#include "register_on_tty.h"

namespace {

constexpr int kFirmware = 303;
constexpr double kPauseMs = 10;
constexpr int kWarmUps = 5;
constexpr int kLinesAtMost = 100;  // of an open check

const sale& GoodsLine() {
    static const sale line = [] {
        sale goods;
        goods.title = "Moloko Otbornoe 3.2%";
        goods.barcode = "1234567890123";
        goods.code = 1;
        goods.section = 2;
        goods.price = 4990;
        goods.count = 2;
        return goods;
    }();
    return line;
}

struct Exchange {
    const char* name;
    Bytes request;  // without its frame: command, then payload
    void (*run)();
    void (*prepare)();
};

status_info status;
TStatistics statistics;

void StayIdle() {
    kvesk.ClearCheck();
    kvesk.resetStatus();
}

// A state whose 12 bytes are followed by the number of a card.
void ShowCard() {
    StayIdle();
    kvesk.sendSaleInfo(GoodsLine());
    kvesk.sendDiscountCard(1, "123456789012345678901");
}

Bytes SaleRequest() {
    Bytes request = MakeSaleBlock(SaleFieldsOf(GoodsLine()));
    request.insert(request.begin(), dev_salecode);
    return request;
}

const std::vector<Exchange>& Exchanges() {
    static const std::vector<Exchange> all{
        {"reset", {dev_reset}, [] { kvesk.resetStatus(); }, StayIdle},
        {"statistics", {kkm_statistics}, [] { kvesk.GetStatistics(statistics); }, StayIdle},
        {"status_33", {dev_reque}, [] { kvesk.GetStatusInfo(status); }, ShowCard},
        {"sale", SaleRequest(), [] { kvesk.sendSaleInfo(GoodsLine()); }, StayIdle},
        {"largest", {kkm_readeprom, 0, 0, 197}, [] { kvesk.readEprom(0, 197); }, StayIdle},
    };
    return all;
}

Bytes Framed(const Bytes& request) {
    Bytes payload(request.begin() + 1, request.end());
    CTarvo framer;
    framer.MakePacket(static_cast<kkm_command>(request[0]), payload);
    return payload;
}

void Wait(int tty, int ms) {
    pollfd event{tty, POLLIN, 0};
    if (poll(&event, 1, ms) != 1) {
        throw std::runtime_error("the register is silent in the null run");
    }
}

void ReadBytes(int tty, unsigned char* to, unsigned count) {
    Wait(tty, static_cast<int>(100 * count + 200));
    for (unsigned i = 0; i < count; ++i) {
        Wait(tty, 100);
        if (read(tty, to + i, 1) != 1) {
            throw std::runtime_error("no byte in the null run");
        }
    }
}

// Number of bytes of the answer.
unsigned NullRun(int tty, const Bytes& frame) {
    unsigned char answer[256];
    usleep(10000);
    tcflush(tty, TCIOFLUSH);
    if (write(tty, frame.data(), frame.size()) != static_cast<ssize_t>(frame.size())) {
        throw std::runtime_error("the null run cannot write");
    }
    usleep(10000);
    ReadBytes(tty, answer, 2);
    ReadBytes(tty, answer + 2, answer[1]);
    return 2U + answer[1];
}

void Measure(const Exchange& exchange, int tty, int baud, int times) {
    const Bytes frame = Framed(exchange.request);
    bench::Runs driver;
    bench::Runs null;
    unsigned answer = 0;
    for (int i = -kWarmUps; i < times; ++i) {
        if ((i + kWarmUps) % (kLinesAtMost / 2) == 0) {
            exchange.prepare();
        }
        if (i < 0) {
            exchange.run();
            answer = NullRun(tty, frame);
            continue;
        }
        driver.Time(exchange.run);
        null.Time([&] { answer = NullRun(tty, frame); });
    }
    const auto bytes = static_cast<double>(frame.size() + answer);
    const double wire_ms = bytes * (10 * 1000000 / baud) / 1e3;  // whole microseconds a byte
    const double floor_ms = kPauseMs + std::max(kPauseMs, wire_ms);
    std::printf("word=%zu baud=%d exchange=%s request=%zu answer=%u times=%d floor=%.3f",
                sizeof(void*) * 8, baud, exchange.name, frame.size(), answer, times, floor_ms);
    driver.Print("");
    null.Print("null_");
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s BAUD TIMES EXCHANGE\n", argv[0]);
        return 2;
    }
    try {
        const int baud = std::atoi(argv[1]);
        const auto kkm = bench::StartRegister(kFirmware, baud);
        kvesk.ConnectDevice(kkm->Tty());
        const int tty = open(kkm->Tty().c_str(), O_RDWR | O_NOCTTY);
        for (const Exchange& exchange : Exchanges()) {
            if (std::strcmp(exchange.name, argv[3]) == 0) {
                Measure(exchange, tty, baud, std::atoi(argv[2]));
            }
        }
        close(tty);
        return 0;
    } catch (const ETarvoVesk& error) {
        std::fprintf(stderr, "the driver failed with code %d\n", error.getCode());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
