// How long it takes to be told of a failure, beside the limits that must be kept. For a refused
// line the exchanges of each run, which whoever called this holds against the procedure.
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
#include "line_record.h"
#include "measured.h"
#include "protocol/tarvo.h"
#include "register_on_tty.h"

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
            fd_set input;
            FD_ZERO(&input);
            FD_SET(master_, &input);
            timeval patience{0, 20'000};
            unsigned char request[256];
            if (select(master_ + 1, &input, nullptr, nullptr, &patience) == 1 &&
                read(master_, request, sizeof request) > 0 && bytes_ > 0) {
                // Not write: that is where the driver's requests are recorded.
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

// The limit of what a register that stops behind so many bytes of the answer makes the driver wait
// for: 400 ms for the first byte; behind the second, which says that 14 more will come,
// 14 x 100 + 200 ms for the next one; 100 ms for every other.
int LimitMs(std::size_t bytes) {
    switch (bytes) {
        case 0:
            return 400;
        case 2:
            return 1600;
        default:
            return 100;
    }
}

void BrokenLines(int times) {
    constexpr int kPausesMs = 20;
    BrokenRegister far_end;
    CMiniCom port;
    port.OpenDevice(far_end.Tty());
    CTarvo kkm(&port);
    kkm.InitCom(baud_57600);
    for (std::size_t bytes = 0; bytes < kAnswer.size(); ++bytes) {
        far_end.SendOnly(bytes);
        bench::Runs runs;
        for (int i = 0; i < times; ++i) {
            runs.Time([&kkm] {
                TStatistics statistics;
                try {
                    kkm.GetStatistics(statistics);
                } catch (const EMiniCom&) {
                    return;
                }
                throw std::runtime_error("no time-out");
            });
        }
        std::printf("word=%zu failure=stops_at_byte_%zu must=%d times=%d", sizeof(void*) * 8, bytes,
                    kPausesMs + LimitMs(bytes), times);
        runs.Print("");
        std::printf("\n");
        std::fflush(stdout);
    }
}

// A line whose sum no register can hold: the check is cancelled at the register, then reported.
// The first time, which has to ask for the section, is not among the times.
void RefusedLine(int times) {
    const auto kkm = bench::StartRegister(303, kBaud);
    std::string tty = kkm->Tty();
    char goods[] = "Moloko Otbornoe 3.2%";
    if (ConnectKKMDevice(tty.data()) != 1) {
        throw std::runtime_error("no connection");
    }
    const auto print_in_vain = [&goods] {
        if (cbAddSale(goods, 99999.99, 65535, 2) != 1 || CheckClose() != 1 || PrintCheck() != 0 ||
            GetErrorCode() != echPrice) {
            throw std::runtime_error("the line was not refused");
        }
    };
    bench::Runs runs;
    for (int i = 0; i <= times; ++i) {
        kkm->Say("host");
        cbClearSales();
        bench::Line().Begin();
        bench::Runs first;
        (i == 0 ? first : runs).Time(print_in_vain);
        std::printf("run first=%d wall=%.3f exchanges=%s\n", i == 0 ? 1 : 0,
                    (i == 0 ? first : runs).Wall().Last() / 1e3, bench::Line().Text().c_str());
    }
    std::printf("word=%zu failure=line_refused times=%d", sizeof(void*) * 8, times);
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
