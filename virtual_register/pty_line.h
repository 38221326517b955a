#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace virtual_register {

// The register's end of a pseudo terminal. Its other end is the tty that a host opens.
//
// The tty is raw and silent from the start: a host that writes before it has set anything up gets
// no echo. While no host has it open the line keeps it open itself, so that its settings stay and
// nothing has to be polled for; it lets go at the first bytes of a host, in order to notice when
// that host closes.
class PtyLine {
  public:
    // Throws std::system_error when the system gives no pseudo terminal.
    PtyLine();
    ~PtyLine();
    PtyLine(const PtyLine&) = delete;
    PtyLine& operator=(const PtyLine&) = delete;

    const std::string& tty_name() const { return tty_name_; }
    // To be polled for input and hang-up.
    int descriptor() const { return master_; }

    // What has come since the last call; empty when nothing did or the host is gone.
    std::vector<std::uint8_t> receive();
    // What a host does not take in time is lost, as on any line.
    void send(const std::vector<std::uint8_t>& bytes) const;

    // Bits per second that the host set on the tty; 0 for none that a register could have.
    int host_speed() const;
    bool host_present() const { return tty_ < 0; }

  private:
    void hold_tty();
    void let_go_of_tty();

    int master_;
    int tty_ = -1;
    std::string tty_name_;
};

}  // namespace virtual_register
