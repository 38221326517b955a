// What the shell is told.
#pragma once

namespace kkm {

// Scripts depend on these numbers: a new outcome gets a new one.
enum class ExitStatus : int {
    done = 0,           // the check was printed; the figures were read
    failed = 1,         // nothing foreseen: no memory, no converter
    usage = 2,          // the command line is wrong
    bad_file = 3,       // the check file cannot be read or is no check
    no_connection = 4,  // no register at that device
    refused = 5,        // the check was refused before anything was printed
    not_printed = 6,    // the check was not printed, or nobody knows: look at the paper
    paper_absent = 7,   // no paper; the check is still open at the register
    not_read = 8        // a figure could not be read
};

}  // namespace kkm
