// What the shell is told.
#pragma once

namespace kkm {

// Scripts depend on these numbers: a new outcome gets a new one.
enum class ExitStatus : int {
    done = 0,           // the check was printed; the figures were read; it was done
    failed = 1,         // nothing foreseen: no memory, no converter
    usage = 2,          // the command line is wrong
    not_printed = 3,    // the check was not printed
    unknown = 4,        // nobody knows whether the check was printed: look at the paper
    bad_file = 5,       // a file cannot be read or is not what it should be
    no_connection = 6,  // no register at that device
    refused = 7,        // the register or the library refused it; nothing was printed
    paper_absent = 8,   // no paper; the check is still open at the register
    not_read = 9,       // a figure could not be read
    findings = 10,      // doctor found something to mend
    not_started = 125   // run could not give the program its device
};

}  // namespace kkm
