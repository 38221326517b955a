// The operating system as the driver meets it. The driver's POSIX calls are replaced at link time
// and go to the system in use, so that the objects that ship run on a virtual clock against a
// virtual device.
#pragma once

#include <poll.h>
#include <termios.h>

#include <cstdint>
#include <ctime>
#include <string>

namespace test {

using Micros = std::uint64_t;

// Calls fail as the real ones do: with -1 and errno.
class System {
  public:
    virtual ~System() = default;

    // The world of the unit tests, unless another system was put in use.
    static System& InUse();
    static void Use(System* system);

    // Descriptors and paths that are not the system's go to the real one.
    virtual bool Owns(int fd) const = 0;
    virtual bool OwnsPath(const char* path) const = 0;

    virtual int Open(const char* path, int flags) = 0;
    virtual int Close(int fd) = 0;
    virtual long Read(int fd, void* to, std::size_t count) = 0;
    virtual long Write(int fd, const void* from, std::size_t count) = 0;
    virtual int Poll(int fd, short events, int timeout_ms, short* revents) = 0;
    virtual int Fcntl(int fd, int command, long argument) = 0;
    virtual int GetAttributes(int fd, termios* to) = 0;
    virtual int SetAttributes(int fd, int action, const termios* from) = 0;
    virtual int Flush(int fd, int queue) = 0;
    virtual int Usleep(unsigned us) = 0;
    // A look at the monotonic clock. It takes time, or a loop without pauses would never reach its
    // limit.
    virtual Micros LookAtClock() = 0;
    virtual std::time_t WallClock() = 0;

    // True when the text is to be written to its file as well.
    virtual bool Trace(const std::string& file, const std::string& text) = 0;
    // The detail of a protocol error, which the driver drops.
    virtual void Detail(int code, const std::string& text) = 0;
};

}  // namespace test
