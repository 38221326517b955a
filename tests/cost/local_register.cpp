#include "cost/local_register.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>

namespace cost {

namespace {

constexpr std::uint8_t kNetNumber = 1;

virtual_register::Memory NewMemory(int firmware) {
    virtual_register::Identity identity;
    identity.firmware = firmware;
    return virtual_register::Memory(identity);
}

}  // namespace

LocalRegister::LocalRegister(int firmware) : model_(NewMemory(firmware)) {}

void LocalRegister::AskForCheck() {
    const std::lock_guard<std::mutex> lock(busy_);
    if (!model_.ask_host()) {
        throw std::runtime_error("the register lets nobody ask for a check");
    }
}

void LocalRegister::ForgetPrinted() {
    const std::lock_guard<std::mutex> lock(busy_);
    model_.forget_printed();
    model_.paper().tear_off();
    model_.memory().close_shift();
    model_.memory().checks = 0;
}

void LocalRegister::FillTape(int records) {
    virtual_register::TapeRecord record;
    record.amount_kopecks = 4990;
    record.price_kopecks = 4990;
    record.quantity_thousandths = 1000;
    model_.memory().tape.start();
    for (int i = 0; i < records; ++i) {
        model_.memory().tape.add(record);
    }
}

void LocalRegister::LetWait(std::size_t count) {
    Forget();
    for (std::size_t i = 0; i < count; ++i) {
        pending_.add(0);
    }
}

void LocalRegister::Take(const unsigned char* bytes, std::size_t count, std::int64_t now_us) {
    const std::lock_guard<std::mutex> lock(busy_);
    for (std::size_t i = 0; i < count; ++i) {
        parser_.add(bytes[i]);
    }
    Forget();
    while (const auto request = parser_.next()) {
        if (const auto answer = model_.handle(*request, now_us)) {
            pending_ = build_frame(*answer, kNetNumber);
        }
    }
}

void LocalRegister::Forget() {
    pending_.clear();
    read_ = 0;
}

TtyRegister::TtyRegister(int firmware)
    : LocalRegister(firmware), master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    char name[64];
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof name) != 0) {
        throw std::runtime_error("no pseudo terminal");
    }
    tty_ = name;
    // Raw from the start, or the first answer would come back as an echo.
    termios settings{};
    tcgetattr(master_, &settings);
    cfmakeraw(&settings);
    tcsetattr(master_, TCSANOW, &settings);
    server_ = std::thread([this] { Serve(); });
}

TtyRegister::~TtyRegister() {
    // A request that no register knows ends the service.
    server_.join();
    close(master_);
}

void TtyRegister::Serve() {
    bool was_there = false;
    for (;;) {
        unsigned char bytes[256];
        const ssize_t count = read(master_, bytes, sizeof bytes);
        if (count <= 0) {
            if (was_there) {
                return;  // the host has closed the tty
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        was_there = true;
        Take(bytes, static_cast<std::size_t>(count), NowUs());
        if (HasByte()) {
            const ssize_t sent = write(master_, pending_.data(), pending_.size());
            if (sent != static_cast<ssize_t>(pending_.size())) {
                return;
            }
        }
    }
}

}  // namespace cost
