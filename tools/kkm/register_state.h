// The register's state: its code, its name, what it means and the figures that come with it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kkm/connection.h"
#include "kkm/figures.h"
#include "kkm/line_client.h"

namespace kkm {

struct StateName {
    int code;
    const char* name;     // "ks_kkmgo"
    const char* meaning;  // "ready"
};

// The register asks the host for a check.
constexpr int kSaleCode = 0xA1;
constexpr int kSaleBarcode = 0xA3;

// All states, in the order of their codes.
const std::vector<StateName>& States();
// Null when there is no such state.
const StateName* StateOfCode(int code);

// The figures that an answer in this state carries; a byte that is missing counts as 0.
std::vector<Figure> FiguresOfState(int code, const Bytes& bytes);

struct RegisterState {
    int baud = 0;
    int code = 0;
    Bytes data;
};

struct RegisterCounters {
    int tape = 0;
    int checks = 0;
    int sales = 0;
};

struct RegisterLook {
    RegisterState state;
    std::optional<RegisterCounters> counters;  // nothing: they did not come
    // Asked for only where the state leaves them open; nothing also when they did not come.
    std::optional<int> open_lines = std::nullopt;  // of a check that is open
    std::optional<int> section = std::nullopt;
};

// Asks the register by the tool's own line, at 9600 and then at 57600 baud. Nothing when nobody
// answers or the device cannot be opened. Blocks up to 1 s on a silent line.
std::optional<RegisterLook> LookAtRegister(const Address& address);

// The number of the register's last error, 0 for none. Nothing when it does not come.
std::optional<int> ReadLastError(LineClient& line, int firmware);

// Code, name and meaning.
std::string StateText(int code);
// The same as figures, with the state's own.
std::vector<Figure> StateAsFigures(const RegisterLook& look);

}  // namespace kkm
