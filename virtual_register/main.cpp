#include <signal.h>

#include <exception>
#include <iostream>

#include "options.h"
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

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = virtual_register::parse_options(argc, argv);
    if (!parsed.options) {
        return parsed.exit_status;
    }
    try {
        prepare_signals();
        virtual_register::Service service(*parsed.options);
        std::cout << "tty " << service.tty_name() << '\n' << std::flush;
        service.run(stop);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tarvo-register: " << error.what() << '\n';
        return 1;
    }
}
