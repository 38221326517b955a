// Failures, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <stdexcept>
#include <string>

#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// A function of the library gave 0. `what` says what could not be done: "no connection".
class RegisterFailure : public std::runtime_error {
  public:
    RegisterFailure(ExitStatus status, const std::string& what, int code)
        : std::runtime_error(what), status_(status), code_(code) {}
    ExitStatus status() const { return status_; }
    int code() const { return code_; }

  private:
    ExitStatus status_;
    int code_;
};

// Throws a RegisterFailure with the library's last error when `result` is 0.
void Require(int result, ExitStatus status, const std::string& what);

// What failed, the code with its name, what happened and what to do, in lines of 80 letters.
void ReportFailure(const RegisterFailure& failure, std::ostream& to);
nlohmann::ordered_json ErrorAsJson(const RegisterFailure& failure);
// The same as a JSON object { "error": { ... } }.
void ReportFailureAsJson(const RegisterFailure& failure, std::ostream& to);
// To people on the error stream and, when JSON was asked for, to programs on the other one. Gives
// the failure's status.
ExitStatus Report(const RegisterFailure& failure, bool as_json, Streams& streams);

// What no register and no library is to blame for: it has no code.
ExitStatus Report(ExitStatus status, const std::string& what, bool as_json, Streams& streams);

// At the end of a command: says when its results could not be written, which is status 1 for what
// else was done. A reader that went away, and a printed check, leave the status as it is.
ExitStatus EndOutput(ExitStatus status, bool check_printed, Streams& streams);

}  // namespace kkm
