#include <signal.h>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "memory_file.h"
#include "options.h"
#include "receipt.h"
#include "receipt_folder.h"
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

// 1 when a file of its own could not be written to the end, 3 when the host did not say what a
// recording has it say.
int run(const virtual_register::Options& options) {
    if (!options.replay_file.empty()) {
        virtual_register::ReplayService service(options);
        tell_tty(service.tty_name());
        return service.run(stop) ? 0 : 3;
    }
    virtual_register::Service service(options);
    tell_tty(service.tty_name());
    service.run(stop);
    return service.wrote_everything() ? 0 : 1;
}

void show_receipt(const virtual_register::ReceiptOptions& options) {
    const virtual_register::Memory memory = virtual_register::load_memory(options.memory_file);
    if (!memory.last_check) {
        throw std::runtime_error(options.memory_file + " knows no check");
    }
    virtual_register::PaperLines lines;
    virtual_register::compose_receipt(*memory.last_check, memory, false, lines);
    const std::string receipt = virtual_register::receipt_as(options.format, lines);
    if (options.output.empty()) {
        if (!(std::cout << receipt << std::flush)) {
            throw std::runtime_error("the receipt could not be written");
        }
    } else {
        virtual_register::write_receipt(options.output, receipt);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = virtual_register::parse_options(argc, argv);
    try {
        if (parsed.receipt) {
            show_receipt(*parsed.receipt);
        }
        if (!parsed.options) {
            return parsed.exit_status;
        }
        prepare_signals();
        return run(*parsed.options);
    } catch (const std::exception& error) {
        std::cerr << "tarvo-register: " << error.what() << '\n';
        return 1;
    }
}
