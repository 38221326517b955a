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

// Connects, and disconnects however the command ends.
class Connection {
  public:
    // Throws RegisterFailure.
    explicit Connection(const Address& address);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
};

// Firmware of the connected register. Throws RegisterFailure.
int Firmware();

}  // namespace kkm
