#include "serial/mini_com.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "support/time.h"

namespace {

// A limit is counted in unsigned milliseconds, poll takes a signed number.
constexpr unsigned kLongestPollMs = 0x7FFFFFFF;

}  // namespace

CMiniCom::~CMiniCom() {
    if (IsOpen()) {
        Close();
    }
}

void CMiniCom::initClass() {
    handle_ = -1;
    port_ = 0;
    trace_ = true;
    spare_ = 0;
}

void CMiniCom::Open(unsigned char port) {
    port_ = port;
    // Unsigned, so that port 0 names a device that cannot exist.
    const std::uint32_t line = std::uint32_t{port} - 1;
    OpenDevice("/dev/ttyS" + std::to_string(line));
}

void CMiniCom::OpenDevice(const std::string& path) {
    const int handle = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (handle == -1) {
        throw EMiniCom(this, errCreateFile, path);
    }
    handle_ = handle;
}

void CMiniCom::Close() {
    if (IsOpen()) {
        close(handle_);
        handle_ = -1;
    }
}

void CMiniCom::purgeComm(unsigned /*flags*/) {
    if (!IsOpen()) {
        throw EMiniCom(this, errCreateFile, "CMiniCom::purgeComm");
    }
    tcflush(handle_, TCIOFLUSH);
}

int CMiniCom::waitComEvent(unsigned ms) {
    pollfd event{handle_, POLLIN, 0};
    unsigned left_ms = ms;
    const Stopwatch waited;
    for (;;) {
        const int result = poll(&event, 1, static_cast<int>(std::min(left_ms, kLongestPollMs)));
        if (result != -1 || errno != EINTR) {
            return result;
        }
        const std::uint64_t wait_us = std::uint64_t{ms} * 1'000;
        const std::uint64_t waited_us = waited.ElapsedUs();
        // Rounded up: a signal must not take a part of a millisecond from the limit either.
        left_ms =
            waited_us < wait_us ? static_cast<unsigned>((wait_us - waited_us + 999) / 1'000) : 0;
    }
}

void CMiniCom::Write(const void* buf, unsigned n) {
    if (!IsOpen()) {
        throw EMiniCom(this, errCreateFile, "");
    }
    if (write(handle_, buf, n) != static_cast<ssize_t>(n)) {
        throw EMiniCom(this, errWriteFile, "");
    }
}

void CMiniCom::Read(void* buf, unsigned n) {
    if (!IsOpen()) {
        throw EMiniCom(this, errCreateFile, "CMiniCom::Read");
    }
    if (waitComEvent(timeouts_.ReadTotalTimeoutMultiplier * n +
                     timeouts_.ReadTotalTimeoutConstant) < 1) {
        throw EMiniCom(this, errReadFile, "CMiniCom::Read sum timeout need read");
    }
    auto* const bytes = static_cast<unsigned char*>(buf);
    for (unsigned i = 0; i < n; ++i) {
        if (waitComEvent(timeouts_.ReadIntervalTimeout) < 1) {
            throw EMiniCom(this, errReadFile,
                           "CMiniCom::Read ReadIntervalTimeout on " + std::to_string(i) + " byte");
        }
        if (read(handle_, bytes + i, 1) < 1) {
            throw EMiniCom(this, errReadFile,
                           "CMiniCom::Read error " + std::to_string(i) + " byte");
        }
    }
}

std::vector<unsigned char> CMiniCom::Read(unsigned n) {
    std::vector<unsigned char> bytes(n);
    Read(bytes.data(), n);
    return bytes;
}

void CMiniCom::setSpeed(int /*baud*/) {
    if (!IsOpen()) {
        throw EMiniCom(this, errCreateFile, "CMiniCom::setSpeed");
    }
    throw EMiniCom(this, errUnknown, "");
}

void CMiniCom::setCommState(_DCB* /*state*/) {}

void CMiniCom::EscapeCommFunction(unsigned /*function*/) {}

void CMiniCom::ClearCommError(unsigned short* /*errors*/, _COMSTAT* /*state*/) {}

void CMiniCom::traceMsg(const std::string& /*text*/) {}

void CMiniCom::setTrace(bool on, const std::string& fileName) {
    trace_ = on;
    log_file_name_ = fileName;
}
