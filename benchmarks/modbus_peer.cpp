// The same payload, read by a Modbus RTU master from a slave in this process: heap allocations of
// one exchange. Run by callgrind: its instructions.
#include <modbus/modbus.h>
#include <sys/select.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "cost/heap_count.h"
#include "cost/line_calls.h"

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

class Slave : public cost::Answerer {
  public:
    void Take(const unsigned char* bytes, std::size_t /*count*/, std::int64_t /*now*/) override {
        const unsigned registers = bytes[5];
        answer_ = {bytes[0], bytes[1], static_cast<unsigned char>(2 * registers)};
        answer_.resize(3 + 2 * registers);
        const std::uint16_t crc = Crc(answer_);
        answer_.push_back(static_cast<unsigned char>(crc));
        answer_.push_back(static_cast<unsigned char>(crc >> 8U));
        next_ = 0;
    }
    bool HasByte() override { return next_ < answer_.size(); }
    unsigned char NextByte() override { return answer_[next_++]; }
    void Forget() override { next_ = answer_.size(); }

  private:
    std::vector<unsigned char> answer_;
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

int main() {
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
    }
    modbus_close(master);
    modbus_free(master);
    return 0;
}
