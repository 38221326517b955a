#include "kkm/signal_shield.h"

#include <unistd.h>

#include <cerrno>

namespace kkm {
namespace {

void AskToWait(int /*signal*/) {
    const int error = errno;
    constexpr char kText[] =
        "\nkkm: a check is being printed; this ends when the register is done\n";
    // Nothing can be done about a terminal that is gone.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kText, sizeof kText - 1);
    errno = error;
}

}  // namespace

SignalShield::SignalShield() {
    struct sigaction wait {};
    wait.sa_handler = AskToWait;
    wait.sa_flags = SA_RESTART;
    sigemptyset(&wait.sa_mask);
    struct sigaction* before = before_;
    for (const int signal : kSignals) {
        sigaction(signal, &wait, before++);
    }
}

SignalShield::~SignalShield() {
    const struct sigaction* before = before_;
    for (const int signal : kSignals) {
        sigaction(signal, before++, nullptr);
    }
}

}  // namespace kkm
