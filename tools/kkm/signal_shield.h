// Protection of a check that is being printed.
#pragma once

#include <csignal>

namespace kkm {

// While it lives, the signals that end a program (Ctrl-C, a closed window, kill) only say that they
// have to wait: a check left half-way stays open at the register, with its keyboard locked.
class SignalShield {
  public:
    SignalShield();
    ~SignalShield();
    SignalShield(const SignalShield&) = delete;
    SignalShield& operator=(const SignalShield&) = delete;

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    struct sigaction before_[sizeof kSignals / sizeof *kSignals];
};

}  // namespace kkm
