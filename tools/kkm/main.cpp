// The service tool of the Tarvo M5 driver.
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "kkm/command_line.h"

int main(int argc, char** argv) {
    // A reader that goes away ("kkm check | head") must not end a check half-way.
    std::signal(SIGPIPE, SIG_IGN);
    kkm::Streams streams{std::cin, std::cout, std::cerr, kkm::DetectTerminal(STDOUT_FILENO),
                         kkm::DetectTerminal(STDERR_FILENO)};
    return static_cast<int>(kkm::Run(argc, argv, streams));
}
