// How long it takes to be told of a failure, beside the limits that must be kept.
//
//   failing_bench TIMES
#include <fcntl.h>
#include <stdlib.h>
#include <sys/select.h>
#include <sys/uio.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "measured.h"
#include "protocol/tarvo.h"
#include "register_on_tty.h"
#include "required_time.h"

namespace {

constexpr int kBaud = 57600;
// The answer to a statistics request.
const Bytes kAnswer{0x00, 0x0E, 0x01, 0x8A, 0, 1, 0, 7, 0, 40, 0, 0, 0, 0, 0, 0xBB};

// The far end of a tty that sends the first bytes of an answer to whatever it is asked, and then
// falls silent.
class BrokenRegister {
  public:
    BrokenRegister() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        char name[64];
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
            ptsname_r(master_, name, sizeof name) != 0) {
            throw std::runtime_error("no pseudo terminal");
        }
        tty_ = name;
        termios settings{};
        tcgetattr(master_, &settings);
        cfmakeraw(&settings);
        tcsetattr(master_, TCSANOW, &settings);
        kept_open_ = open(name, O_RDWR | O_NOCTTY);
        server_ = std::thread([this] { Serve(); });
    }
    ~BrokenRegister() {
        end_ = true;
        server_.join();
        close(kept_open_);
        close(master_);
    }
    BrokenRegister(const BrokenRegister&) = delete;
    BrokenRegister& operator=(const BrokenRegister&) = delete;

    const std::string& Tty() const { return tty_; }
    void SendOnly(std::size_t bytes) { bytes_ = bytes; }

  private:
    void Serve() {
        while (!end_) {
            // Not poll: the benchmark counts the waits of the driver by that name.
            fd_set input;
            FD_ZERO(&input);
            FD_SET(master_, &input);
            timeval patience{0, 20'000};
            unsigned char request[256];
            if (select(master_ + 1, &input, nullptr, nullptr, &patience) == 1 &&
                read(master_, request, sizeof request) > 0 && bytes_ > 0) {
                // Not write: that is where the benchmark counts the driver's requests.
                const iovec answer{const_cast<unsigned char*>(kAnswer.data()), bytes_};
                const ssize_t sent = writev(master_, &answer, 1);
                static_cast<void>(sent);
            }
        }
    }

    int master_;
    int kept_open_ = -1;
    std::string tty_;
    std::atomic<std::size_t> bytes_{0};
    std::atomic<bool> end_{false};
    std::thread server_;
};

// `must_ms` is what the limits of an exchange add up to: 10 ms before the request, 10 ms behind it,
// 400 ms for the first byte, 100 ms for each further one.
template <typename Action>
void Report(const char* name, double must_ms, int times, Action action) {
    bench::Runs runs;
    for (int i = 0; i < times; ++i) {
        runs.Time(action);
    }
    std::printf("word=%zu failure=%s must=%.3f times=%d ratio=%.5f", sizeof(void*) * 8, name,
                must_ms, times, runs.Wall().Percentile(50) / 1e3 / must_ms);
    runs.Print("");
    std::printf("\n");
    std::fflush(stdout);
}

void BrokenLines(int times) {
    constexpr double kPausesMs = 20;
    BrokenRegister far_end;
    CMiniCom port;
    port.OpenDevice(far_end.Tty());
    CTarvo kkm(&port);
    kkm.InitCom(baud_57600);
    const auto ask_in_vain = [&] {
        TStatistics statistics;
        try {
            kkm.GetStatistics(statistics);
        } catch (const EMiniCom&) {
            return;
        }
        throw std::runtime_error("no time-out");
    };
    Report("silent", kPausesMs + 400, times, ask_in_vain);
    far_end.SendOnly(1);
    Report("stops_at_byte_1", kPausesMs + 100, times, ask_in_vain);
    far_end.SendOnly(2);  // the body of 14 bytes has a first byte of its own
    Report("stops_at_byte_2", kPausesMs + 100 * 14 + 200, times, ask_in_vain);
    far_end.SendOnly(3);
    Report("stops_at_byte_3", kPausesMs + 100, times, ask_in_vain);
    far_end.SendOnly(15);
    Report("stops_at_byte_15", kPausesMs + 100, times, ask_in_vain);
}

// A line whose sum no register can hold: the check is cancelled at the register, then reported.
void RefusedLine(int times) {
    const auto kkm = bench::StartRegister(303, kBaud);
    std::string tty = kkm->Tty();
    char goods[] = "Moloko Otbornoe 3.2%";
    if (ConnectKKMDevice(tty.data()) != 1) {
        throw std::runtime_error("no connection");
    }
    bench::Runs runs;
    bench::Samples must_ms;
    bench::Samples ratios;
    for (int i = 0; i < times; ++i) {
        kkm->Say("host");
        cbClearSales();
        bench::Required().Begin(kBaud);
        const double begin = bench::NowUs();
        runs.Time([&] {
            if (cbAddSale(goods, 99999.99, 65535, 2) != 1 || CheckClose() != 1 ||
                PrintCheck() != 0 || GetErrorCode() != echPrice) {
                throw std::runtime_error("the line was not refused");
            }
        });
        const double wall_us = bench::NowUs() - begin;
        const auto required_us = static_cast<double>(bench::Required().End());
        must_ms.Add(required_us / 1e3);
        ratios.Add(wall_us / required_us);
    }
    std::printf("word=%zu failure=line_refused must=%.3f times=%d ratio=%.5f", sizeof(void*) * 8,
                must_ms.Percentile(50), times, ratios.Percentile(50));
    runs.Print("");
    std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s TIMES\n", argv[0]);
        return 2;
    }
    try {
        BrokenLines(std::atoi(argv[1]));
        RefusedLine(std::atoi(argv[1]));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
