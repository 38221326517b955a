// The same payload read over the same tty by the driver and by a Modbus RTU master. The answers
// stand ready: whatever is asked on the tty is answered at once. Pauses take no time.
//
//   modbus_peer           heap allocations of one exchange; run by callgrind, its instructions
//   modbus_peer --time    processor time of this thread, the system's included
#include <fcntl.h>
#include <modbus/modbus.h>
#include <stdlib.h>
#include <sys/select.h>
#include <sys/uio.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "cost/heap_count.h"
#include "cost/line_calls.h"
#include "protocol/tarvo.h"

namespace {

constexpr int kWarmUps = 5;
constexpr int kTimes = 5;

std::uint16_t Crc(const Bytes& bytes) {
    std::uint16_t crc = 0xFFFF;
    for (const unsigned char byte : bytes) {
        crc = static_cast<std::uint16_t>(crc ^ byte);
        for (int bit = 0; bit < 8; ++bit) {
            const bool low = (crc & 1U) != 0;
            crc = static_cast<std::uint16_t>((crc >> 1U) ^ (low ? 0xA001U : 0U));
        }
    }
    return crc;
}

// The far end of a pseudo terminal, a thread of its own. Its calls go by names that are not
// replaced here, for they are no part of what is measured.
class FarEnd {
  public:
    FarEnd() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        char name[64];
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
            ptsname_r(master_, name, sizeof name) != 0) {
            throw std::runtime_error("no pseudo terminal");
        }
        tty = name;
        termios settings{};
        tcgetattr(master_, &settings);
        cfmakeraw(&settings);
        tcsetattr(master_, TCSANOW, &settings);
        kept_open_ = open(name, O_RDWR | O_NOCTTY);
        server_ = std::thread([this] { Serve(); });
    }
    // Everybody else must have closed the tty.
    ~FarEnd() {
        close(kept_open_);
        server_.join();
        close(master_);
    }
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;

    void Answer(Bytes with) {
        const std::lock_guard<std::mutex> lock(busy_);
        answer_ = std::move(with);
    }
    void AnswerRegisters(unsigned registers) {
        Bytes frame{1, 3, static_cast<unsigned char>(2 * registers)};
        frame.resize(3 + 2 * registers);
        const std::uint16_t crc = Crc(frame);
        frame.push_back(static_cast<unsigned char>(crc));
        frame.push_back(static_cast<unsigned char>(crc >> 8U));
        Answer(std::move(frame));
    }
    void AnswerPayload(kkm_command code, std::size_t size) {
        Bytes frame(size);
        CTarvo().MakePacket(code, frame);
        Answer(std::move(frame));
    }
    // Without having been asked.
    void Send() {
        const std::lock_guard<std::mutex> lock(busy_);
        const iovec out{answer_.data(), answer_.size()};
        if (writev(master_, &out, 1) != static_cast<ssize_t>(answer_.size())) {
            throw std::runtime_error("the tty takes no answer");
        }
    }

    std::string tty;

  private:
    void Serve() {
        unsigned char request[256];
        const iovec in{request, sizeof request};
        while (readv(master_, &in, 1) > 0) {
            Send();
        }
    }

    int master_;
    int kept_open_ = -1;
    std::thread server_;
    std::mutex busy_;
    Bytes answer_;
};

FarEnd* far_end = nullptr;
modbus_t* master = nullptr;
CMiniCom port;
CTarvo kkm(&port);
std::uint16_t registers[128];
status_info status;

double ThreadNs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

void Require(bool good) {
    if (!good) {
        throw std::runtime_error(modbus_strerror(errno));
    }
}

void ModbusOf(int count) {
    Require(modbus_read_registers(master, 0, count, registers) == count);
}
void Statistics() {
    TStatistics statistics;
    kkm.GetStatistics(statistics);
}
void Status() {
    kkm.GetStatusInfo(status);
}
void Eeprom() {
    kkm.readEprom(0, 197);
}
// Nothing but the bytes of an answer, in two pieces, a poll and a read for each byte.
void ReadOf(unsigned count) {
    unsigned char bytes[256];
    port.Read(bytes, 2);
    port.Read(bytes, count - 2);
}

void Nothing() {}
void Send() {
    far_end->Send();
}

}  // namespace

