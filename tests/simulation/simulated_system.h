// The operating system of a run: a virtual clock, one device, and a journal of every call.
#pragma once

#include <string>

#include "simulation/simulated_line.h"
#include "support/system.h"

namespace simulation {

constexpr auto kDevice = "/dev/ttyS0";
constexpr auto kDeviceLink = "/dev/serial/by-id/register";

class SimulatedSystem final : public test::System {
  public:
    SimulatedSystem(SimulatedLine& line, Journal& journal, const FaultPlan& plan);
    ~SimulatedSystem() override { test::System::Use(nullptr); }
    SimulatedSystem(const SimulatedSystem&) = delete;
    SimulatedSystem& operator=(const SimulatedSystem&) = delete;

    // A new call of the host begins. It ends a loop that has no bound of its own after so many
    // pauses of the driver, through the driver's stop flag.
    void BeginCall(std::uint32_t patience);
    // Pauses are what a driver without a port still makes, so they count a call's progress.
    std::uint32_t pauses() const { return pauses_; }
    bool ended_by_host() const { return ended_by_host_; }
    bool plug_pulled() const { return plug_pulled_; }
    Micros Now() const { return now_; }
    void Advance(Micros us) { now_ += us; }

    bool Owns(int fd) const override { return fd == kFd; }
    bool OwnsPath(const char* path) const override;
    int Open(const char* path, int flags) override;
    int Close(int fd) override;
    long Read(int fd, void* to, std::size_t count) override;
    long Write(int fd, const void* from, std::size_t count) override;
    int Poll(int fd, short events, int timeout_ms, short* revents) override;
    int Fcntl(int fd, int command, long argument) override;
    int GetAttributes(int fd, termios* to) override;
    int SetAttributes(int fd, int action, const termios* from) override;
    int Flush(int fd, int queue) override;
    int Usleep(unsigned us) override;
    Micros LookAtClock() override { return ++now_; }
    std::time_t WallClock() override { return 0; }
    bool Trace(const std::string& file, const std::string& text) override;
    void Detail(int /*code*/, const std::string& /*text*/) override {}

  private:
    static constexpr int kFd = 1 << 20;  // never a real descriptor

    // True when a signal ends a wait of so many microseconds early; the clock is put forward.
    bool Interrupted(Micros wait_us);
    void LookAfterEndlessLoops();

    SimulatedLine& line_;
    Journal& journal_;
    Random random_;
    bool writes_traces_;
    Micros now_ = 1'000'000'000;
    termios attributes_{};
    unsigned interruptions_ = 0;  // in a row
    std::uint32_t patience_ = 0;
    std::uint32_t pauses_ = 0;
    bool ended_by_host_ = false;
    bool plug_pulled_ = false;
};

}  // namespace simulation
