// Errors of the register's protocol.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

class CTarvo;

enum TarvoErr : int {
    errPort = 1,      // line-level failures; raised by nothing today, still mapped by Connect
    errProtocol = 2,  // a broken frame or an answer that does not belong to the request
    errLine = 3,      // as errPort
    errNetNum = 4,    // an answer from another network number
    errProduct = 5,   // a product record that does not fit or was refused
    errMoney = 6,     // the register refused: price, sum or want of cash
    errVersion = 7    // firmware unknown, or without the operation
};

class ETarvo : public std::exception {
  public:
    // Takes its text from err_msg. The detail is accepted and dropped: it is neither kept nor
    // traced. Writes one line to the source's trace file when its trace switch is on.
    ETarvo(CTarvo* source, int code, const std::string& detail);

    const char* what() const noexcept override { return message_.c_str(); }
    std::uint8_t deviceNumber() const { return device_number_; }
    int code() const { return code_; }
    const std::string& debugMessage() const { return debug_message_; }  // always empty

  private:
    std::uint8_t device_number_;
    std::int32_t code_;
    std::string message_;
    std::string debug_message_;
};
