// Errors of the serial port.
#pragma once

#include <exception>
#include <sstream>
#include <string>

class CMiniCom;

enum MiniComErr : int {
    errCreateFile = 0,  // the port could not be opened, or is closed
    errReadFile = 1,
    errWriteFile = 2,
    errGetCommState = 3,
    errSetCommState = 4,
    errGetCommTimeouts = 5,
    errSetCommTimeouts = 6,
    errPurgeComm = 7,
    errEscapeCommFunction = 8,
    errUnknown = 9  // raised by setSpeed, has no text of its own
};

class EMiniCom : public std::exception {
  public:
    // The source is not kept.
    EMiniCom(const CMiniCom* source, MiniComErr code, const std::string& detail);
    EMiniCom(const CMiniCom* source, MiniComErr code, const std::ostringstream& detail);

    // The enumerator's name; "Unknoun error" for every other value.
    static const char* CodeToStr(MiniComErr code);

    MiniComErr code;
    std::string message;  // the code's text, and ": " with the detail when there is one
};
