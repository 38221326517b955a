#include <signal.h>

#include <exception>
#include <iostream>

#include "options.h"
#include "replay_service.h"
#include "service.h"

namespace {

volatile sig_atomic_t stop = 0;

void note_signal(int) {
    stop = 1;
}

// The signals that end the program reach it only while it waits.
void prepare_signals() {
    struct sigaction action {};
    action.sa_handler = note_signal;
    sigset_t ending;
    sigemptyset(&ending);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&ending, signal);
        ::sigaction(signal, &action, nullptr);
    }
    ::sigprocmask(SIG_BLOCK, &ending, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
}

void tell_tty(const std::string& name) {
    std::cout << "tty " << name << '\n' << std::flush;
}

// 3 when the host did not say what a recording has it say.
int run(const virtual_register::Options& options) {
    if (!options.replay_file.empty()) {
        virtual_register::ReplayService service(options);
        tell_tty(service.tty_name());
        return service.run(stop) ? 0 : 3;
    }
    virtual_register::Service service(options);
    tell_tty(service.tty_name());
    service.run(stop);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = virtual_register::parse_options(argc, argv);
    if (!parsed.options) {
        return parsed.exit_status;
    }
    try {
        prepare_signals();
        return run(*parsed.options);
    } catch (const std::exception& error) {
        std::cerr << "tarvo-register: " << error.what() << '\n';
        return 1;
    }
}
