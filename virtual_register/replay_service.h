#pragma once

#include "options.h"
#include "output_file.h"
#include "replay.h"
#include "tty_link.h"
#include "wire.h"

namespace virtual_register {

// A recording at work on a line.
class ReplayService {
  public:
    // Throws std::runtime_error with a sentence for the user.
    explicit ReplayService(const Options& options);

    const std::string& tty_name() const { return wire_.tty_name(); }
    // Serves until the host has said everything and closed the tty, until it says something else,
    // or until `stop` is set. True when everything was said; otherwise the standard error tells why
    // not.
    bool run(const volatile int& stop);

  private:
    ReplayService(const Options& options, const Recording& recording);
    bool serve(const Request& request);
    bool said_all() const { return replay_.finished() && !wire_.host_present(); }

    std::string file_;
    Replay replay_;
    Wire wire_;
    TtyLink link_;
    OutputFile log_;
};

}  // namespace virtual_register
