// The connection to the register.
#pragma once

#include <string>

namespace kkm {

// Where the register is: a device by name, or a port number when no name is given.
struct Address {
    std::string device;
    int port = 0;

    std::string Text() const;
    // The device's name in either case: port 1 is /dev/ttyS0.
    std::string Device() const;
};

// Connects, and disconnects however the command ends, which resets the register's state. While a
// check may stand in its closing that would print it: then the register is left as it is.
class Connection {
  public:
    enum class Leaving { reset, as_it_is };

    // Throws RegisterFailure.
    explicit Connection(const Address& address, Leaving leaving = Leaving::reset);
    ~Connection();
    void Leave(Leaving leaving) { leaving_ = leaving; }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

  private:
    Leaving leaving_;
};

// Firmware of the connected register. Throws RegisterFailure.
int Firmware();

}  // namespace kkm
