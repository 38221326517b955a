// The same payload, read by a Modbus RTU master from a slave in this process.
//
//   modbus_peer           heap allocations of one exchange; run by callgrind, its instructions
//   modbus_peer --time    and processor time, with that of the driver's exchange beside it
#include <modbus/modbus.h>
#include <sys/select.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "cost/heap_count.h"
#include "cost/line_calls.h"
#include "measured.h"
#include "protocol/tarvo.h"

namespace {

constexpr int kWarmUps = 2;
constexpr int kTimes = 5;

std::uint16_t Crc(const std::vector<unsigned char>& bytes) {
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

// Gives the same answer to whatever it is asked.
class Slave : public cost::Answerer {
  public:
    void Take(const unsigned char* /*bytes*/, std::size_t /*count*/,
              std::int64_t /*now*/) override {
        next_ = 0;
    }
    bool HasByte() override { return next_ < answer.size(); }
    unsigned char NextByte() override { return answer[next_++]; }
    void Forget() override { next_ = answer.size(); }

    void AnswerOfRegisters(unsigned registers) {
        answer = {1, 3, static_cast<unsigned char>(2 * registers)};
        answer.resize(3 + 2 * registers);
        const std::uint16_t crc = Crc(answer);
        answer.push_back(static_cast<unsigned char>(crc));
        answer.push_back(static_cast<unsigned char>(crc >> 8U));
    }

    std::vector<unsigned char> answer;

  private:
    std::size_t next_ = 0;
};

Slave slave;
modbus_t* master = nullptr;
std::uint16_t registers[128];

}  // namespace

extern "C" [[gnu::noinline]] int outside_select() {
    return slave.HasByte() ? 1 : 0;
}

extern "C" int select(int /*count*/, fd_set* /*in*/, fd_set* /*out*/, fd_set* /*err*/,
                      timeval* /*limit*/) {
    return outside_select();
}

// Payloads of 10, 32 and 196 bytes: up to one less than the driver's.
#define PEER(bytes)                                                          \
    extern "C" [[gnu::noinline, gnu::noipa]] int run_modbus_##bytes() {      \
        return modbus_read_registers(master, 0, (bytes) / 2, registers);     \
    }                                                                        \
    extern "C" [[gnu::noinline, gnu::noipa]] int measured_modbus_##bytes() { \
        return run_modbus_##bytes();                                         \
    }

PEER(10)
PEER(32)
PEER(196)

namespace {

// Of the best of some rounds.
template <typename Action>
void ReportTime(const std::string& name, Action action) {
    constexpr int kRounds = 9;
    constexpr int kInARound = 2000;
    double best = 1e30;
    for (int round = 0; round < kRounds; ++round) {
        const double begin = bench::ProcessorUs();
        for (int i = 0; i < kInARound; ++i) {
            action();
        }
        best = std::min(best, (bench::ProcessorUs() - begin) * 1e3 / kInARound);
    }
    std::printf("%s processor_ns %.1f\n", name.c_str(), best);
}

// The driver's exchange with a payload of the size, and the mere reading of its answer.
template <typename Exchange>
void ReportDriver(kkm_command code, std::size_t size, Exchange exchange) {
    Bytes frame(size);
    CTarvo().MakePacket(code, frame);
    slave.answer.assign(frame.begin(), frame.end());
    ReportTime("driver_" + std::to_string(size), exchange);
    CMiniCom port;
    constexpr _COMMTIMEOUTS kTimeouts{100, 100, 200, 5, 5};
    port.OpenDevice(cost::kPath);
    port.SetCommTimeouts(&kTimeouts);
    ReportTime("reading_" + std::to_string(size), [&] {
        unsigned char bytes[256];
        slave.Take(nullptr, 0, 0);
        port.Read(bytes, 2);
        port.Read(bytes, static_cast<unsigned>(frame.size() - 2));
    });
}

void ReportDrivers() {
    CMiniCom port;
    port.OpenDevice(cost::kPath);
    CTarvo kkm(&port);
    kkm.InitCom(baud_57600);
    kkm.setVersion(kkm_ver_303);
    ReportDriver(static_cast<kkm_command>(0x8A), 11, [&] {
        TStatistics statistics;
        kkm.GetStatistics(statistics);
    });
    status_info status;
    ReportDriver(ks_saleadd, 32, [&] { kkm.GetStatusInfo(status); });
    ReportDriver(static_cast<kkm_command>(0x82), 197, [&] { kkm.readEprom(0, 197); });
}

}  // namespace

int main(int argc, char** /*argv*/) {
    struct {
        const char* name;
        int (*run)();
        int (*measured)();
        int registers;
    } const exchanges[] = {{"modbus_10", run_modbus_10, measured_modbus_10, 5},
                           {"modbus_32", run_modbus_32, measured_modbus_32, 16},
                           {"modbus_196", run_modbus_196, measured_modbus_196, 98}};
    cost::Use(&slave);
    master = modbus_new_rtu(cost::kPath, 57600, 'N', 8, 1);
    if (modbus_connect(master) != 0 || modbus_set_slave(master, 1) != 0) {
        std::fprintf(stderr, "no connection: %s\n", modbus_strerror(errno));
        return 1;
    }
    for (const auto& exchange : exchanges) {
        slave.AnswerOfRegisters(static_cast<unsigned>(exchange.registers));
        for (int i = 0; i < kWarmUps; ++i) {
            exchange.run();
        }
        cost::allocations = 0;
        for (int i = 0; i < kTimes; ++i) {
            cost::counting = true;
            const int got = exchange.measured();
            cost::counting = false;
            if (got != exchange.registers) {
                std::fprintf(stderr, "%s: %s\n", exchange.name, modbus_strerror(errno));
                return 1;
            }
        }
        std::printf("%s allocations %g\n", exchange.name,
                    static_cast<double>(cost::allocations) / kTimes);
        if (argc > 1) {
            ReportTime(exchange.name, exchange.run);
        }
    }
    if (argc > 1) {
        ReportDrivers();
    }
    modbus_close(master);
    modbus_free(master);
    return 0;
}
