// Where the tool reads and writes.
#pragma once

#include <istream>
#include <ostream>

#include "kkm/terminal.h"

namespace kkm {

struct Streams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    Terminal out_terminal;
    Terminal err_terminal;
};

}  // namespace kkm
