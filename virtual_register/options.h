#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "memory.h"
#include "receipt_picture.h"

namespace virtual_register {

enum class Cashier { automatic, prompt, off };

// What the program was told on its command line.
struct Options {
    Identity identity;
    bool firmware_given = false;  // a memory file knows its own; it must not be another
    bool serial_given = false;
    int baud = 9600;
    std::uint8_t net_number = 1;
    std::string memory_file;
    std::string paper_file;
    std::string receipt_folder;
    std::string log_file;  // "-" is the standard error
    std::string scenario_file;
    std::string record_file;
    std::string replay_file;
    std::string link;
    Cashier cashier = Cashier::off;
    bool pace = false;
    bool quiet = false;
    unsigned once = 0;      // end after so many checks; 0 never
    unsigned print_ms = 0;  // for each line of a receipt
};

// "tarvo-register receipt": the last check of a memory file, once more.
struct ReceiptOptions {
    std::string memory_file;
    std::string output;  // empty for the standard output
    ReceiptFormat format = ReceiptFormat::text;
};

// Either of the options or, after --help or a mistake (already told to the user), the exit status.
struct ParsedOptions {
    std::optional<Options> options;
    std::optional<ReceiptOptions> receipt;
    int exit_status = 0;
};
ParsedOptions parse_options(int argc, char** argv);

}  // namespace virtual_register
