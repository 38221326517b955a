// kkm doctor: what keeps a till from printing, and what to do about it.
#pragma once

#include <string>
#include <vector>

#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

enum class Grade {
    good,
    note,  // worth knowing
    bad    // to be mended
};

struct Finding {
    Grade grade;
    std::string key;     // name for programs: "no_permission"
    std::string what;    // what was seen
    std::string advice;  // what to do; empty when nothing is
};

// The device: present, a serial line, permitted, held by nobody else, its adapter quick. What the
// system knows of adapters stands in `tty_class`.
std::vector<Finding> ExamineDevice(const std::string& device,
                                   const std::string& tty_class = "/sys/class/tty");
// The register on it: answers at each speed, firmware, answer times, state. Nothing is changed at
// the register. Blocks up to 20 s.
std::vector<Finding> ExamineRegister(const std::string& device);
// The trace files in a directory: writable, not too large, room left.
std::vector<Finding> ExamineTraceFiles(const std::string& directory);

ExitStatus RunDoctor(const Address& address, const std::string& directory, bool as_json,
                     Streams& streams);

}  // namespace kkm