// The profiler stops counting inside every function of this name.
extern "C" [[gnu::noinline]] int outside_select(int count, fd_set* in, fd_set* out, fd_set* err,
                                                timeval* limit) {
    timespec patience{limit->tv_sec, limit->tv_usec * 1000L};
    return pselect(count, in, out, err, &patience, nullptr);
}

extern "C" int select(int count, fd_set* in, fd_set* out, fd_set* err, timeval* limit) {
    return outside_select(count, in, out, err, limit);
}

// Functions of their own, so that the profiler can find them by name.
#define PEER_FUNCTIONS(name, action)                                  \
    extern "C" [[gnu::noinline, gnu::noipa]] void run_##name() {      \
        action;                                                       \
    }                                                                 \
    extern "C" [[gnu::noinline, gnu::noipa]] void measured_##name() { \
        run_##name();                                                 \
    }

PEER_FUNCTIONS(modbus_10, ModbusOf(5))
PEER_FUNCTIONS(modbus_32, ModbusOf(16))
PEER_FUNCTIONS(modbus_196, ModbusOf(98))
PEER_FUNCTIONS(driver_11, Statistics())
PEER_FUNCTIONS(driver_32, Status())
PEER_FUNCTIONS(driver_197, Eeprom())
PEER_FUNCTIONS(reading_11, ReadOf(16))
PEER_FUNCTIONS(reading_32, ReadOf(37))
PEER_FUNCTIONS(reading_197, ReadOf(202))

namespace {

struct Subject {
    const char* name;
    void (*prepare)();
    void (*run)();
    void (*measured)();
};

// The median of many.
void ReportTime(const Subject& subject) {
    constexpr int kRuns = 2001;
    std::vector<double> times;
    for (int i = 0; i < kRuns; ++i) {
        subject.prepare();
        const double begin = ThreadNs();
        subject.run();
        times.push_back(ThreadNs() - begin);
    }
    std::nth_element(times.begin(), times.begin() + kRuns / 2, times.end());
    std::printf("%s processor_ns %.0f\n", subject.name, times[kRuns / 2]);
}

void ReportAllocations(const Subject& subject) {
    cost::allocations = 0;
    for (int i = 0; i < kTimes; ++i) {
        subject.prepare();
        cost::counting = true;
        subject.measured();
        cost::counting = false;
    }
    std::printf("%s allocations %g\n", subject.name,
                static_cast<double>(cost::allocations) / kTimes);
}

void Report(const Subject& subject, bool timed) {
    for (int i = 0; i < kWarmUps; ++i) {
        subject.prepare();
        subject.run();
    }
    ReportAllocations(subject);
    if (timed) {
        ReportTime(subject);
    }
}

#define SUBJECT(name, prepare) \
    { #name, prepare, run_##name, measured_##name }

void ReportPeer(bool timed) {
    master = modbus_new_rtu(far_end->tty.c_str(), 57600, 'N', 8, 1);
    Require(modbus_connect(master) == 0 && modbus_set_slave(master, 1) == 0);
    far_end->AnswerRegisters(5);
    Report(SUBJECT(modbus_10, Nothing), timed);
    far_end->AnswerRegisters(16);
    Report(SUBJECT(modbus_32, Nothing), timed);
    far_end->AnswerRegisters(98);
    Report(SUBJECT(modbus_196, Nothing), timed);
    modbus_close(master);
    modbus_free(master);
}

void ReportDriver(bool timed) {
    port.OpenDevice(far_end->tty);
    kkm.InitCom(baud_57600);
    kkm.setVersion(kkm_ver_303);
    far_end->AnswerPayload(static_cast<kkm_command>(0x8A), 11);
    Report(SUBJECT(driver_11, Nothing), timed);
    Report(SUBJECT(reading_11, Send), timed);
    far_end->AnswerPayload(ks_saleadd, 32);
    Report(SUBJECT(driver_32, Nothing), timed);
    Report(SUBJECT(reading_32, Send), timed);
    far_end->AnswerPayload(static_cast<kkm_command>(0x82), 197);
    Report(SUBJECT(driver_197, Nothing), timed);
    Report(SUBJECT(reading_197, Send), timed);
    port.Close();
}

}  // namespace

int main(int argc, char** /*argv*/) {
    try {
        FarEnd other_side;
        far_end = &other_side;
        cost::Use(nullptr);  // all calls go to the system
        ReportPeer(argc > 1);
        ReportDriver(argc > 1);
        return 0;
    } catch (const EMiniCom&) {
        std::fprintf(stderr, "the driver heard no answer\n");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
